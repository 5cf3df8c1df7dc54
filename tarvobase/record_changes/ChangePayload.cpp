#include "tarvobase/record_changes/ChangePayload.h"

#include <algorithm>

#include "platform/Json.h"
#include "tarvobase/records/sql/DependentRecords.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

bool isSent(const std::string& column, const Record& record, const FieldList& fields) {
    auto& names = *fields.naming().constant;
    return record.hasColumn(column) && column != record.identifierColumn() && column != names.modifiedTime &&
           column != names.modifiedBy && column != names.tag && column != names.attachments;
}

bool isListOfMaps(const Value& value) {
    auto list = value.asList();
    return list && std::all_of(list->begin(), list->end(), [](auto& item) { return item.asMap() != nullptr; });
}

/// Returns a value as it is sent. A value that does not fit the type of its field goes out as it is: the server says
/// what is wrong with it, and nothing that the user entered is lost.
Value sentValue(FieldDataType type, const ValueView& stored) {
    auto value = stored.isNull() ? Value() : wireValue(type, stored);
    return value.isNull() ? stored.copy() : value;
}

}  // namespace

ValueMap ChangePayload::of(const Record& record, const FieldList& fields, TransactionType type) {
    bool isEdit = type == TransactionType::editRecord;
    ValueMap payload;
    if (isEdit) payload.set(RecordConstants::FieldAPINames::Id, record.recordId());
    for (auto [column, field] : fields.orderedFields()) {
        if (!isSent(column, record, fields)) continue;
        auto stored = record[column];
        if (DependentRecords::isListOfRows(record.moduleName(), field)) {
            if (auto rows = stored.copy(); isListOfMaps(rows)) payload.set(field.fieldAPIName, std::move(rows));
        } else if (isEdit || !stored.isNull()) {
            payload.set(field.fieldAPIName, sentValue(field.fieldType, stored));
        }
    }
    return payload;
}

std::optional<ValueMap> ChangePayload::of(const Transaction& change) {
    auto body = change.dataJSON ? json::parse(*change.dataJSON) : std::nullopt;
    auto data = body && body->asMap() ? body->asMap()->find("data") : nullptr;
    auto list = data ? data->asList() : nullptr;
    return list && !list->empty() && list->front().asMap() ? std::optional(*list->front().asMap()) : std::nullopt;
}

std::optional<platform::Data> ChangePayload::body(const ValueMap& payload) {
    auto text = json::write(ValueMap{{"data", ValueList{Value(payload)}}});
    return text ? std::optional(platform::Data(*std::move(text))) : std::nullopt;
}

}  // namespace tarvo
