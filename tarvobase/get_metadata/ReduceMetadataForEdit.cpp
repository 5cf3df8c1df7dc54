#include "tarvobase/get_metadata/ReduceMetadataForEdit.h"

#include <algorithm>

#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

Record reduced(const Record& record, const Record::Names& columns, const ModuleIdentifier& moduleId) {
    Record smaller(columns, std::nullopt, record.recordId(), moduleId);
    for (auto& column : columns) {
        // The identifier has its value, and takes no other.
        if (column != smaller.identifierColumn()) smaller.set(column, record.valueOf(column));
        if (auto shown = getLookupColumn(column); record.hasColumn(shown)) smaller.set(shown, record.valueOf(shown));
    }
    return smaller;
}

}  // namespace

std::vector<Record> ReduceMetadataForEdit::reduce(const std::vector<Record>& records, Record::Names columns,
                                                  const ModuleIdentifier& moduleId) {
    auto id = FieldIdentifierConstants().id;
    if (std::find(columns.begin(), columns.end(), id) == columns.end()) columns.emplace_back(id);
    std::vector<Record> smaller;
    smaller.reserve(records.size());
    for (auto& record : records) smaller.push_back(reduced(record, columns, moduleId));
    return smaller;
}

}  // namespace tarvo
