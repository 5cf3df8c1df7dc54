#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"

#include <algorithm>

#include "platform/Result.h"
#include "tarvobase/network_layer/AnswerBody.h"
#include "tarvobase/network_layer/TypedReads.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/utils/Util.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using Silence = ChangeAnswer::Silence;

ChangeAnswer ofWholeRequest(ChangeAnswer answer) {
    answer.isOfWholeRequest = true;
    return answer;
}

ChangeAnswer answerOfFailure(const NetworkError& error) {
    using Kind = NetworkError::Kind;
    switch (error.kind) {
        case Kind::file:
            // As no answer, the upload would hold up all other changes for ever.
            return ofWholeRequest(ChangeAnswer::refused(ErrorResponse::fileNotReadable()));
        case Kind::tooLarge:
            return ChangeAnswer::unreadable();
        case Kind::notSent:
            return ChangeAnswer::unsent(Silence::notSignedIn);
        case Kind::cannotConnect:
        case Kind::certificate:
        case Kind::invalidURL:
            return ChangeAnswer::unsent(Silence::noConnection);
        case Kind::timeout:
            return ChangeAnswer::noAnswer(Silence::timeout);
        case Kind::shutDown:
            return ChangeAnswer::noAnswer(Silence::shutDown);
        case Kind::outdated:
            return ChangeAnswer::noAnswer(Silence::outdated);
        default:
            return ChangeAnswer::noAnswer(Silence::noConnection);
    }
}

/// Returns the outcome of a request that has no answer, and nullopt for one that has.
std::optional<ChangeAnswer> withoutAnswer(const NetworkAnswer& answer) {
    if (answer.error) return answerOfFailure(*answer.error);
    switch (answer.response ? answer.response->statusCode : 200) {
        case 401:
            return ChangeAnswer::unsent(Silence::notSignedIn);
        case 429:
            return ChangeAnswer::unsent(Silence::busy);
        case 503:
            return ChangeAnswer::noAnswer(Silence::busy);
        default:
            return std::nullopt;
    }
}

std::optional<ErrorResponse> refusalIn(const ValueList& errors, const std::optional<ValueMap>& details) {
    if (auto refusal = ErrorResponse::fromErrorList(errors, details)) return refusal;
    for (auto& error : errors) {
        auto map = error.asMap();
        auto read = map ? ErrorResponse::fromJSON(*map) : ParsingError{};
        if (!read) continue;
        auto refusal = *std::move(read);
        if (!refusal.details) refusal.details = details;
        return refusal;
    }
    return std::nullopt;
}

/// Returns the outcome that a list of errors stands for. An empty list stands for none.
std::optional<ChangeAnswer> answerOfErrors(const std::optional<ValueList>& errors,
                                           const std::optional<ValueMap>& details = std::nullopt) {
    if (!errors || errors->empty()) return std::nullopt;
    auto refusal = refusalIn(*errors, details);
    return refusal ? ChangeAnswer::refused(*std::move(refusal)) : ChangeAnswer::unreadable();
}

ValueMap infoOf(const ValueMap& entry) { return readKey<ValueMap>(entry, "info").value_or(ValueMap()); }

using EntryResult = Result<ValueMap, ChangeAnswer>;

/// Returns the outcome of an entry with errors.
std::optional<ChangeAnswer> failureOf(const ValueMap& entry) {
    return answerOfErrors(readKey<ValueList>(entry, "error"), readKey<ValueMap>(infoOf(entry), "details"));
}

using EntriesResult = Result<ValueList, ChangeAnswer>;

/// Returns the entries of an answer, or the outcome of an answer that has none or an error of its own.
EntriesResult entriesIn(const ValueMap& body) {
    if (auto failed = answerOfErrors(readKey<ValueList>(body, "error"))) return ofWholeRequest(*std::move(failed));
    auto response = readKey<ValueMap>(body, "response");
    if (!response) return ChangeAnswer::unreadable();
    if (auto error = readKey<ValueMap>(*response, "error"))
        return ofWholeRequest(*answerOfErrors(ValueList{Value(*error)}));
    auto result = readKey<ValueList>(*response, "result");
    if (!result) return ChangeAnswer::unreadable();
    return *std::move(result);
}

/// Returns the first entry of an answer, or the outcome of an answer that has none or an error in it.
EntryResult firstEntryIn(const ValueMap& body) {
    auto entries = entriesIn(body);
    if (!entries) return entries.error();
    auto entry = readIndex<ValueMap>(entries.value(), 0);
    if (!entry) return ChangeAnswer::unreadable();
    if (auto failed = failureOf(*entry)) return *failed;
    return *std::move(entry);
}

EntryResult firstEntryOf(const NetworkAnswer& answer) {
    auto body = AnswerBody::value(answer.body);
    return body && body->asMap() ? firstEntryIn(*body->asMap()) : EntryResult(ChangeAnswer::unreadable());
}

/// The server writes ids as texts; a whole number is taken for its digits.
std::string idText(const Value& id) {
    if (auto number = id.asInteger()) return std::to_string(*number);
    return id.textOr("");
}

bool isListOfLists(const Value& value) {
    auto list = value.asList();
    return list && !list->empty() && list->front().asList();
}

/// What an entry says of the record: its id, empty if there is none, and the record as far as it is there.
struct NamedRecord {
    std::string id;
    std::optional<ValueMap> record = std::nullopt;
};

NamedRecord recordIn(const ValueMap& dictionary) {
    constexpr auto key = RecordConstants::FieldAPINames::Id;
    NamedRecord named{idText(dictionary.valueOf(key))};
    if (dictionary.size() > 1) named.record = dictionary;
    return named;
}

NamedRecord namedIn(const ValueList& data) {
    if (data.empty()) return {};
    auto& first = data.front();
    if (auto map = first.asMap()) return recordIn(*map);
    if (isListOfLists(first)) {
        auto records = ModuleParser::parseRecord(ValueList{Value(first)}, "").records;
        return records.empty() ? NamedRecord() : recordIn(records.front());
    }
    // An entry of the id, which is a name and a value.
    auto pair = first.asList();
    if (pair && pair->size() >= 2 && pair->front() == Value(RecordConstants::FieldAPINames::Id))
        return {idText((*pair)[1])};
    auto isText = [](const Value& value) { return value.asText() != nullptr; };
    if (data.size() >= 3 && std::all_of(data.begin(), data.begin() + 3, isText)) return {*first.asText()};
    return {};
}

bool isServersId(const std::string& id) { return !id.empty() && !isTempId(id) && !isNewRecordId(id); }

/// Returns the record that an entry names in its data, in its info, or in both alike; nullopt if they differ.
std::optional<NamedRecord> namedIn(const ValueMap& entry) {
    auto named = namedIn(readKey<ValueList>(entry, "data").value_or(ValueList()));
    auto inInfo = idText(infoOf(entry).valueOf("recordId"));
    if (named.id.empty()) named.id = inInfo;
    bool differs = !inInfo.empty() && inInfo != named.id;
    return differs ? std::nullopt : std::optional(std::move(named));
}

/// Returns the outcome of an entry without errors.
ChangeAnswer acceptedBy(const ValueMap& entry, const std::string* editedId) {
    auto named = namedIn(entry);
    if (!named || !isServersId(named->id) || (editedId && named->id != *editedId)) return ChangeAnswer::unreadable();
    return ChangeAnswer::accepted(std::move(named->id), std::move(named->record));
}

ChangeAnswer answerWithRecord(const NetworkAnswer& answer, const std::string* editedId) {
    if (auto none = withoutAnswer(answer)) return *none;
    auto entry = firstEntryOf(answer);
    return entry ? acceptedBy(*entry, editedId) : entry.error();
}

ChangeAnswer importedBy(const Value& value) {
    auto entry = value.asMap();
    if (!entry) return ChangeAnswer::unreadable();
    if (auto failed = failureOf(*entry)) return *failed;
    auto record = readKey<ValueList>(*entry, "record").value_or(ValueList());
    auto id = record.empty() ? std::string() : record.front().textOr("");
    return isServersId(id) ? ChangeAnswer::accepted(std::move(id)) : acceptedBy(*entry, nullptr);
}

constexpr std::string_view timesOfNote[] = {FieldAPIConstant.createdTime, FieldAPIConstant.modifiedTime};

ValueMap timesIn(const ValueMap& record) {
    ValueMap times;
    for (auto name : timesOfNote)
        if (auto time = record.find(name)) times.set(name, *time);
    return times;
}

/// Returns the times in a list of an id and two times.
std::optional<ValueMap> timesIn(const ValueList& data) {
    if (data.size() < 3) return std::nullopt;
    ValueMap times;
    times.set(timesOfNote[0], data[1]);
    times.set(timesOfNote[1], data[2]);
    for (auto& time : times)
        if (!Util::DateFormatters::iso8601DateFormatter().date(time.value.textOr(""))) return std::nullopt;
    return times;
}

ChangeAnswer answerWithTimes(const NetworkAnswer& answer, const std::string* editedId) {
    if (auto none = withoutAnswer(answer)) return *none;
    auto entry = firstEntryOf(answer);
    if (!entry) return entry.error();
    auto accepted = acceptedBy(*entry, editedId);
    if (accepted.outcome != ChangeAnswer::Outcome::accepted) return accepted;
    auto data = readKey<ValueList>(*entry, "data").value_or(ValueList());
    bool isTexts = !data.empty() && data.front().asText();
    auto times = isTexts ? timesIn(data) : timesIn(accepted.record.value_or(ValueMap()));
    if (!times) return ChangeAnswer::unreadable();
    accepted.record = times->empty() ? std::nullopt : std::move(times);
    return accepted;
}

}  // namespace

ChangeAnswer ChangeAnswerParser::ofAdd(const NetworkAnswer& answer) { return answerWithRecord(answer, nullptr); }
ChangeAnswer ChangeAnswerParser::ofEdit(const NetworkAnswer& answer, const std::string& recordId) {
    return answerWithRecord(answer, &recordId);
}

ChangeAnswer ChangeAnswerParser::ofAddedNote(const NetworkAnswer& answer) { return answerWithTimes(answer, nullptr); }
ChangeAnswer ChangeAnswerParser::ofEditedNote(const NetworkAnswer& answer, const std::string& recordId) {
    return answerWithTimes(answer, &recordId);
}

ImportAnswer ChangeAnswerParser::ofImport(const NetworkAnswer& answer, std::size_t count) {
    if (auto none = withoutAnswer(answer)) return *none;
    auto body = AnswerBody::value(answer.body);
    if (!body || !body->asMap()) return ChangeAnswer::unreadable();
    auto entries = entriesIn(*body->asMap());
    if (!entries) return entries.error();
    if (entries->size() != count) return ChangeAnswer::unreadable();
    std::vector<ChangeAnswer> answers;
    for (auto& entry : entries.value()) answers.push_back(importedBy(entry));
    return answers;
}

ChangeAnswer ChangeAnswerParser::ofDelete(const NetworkAnswer& answer, const std::string& recordId) {
    if (auto none = withoutAnswer(answer)) return *none;
    auto entry = firstEntryOf(answer);
    if (!entry) return entry.error();
    auto named = namedIn(*entry);
    if (!named || (!named->id.empty() && named->id != recordId)) return ChangeAnswer::unreadable();
    return ChangeAnswer::accepted(recordId);
}

ChangeAnswer ChangeAnswerParser::ofUpload(const NetworkAnswer& answer) {
    if (auto none = withoutAnswer(answer)) return *none;
    auto body = AnswerBody::value(answer.body);
    if (!body || !body->asMap()) return ChangeAnswer::unreadable();
    auto entry = firstEntryIn(*body->asMap());
    if (!entry && entry.error().outcome == ChangeAnswer::Outcome::refused) return entry.error();
    for (auto& source : {entry ? *entry : ValueMap(), *body->asMap()}) {
        auto data = readKey<ValueList>(source, "data").value_or(ValueList());
        auto id = data.size() == 1 && data.front().asText() ? *data.front().asText() : namedIn(data).id;
        if (isServersId(id)) return ChangeAnswer::accepted(std::move(id));
    }
    return ChangeAnswer::unreadable();
}

}  // namespace tarvo
