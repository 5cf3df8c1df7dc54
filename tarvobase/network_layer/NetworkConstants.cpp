#include "tarvobase/network_layer/NetworkConstants.h"

#include <array>

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

using Case = CRMAPIs::Case;

// Host names are settings of a deployment. Names that do not come from the host application's own domain are below the
// reserved domain "example", so that a program that was never configured reaches nobody.
constexpr const char* crmWebRoot = "https://web.crm.example/crm/v2/";
constexpr const char* lumetWebRoot = "https://web.lumet.example/crm/v2/";
constexpr const char* internalTestEndpoint = "https://internal.crm.example";
constexpr const char* developmentPhotoEndpoint = "https://photos.dev1.crm.example";
constexpr std::array developmentEndpoints = {"https://dev1.crm.example", "https://dev2.crm.example",
                                             "https://dev3.crm.example", "https://dev4.crm.example",
                                             "https://dev5.crm.example", "https://dev6.crm.example"};

// A server on loopback answers under every label, since names that end in "localhost" resolve to it.
std::string_view environmentLabel(MProxyServerType type) {
    switch (type) {
        case MProxyServerType::type0:
            return "sandbox";
        case MProxyServerType::type2:
            return "premproxy";
        case MProxyServerType::type3:
            return "labmproxy";
        case MProxyServerType::type5:
            return "devmproxy";
        default:
            return "mproxy";
    }
}

std::string_view serviceLabel(DependentServerType type) {
    switch (type) {
        case DependentServerType::accountServer:
            return "accounts";
        case DependentServerType::contactServer:
            return "contacts";
        case DependentServerType::crmServer:
            return "crm";
    }
    return "crm";
}

std::string hostOf(std::string_view label, const std::string& domain, const std::optional<std::string>& prefix) {
    return "https://" + prefix.value_or("") + std::string(label) + "." + domain;
}

bool usesWebRoot(Case which) {
    return which == Case::sendMail || which == Case::getWebDashboardsData || which == Case::getFromAddresses ||
           which == Case::relatedEmailSharedDetails;
}

std::string webRoot() {
    return CommonConfigration::sharedInstance().baseURLType.get() == WebBaseURLType::crmV2 ? crmWebRoot : lumetWebRoot;
}

std::string configuredBase(const NetworkConstants& constants) {
    auto& configuration = CommonConfigration::sharedInstance();
    return constants.getBaseUrl(configuration.serverType.get(), configuration.dclBD.get(),
                                configuration.dclPrefix.get());
}

std::string servlet() { return std::string(rawText(CommonConfigration::sharedInstance().servletPath.get())); }

}  // namespace

std::string NetworkConstants::getURL(const CRMAPIs& api, ApiVersion version) const {
    if (usesWebRoot(api.which())) return webRoot() + getAPI(api);
    if (api.which() == Case::downloadUserPhoto) {
        bool development = CommonConfigration::sharedInstance().serverType.get() == MProxyServerType::type6;
        return (development ? std::string(developmentPhotoEndpoint) : configuredBase(*this)) + "/" + getAPI(api);
    }
    return configuredBase(*this) + servlet() + "/" + std::string(rawText(version)) + "/" + getAPI(api);
}

std::string NetworkConstants::getURLTo(const CRMAPIs& api, const std::string& target) const {
    return configuredBase(*this) + servlet() + "/v4/" + text::asciiLowercase(target) + "/" + getAPI(api);
}

std::string NetworkConstants::getBaseUrl(DependentServerType type, const std::string& dclDomain,
                                         const std::optional<std::string>& dclPrefix) const {
    return hostOf(serviceLabel(type), dclDomain, dclPrefix);
}

std::string NetworkConstants::getBaseUrl(MProxyServerType type, const std::string& dclDomain,
                                         const std::optional<std::string>& dclPrefix) const {
    auto raw = static_cast<std::size_t>(type);
    if (type == MProxyServerType::type4) return internalTestEndpoint;
    if (raw >= 6) return developmentEndpoints.at(raw - 6);
    return hostOf(environmentLabel(type), dclDomain, dclPrefix);
}

std::string NetworkConstants::getAPI(const CRMAPIs& api) const {
    switch (api.which()) {
        case Case::getMyJobsRecord:
            return api.id() + "/markasread";
        case Case::updateapprovalstatus:
            return api.id() + "/updateapprovalstatus";
        case Case::sendMail:
            return api.module() + "/" + api.id() + "/actions/send_mail";
        case Case::appinitdata:
            return std::string(rawText(CommonConfigration::sharedInstance().initDataType.get()));
        default:
            return std::string(rawText(api.which()));
    }
}

}  // namespace tarvo
