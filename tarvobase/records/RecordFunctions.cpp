#include "tarvobase/records/RecordFunctions.h"

#include <unordered_set>

#include "platform/Log.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/layout/LayoutFieldLists.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

bool areValuesEqual(const ValueView& a, const ValueView& b) {
    if (a.isNull() || b.isNull()) return a.isNull() == b.isNull();
    if (auto text = a.asText()) return text == b.asText();
    if (auto integer = a.asInteger()) return integer == b.asInteger();
    if (auto real = a.asReal()) return real == b.asReal();
    return true;
}

std::string with(const std::string& column, std::string_view suffix) { return std::string(column).append(suffix); }

bool isShown(const Record& record, const std::string& column) {
    auto value = record[column];
    return !value.isNull() && value.asText() != "";
}

bool isShown(const Record& record, const LayoutMetadata& field, const FieldIdentifier& naming) {
    auto& column = field.fieldIdentifier(naming);
    if (isShown(record, column) || isShown(record, getLookupColumn(column))) return true;
    return field.isLookupNameField() &&
           (isShown(record, with(column, firstNameSuffix)) || isShown(record, with(column, lastNameSuffix)));
}

}  // namespace

bool areRecordsEqual(const std::optional<Record>& a, const std::optional<Record>& b) {
    if (!a || !b) return a.has_value() == b.has_value();
    if (a->columnCount() != b->columnCount()) return false;
    for (std::size_t index = 0; index < a->columnCount(); ++index) {
        auto& column = a->columnName(index);
        if (!b->hasColumn(column) || !areValuesEqual(a->value(index), (*b)[column])) return false;
    }
    return true;
}

Record reduceRecordSize(const Record& record, const std::vector<FieldMetadata>& requiredColumnsMetadata,
                        const FieldList& allMetadata, const Record::Names& allColumnsInOriginalRecord) {
    std::unordered_set<std::string> required;
    for (auto& field : requiredColumnsMetadata)
        for (auto suffix : {std::string_view(), lookupSuffix, firstNameSuffix, lastNameSuffix, lookupDataSuffix})
            required.insert(with(allMetadata.identifierOf(field), suffix));
    ValueMap values;
    for (auto& column : allColumnsInOriginalRecord) {
        if (!required.contains(column)) continue;
        if (record.hasColumn(column))
            values.set(column, record.valueOf(column));
        else
            platform::log(platform::LogLevel::warning, "records", "Invalid Record ID");
    }
    return Record(std::move(values), record.recordId(), record.moduleName(), allMetadata.naming());
}

bool isSeidAndNameField(const FieldMetadata& field, const Record& record) {
    using M = ModuleIdentifier::Case;
    auto naming = namingInForce();
    auto& names = *naming.constant;
    if (field.fieldIdentifier(naming) != names.seid) return false;
    auto parent = record[names.seModule].asText();
    return parent == rawText(M::leads) || parent == rawText(M::contacts);
}

std::vector<LayoutMetadata> nonNullLayoutFields(const Record& record,
                                                const std::vector<LayoutMetadata>& layoutMetadata) {
    auto naming = namingInForce();
    std::vector<LayoutMetadata> shown;
    for (auto& field : layoutMetadata)
        if (isShown(record, field, naming)) shown.push_back(field);
    return shown;
}

std::vector<LinearLayoutMetadataItemType> nonNullLayoutFields(
    const Record& record, const std::vector<LinearLayoutMetadataItemType>& layoutMetadata) {
    auto naming = namingInForce();
    std::vector<LinearLayoutMetadataItemType> shown;
    const LinearLayoutMetadataItemType* header = nullptr;  // the section whose first entry has not come yet
    for (auto& line : layoutMetadata) {
        if (line.header()) {
            header = &line;
        } else if (isShown(record, *line.item(), naming)) {
            if (auto waiting = std::exchange(header, nullptr)) shown.push_back(*waiting);
            shown.push_back(line);
        }
    }
    return shown;
}

}  // namespace tarvo
