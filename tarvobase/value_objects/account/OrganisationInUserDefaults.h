#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tarvobase/configuration/CurrentOrganisation.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/value_objects/account/OrganisationPersistance.h"

namespace tarvo {

/// Keeps the organisations of the current account, and which of them is the current one, in the settings store, because
/// they are needed before a database is open.
class OrganisationInUserDefaults final : public CurrentOrganisationProtocol, public OrganisationPersistance {
public:
    OrganisationInUserDefaults();
    explicit OrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    std::optional<Organisation> getCurrentOrganisation() const override;
    void setCurrentOrganisation(const std::optional<Organisation>& organisation) override;
    bool storeOrganisations(const std::vector<Organisation>& organisations) override;
    std::optional<std::vector<Organisation>> getOrganisations() const override;
    std::optional<std::string> currentOrganisationID() override;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
