#include "sandbox/data/Records.h"

#include "platform/Json.h"
#include "platform/Text.h"
#include "sandbox/JsonText.h"
#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {
namespace {

void writeList(std::string& json, const std::vector<std::string>& texts) {
    json += '[';
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0) json += ',';
        appendJsonText(json, texts[i]);
    }
    json += ']';
}

void writeEntry(std::string& json, std::string_view start, const RecordValue& value);

void writeRow(std::string& json, const RecordRow& row) {
    json += '[';
    bool isFirst = true;
    for (const auto& [name, start, value] : row.entries) {
        if (value.kind == RecordValue::Kind::absent) continue;
        if (!isFirst) json += ',';
        isFirst = false;
        writeEntry(json, start, value);
    }
    json += ']';
}

void writeValue(std::string& json, const RecordValue& value) {
    switch (value.kind) {
        case RecordValue::Kind::absent:
            json += "\"\"";
            return;
        case RecordValue::Kind::text:
            return appendJsonText(json, value.text);
        case RecordValue::Kind::texts:
            return writeList(json, value.texts);
        case RecordValue::Kind::rows:
            json += '[';
            for (std::size_t i = 0; i < value.rows.size(); ++i) {
                if (i > 0) json += ',';
                writeRow(json, value.rows[i]);
            }
            json += ']';
            return;
    }
}

void writeEntry(std::string& json, std::string_view start, const RecordValue& value) {
    json += start;
    writeValue(json, value);
    if (!value.shown.empty()) {
        json += ',';
        if (value.shown.size() == 1)
            appendJsonText(json, value.shown.front());
        else
            writeList(json, value.shown);
    }
    json += ']';
}

void writeMember(std::string& json, std::string_view name, const RecordValue& value);

void writeMapOfRow(std::string& json, const RecordRow& row) {
    json += '{';
    for (const auto& entry : row.entries) writeMember(json, entry.name, entry.value);
    json += '}';
}

// Appends a member to a map, whose text ends with "{" before the first one.
void writeMember(std::string& json, std::string_view name, const RecordValue& value) {
    if (value.kind == RecordValue::Kind::absent) return;
    if (json.back() != '{') json += ',';
    appendJsonText(json, name);
    json += ':';
    if (value.kind != RecordValue::Kind::rows) return writeValue(json, value);
    json += '[';
    for (std::size_t i = 0; i < value.rows.size(); ++i) {
        if (i > 0) json += ',';
        writeMapOfRow(json, value.rows[i]);
    }
    json += ']';
}

/// Returns the value of a field: the stored one, or the snapshot's, for which `scratch` lends its memory.
const RecordValue& fieldValue(const RecordShape& shape, const RecordShape::Field& field, std::size_t number,
                              const StoredRecord* stored, RecordValue& scratch) {
    if (stored) return stored->values[shape.indexOf(field)];
    shape.read(field, number, scratch);
    return scratch;
}

void readField(const RecordShape& shape, const RecordShape::Field& field, std::size_t number,
               const StoredRecord* stored, RecordValue& into) {
    if (stored)
        into = stored->values[shape.indexOf(field)];
    else
        shape.read(field, number, into);
}

}  // namespace

std::string RecordValue::display() const {
    if (kind == Kind::texts) return text::join(texts, ",");
    if (shown.empty()) return text;
    return shown.size() == 3 ? shown.back() : text::join(shown, ",");
}

void RecordValue::clear() {
    kind = Kind::absent;
    text.clear();
    texts.clear();
    rows.clear();
    shown.clear();
}

void RecordValue::setText(std::string_view value) {
    kind = Kind::text;
    text = value;
}

const std::string& RecordData::module() const { return shape_->module().name; }

std::string RecordData::id() const { return shape_->id(number_); }

std::int64_t RecordData::createdTime() const { return stored_ ? stored_->createdTime : shape_->createdTime(number_); }

std::int64_t RecordData::modifiedTime() const {
    return stored_ ? stored_->modifiedTime : shape_->modifiedTime(number_);
}

std::int64_t RecordData::addedAt() const {
    return stored_ ? stored_->addedAt : shape_->createdTime(number_) * millisecondsOfSecond;
}

RecordValue RecordData::value(std::string_view apiName) const {
    RecordValue value;
    read(apiName, value);
    return value;
}

void RecordData::read(std::string_view apiName, RecordValue& into) const {
    if (const auto* field = shape_->field(apiName))
        readField(*shape_, *field, number_, stored_, into);
    else
        into.clear();
}

void RecordData::readTitle(std::vector<std::string>& into) const {
    shape_->readTitle([&](const RecordShape::Field& field,
                          RecordValue& value) { readField(*shape_, field, number_, stored_, value); },
                      into);
}

std::vector<RecordValue> RecordData::values() const {
    if (stored_) return stored_->values;
    std::vector<RecordValue> values(shape_->fields().size());
    for (std::size_t i = 0; i < values.size(); ++i) shape_->read(shape_->fields()[i], number_, values[i]);
    return values;
}

RecordRow RecordData::row() const {
    RecordRow row;
    auto all = values();
    for (const auto& field : shape_->fields())
        if (field.name != "record_id")
            row.entries.push_back({field.name, field.entryStart, std::move(all[shape_->indexOf(field)])});
    return row;
}

void RecordData::write(std::string& json, RecordValue& scratch) const {
    json += '[';
    bool isFirst = true;
    for (const auto& field : shape_->fields()) {
        const auto& value = fieldValue(*shape_, field, number_, stored_, scratch);
        if (value.kind == RecordValue::Kind::absent) continue;
        if (!isFirst) json += ',';
        isFirst = false;
        writeEntry(json, field.entryStart, value);
    }
    json += ']';
}

Value RecordData::wireForm() const {
    std::string json;
    RecordValue scratch;
    write(json, scratch);
    return json::parse(json).value_or(Value());
}

void RecordData::writeMap(std::string& json, RecordValue& scratch) const {
    json += '{';
    for (const auto& field : shape_->fields())
        writeMember(json, field.name, fieldValue(*shape_, field, number_, stored_, scratch));
    json += '}';
}

}  // namespace tarvo::sandbox
