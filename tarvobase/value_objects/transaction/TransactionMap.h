#pragma once

#include <optional>
#include <string>

#include "platform/Result.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct TransactionMap;

/// Reading fails with the name of the column that is absent or does not hold a text.
struct TransactionMapKeys : StoredNames<TransactionMapKeys, TransactionMap, Result<TransactionMap, std::string>> {
    /// The table's name ends with the organisation; see `Scope::tableName`.
    std::string_view TableName = of("TransactionsMap", "TRANSACTIONS_MAP");
    std::string_view TransactionID = of("transactionId", "transaction_id");
    std::string_view RecordID = of("recordId", "record_id");
    std::string_view LookUpID = of("lookupId", "lookup_id");
    std::string_view LookUpLabel = of("lookupLabel", "lookup_label");
    std::string_view LookUpColumn = of("lookupColumn", "lookup_column");
    std::string_view LookUpApiName = of("lookupApiName", "lookup_api_name");
    std::string_view TableNameColumn = of("tableNameColumn", "table_name_column");
    std::string_view ModifiedTime = of("modifiedTime", "modified_time");
};
struct TransactionMapConstants : TableTwin<TransactionMapKeys> {};

/// A lookup of a queued change that points at another record. No operation of the library stores one; the value lets
/// hosts read the table.
struct TransactionMap {
    std::string transactionID;
    std::string recordID;
    std::string lookUpID;
    std::string lookUpLabel;
    std::string lookUpColumn;
    std::optional<std::string> lookUpApiName;
    std::string tableNameColumn;
    std::string modifiedTime;

    static constexpr auto fields() {
        using V = TransactionMap;
        using Names = TransactionMapKeys;
        return describe(field("transactionID", &V::transactionID, &Names::TransactionID).required(),
                        field("recordID", &V::recordID, &Names::RecordID).required(),
                        field("lookUpID", &V::lookUpID, &Names::LookUpID).required(),
                        field("lookUpLabel", &V::lookUpLabel, &Names::LookUpLabel).required(),
                        field("lookUpColumn", &V::lookUpColumn, &Names::LookUpColumn).required(),
                        field("lookUpApiName", &V::lookUpApiName, &Names::LookUpApiName),
                        field("tableNameColumn", &V::tableNameColumn, &Names::TableNameColumn).required(),
                        field("modifiedTime", &V::modifiedTime, &Names::ModifiedTime).required());
    }
    friend bool operator==(const TransactionMap&, const TransactionMap&) = default;
};

}  // namespace tarvo
