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
constexpr const char *stepColumn = "DESCRIPTION", *stepField = "Description";

using Named = std::map<std::string, const Value*>;

/// Finds records by module and name. No two may have the same.
std::map<const ModelModule*, Named> byName(const ChangeModel::Records& records, bool isServer) {
    std::map<const ModelModule*, Named> all;
    for (auto& module : modelModules)
        for (auto& record : records.at(module.name)) {
            auto name = member(record, isServer ? module.nameField : module.nameColumn).textOr("");
            EXPECT_TRUE(all[&module].emplace(name, &record).second) << "two records are named " << name;
        }
    return all;
}

const Value& recordOf(const ModelRecord& record, std::map<const ModelModule*, Named>& records) {
    static const Value none;
    auto found = records[record.module].find(record.name);
    return found == records[record.module].end() ? none : *found->second;
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
    auto& module = modelModules[isOneIn(2) ? 0 : number(1, 2)];
    auto count = std::to_string(++names_);
    auto digits = std::string(9 - count.size(), '0') + count;
    // Screens may make ids of either form. The names need quoting in SQL, in JSON and in patterns.
    ModelChange change{.after = {.module = &module,
                                 .name = round_ + " " + count + " O'Neil \"%_\\\" {x}, \xC3\xA9",
                                 .temporaryId = isOneIn(3) ? "TarvoTEMPID#rig-" + count : "NEW_" + digits}};
    auto& record = change.after;
    record.step = "step " + std::to_string(++steps_);
    if (isOneIn(2)) record.note = isOneIn(3) ? "the same" : "note 'n' " + count;
    setLookup(record);
    ValueMap values{{module.nameColumn, record.name}, {stepColumn, record.step}};
    if (!record.note.empty()) values.set(module.noteColumn, record.note);
    if (record.lookup) values.set(module.lookupColumn, idOf(records_[*record.lookup]));
    change.call = "AddRecordUseCase.addRecord";
    change.request = {
        {"record", ValueMap{{"recordId", record.temporaryId}, {"moduleName", module.name}, {"values", values}}}};
    return change;
}

/// Makes a record look up the deepest one that takes another, so that chains grow to their full length.
void ChangeModel::setLookup(ModelRecord& record) {
    record.lookup.reset();
    record.depth = 0;
    if (isOneIn(4)) return;
    for (auto i = firstOfRound_; i < records_.size(); ++i) {
        auto& other = records_[i];
        bool fits = !other.isDeleted && std::string_view(other.module->name) == record.module->lookupModule &&
                    other.depth < deepest && other.depth >= record.depth;
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
    ValueMap values{{stepColumn, record.step}};
    if (isOneIn(2)) {
        record.note = isOneIn(3) ? "" : isOneIn(3) ? "the same" : "note " + std::to_string(steps_);
        values.set(module.noteColumn, textOrNull(record.note));
    }
    if (isOneIn(4)) {
        setLookup(record);
        if (record.lookup == index) record.lookup.reset();
        values.set(module.lookupColumn, record.lookup ? Value(idOf(records_[*record.lookup])) : Value());
    }
    change.call = "EditRecordUseCase.editRecord";
    change.request = {
        {"record", ValueMap{{"recordId", idOf(record)}, {"moduleName", module.name}, {"values", values}}}};
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
    if (change.kind != Kind::delete_) change.after.steps.push_back(change.after.step);
    if (change.after.lookup) records_[*change.after.lookup].isReferenced = true;
    if (change.kind == Kind::add)
        records_.push_back(std::move(change.after));
    else
        records_[change.record] = std::move(change.after);
}

void ChangeModel::expectHeld(const ValueList& changes, const Records& atServer, const Records& here) {
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
                ids[member(member(change, "payload"), module.nameField).textOr("")] = id;
    }
    for (auto& record : records_) {
        SCOPED_TRACE(record.name + " " + record.temporaryId + " " + ids[record.name]);
        expectChanges(record, changesOf[ids[record.name]]);
    }
}

void ChangeModel::expectValues(const ModelRecord& record, const Value& server, const Value& here) const {
    SCOPED_TRACE(record.name + " " + record.temporaryId + " " + record.realId);
    auto& module = *record.module;
    auto expectValue = [&](const char* field, const char* column, const std::string& value) {
        EXPECT_EQ(member(server, field).textOr(""), value) << field << " at the server";
        EXPECT_EQ(member(here, column).textOr(""), value) << column << " here";
    };
    expectValue("id", "ID", record.realId);
    expectValue(stepField, stepColumn, record.step);
    expectValue(module.noteField, module.noteColumn, record.note);
    expectValue(module.lookupField, module.lookupColumn, record.lookup ? records_[*record.lookup].realId : "");
}

/// The server must have applied one add, the edits in their order, and at most one delete as the last one. A record
/// that is deleted may lack what the delete has dropped.
void ChangeModel::expectChanges(const ModelRecord& record, const ValueList& changes) const {
    if (changes.empty() && record.isDeleted) return;  // it never went
    std::vector<std::string> kinds, applied;
    for (auto& change : changes) {
        kinds.push_back(member(change, "kind").textOr(""));
        auto step = member(member(change, "payload"), stepField).textOr("");
        if (!step.empty()) applied.push_back(step);
    }
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "add"), 1);
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), "delete"), record.isDeleted);
    EXPECT_TRUE(!kinds.empty() && kinds.front() == "add" && (!record.isDeleted || kinds.back() == "delete"));
    if (!record.isDeleted && !record.mayHaveFailed) {
        EXPECT_EQ(applied, record.steps);
        return;
    }
    EXPECT_LE(kinds.size(), record.steps.size() + record.isDeleted) << "a change was applied twice";
    auto inOrder = text::join(applied, ", ");
    auto place = record.steps.begin();
    for (auto& step : applied) {
        place = std::find(place, record.steps.end(), step);
        ASSERT_NE(place, record.steps.end()) << step << " was applied out of order: " << inOrder;
    }
}

}  // namespace tarvo::tests
