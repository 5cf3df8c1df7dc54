#include "sandbox/changes/RandomChanges.h"

#include <set>
#include <utility>

#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {
namespace {

// Values are those that records of these numbers have in a snapshot.
constexpr std::uint64_t sourceNumbers = 1000;
constexpr std::size_t mostRows = 4;
constexpr std::string_view personField = "participant";

bool isSettable(const RecordShape::Field& field) { return !field.data->isReadOnly && !field.data->isKey; }

// An empty owner would become the user who calls, and a record always has a layout.
bool mayBeEmpty(const RecordShape::Field& field) {
    return !field.data->isMandatory && field.name != "Owner" && field.name != "Layout";
}

Value payloadForm(const RecordValue& value) {
    switch (value.kind) {
        case RecordValue::Kind::absent:
            return Value();
        case RecordValue::Kind::text:
            return value.text;
        case RecordValue::Kind::texts:
            return ValueList(value.texts.begin(), value.texts.end());
        case RecordValue::Kind::rows:
            break;
    }
    ValueList rows;
    for (const auto& row : value.rows) {
        ValueMap map;
        for (const auto& entry : row.entries) map.set(entry.name, payloadForm(entry.value));
        rows.emplace_back(std::move(map));
    }
    return rows;
}

std::string textOfRow(const RecordRow& row, std::string_view name) {
    for (const auto& entry : row.entries)
        if (entry.name == name) return entry.value.text;
    return "";
}

}  // namespace

RandomChanges::RandomChanges(const DataSet& data, RecordEditor& editor, std::uint64_t seed,
                             std::vector<const ModuleData*> modules)
    : data_(data), editor_(editor), random_(seed), modules_(std::move(modules)) {}

std::optional<Refusal> RandomChanges::change() {
    const auto& module = *modules_[random_.below(modules_.size())];
    auto kind = random_.below(10);
    auto view = editor_.view();
    auto list = view.list(module.name);
    auto record = kind < 3 ? std::nullopt : anyRecord(list);
    if (!record) return add(module);
    return kind < 8 ? edit(module, *record) : remove(module, *record);
}

std::optional<Refusal> RandomChanges::add(const ModuleData& module) {
    const auto& shape = *data_.records->shape(module.name);
    ValueMap payload;
    for (const auto& field : shape.fields())
        if (isSettable(field) && (!mayBeEmpty(field) || isOneIn(2)))
            payload.set(field.name, valueFor(shape, field, nullptr));
    auto added = editor_.add(module, payload);
    if (!added) return added.error();
    ++counts_.added;
    return std::nullopt;
}

std::optional<Refusal> RandomChanges::edit(const ModuleData& module, const RecordData& record) {
    const auto& shape = record.shape();
    auto before = record.values();
    ValueMap payload{{"id", record.id()}};
    auto changed = isOneIn(8) ? shape.fields().size() : 1 + random_.below(4);
    for (std::size_t i = 0; i < changed || payload.size() == 1; ++i) {
        const auto& field = shape.fields()[random_.below(shape.fields().size())];
        if (isSettable(field)) payload.set(field.name, valueFor(shape, field, &before[shape.indexOf(field)]));
    }
    auto edited = editor_.edit(module, payload);
    if (!edited) return edited.error();
    ++counts_.edited;
    return std::nullopt;
}

std::optional<Refusal> RandomChanges::remove(const ModuleData& module, const RecordData& record) {
    if (auto refusal = editor_.remove(module, record.id())) return refusal;
    ++counts_.deleted;
    return std::nullopt;
}

// Deleted records leave gaps, so the search goes on from a random place.
std::optional<RecordData> RandomChanges::anyRecord(const RecordList& list) {
    auto size = list.size();
    auto first = size > 0 ? random_.below(size) : 0;
    for (std::size_t i = 0; i < size; ++i)
        if (auto record = list.at((first + i) % size)) return record;
    return std::nullopt;
}

std::string RandomChanges::anyId(std::string_view module) {
    auto view = editor_.view();
    auto list = view.list(module);
    auto record = anyRecord(list);
    return record ? record->id() : "";
}

std::string RandomChanges::anyPerson() {
    auto kind = random_.below(3);
    auto id = kind == 0 ? std::string() : anyId(kind == 1 ? "Contacts" : "Leads");
    return id.empty() ? data_.users[random_.below(data_.users.size())].id : id;
}

Value RandomChanges::valueFor(const RecordShape& shape, const RecordShape::Field& field, const RecordValue* before) {
    static constexpr std::string_view parents[] = {"Accounts", "Deals", "Leads", "Contacts", "Notes"};
    const auto& type = field.data->type;
    if (mayBeEmpty(field) && isOneIn(6)) return Value();
    if (field.data->target == "se_module")
        // Only attachments lie below notes.
        return anyId(parents[random_.below(shape.module().name == "Attachments" ? 5 : 4)]);
    if (type == "lookup") return field.target ? Value(anyId(field.target->module().name)) : Value();
    if (type == "subform" || type == "event_participant")
        return field.target ? rowsFor(*field.target, before) : Value();
    if (type != "multiselectlookup") return generatedFor(shape, field);
    ValueList ids;
    for (auto left = field.target ? random_.below(4) : 0; left > 0; --left)
        if (auto id = anyId(field.target->module().name); !id.empty()) ids.emplace_back(std::move(id));
    return ids;
}

// Some rows go, some stay, some are changed, and some are new. A person takes part in a meeting once.
Value RandomChanges::rowsFor(const RecordShape& rows, const RecordValue* before) {
    ValueList list;
    std::set<std::string> people;
    auto addRow = [&](ValueMap row, std::uint64_t chance) {
        for (const auto& field : rows.fields())
            if (isSettable(field) && field.name != personField && isOneIn(chance))
                row.set(field.name, valueFor(rows, field, nullptr));
        list.emplace_back(std::move(row));
    };
    if (before)
        for (const auto& row : before->rows)
            if (list.size() < mostRows && !isOneIn(4)) {
                people.insert(textOfRow(row, personField));
                addRow({{"id", textOfRow(row, "id")}}, 4);
            }
    for (auto left = random_.below(3); left > 0 && list.size() < mostRows; --left) {
        ValueMap row;
        if (rows.field(personField)) row.set(personField, anyPerson());
        if (row.empty() || people.insert(row.valueOf(personField).textOr("")).second) addRow(std::move(row), 2);
    }
    return list;
}

Value RandomChanges::generatedFor(const RecordShape& shape, const RecordShape::Field& field) {
    auto number = random_.below(sourceNumbers);
    // The texts of the complete record are too long to be sent often.
    if (number == RecordShape::completeRecord) ++number;
    RecordValue value;
    shape.read(field, number, value);
    // An empty value has the form of a text, whatever the field takes.
    return value.kind == RecordValue::Kind::text && value.text.empty() ? Value() : payloadForm(value);
}

}  // namespace tarvo::sandbox
