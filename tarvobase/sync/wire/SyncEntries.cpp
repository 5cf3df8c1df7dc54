#include "tarvobase/sync/wire/SyncEntries.h"

#include <algorithm>
#include <array>

#include "platform/Text.h"

namespace tarvo {

namespace {

std::optional<ParserError> failureOf(const SyncEntry& entry) {
    if (!entry) return entry.error();
    return entry->data ? std::nullopt : std::optional(entry->data.error());
}

/// Returns the text of ids in the first entry of the first row, or an empty text if there is none.
std::string textOfIds(const json::Element& data) {
    std::array<json::Element, 1> row, ids;
    if (data.leadingItems(row) == 0 || row[0].leadingItems(ids) == 0) return "";
    return std::string(ids[0].asText().value_or(""));
}

}  // namespace

std::optional<ParserError> failureOf(const std::vector<SyncEntry>& entries, std::size_t recordLists) {
    for (auto& entry : entries)
        if (auto failure = failureOf(entry); failure && failure->which() == ParserError::Case::responseError)
            return failure;
    for (std::size_t i = 0; i < std::min(recordLists, entries.size()); ++i)
        if (auto failure = failureOf(entries[i])) return failure;
    return std::nullopt;
}

std::optional<std::vector<std::string>> idsOfEntry(const json::Element& entry) {
    auto data = entry.find("data");
    if (data.kind() != ValueKind::list) return std::nullopt;
    std::vector<std::string> ids;
    for (auto& id : text::split(textOfIds(data), ","))
        if (!id.empty()) ids.push_back(id);
    return ids;
}

}  // namespace tarvo
