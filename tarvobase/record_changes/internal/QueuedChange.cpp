#include "tarvobase/record_changes/internal/QueuedChange.h"

#include <algorithm>

#include "platform/Json.h"
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

}  // namespace

QueuedChange::QueuedChange(Transaction row) : transaction(std::move(row)) {
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
    if (body) visitTexts(*body, note);
}

Transaction withReplacedId(Transaction transaction, const std::string& formerId, const std::string& newId) {
    if (transaction.recordID == formerId) transaction.recordID = newId;
    if (transaction.parentRecordID == formerId) transaction.parentRecordID = newId;
    auto former = quotedJson(formerId), replacement = quotedJson(newId);
    transaction.uriData = withReplacedText(transaction.uriData, former, replacement);
    if (transaction.dataJSON) transaction.dataJSON = withReplacedText(*transaction.dataJSON, former, replacement);
    return transaction;
}

}  // namespace tarvo
