#include "tarvobase/record_changes/internal/QueuedChange.h"

#include <algorithm>

#include "platform/Json.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/utils/ReplacedTexts.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

/// Calls `visit` with each text of a value, however deeply it is nested.
template <class Visit>
void visitTexts(const Value& value, const Visit& visit) {
    if (auto text = value.asText()) return visit(*text);
    if (auto list = value.asList())
        for (auto& item : *list) visitTexts(item, visit);
    if (auto map = value.asMap())
        for (auto& entry : *map) visitTexts(entry.value, visit);
}

std::string quotedJson(const std::string& text) { return json::write(Value(text)).value_or("\"\""); }

platform::Data withReplacedText(const platform::Data& data, const std::string& former, const std::string& replacement) {
    std::string text(data.view());
    for (auto at = text.find(former); at != std::string::npos; at = text.find(former, at + replacement.size()))
        text.replace(at, former.size(), replacement);
    return platform::Data(std::move(text));
}

/// Returns the payload of a body, which is the first of its list, or null.
const ValueMap* payloadIn(const Value& body) {
    auto data = body.asMap() ? body.asMap()->find("data") : nullptr;
    auto list = data ? data->asList() : nullptr;
    return list && !list->empty() ? list->front().asMap() : nullptr;
}

/// Returns the body with an id replaced where it is no free text. Bodies without such text keep their form.
platform::Data bodyWithReplacedId(const Transaction& transaction, const std::string& formerId, const std::string& newId,
                                  const FreeText& freeText) {
    auto& body = *transaction.dataJSON;
    auto former = quotedJson(formerId);
    auto parsed = body.view().find(former) == std::string_view::npos ? std::nullopt : json::parse(body);
    auto found = parsed ? payloadIn(*parsed) : nullptr;
    if (!found) return withReplacedText(body, former, quotedJson(newId));
    ValueMap written;
    auto payload = *found;
    for (auto& entry : *found)
        if (entry.value == Value(formerId) && freeText.holds(transaction.moduleName, entry.name))
            written.set(entry.name, entry.value);
    if (written.empty()) return withReplacedText(body, former, quotedJson(newId));
    replaceTexts(payload, formerId, newId);
    payload.merge(written);
    return ChangePayload::body(payload).value_or(body);
}

}  // namespace

QueuedChange::QueuedChange(Transaction row, const FreeText& freeText) : transaction(std::move(row)) {
    auto note = [&](const std::string& id) {
        bool isOwnAdd = transaction.operationType == TransactionType::addRecord && id == transaction.recordID;
        if (isOwnAdd || !isTemporaryRecordId(id)) return;
        if (std::find(temporaryIds.begin(), temporaryIds.end(), id) == temporaryIds.end()) temporaryIds.push_back(id);
    };
    // What is sent of an upload's own row is its file.
    if (transaction.operationType != TransactionType::addAttachment) note(transaction.recordID);
    if (transaction.parentRecordID) note(*transaction.parentRecordID);
    auto parameters = json::parse(transaction.uriData);
    auto body = transaction.dataJSON ? json::parse(*transaction.dataJSON) : std::nullopt;
    hasParameters = parameters && parameters->asMap();
    if (parameters) visitTexts(*parameters, note);
    auto payload = body ? payloadIn(*body) : nullptr;
    if (body && !payload) visitTexts(*body, note);
    if (!payload) return;
    for (auto& entry : *payload)
        visitTexts(entry.value, [&](const std::string& id) {
            if (isTemporaryRecordId(id) && !freeText.holds(transaction.moduleName, entry.name)) note(id);
        });
}

Transaction withReplacedId(Transaction transaction, const std::string& formerId, const std::string& newId,
                           const FreeText& freeText) {
    if (transaction.recordID == formerId) transaction.recordID = newId;
    if (transaction.parentRecordID == formerId) transaction.parentRecordID = newId;
    transaction.uriData = withReplacedText(transaction.uriData, quotedJson(formerId), quotedJson(newId));
    if (transaction.dataJSON) transaction.dataJSON = bodyWithReplacedId(transaction, formerId, newId, freeText);
    return transaction;
}

}  // namespace tarvo
