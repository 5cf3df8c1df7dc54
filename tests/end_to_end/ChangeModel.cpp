#include "tests/end_to_end/ChangeModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

using Kind = ModelChange::Kind;

constexpr int deepest = 10;

using Named = std::map<std::string, const Value*>;

/// Finds records by module and name. No two may have the same.
std::map<const ModelModule*, Named> byName(const ChangeModel::Records& records, bool isServer) {
    std::map<const ModelModule*, Named> all;
    for (auto& module : modelModules)
        for (auto& record : records.at(module.name)) {
            auto name = member(record, isServer ? module.title.name : module.title.column).textOr("");
            EXPECT_TRUE(all[&module].emplace(name, &record).second) << "two records are named " << name;
        }
    return all;
}

const Value& recordOf(const ModelRecord& record, std::map<const ModelModule*, Named>& records) {
    static const Value none;
    auto found = records[record.module].find(record.name);
    return found == records[record.module].end() ? none : *found->second;
}

ValueMap requestOf(const ModelRecord& record, const std::string& id, const ValueMap& values) {
    return {{"record", ValueMap{{"recordId", id}, {"moduleName", record.module->name}, {"values", values}}}};
}

ModelStep stepOf(const ModelChange& change) {
    auto& record = change.after;
    auto values = change.values();
    bool isAdd = change.kind == Kind::add;
    ModelStep step{.text = record.step};
    if (isAdd || (record.module->remark.column && values.find(record.module->remark.column)))
        step.remark = record.remark;
    if (isAdd || values.find(record.module->lookup.column)) step.lookup = record.lookup;
    return step;
}

std::vector<std::string> textsOf(const std::vector<ModelStep>& steps) {
    std::vector<std::string> texts;
    for (auto& step : steps) texts.push_back(step.text);
    return texts;
}

Value textOrNull(const std::string& text) { return text.empty() ? Value() : Value(text); }

}  // namespace

void ChangeModel::clear() {
    records_.clear();
    firstOfRound_ = 0;
}

void ChangeModel::beginRound(const std::string& name, bool mayBeRefused) {
    round_ = name;
    mayBeRefused_ = mayBeRefused;
    firstOfRound_ = records_.size();
}

ModelChange ChangeModel::nextChange() {
    auto kind = number(1, 10);
    if (kind > 4)
        if (auto index = anyRecord(true)) {
            if (kind < 10) return edit(*index);
            if (auto deletable = anyRecord(false)) return delete_(*deletable);
        }
    return add();
}

/// Prefers records of the round, whose adds may still wait.
std::optional<std::size_t> ChangeModel::anyRecord(bool mayBeReferenced) {
    auto first = isOneIn(8) ? 0 : firstOfRound_;
    for (int tries = 0; tries < 20 && first < records_.size(); ++tries) {
        auto index = static_cast<std::size_t>(number(static_cast<int>(first), static_cast<int>(records_.size()) - 1));
        if (!records_[index].isDeleted && (mayBeReferenced || !records_[index].isReferenced)) return index;
    }
    return std::nullopt;
}

ModelChange ChangeModel::add() {
    if (isOneIn(3)) return addNote(isOneIn(3));
    return isOneIn(12) ? addByTransaction(isOneIn(3) ? "import" : "addRecord") : addRecord();
}

ModelChange ChangeModel::newRecord(const ModelModule& module) {
    auto count = std::to_string(++names_);
    auto digits = std::string(9 - count.size(), '0') + count;
    // Screens may make ids of either form. The names need quoting in SQL, in JSON and in patterns.
    ModelChange change{.after = {.module = &module,
                                 .name = round_ + " " + count + " O'Neil \"%_\\\" {x}, \xC3\xA9",
                                 .temporaryId = isOneIn(3) ? "TarvoTEMPID#rig-" + count : "NEW_" + digits}};
    auto& record = change.after;
    record.step = "step " + std::to_string(++steps_);
    if (module.remark.name && !isOneIn(4)) record.remark = isOneIn(3) ? "the same" : "remark 'r' " + count;
    setLookup(record);
    return change;
}

ModelChange ChangeModel::addRecord() {
    auto change = newRecord(anyModule());
    change.call = "AddRecordUseCase.addRecord";
    change.request = requestOf(change.after, change.after.temporaryId, valuesOf(change.after, &ModelField::column));
    return change;
}

ModelChange ChangeModel::addNote(bool hasSound) {
    auto change = newRecord(notesOfModel);
    auto& note = change.after;
    note.hasSound = hasSound;
    auto values = valuesOf(note, &ModelField::column);
    if (note.lookup) values.set("SE_MODULE", records_[*note.lookup].module->name);
    change.call = "AddNotesUsecase";
    change.request = requestOf(note, note.temporaryId, values);
    return change;
}

ModelChange ChangeModel::addByTransaction(const char* kind) {
    auto change = newRecord(anyModule());
    auto& record = change.after;
    // Rules of remarks do not refuse it: it would be sent again until it is given up, which marks nothing.
    if (record.remark.empty()) record.remark = "always";
    auto payload = valuesOf(record, &ModelField::name);
    auto lookup = payload.valueOf(record.module->lookup.name);
    if (std::string_view(kind) == "import") payload = {{"data", ValueList{payload}}};
    change.row = valuesOf(record, &ModelField::column);
    change.call = "host.transaction.add";
    change.request = {
        {"transaction",
         ValueMap{
             {"recordId", record.temporaryId}, {"module", record.module->name}, {"kind", kind}, {"payload", payload}}},
        {"lookupRecords", lookup.isNull() ? ValueList() : ValueList{lookup}}};
    return change;
}

/// Returns the values of a new record by column or by API name.
ValueMap ChangeModel::valuesOf(const ModelRecord& record, const char* ModelField::*name) {
    auto& module = *record.module;
    ValueMap values{{module.title.*name, record.name}, {module.step.*name, record.step}};
    if (!record.remark.empty()) values.set(module.remark.*name, record.remark);
    if (record.lookup) values.set(module.lookup.*name, idOf(records_[*record.lookup]));
    return values;
}

/// Makes a record look up the deepest one that takes another, so that chains grow to their full length.
void ChangeModel::setLookup(ModelRecord& record) {
    record.lookup.reset();
    record.depth = 0;
    if (!record.module->isOfNotes() && isOneIn(4)) return;
    for (auto i = firstOfRound_; i < records_.size(); ++i) {
        auto& other = records_[i];
        bool isOfModule = record.module->isOfNotes()
                              ? !other.module->isOfNotes()
                              : std::string_view(other.module->name) == record.module->lookupModule;
        bool fits = isOfModule && !other.isDeleted && other.depth < deepest && other.depth >= record.depth;
        // Another record that looks this one up would make a ring of records that wait for each other.
        if (!fits || (record.isReferenced && record.module == other.module) || isOneIn(10)) continue;
        record.lookup = i;
        record.depth = other.depth + 1;
    }
}

/// Uses the id that a screen knows: for long the temporary one, sometimes the real one.
std::string ChangeModel::idOf(const ModelRecord& record) {
    return record.realId.empty() || isOneIn(2) ? record.temporaryId : record.realId;
}

ModelChange ChangeModel::edit(std::size_t index) {
    ModelChange change{.kind = Kind::edit, .after = records_[index], .record = index};
    auto& record = change.after;
    auto& module = *record.module;
    record.step = "step " + std::to_string(++steps_);
    ValueMap values{{module.step.column, record.step}};
    if (module.remark.name && isOneIn(2)) {
        record.remark = isOneIn(3) ? "" : isOneIn(3) ? "the same" : "remark " + std::to_string(steps_);
        values.set(module.remark.column, textOrNull(record.remark));
    }
    if (!module.isOfNotes() && isOneIn(4)) {
        setLookup(record);
        if (record.lookup == index) record.lookup.reset();
        values.set(module.lookup.column, record.lookup ? Value(idOf(records_[*record.lookup])) : Value());
    }
    // Notes are edited through either queue.
    change.call = module.isOfNotes() && !isOneIn(3) ? "EditNotesUsecase" : "EditRecordUseCase.editRecord";
    change.request = requestOf(record, idOf(record), values);
    return change;
}

ModelChange ChangeModel::delete_(std::size_t index) {
    ModelChange change{.kind = Kind::delete_, .after = records_[index], .record = index};
    change.after.isDeleted = true;
    change.call = "DeleteRecordUseCase.deleteRecord";
    change.request = {{"moduleName", change.after.module->name}, {"recordID", idOf(change.after)}};
    return change;
}

void ChangeModel::apply(ModelChange change) {
    if (mayBeRefused_) change.after.mayHaveFailed = true;
    if (change.kind != Kind::delete_) change.after.steps.push_back(stepOf(change));
    if (change.after.lookup) records_[*change.after.lookup].isReferenced = true;
    if (change.kind == Kind::add)
        records_.push_back(std::move(change.after));
    else
        records_[change.record] = std::move(change.after);
}

void ChangeModel::cancel(const ModelChange& change) {
    auto record =
        std::find_if(records_.begin(), records_.end(), [&](auto& each) { return each.name == change.after.name; });
    if (change.kind == Kind::add) {
        record->steps.clear();
        record->isDeleted = true;
        return;
    }
    std::erase_if(record->steps, [&](auto& step) { return step.text == change.after.step; });
    for (auto& step : record->steps) {
        record->step = step.text;
        if (step.remark) record->remark = *step.remark;
        if (step.lookup) record->lookup = *step.lookup;
    }
}

void ChangeModel::noteFailed(const std::string& recordId) {
    for (auto& record : records_) record.mayHaveFailed |= record.temporaryId == recordId || record.realId == recordId;
}

/// What names the record of an add that was given up fails for its sake. A later edit may be merged with it and mend
/// it.
void ChangeModel::noteFailedForOthers() {
    auto namesFailed = [this](const ModelStep& step) {
        return step.lookup && *step.lookup && records_[**step.lookup].mayHaveFailed;
    };
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (auto& record : records_) {
            if (record.mayHaveFailed || std::none_of(record.steps.begin(), record.steps.end(), namesFailed)) continue;
            isChanged = record.mayHaveFailed = true;
        }
    }
}

void ChangeModel::expectHeld(const ValueList& changes, const Records& atServer, const Records& here) {
    noteFailedForOthers();
    auto serverRecords = byName(atServer, true), localRecords = byName(here, false);
    std::size_t held = 0, expected = 0;
    for (auto& module : modelModules) held += serverRecords[&module].size();
    for (auto& record : records_) {
        SCOPED_TRACE(record.name + " " + record.temporaryId);
        auto& server = recordOf(record, serverRecords);
        EXPECT_EQ(!server.isNull(), !record.isDeleted) << "at the server";
        EXPECT_EQ(!recordOf(record, localRecords).isNull(), !record.isDeleted) << "here";
        if (!server.isNull()) record.realId = member(server, "id").textOr("");
        expected += !record.isDeleted;
    }
    EXPECT_EQ(held, expected) << "records at the server";
    for (auto& record : records_)
        if (!record.isDeleted) expectValues(record, recordOf(record, serverRecords), recordOf(record, localRecords));

    std::set<std::string> keys;
    std::map<std::string, ValueList> changesOf;  // by id
    std::map<std::string, std::string> ids;      // by name
    for (auto& change : changes) {
        auto key = member(change, "key").textOr(""), id = member(change, "id").textOr("");
        EXPECT_TRUE(!key.empty() && keys.insert(key).second) << "a key was applied twice";
        changesOf[id].push_back(change);
        for (auto& module : modelModules)
            if (member(change, "module") == Value(module.name) && member(change, "kind") == Value("add"))
                ids[member(member(change, "payload"), module.title.name).textOr("")] = id;
    }
    for (auto& record : records_) {
        SCOPED_TRACE(record.name + " " + record.temporaryId + " " + ids[record.name]);
        expectChanges(record, changesOf[ids[record.name]]);
    }
}

void ChangeModel::expectValues(const ModelRecord& record, const Value& server, const Value& here) const {
    SCOPED_TRACE(record.name + " " + record.temporaryId + " " + record.realId);
    auto& module = *record.module;
    auto expectValue = [&](const ModelField& field, const std::string& value) {
        EXPECT_EQ(member(server, field.name).textOr(""), value) << field.name << " at the server";
        EXPECT_EQ(member(here, field.column).textOr(""), value) << field.column << " here";
    };
    expectValue({"ID", "id"}, record.realId);
    expectValue(module.step, record.step);
    if (module.remark.name) expectValue(module.remark, record.remark);
    expectValue(module.lookup, record.lookup ? records_[*record.lookup].realId : "");
}

/// The server must have applied one add, the edits in their order, and at most one delete as the last one. A record
/// that is deleted may lack what the delete has dropped.
void ChangeModel::expectChanges(const ModelRecord& record, const ValueList& changes) const {
    if (changes.empty() && record.isDeleted) return;  // it never went
    std::vector<std::string> kinds, applied;
    for (auto& change : changes) {
        kinds.push_back(member(change, "kind").textOr(""));
        auto step = member(member(change, "payload"), record.module->step.name).textOr("");
        if (!step.empty()) applied.push_back(step);
    }
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "add"), 1);
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "delete"), record.isDeleted);
    EXPECT_TRUE(!kinds.empty() && kinds.front() == "add" && (!record.isDeleted || kinds.back() == "delete"));
    if (!record.isDeleted && !record.mayHaveFailed) {
        EXPECT_EQ(applied, textsOf(record.steps));
        return;
    }
    EXPECT_LE(kinds.size(), record.steps.size() + record.isDeleted) << "a change was applied twice";
    auto inOrder = text::join(applied, ", ");
    auto steps = textsOf(record.steps);
    auto place = steps.begin();
    for (auto& step : applied) {
        place = std::find(place, steps.end(), step);
        ASSERT_NE(place, steps.end()) << step << " was applied out of order: " << inOrder;
    }
}

}  // namespace tarvo::tests
