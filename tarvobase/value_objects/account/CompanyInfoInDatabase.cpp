#include "tarvobase/value_objects/account/CompanyInfoInDatabase.h"

namespace tarvo {

CompanyInfoInDatabase::CompanyInfoInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                             CompanyInfoDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants) {}

bool CompanyInfoInDatabase::storeCompanyInfo(const std::vector<CompanyInfo>& infos) {
    std::vector<ValueMap> rows;
    rows.reserve(infos.size());
    for (auto& info : infos) rows.push_back(databaseConstants_.getDictionary(info));
    return table().store(std::move(rows));
}

Result<std::vector<CompanyInfo>, ParserError> CompanyInfoInDatabase::getCompanyInfo() {
    return presentOrNoData(infosOf(table().fetchAll()));
}

Result<CompanyInfo, ParserError> CompanyInfoInDatabase::getCompanyInfo(const std::string& key) {
    auto criteria = Criteria::equalTo(std::string(databaseConstants_.Key), key);
    return firstOrNoData(infosOf(table().fetch(FetchQuery(tableName, criteria))));
}

std::optional<std::vector<CompanyInfo>> CompanyInfoInDatabase::infosOf(const std::optional<Rows>& rows) const {
    return table().valuesOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
