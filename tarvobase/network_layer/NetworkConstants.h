#pragma once

#include <optional>
#include <string>

#include "platform/Object.h"
#include "tarvobase/configuration/ServerTypes.h"
#include "tarvobase/network_layer/CRMAPIs.h"

namespace tarvo {

/// Composes the URL of each call of the server from the present configuration.
class NetworkConstantsProtocol : public virtual platform::Object {
public:
    /// Returns the URL with version `v4`.
    virtual std::string getURL(const CRMAPIs& forApi) const { return getURL(forApi, ApiVersion::v4); }
    virtual std::string getURL(const CRMAPIs& forApi, ApiVersion version) const = 0;
    /// Returns the URL of a call below a target, such as a module.
    virtual std::string getURLTo(const CRMAPIs& forApi, const std::string& target) const = 0;
    virtual std::string getBaseUrl(DependentServerType type, const std::string& dclDomain,
                                   const std::optional<std::string>& dclPrefix) const = 0;
    virtual std::string getBaseUrl(MProxyServerType type, const std::string& dclDomain,
                                   const std::optional<std::string>& dclPrefix) const = 0;
    virtual std::string getAPI(const CRMAPIs& api) const = 0;
};

class NetworkConstants final : public NetworkConstantsProtocol {
public:
    static constexpr const char* appAPIScope = "";
    /// The sign-in page of the service.
    static constexpr const char* loginBaseURL = "https://accounts.crm.example/oauth/v2/auth";

    using NetworkConstantsProtocol::getURL;
    std::string getURL(const CRMAPIs& forApi, ApiVersion version) const override;
    std::string getURLTo(const CRMAPIs& forApi, const std::string& target) const override;
    std::string getBaseUrl(DependentServerType type, const std::string& dclDomain,
                           const std::optional<std::string>& dclPrefix) const override;
    std::string getBaseUrl(MProxyServerType type, const std::string& dclDomain,
                           const std::optional<std::string>& dclPrefix) const override;
    std::string getAPI(const CRMAPIs& api) const override;
};

}  // namespace tarvo
