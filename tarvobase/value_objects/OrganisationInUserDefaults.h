#pragma once

#include <memory>
#include <optional>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/network_layer/ServiceRequests.h"
#include "tarvobase/value_objects/Organisation.h"

namespace tarvo {

/// The current organisation of the current account, in the settings store. From any thread; absent until one was chosen.
class OrganisationInUserDefaults final : public CurrentOrganisationProtocol {
public:
    OrganisationInUserDefaults();
    explicit OrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    std::optional<Organisation> getCurrentOrganisation() const;
    /// Nothing takes the choice back.
    void setCurrentOrganisation(const std::optional<Organisation>& organisation);
    std::optional<std::string> currentOrganisationID() override;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
