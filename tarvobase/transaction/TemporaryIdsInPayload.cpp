#include "tarvobase/transaction/TemporaryIdsInPayload.h"

#include <algorithm>
#include <cctype>

#include "platform/Json.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

void collectTemporaryIds(const Value& value, std::vector<std::string>& found) {
    if (auto text = value.asText()) {
        bool isKnown = std::find(found.begin(), found.end(), *text) != found.end();
        if (isTemporaryRecordId(*text) && !isKnown) found.emplace_back(*text);
    } else if (auto list = value.asList()) {
        for (auto& item : *list) collectTemporaryIds(item, found);
    } else if (auto map = value.asMap()) {
        for (auto& entry : *map) collectTemporaryIds(entry.value, found);
    }
}

/// What a user writes in a note names no record, though it may look like an id.
bool isFreeText(std::string_view key) {
    return key == FieldAPIConstant.Notes.noteTitle || key == FieldAPIConstant.Notes.noteContent;
}

/// Returns whether a character goes on with the id before it. Ids end with digits or with a UUID.
bool continuesId(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '-'; }

std::string replacedInText(std::string text, const std::string& formerId, const std::string& newId) {
    std::size_t at = 0;
    while ((at = text.find(formerId, at)) != std::string::npos) {
        auto end = at + formerId.size();
        bool isWhole = end == text.size() || !continuesId(text[end]);
        if (isWhole) text.replace(at, formerId.size(), newId);
        at = isWhole ? at + newId.size() : end;
    }
    return text;
}

}  // namespace

std::vector<std::string> temporaryIdsOf(const ValueMap& payload) {
    std::vector<std::string> found;
    for (auto& entry : payload)
        if (!isFreeText(entry.name)) collectTemporaryIds(entry.value, found);
    return found;
}

bool namesTemporaryId(const NTransaction& transaction) {
    if (!createsRecord(transaction.kind) && isTemporaryRecordId(transaction.recordId)) return true;
    auto named = temporaryIdsOf(transaction.payload);
    return std::any_of(named.begin(), named.end(), [&](auto& id) { return id != transaction.recordId; });
}

std::string withReplacedIds(const std::string& payload, const std::map<std::string, std::string>& identifiers) {
    auto text = payload;
    for (auto& [formerId, newId] : identifiers) {
        auto quoted = json::write(Value(newId)).value_or("");
        if (quoted.size() >= 2) text = replacedInText(std::move(text), formerId, quoted.substr(1, quoted.size() - 2));
    }
    return text;
}

}  // namespace tarvo
