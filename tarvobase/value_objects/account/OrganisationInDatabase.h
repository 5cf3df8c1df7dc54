#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"

namespace tarvo {

/// Keeps the list of organisations in a table of its own, for servers that have one. The current organisation stays in
/// the settings, where it can be read before a database is open.
class OrganisationInDatabase final : public DatabasePersistanceClass, public OrganisationPersistance {
public:
    OrganisationInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                           std::shared_ptr<UserDefaultsProtocol> userDefaults,
                           OrganisationDatabaseConstants databaseConstants = {});

    std::optional<Organisation> getCurrentOrganisation() const override { return current_.getCurrentOrganisation(); }
    void setCurrentOrganisation(const std::optional<Organisation>& organisation) override {
        current_.setCurrentOrganisation(organisation);
    }
    bool storeOrganisations(const std::vector<Organisation>& organisations) override;
    std::optional<std::vector<Organisation>> getOrganisations() const override;

private:
    OrganisationInUserDefaults current_;
    OrganisationDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
