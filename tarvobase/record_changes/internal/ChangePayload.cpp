#include "tarvobase/record_changes/internal/ChangePayload.h"

#include <algorithm>

#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/records/sql/DependentRecords.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

bool isSent(const std::string& column, const Record& record, const FieldList& fields) {
    auto& names = *fields.naming().constant;
    return record.hasColumn(column) && column != record.identifierColumn() && column != names.modifiedTime &&
           column != names.modifiedBy && column != names.tag && column != names.attachments;
}

/// A column joins the ids of a lookup of several records. They go one by one if a temporary one is among them, so that
/// it is found like every other and gives way to the real one.
Value sentByType(FieldDataType type, const ValueView& stored) {
    auto value = sentValue(type, stored);
    auto joined = type == FieldDataType::multiselectlookup ? value.asText() : nullptr;
    if (!joined) return value;
    auto ids = text::split(*joined, ",");
    bool namesTemporary = std::any_of(ids.begin(), ids.end(), [](auto& id) { return isTemporaryRecordId(id); });
    return namesTemporary ? Value(ValueList(ids.begin(), ids.end())) : value;
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
            if (auto rows = stored.copy(); listOfMaps(&rows)) payload.set(field.fieldAPIName, std::move(rows));
        } else if (isEdit || !stored.isNull()) {
            payload.set(field.fieldAPIName, sentByType(field.fieldType, stored));
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
