#include "tests/end_to_end/ChangeWorld.h"

#include <poll.h>

#include <algorithm>
#include <fstream>

#include "tests/end_to_end/ServerRecords.h"

namespace tarvo::tests {

namespace {

constexpr const char* ownPassphrase = "right passphrase";

ValueList recordsOf(const Value& response) {
    ValueList records;
    for (auto& record : listOf(member(response, "records"))) records.push_back(member(record, "values"));
    return records;
}

}  // namespace

bool ChangeWorld::start(const Settings& environment) {
    auto all = environment;
    all.push_back(std::string("TARVO_PASSPHRASE=") + ownPassphrase);
    host.reset();
    host = std::make_unique<Process>("tarvo-host", world->arguments({"serve"}), world->folder + "/host.log", all);
    ++starts;
    return ask("host.openDatabase") && ask("host.notifications", {{"topic", "ChangeQueueObserver"}});
}

ChangeWorld::Settings ChangeWorld::faultAt(const std::string& fault, int commit) const {
    return {std::string("LD_PRELOAD=") + std::getenv("TARVO_BIN_DIR") + "/libdisk_faults.so",
            // The library need not come before the sanitizer's own.
            "ASAN_OPTIONS=verify_asan_link_order=0", "TARVO_FAULT=" + fault, "TARVO_FAULT_AT=" + std::to_string(commit),
            "TARVO_FAULT_UNDER=" + world->home()};
}

void ChangeWorld::begin() {
    host.reset();
    world.emplace(std::vector<std::string>{"--records", "5"});
    model.clear();
    ASSERT_TRUE(start()) << host->errors();
    ASSERT_TRUE(ask("host.appInit"));
    ValueList names{"Attachments"};
    for (auto& module : modelModules) names.emplace_back(module.name);
    auto line = ask("host.metadata", {{"moduleNames", names}}).value_or(Value());
    // They come in batches, in any order.
    EXPECT_EQ(listOf(member(member(line, "response"), "moduleNames")).size(), names.size()) << host->errors();
}

void ChangeWorld::beginWhole(const std::vector<std::string>& serverArguments) {
    host.reset();
    world.emplace(serverArguments);
    model.clear();
    auto init = endOf(world->host({"init"}, ownPassphrase));
    ASSERT_EQ(init.status, 0) << init.errors;
    ASSERT_TRUE(start()) << host->errors();
}

void ChangeWorld::expectServer() {
    EncryptedFile file(world->databasePath(), ownPassphrase);
    expectServerRecords(*world, file, Held::all);
}

void ChangeWorld::send(const std::string& call, const ValueMap& request) {
    host->send(json::write(ValueMap{{"id", ++lines_}, {"call", call}, {"request", request}}).value_or(""));
    isAnswered_ = false;
}

std::optional<Value> ChangeWorld::nextLine() {
    while (!isAnswered_) {
        auto line = host->line();
        if (!line) break;
        auto json = json::parse(std::string_view(*line)).value_or(Value());
        if (member(json, "id") != Value(lines_)) continue;
        auto event = member(json, "event").textOr("");
        isAnswered_ = event == "done" || event == "refused";
        return json;
    }
    return std::nullopt;
}

void ChangeWorld::send(const ModelChange& change) {
    auto request = change.request;
    if (change.after.hasSound && change.kind == ModelChange::Kind::add) {
        auto sound = world->folder + "/sound.wav";
        std::ofstream(sound) << change.after.name;
        request.set("voiceFile", sound);
    }
    // Without its row nothing of the record is stored: this call changes nothing.
    if (!change.row.empty() && !storeRow(change)) return send("host.queue.list", ValueMap());
    send(change.call, request);
}

/// Stores the row of a record whose add is queued apart from it. Nothing is sent until both are stored.
bool ChangeWorld::storeRow(const ModelChange& change) {
    if (!ask("host.queue.stop")) return false;
    auto& record = change.after;
    auto values = change.row;
    if (record.lookup) {
        auto& other = model.records()[*record.lookup];
        auto line = askForRecords(other.module->name, other.module->title.column, {other.name});
        if (!line) return false;
        auto found = recordsOf(member(*line, "response"));
        if (!found.empty()) values.set(record.module->lookup.column, member(found.front(), "ID"));
    }
    auto line =
        ask("host.record.storeRecord",
            {{"record",
              ValueMap{{"recordId", record.temporaryId}, {"moduleName", record.module->name}, {"values", values}}}});
    return line && member(*line, "event") == Value("done");
}

void ChangeWorld::removeRow(const ModelRecord& record) {
    ask("host.record.delete", {{"moduleName", record.module->name}, {"recordIds", ValueList{record.temporaryId}}});
}

std::optional<Value> ChangeWorld::answer(const ModelChange& change) {
    if (!change.isOfNote()) {
        auto line = answer();
        if (line && !change.row.empty() && !isHeld) ask("host.queue.start");
        return line;
    }
    // The calls of notes answer nothing: a notice says what became of them.
    auto isNotice = [](const Value& line) {
        auto arguments = member(line, "arguments"), saved = member(arguments, "change");
        auto& named = saved.isNull() ? arguments : saved;
        return text::contains({"changeSaved", "changeNotSaved"}, member(line, "name").textOr("")) &&
               member(named, "moduleName") == Value("Notes") && member(named, "kind") != Value("deleteRecord");
    };
    bool isDone = false;
    std::optional<Value> notice;
    while (auto line = isDone && notice ? std::nullopt : host->line()) {
        auto json = json::parse(std::string_view(*line)).value_or(Value());
        if (isNotice(json)) notice = json;
        if (member(json, "id") == Value(lines_) && member(json, "event") == Value("refused")) return json;
        isDone |= member(json, "id") == Value(lines_) && member(json, "event") == Value("done");
    }
    return isDone ? notice : std::nullopt;
}

std::optional<Value> ChangeWorld::answer() {
    std::optional<Value> first;
    while (auto line = nextLine())
        if (!first) first = line;
    return isAnswered_ ? first : std::nullopt;
}

Value ChangeWorld::response(const std::string& call, const ValueMap& request) {
    auto line = ask(call, request);
    EXPECT_TRUE(line) << call << ": " << host->errors();
    return line ? member(*line, "response") : Value();
}

void ChangeWorld::control(const std::string& call, const std::string& body) {
    auto answer = world->control->postJson("/control/" + call, body);
    ASSERT_TRUE(answer && answer->status == 200) << call << " " << body;
}

std::string ChangeWorld::take(ModelChange change, const std::optional<Value>& line) {
    if (!line) {
        EXPECT_TRUE(start()) << host->errors();
    }
    bool isTransaction = line && !member(member(*line, "response"), "id").isNull();
    bool isSaved = line ? member(*line, "name") == Value("changeSaved") || isTransaction : isStored(change);
    if (!isSaved && line && !change.row.empty()) removeRow(change.after);
    if (isSaved) model.apply(std::move(change));
    if (isSaved || !line) return "";
    auto refusal = member(*line, "message");
    return refusal.isNull() ? member(member(*line, "arguments"), "reason").textOr("no reason") : refusal.textOr("");
}

bool ChangeWorld::isStored(const ModelChange& change) {
    auto& record = change.after;
    auto found = localRecords(record.module->name, record.module->title.column, {record.name});
    if (!change.row.empty()) return isStoredTransaction(record, found);
    if (change.kind != ModelChange::Kind::delete_)
        return !found.empty() && member(found.front(), record.module->step.column) == Value(record.step);
    if (found.empty()) return true;
    // A record comes back when the server has refused to delete it.
    auto queued = listOf(member(response("host.queue.list"), "changes"));
    return std::any_of(queued.begin(), queued.end(), [&](auto& other) {
        return member(other, "kind") == Value("deleteRecord") &&
               member(other, "recordId") == member(found.front(), "ID");
    });
}

/// Without its transaction, the row of a record means nothing and goes.
bool ChangeWorld::isStoredTransaction(const ModelRecord& record, const ValueList& found) {
    if (found.empty()) return false;
    if (member(found.front(), "ID") != Value(record.temporaryId)) return true;
    ValueList ids{record.temporaryId};
    auto queued = response("host.transaction.get", {{"recordIds", ids}});
    if (!listOf(member(queued, "transactions")).empty()) return true;
    removeRow(record);
    return false;
}

void ChangeWorld::drain() {
    world->control->remove("/control/faults");
    for (auto& module : modelModules) control("rules", R"({"module":")" + std::string(module.name) + "\"}");
    auto left = response("host.queue.idle");
    for (auto& change : listOf(member(left, "changes")))
        if (member(change, "state") == Value("failed")) model.noteFailed(member(change, "recordId").textOr(""));
    for (int tries = 0; tries < 20; ++tries) {
        ask("host.queue.retry");
        left = response("host.queue.idle");
        if (member(left, "isEmpty") == Value(true)) return waitForRounds();
    }
    FAIL() << "not drained: " << json::write(left).value_or("").substr(0, 3000);
}

/// An accepted change asks for one more round if a page that may be older is on its way.
void ChangeWorld::waitForRounds() {
    auto isRunning = [](const Value& round) { return member(round, "outcome") == Value("running"); };
    for (int tries = 0; tries < 2000; ++tries) {
        auto rounds = listOf(member(response("host.sync.rounds"), "rounds"));
        if (std::none_of(rounds.begin(), rounds.end(), isRunning)) return;
        ::poll(nullptr, 0, 5);
    }
    FAIL() << "a round of sync does not end";
}

void ChangeWorld::check() {
    ChangeModel::Records atServer, here;
    for (auto& module : modelModules) {
        ValueList names;
        for (auto& record : model.records())
            if (record.module == &module) names.emplace_back(record.name);
        atServer[module.name] = recordsAtServer(module.name);
        here[module.name] = localRecords(module.name, module.title.column, names);
    }
    model.expectHeld(listOf(member(world->controlled("/control/changes"), "changes")), atServer, here);
    expectNoTemporaryId(atServer);
    expectSounds();
}

/// The sound of each voice note lies here under its id, as it was given, and at the server.
void ChangeWorld::expectSounds() const {
    for (auto& record : model.records()) {
        if (!record.hasSound) continue;
        auto pathOf = [&](const std::string& id) { return world->home() + "/VoiceNotes/" + id + ".wav"; };
        SCOPED_TRACE(record.name + " " + record.temporaryId + " " + record.realId);
        if (record.isDeleted) continue;
        EXPECT_EQ(world->content(pathOf(record.realId)), record.name);
        EXPECT_FALSE(files::exists(pathOf(record.temporaryId)));
        auto held = world->control->get("/control/files/" + record.realId);
        EXPECT_EQ(held ? held->body : "", record.name);
    }
}

ValueList ChangeWorld::recordsAtServer(const std::string& module) const {
    return listOf(member(world->controlled("/control/records?changed=true&module=" + module), "records"));
}

ValueList ChangeWorld::localRecords(const std::string& module, const std::string& column, const ValueList& values) {
    auto line = askForRecords(module, column, values);
    EXPECT_TRUE(line) << host->errors();
    return line ? recordsOf(member(*line, "response")) : ValueList();
}

std::optional<Value> ChangeWorld::askForRecords(const std::string& module, const std::string& column,
                                                const ValueList& values) {
    return ask("host.record.fetchSome", {{"moduleName", module}, {"columnNamesAndValues", ValueMap{{column, values}}}});
}

void ChangeWorld::expectNoTemporaryId(const ChangeModel::Records& atServer) const {
    auto expectNone = [](const std::string& text, const std::string& where) {
        EXPECT_FALSE(contains(text, "NEW_0") || contains(text, "TarvoTEMPID#")) << where << ": " << text;
    };
    EncryptedFile file(world->databasePath(), ownPassphrase);
    auto tables = file.tables();
    EXPECT_GT(tables.size(), 5u);
    tables.erase("TARVO_RECORD_IDS");       // where former ids lead to the real ones
    tables.erase("TARVO_CHANGE_OUTCOMES");  // names records as they were known when their changes ended
    for (auto& [table, rows] : tables)
        for (auto& row : rows) expectNone(row, table);
    for (auto& [module, records] : atServer)
        for (auto& record : records) expectNone(json::write(record).value_or(""), module);
}

}  // namespace tarvo::tests
