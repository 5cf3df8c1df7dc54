#include "tarvobase/record_changes/internal/RecordSides.h"

#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/RecordConversion.h"

namespace tarvo {

std::vector<std::string> RecordSides::columnsOf(std::string_view apiName, const FieldList& fields) {
    auto field = fields.getFieldByApiName(std::string(apiName));
    auto column = field ? fields.identifierOf(*field) : std::string();
    if (column.empty() || column == RecordUtil::getIdentifierFieldName(fields.moduleName(), fields.naming())) return {};
    std::vector<std::string> columns;
    for (auto suffix : {std::string_view(), lookupSuffix, firstNameSuffix, lastNameSuffix})
        columns.push_back(column + std::string(suffix));
    return columns;
}

bool RecordSides::remove(const Stores& stores, const std::string& recordId) {
    return stores.transactionRecords()->removeTransactionRecord(recordId) &&
           stores.currentTransactionRecords()->removeTransactionRecord(recordId);
}

void RecordSides::layOver(ValueMap& columns, const ValueMap& wire, const FieldList& fields) {
    auto row = RecordConversion(fields).toRow(wire);
    for (auto& entry : wire)
        for (auto& column : columnsOf(entry.name, fields)) {
            auto value = row.find(column);
            if (value)
                columns.set(column, *value);
            else
                columns.remove(column);
        }
}

}  // namespace tarvo
