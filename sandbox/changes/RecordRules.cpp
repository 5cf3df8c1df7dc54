#include "sandbox/changes/RecordRules.h"

#include <algorithm>

#include "platform/Text.h"
#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {
namespace {

template <class T>
struct NamedCase {
    std::string_view name;
    T value;
};

constexpr NamedCase<ChangeKind> kindNames[] = {{"add", ChangeKind::add},
                                               {"edit", ChangeKind::edit},
                                               {"delete", ChangeKind::remove},
                                               {"upload", ChangeKind::upload}};

constexpr NamedCase<AnswerForm> formNames[] = {{"record", AnswerForm::record},
                                               {"id", AnswerForm::id},
                                               {"recordId", AnswerForm::recordId},
                                               {"texts", AnswerForm::texts},
                                               {"topLevel", AnswerForm::topLevel}};

template <class T, std::size_t count>
std::optional<T> caseNamed(const NamedCase<T> (&cases)[count], std::string_view name) {
    for (const auto& each : cases)
        if (each.name == name) return each.value;
    return std::nullopt;
}

/// Reads a list of texts, each of which `accept` takes; a member that is absent is an empty list.
bool readList(const ValueMap& json, std::string_view name, auto&& accept) {
    const auto* value = json.find(name);
    if (!value) return true;
    const auto* list = value->asList();
    return list && std::all_of(list->begin(), list->end(),
                               [&](const Value& item) { return item.asText() && accept(*item.asText()); });
}

bool readFlag(const ValueMap& json, std::string_view name, bool& into) {
    const auto* value = json.find(name);
    if (value) into = value->asBool().value_or(false);
    return !value || value->asBool();
}

Refusal missing(const std::string& field) {
    return {"crmMANDATORY_NOT_FOUND", "Mandatory field not found", ValueMap{{"api_name", field}}};
}

bool isEmpty(const RecordValue& value) { return value.display().empty() && value.rows.empty(); }

/// Returns another record that has the same value; nullopt when there is none.
std::optional<RecordData> duplicateOf(const RecordView& view, const RecordData& record, const std::string& field) {
    auto wanted = text::asciiLowercase(record.value(field).display());
    if (wanted.empty()) return std::nullopt;
    auto list = view.list(record.module());
    RecordValue value;
    for (std::size_t i = 0; i < list.size(); ++i) {
        auto other = list.at(i);
        if (!other || other->number() == record.number()) continue;
        other->read(field, value);
        if (text::asciiLowercase(value.display()) == wanted) return other;
    }
    return std::nullopt;
}

}  // namespace

std::string_view changeKindName(ChangeKind kind) {
    for (const auto& each : kindNames)
        if (each.value == kind) return each.name;
    return "";
}

Result<RecordRules, std::string> parseRules(const ValueMap& json, const RecordShape& shape) {
    using Parsed = Result<RecordRules, std::string>;
    RecordRules rules;
    auto fieldInto = [&](std::vector<std::string>& names) {
        return [&](const std::string& name) {
            names.push_back(name);
            return shape.field(name) != nullptr;
        };
    };
    auto kindInto = [&](const std::string& name) {
        auto kind = caseNamed(kindNames, name);
        if (kind) rules.refuse.push_back(*kind);
        return kind.has_value();
    };
    if (!readList(json, "mandatory", fieldInto(rules.mandatory)) || !readList(json, "unique", fieldInto(rules.unique)))
        return Parsed::failure("\"mandatory\" and \"unique\" list API names of the module's fields.");
    if (!readList(json, "refuse", kindInto))
        return Parsed::failure("\"refuse\" lists \"add\", \"edit\", \"delete\" or \"upload\".");
    if (!readFlag(json, "keepKeys", rules.keepKeys) || !readFlag(json, "errorObjects", rules.hasErrorObjects))
        return Parsed::failure("\"keepKeys\" and \"errorObjects\" are true or false.");
    if (const auto* answer = json.find("answer")) {
        rules.answer = caseNamed(formNames, answer->textOr(""));
        if (!rules.answer)
            return Parsed::failure("\"answer\" is \"record\", \"id\", \"recordId\", \"texts\" or \"topLevel\".");
    }
    return rules;
}

std::optional<Refusal> refusalOfKind(const RecordRules& rules, ChangeKind kind) {
    if (std::find(rules.refuse.begin(), rules.refuse.end(), kind) == rules.refuse.end()) return std::nullopt;
    return Refusal{"crmNO_PERMISSION", "Permission denied", ValueMap{{"operation", changeKindName(kind)}}};
}

std::optional<Refusal> refusalOfRecord(const RecordRules& rules, const RecordView& view, const RecordData& record) {
    for (const auto& field : rules.mandatory)
        if (isEmpty(record.value(field))) return missing(field);
    for (const auto& field : rules.unique)
        if (auto other = duplicateOf(view, record, field))
            return Refusal{"crmINVALID_DATA", "Duplicate value", ValueMap{{"api_name", field}, {"id", other->id()}}};
    return std::nullopt;
}

}  // namespace tarvo::sandbox
