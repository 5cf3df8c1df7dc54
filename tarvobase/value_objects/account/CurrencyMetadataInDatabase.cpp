#include "tarvobase/value_objects/account/CurrencyMetadataInDatabase.h"

#include <algorithm>

namespace tarvo {

namespace {

/// The constants have a blank before the name. Unquoted SQL ignores the blank, but a quoted name would be that of
/// another table.
std::string withoutLeadingBlanks(const std::string& name) {
    return name.substr(std::min(name.find_first_not_of(' '), name.size()));
}

}  // namespace

CurrencyMetadataInDatabase::CurrencyMetadataInDatabase(const std::string& tableName,
                                                       std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                                       CurrencyMetadataDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(withoutLeadingBlanks(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants) {}

bool CurrencyMetadataInDatabase::storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) {
    return table().store(rowsOf(currencies, databaseConstants_));
}
bool CurrencyMetadataInDatabase::replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) {
    return table().replaceAll(rowsOf(currencies, databaseConstants_));
}

CurrencyMetadataPersistanceDelegate::Currencies CurrencyMetadataInDatabase::getAllCurrencyMetadata() {
    return presentOrNoData(currenciesOf(table().fetchAll()));
}
Result<CurrencyMetadata, ParserError> CurrencyMetadataInDatabase::getCurrencyMetadata(const std::string& for_) {
    return firstWhere(databaseConstants_.IsoCode, for_);
}
Result<CurrencyMetadata, ParserError> CurrencyMetadataInDatabase::getDefaultCurrencyMetadata() {
    return firstWhere(databaseConstants_.IsBase, "true");
}

Result<CurrencyMetadata, ParserError> CurrencyMetadataInDatabase::firstWhere(std::string_view column,
                                                                             const std::string& value) const {
    return firstOrNoData(currenciesOf(table().fetch(FetchQuery(tableName, columnIs(column, value)))));
}

std::optional<std::vector<CurrencyMetadata>> CurrencyMetadataInDatabase::currenciesOf(
    const std::optional<Rows>& rows) const {
    return table().valuesOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
