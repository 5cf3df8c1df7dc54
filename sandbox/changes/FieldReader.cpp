#include "sandbox/changes/FieldReader.h"

#include <algorithm>

#include "platform/Text.h"
#include "platform/dates/WireDates.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {
namespace {

using Kind = RecordValue::Kind;
using ReadValue = Result<RecordValue, std::string>;

ReadValue takes(const std::string& expected) { return ReadValue::failure("takes " + expected); }

RecordValue textValue(std::string_view text) {
    RecordValue value;
    value.setText(text);
    return value;
}

ReadValue readText(const FieldInput& input) {
    const auto* text = input.json.asText();
    return text ? ReadValue(textValue(*text)) : takes("a text");
}

ReadValue readInteger(const FieldInput& input) {
    auto text = input.json.toText().value_or("?");
    bool isNumber = !input.json.asBool() && (text.empty() || text::toInteger(text));
    return isNumber ? ReadValue(textValue(text)) : takes("a whole number");
}

ReadValue readNumber(const FieldInput& input) {
    auto text = input.json.toText().value_or("?");
    bool isNumber = !input.json.asBool() && (text.empty() || text::toReal(text));
    return isNumber ? ReadValue(textValue(text)) : takes("a number");
}

ReadValue readFlag(const FieldInput& input) {
    auto text = input.json.asBool() || input.json.asText() ? input.json.toText().value_or("") : "?";
    bool isFlag = text.empty() || text == "true" || text == "false";
    return isFlag ? ReadValue(textValue(text)) : takes("true or false");
}

ReadValue readDate(const FieldInput& input) {
    const auto* text = input.json.asText();
    bool isDate = text && (text->empty() || platform::wire::readDateTime(*text + "T00:00:00Z"));
    return isDate ? ReadValue(textValue(*text)) : takes("a date like 2024-02-29");
}

ReadValue readDateTime(const FieldInput& input) {
    const auto* text = input.json.asText();
    bool isMoment = text && (text->empty() || platform::wire::readDateTime(*text));
    return isMoment ? ReadValue(textValue(*text)) : takes("a time like 2024-02-29T10:00:00+05:30");
}

// Alarms and repetitions come as a map from the type's name to the text.
ReadValue readMarked(const FieldInput& input) {
    const auto* map = input.json.asMap();
    auto content = map && map->size() == 1 ? map->find(input.field.data->type) : nullptr;
    if (content && (content->isNull() || content->asText())) return textValue(content->textOr(""));
    if (input.sender == Sender::control && input.json.asText()) return readText(input);
    return takes("a map of \"" + input.field.data->type + "\" and a text");
}

/// Returns the texts of a list, or of a text that joins them by ","; nullopt for anything else.
std::optional<std::vector<std::string>> textsOf(const Value& json) {
    std::vector<std::string> texts;
    if (const auto* joined = json.asText()) {
        if (!joined->empty()) texts = text::split(*joined, ",");
        return texts;
    }
    if (!json.asList()) return std::nullopt;
    for (const auto& item : *json.asList()) {
        if (!item.asText()) return std::nullopt;
        texts.push_back(*item.asText());
    }
    return texts;
}

ReadValue readTexts(const FieldInput& input) {
    auto texts = textsOf(input.json);
    if (!texts) return takes("a list of texts");
    auto value = emptyValue(*input.field.data);
    value.texts = std::move(*texts);
    return value;
}

std::optional<RecordData> pointed(const FieldInput& input, const RecordView& view, const std::string& id) {
    if (input.field.data->target == "se_module") return view.findAnywhere(id);
    return input.field.target ? view.list(input.field.target->module().name).find(id) : std::nullopt;
}

ReadValue readLookup(const FieldInput& input) {
    const auto* id = input.json.asText();
    if (!id) return takes("the id of a record");
    if (id->empty()) return emptyValue(*input.field.data);
    auto view = input.draft.view();
    auto record = pointed(input, view, *id);
    if (!record) return ReadValue::failure("names no record");
    auto value = textValue(*id);
    record->readTitle(value.shown);
    return value;
}

ReadValue readLookups(const FieldInput& input) {
    auto ids = textsOf(input.json);
    if (!ids) return takes("a list of ids");
    auto view = input.draft.view();
    for (const auto& id : *ids)
        if (!pointed(input, view, id)) return ReadValue::failure("names no record");
    return readTexts(input);
}

const UserData* userWithId(const DataSet& data, std::string_view id) {
    auto found =
        std::find_if(data.users.begin(), data.users.end(), [&](const UserData& user) { return user.id == id; });
    return found == data.users.end() ? nullptr : &*found;
}

ReadValue readUser(const FieldInput& input) {
    const auto* id = input.json.asText();
    if (!id) return takes("the id of a user");
    if (id->empty()) return emptyValue(*input.field.data);
    const auto* user = userWithId(input.data, *id);
    return user ? ReadValue(userValue(*user)) : ReadValue::failure("names no user");
}

// A participant is a user, a contact or a lead, or someone of whom only the address is known.
ReadValue readParticipant(const FieldInput& input) {
    const auto* id = input.json.asText();
    if (!id) return takes("the id of a person");
    auto view = input.draft.view();
    bool isKnown = id->find('@') != std::string::npos || userWithId(input.data, *id) ||
                   view.list("Contacts").find(*id) || view.list("Leads").find(*id);
    return isKnown ? ReadValue(textValue(*id)) : ReadValue::failure("names no person");
}

ReadValue readLayout(const FieldInput& input) {
    const auto* id = input.json.asText();
    for (const auto& layout : input.data.metadata.find(input.shape.module().name)->second.layouts) {
        if (!id || layout.id != *id || !layout.isAccessible) continue;
        auto value = textValue(*id);
        value.shown.assign({layout.name});
        return value;
    }
    return ReadValue::failure("names no layout");
}

ReadValue readTags(const FieldInput& input) {
    if (!input.json.asList()) return takes("a list of tags");
    auto value = emptyValue(*input.field.data);
    value.kind = Kind::rows;
    for (const auto& item : *input.json.asList()) {
        const auto* map = item.asMap();
        const auto* id = map && map->find("id") ? map->find("id")->asText() : nullptr;
        const auto* name = map && map->find("name") ? map->find("name")->asText() : nullptr;
        if (!id || !name) return takes("tags with \"id\" and \"name\"");
        value.rows.push_back({{{"id", "[\"id\",", textValue(*id)}, {"name", "[\"name\",", textValue(*name)}}});
    }
    return value;
}

RecordEntry* entryOf(RecordRow& row, std::string_view name) {
    auto found = std::find_if(row.entries.begin(), row.entries.end(),
                              [&](const RecordEntry& entry) { return entry.name == name; });
    return found == row.entries.end() ? nullptr : &*found;
}

RecordRow newRow(const RecordShape& shape, const std::string& id) {
    RecordRow row;
    for (const auto& field : shape.fields())
        if (field.name != "record_id") row.entries.push_back({field.name, field.entryStart, emptyValue(*field.data)});
    if (auto* entry = entryOf(row, "id")) entry->value.setText(id);
    return row;
}

/// Returns the row that the map continues: a known one by its id, otherwise a new one.
Result<RecordRow, std::string> beginRow(const FieldInput& input, const ValueMap& map) {
    using Begun = Result<RecordRow, std::string>;
    const auto* id = map.find("id");
    if (!id || id->isNull()) {
        if (input.draft.isFull(*input.field.target)) return Begun::failure("has too many rows");
        return newRow(*input.field.target, input.draft.newRowId(*input.field.target));
    }
    if (id->asText() && input.before)
        for (auto row : input.before->rows)
            if (auto* entry = entryOf(row, "id"); entry && entry->value.text == *id->asText()) return row;
    return Begun::failure("names no row of this record");
}

Result<RecordRow, std::string> readRow(const FieldInput& input, const ValueMap& map) {
    using ReadRow = Result<RecordRow, std::string>;
    const auto& shape = *input.field.target;
    auto begun = beginRow(input, map);
    if (!begun) return begun.error();
    auto row = *begun;
    for (const auto& [name, json] : map) {
        const auto* field = shape.field(name);
        if (!field) return ReadRow::failure("has a row with a field that the module lacks");
        auto* entry = entryOf(row, name);
        auto value =
            readField({input.data, input.draft, input.sender, shape, *field, json, entry ? &entry->value : nullptr});
        if (isIgnored(*field, input.sender) || field->data->isKey || !entry) {
            if (!value && json.asText() && isTemporaryId(*json.asText())) return ReadRow::failure(value.error());
            continue;
        }
        if (!value) return ReadRow::failure("has a row whose \"" + name + "\" " + value.error());
        entry->value = std::move(*value);
    }
    return row;
}

// The list that is sent is the list: rows that it does not name are gone.
ReadValue readRows(const FieldInput& input) {
    const auto* list = input.json.asList();
    if (!list || !input.field.target) return takes("a list of rows");
    auto value = emptyValue(*input.field.data);
    for (const auto& item : *list) {
        if (!item.asMap()) return takes("a list of rows");
        auto row = readRow(input, *item.asMap());
        if (!row) return ReadValue::failure(row.error());
        value.rows.push_back(std::move(*row));
    }
    return value;
}

using Reader = ReadValue (*)(const FieldInput& input);

struct NamedReader {
    std::string_view name;
    Reader read;
};

constexpr NamedReader byFieldName[] = {{"Tag", readTags}, {"Layout", readLayout}, {"participant", readParticipant}};

constexpr NamedReader byFieldType[] = {
    {"integer", readInteger},
    {"bigint", readInteger},
    {"double", readNumber},
    {"decimal", readNumber},
    {"currency", readNumber},
    {"boolean", readFlag},
    {"event_reminder", readFlag},
    {"date", readDate},
    {"datetime", readDateTime},
    {"RRULE", readMarked},
    {"ALARM", readMarked},
    {"lookup", readLookup},
    {"multiselectlookup", readLookups},
    {"multiselectpicklist", readTexts},
    {"ownerlookup", readUser},
    {"userlookup", readUser},
    {"subform", readRows},
    {"event_participant", readRows},
};

Reader readerOf(const RecordShape::Field& field) {
    for (const auto& row : byFieldName)
        if (row.name == field.name) return row.read;
    for (const auto& row : byFieldType)
        if (row.name == field.data->type) return row.read;
    return readText;
}

/// Returns whether people write what they like into the field, so that it may look like an id.
bool isFreeText(const RecordShape::Field& field) {
    if (field.data->isReadOnly || field.data->isKey || field.name == "Layout" || field.name == "participant")
        return false;
    for (std::string_view type : {"text", "textarea", "email", "phone", "website"})
        if (field.data->type == type) return true;
    return false;
}

// A record that is saved whole may name what has been deleted in the meantime.
bool isUnchanged(const FieldInput& input) {
    if (!input.before || !input.json.asText()) return false;
    bool isJoined = input.before->kind == Kind::texts;
    return *input.json.asText() == (isJoined ? text::join(input.before->texts, ",") : input.before->text);
}

bool holdsTemporaryId(const Value& json) {
    if (const auto* joined = json.asText()) return std::ranges::any_of(text::split(*joined, ","), isTemporaryId);
    if (const auto* list = json.asList()) return std::ranges::any_of(*list, holdsTemporaryId);
    if (const auto* map = json.asMap())
        return std::any_of(map->begin(), map->end(), [](const auto& entry) { return holdsTemporaryId(entry.value); });
    return false;
}

}  // namespace

Result<RecordValue, std::string> readField(const FieldInput& input) {
    const auto& field = input.field;
    bool hasRows = readerOf(field) == readRows;
    if (!hasRows && !isFreeText(field) && holdsTemporaryId(input.json))
        return ReadValue::failure("names a temporary id");
    if (input.json.isNull()) return emptyValue(*field.data);
    if (isUnchanged(input)) return *input.before;
    return readerOf(field)(input);
}

bool isIgnored(const RecordShape::Field& field, Sender sender) {
    return field.data->isReadOnly && sender == Sender::client;
}

RecordValue emptyValue(const FieldData& field) {
    RecordValue value;
    value.kind = Kind::text;
    if (field.type == "multiselectpicklist" || field.type == "multiselectlookup") value.kind = Kind::texts;
    // Without a list of tags, clients keep those that they know.
    if (field.type == "subform" || field.type == "event_participant" || field.apiName == "Tag") value.kind = Kind::rows;
    return value;
}

RecordValue userValue(const UserData& user) {
    auto value = textValue(user.id);
    value.shown = {user.lastName, user.firstName, user.name()};
    return value;
}

bool isTemporaryId(std::string_view id) {
    constexpr std::string_view prefix = "NEW_";
    constexpr std::size_t digits = 9;
    if (id.starts_with("TarvoTEMPID#")) return true;
    return id.starts_with(prefix) && id.size() == prefix.size() + digits &&
           std::all_of(id.begin() + prefix.size(), id.end(), [](unsigned char c) { return c >= '0' && c <= '9'; });
}

}  // namespace tarvo::sandbox
