#include "tarvobase/record_changes/internal/AliasedLookups.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/Text.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

bool replaceAliases(const Stores& stores, Record& record) {
    std::vector<std::string> temporary;
    for (std::size_t i = 0; i < record.columnCount(); ++i) {
        auto text = record.value(i).asText();
        if (i == record.identifierIndex() || !text) continue;
        for (auto& id : text::split(*text, ","))
            if (isTemporaryRecordId(id)) temporary.push_back(id);
    }
    if (temporary.empty()) return true;
    auto aliases = stores.recordIdAliases()->aliasesOf(temporary);
    if (!aliases) return false;
    for (std::size_t i = 0; i < record.columnCount(); ++i) {
        auto text = record.value(i).asText();
        if (i == record.identifierIndex() || !text) continue;
        auto ids = text::split(*text, ",");
        for (auto& alias : *aliases) std::replace(ids.begin(), ids.end(), alias.temporaryId, alias.realId);
        if (auto replaced = text::join(ids, ","); replaced != *text)
            record.set(record.columnName(i), Value(std::move(replaced)));
    }
    return true;
}

}  // namespace tarvo
