#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Object.h"

namespace tarvo {

class UserDefaultsProtocol;

/// Names the organisation that authenticated requests are made for. From any thread.
class CurrentOrganisationProtocol : public virtual platform::Object {
public:
    /// Absent until an organisation was chosen.
    virtual std::optional<std::string> currentOrganisationID() = 0;
};

/// The settings that hold the choice: a map in the group of the current account, with the id under a key of its own.
inline constexpr std::string_view currentOrganisationSetting = "CurrentOrganisation";
inline constexpr std::string_view currentOrganisationIDKey = "orgID";

/// Reads the choice of the account that the settings store takes as the current one, at each call.
class CurrentOrganisationInUserDefaults final : public CurrentOrganisationProtocol {
public:
    explicit CurrentOrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Absent also if the stored id is empty.
    std::optional<std::string> currentOrganisationID() override;

private:
    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
