#include "tarvobase/get_metadata/ReduceMetadataForEdit.h"

#include "platform/Text.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

Record reduced(const Record& record, const Record::Names& columns, const ModuleIdentifier& moduleId) {
    Record smaller(columns, std::nullopt, record.recordId(), moduleId);
    for (auto& column : columns) {
        // The identifier already has its value and refuses another.
        if (column != smaller.identifierColumn()) smaller.set(column, record.valueOf(column));
        if (auto shown = getLookupColumn(column); record.hasColumn(shown)) smaller.set(shown, record.valueOf(shown));
    }
    return smaller;
}

}  // namespace

std::vector<Record> ReduceMetadataForEdit::reduce(const std::vector<Record>& records, Record::Names columns,
                                                  const ModuleIdentifier& moduleId) {
    auto id = FieldIdentifierConstants().id;
    if (!text::contains(columns, id)) columns.emplace_back(id);
    std::vector<Record> smaller;
    smaller.reserve(records.size());
    for (auto& record : records) smaller.push_back(reduced(record, columns, moduleId));
    return smaller;
}

}  // namespace tarvo
