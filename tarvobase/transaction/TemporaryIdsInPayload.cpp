#include "tarvobase/transaction/TemporaryIdsInPayload.h"

#include <algorithm>

#include "platform/Text.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

void collectTemporaryIds(const Value& value, std::vector<std::string>& found) {
    if (auto joined = value.asText()) {
        for (auto& id : text::split(*joined, ",")) {
            bool isKnown = std::find(found.begin(), found.end(), id) != found.end();
            if (isTemporaryRecordId(id) && !isKnown) found.push_back(id);
        }
    } else if (auto list = value.asList()) {
        for (auto& item : *list) collectTemporaryIds(item, found);
    } else if (auto map = value.asMap()) {
        for (auto& entry : *map) collectTemporaryIds(entry.value, found);
    }
}

Value withReplacedIds(const Value& value, const std::map<std::string, std::string>& identifiers) {
    if (auto joined = value.asText()) {
        auto ids = text::split(*joined, ",");
        for (auto& id : ids)
            if (auto found = identifiers.find(id); found != identifiers.end()) id = found->second;
        return text::join(ids, ",");
    }
    if (auto list = value.asList()) {
        ValueList replaced;
        for (auto& item : *list) replaced.push_back(withReplacedIds(item, identifiers));
        return replaced;
    }
    if (auto map = value.asMap()) {
        ValueMap replaced;
        for (auto& entry : *map) replaced.set(entry.name, withReplacedIds(entry.value, identifiers));
        return replaced;
    }
    return value;
}

}  // namespace

std::vector<std::string> temporaryIdsOf(const NTransaction& transaction, const FreeText& freeText) {
    std::vector<std::string> found;
    for (auto& entry : transaction.payload) {
        auto known = found;
        collectTemporaryIds(entry.value, found);
        if (found.size() > known.size() && freeText.holds(transaction.module.rawValue(), entry.name))
            found = std::move(known);
    }
    return found;
}

bool namesTemporaryId(const NTransaction& transaction, const FreeText& freeText) {
    if (!createsRecord(transaction.kind) && isTemporaryRecordId(transaction.recordId)) return true;
    auto named = temporaryIdsOf(transaction, freeText);
    return std::any_of(named.begin(), named.end(), [&](auto& id) { return id != transaction.recordId; });
}

bool replaceIds(NTransaction& transaction, const std::map<std::string, std::string>& identifiers,
                const FreeText& freeText) {
    auto payload = transaction.payload;
    for (auto& entry : transaction.payload) {
        auto replaced = withReplacedIds(entry.value, identifiers);
        if (replaced != entry.value && !freeText.holds(transaction.module.rawValue(), entry.name))
            payload.set(entry.name, std::move(replaced));
    }
    bool hasChanged = payload != transaction.payload;
    transaction.payload = std::move(payload);
    return hasChanged;
}

}  // namespace tarvo
