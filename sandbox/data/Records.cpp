#include "sandbox/data/Records.h"

#include "platform/Text.h"
#include "sandbox/JsonText.h"
#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {
namespace {

// The list of activities goes through its modules in turn.
constexpr std::string_view activityParts[] = {"Tasks", "Events", "Calls"};

bool isActivities(std::string_view module) { return module == "Activities"; }

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

std::vector<std::vector<std::string>> titlesOf(const std::vector<UserData>& users) {
    std::vector<std::vector<std::string>> titles;
    for (const auto& user : users) titles.push_back({user.lastName, user.firstName, user.name()});
    return titles;
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

std::int64_t RecordData::createdTime() const { return shape_->createdTime(number_); }

std::int64_t RecordData::modifiedTime() const { return shape_->modifiedTime(number_); }

RecordValue RecordData::value(std::string_view apiName) const { return shape_->value(apiName, number_); }

void RecordData::read(std::string_view apiName, RecordValue& into) const {
    if (const auto* field = shape_->field(apiName))
        shape_->read(*field, number_, into);
    else
        into.clear();
}

void RecordData::write(std::string& json, RecordValue& scratch) const {
    json += '[';
    bool isFirst = true;
    for (const auto& field : shape_->fields()) {
        shape_->read(field, number_, scratch);
        if (scratch.kind == RecordValue::Kind::absent) continue;
        if (!isFirst) json += ',';
        isFirst = false;
        writeEntry(json, field.entryStart, scratch);
    }
    json += ']';
}

RecordStore::RecordStore(const DataSet& data, std::uint64_t seed, std::size_t recordsPerModule)
    : context_(new RecordContext{data, seed, recordsPerModule, data.tags, titlesOf(data.users)}),
      shapes_(new RecordShape::Shapes) {
    for (std::size_t i = 0; i < data.modules.size(); ++i) {
        const auto& module = data.modules[i];
        if (!isActivities(module.name))
            shapes_->emplace(module.name, std::make_unique<RecordShape>(*context_, module, i));
    }
    for (auto& [name, shape] : *shapes_) shape->connect(*shapes_);
}

RecordStore::~RecordStore() = default;

const RecordShape* RecordStore::shape(std::string_view module) const {
    auto found = shapes_->find(module);
    return found == shapes_->end() ? nullptr : found->second.get();
}

std::size_t RecordStore::count(std::string_view module) const {
    if (isActivities(module)) return std::size(activityParts) * context_->recordsPerModule;
    const auto* known = shape(module);
    return known ? known->count() : 0;
}

RecordData RecordStore::at(std::string_view module, std::size_t position) const {
    if (!isActivities(module)) return {*shape(module), position};
    return {*shape(activityParts[position % std::size(activityParts)]), position / std::size(activityParts)};
}

std::optional<RecordData> RecordStore::find(std::string_view module, std::string_view id) const {
    if (isActivities(module)) {
        for (auto each : activityParts)
            if (auto found = find(each, id)) return found;
        return std::nullopt;
    }
    const auto* known = shape(module);
    auto number = known ? known->numberOf(id) : std::nullopt;
    if (!number || *number >= known->count()) return std::nullopt;
    return RecordData(*known, *number);
}

}  // namespace tarvo::sandbox
