#include "tarvobase/record_changes/internal/AliasedLookups.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/Text.h"
#include "tarvobase/records/FreeText.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

/// Calls `visit` with the ids in a value, which may be changed: a text is one or several that "," joins, and lists and
/// maps hold more. Returns the value with what has become of them.
template <class Visit>
Value visitIds(const Value& value, const Visit& visit) {
    if (auto text = value.asText()) {
        auto ids = text::split(*text, ",");
        for (auto& id : ids) visit(id);
        return text::join(ids, ",");
    }
    if (auto list = value.asList()) {
        ValueList visited;
        for (auto& item : *list) visited.push_back(visitIds(item, visit));
        return visited;
    }
    if (auto map = value.asMap()) {
        ValueMap visited;
        for (auto& entry : *map) visited.set(entry.name, visitIds(entry.value, visit));
        return visited;
    }
    return value;
}

}  // namespace

bool replaceAliases(const Stores& stores, Record& record) {
    std::vector<std::string> temporary;
    for (std::size_t i = 0; i < record.columnCount(); ++i)
        if (i != record.identifierIndex())
            visitIds(record.value(i).copy(), [&](auto& id) {
                if (isTemporaryRecordId(id)) temporary.push_back(id);
            });
    if (temporary.empty()) return true;
    auto aliases = stores.recordIdAliases()->aliasesOf(temporary);
    if (!aliases) return false;
    FreeText freeText(stores);
    for (std::size_t i = 0; i < record.columnCount(); ++i) {
        if (i == record.identifierIndex()) continue;
        auto value = record.value(i).copy();
        auto replaced = visitIds(value, [&](auto& id) {
            for (auto& alias : *aliases)
                if (id == alias.temporaryId) id = alias.realId;
        });
        if (replaced != value && !freeText.holdsColumn(record.moduleName(), record.columnName(i)))
            record.set(record.columnName(i), std::move(replaced));
    }
    return true;
}

}  // namespace tarvo
