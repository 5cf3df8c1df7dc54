#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Object.h"

namespace tarvo {

class UserDefaultsProtocol;

/// Names the organisation for which authenticated requests are made. It may be used from any thread.
class CurrentOrganisationProtocol : public virtual platform::Object {
public:
    /// Returns nullopt until an organisation has been chosen.
    virtual std::optional<std::string> currentOrganisationID() = 0;
};

/// The setting that holds the choice: a map in the group of the account, with the id under a key of its own.
inline constexpr std::string_view currentOrganisationSetting = "CurrentOrganisation";
inline constexpr std::string_view currentOrganisationIDKey = "orgID";

/// Reads the choice of the account that the settings treat as the current one.
class CurrentOrganisationInUserDefaults final : public CurrentOrganisationProtocol {
public:
    explicit CurrentOrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns nullopt also if the stored id is empty.
    std::optional<std::string> currentOrganisationID() override;

private:
    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
