#include "tarvobase/value_objects/account/OrganisationInDatabase.h"

namespace tarvo {

OrganisationInDatabase::OrganisationInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                               std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                               OrganisationDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      current_(std::move(userDefaults)),
      databaseConstants_(databaseConstants) {}

bool OrganisationInDatabase::storeOrganisations(const std::vector<Organisation>& organisations) {
    std::vector<ValueMap> rows;
    ValueList kept;
    for (auto& organisation : organisations) {
        rows.push_back(databaseConstants_.getDictionary(organisation));
        kept.emplace_back(organisation.orgID);
    }
    auto left = Criteria::notIn(std::string(databaseConstants_.OrgID), std::move(kept));
    return databaseAdapter && databaseAdapter->transaction("replace organisations", [&] {
        return table().store(std::move(rows)) && table().deleteObjects(left);
    });
}

std::optional<std::vector<Organisation>> OrganisationInDatabase::getOrganisations() const {
    return table().valuesOf(table().fetchAll(), [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
