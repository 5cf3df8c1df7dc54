#include "tests/end_to_end/ChangeWorld.h"

namespace tarvo::tests {

namespace {

constexpr const char* ownPassphrase = "right passphrase";

ValueList listOf(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

}  // namespace

bool ChangeWorld::start(const Settings& environment) {
    auto all = environment;
    all.push_back(std::string("TARVO_PASSPHRASE=") + ownPassphrase);
    host.reset();
    host = std::make_unique<Process>("tarvo-host", world->arguments({"serve"}), world->folder + "/host.log", all);
    ++starts;
    return ask("host.openDatabase").has_value();
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
    EXPECT_EQ(member(response("host.metadata", {{"moduleNames", names}}), "moduleNames"), Value(names));
}

void ChangeWorld::send(const std::string& call, const ValueMap& request) {
    host->send(json::write(ValueMap{{"id", ++lines_}, {"call", call}, {"request", request}}).value_or(""));
}

std::optional<Value> ChangeWorld::answer() {
    std::optional<Value> first;
    while (auto line = host->line()) {
        auto json = json::parse(std::string_view(*line)).value_or(Value());
        if (member(json, "id") != Value(lines_)) continue;
        if (!first) first = json;
        auto event = member(json, "event").textOr("");
        if (event == "done" || event == "refused") return first;
    }
    return std::nullopt;
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
    bool isSaved = line ? member(*line, "name") == Value("changeSaved") : isStored(change);
    if (isSaved) model.apply(std::move(change));
    return isSaved || !line ? "" : member(member(*line, "arguments"), "reason").textOr("no reason");
}

bool ChangeWorld::isStored(const ModelChange& change) {
    auto& record = change.after;
    auto found = localRecords(record.module->name, record.module->nameColumn, {record.name});
    if (change.kind != ModelChange::Kind::delete_)
        return !found.empty() && member(found.front(), "DESCRIPTION") == Value(record.step);
    if (found.empty()) return true;
    // A record comes back when the server has refused to delete it.
    auto queued = listOf(member(response("host.queue.list"), "changes"));
    return std::any_of(queued.begin(), queued.end(), [&](auto& other) {
        return member(other, "kind") == Value("deleteRecord") &&
               member(other, "recordId") == member(found.front(), "ID");
    });
}

void ChangeWorld::drain() {
    world->control->remove("/control/faults");
    for (auto& module : modelModules) control("rules", R"({"module":")" + std::string(module.name) + "\"}");
    Value left;
    for (int tries = 0; tries < 20; ++tries) {
        ask("host.queue.retry");
        left = response("host.queue.idle");
        if (member(left, "isEmpty") == Value(true)) return;
    }
    FAIL() << "not drained: " << json::write(left).value_or("").substr(0, 3000);
}

void ChangeWorld::check() {
    ChangeModel::Records atServer, here;
    for (auto& module : modelModules) {
        ValueList names;
        for (auto& record : model.records())
            if (record.module == &module) names.emplace_back(record.name);
        atServer[module.name] = recordsAtServer(module.name);
        here[module.name] = localRecords(module.name, module.nameColumn, names);
    }
    model.expectHeld(listOf(member(world->controlled("/control/changes"), "changes")), atServer, here);
    expectNoTemporaryId(atServer);
}

ValueList ChangeWorld::recordsAtServer(const std::string& module) const {
    return listOf(member(world->controlled("/control/records?changed=true&module=" + module), "records"));
}

ValueList ChangeWorld::localRecords(const std::string& module, const std::string& column, const ValueList& values) {
    auto found = response("host.record.fetchSome",
                          {{"moduleName", module}, {"columnNamesAndValues", ValueMap{{column, values}}}});
    ValueList records;
    for (auto& record : listOf(member(found, "records"))) records.push_back(member(record, "values"));
    return records;
}

void ChangeWorld::expectNoTemporaryId(const ChangeModel::Records& atServer) const {
    auto expectNone = [](const std::string& text, const std::string& where) {
        EXPECT_FALSE(contains(text, "NEW_0") || contains(text, "TarvoTEMPID#")) << where << ": " << text;
    };
    EncryptedFile file(world->databasePath(), ownPassphrase);
    auto tables = file.tables();
    EXPECT_GT(tables.size(), 5u);
    tables.erase("TARVO_RECORD_IDS");  // where former ids lead to the real ones
    for (auto& [table, rows] : tables)
        for (auto& row : rows) expectNone(row, table);
    for (auto& [module, records] : atServer)
        for (auto& record : records) expectNone(json::write(record).value_or(""), module);
}

}  // namespace tarvo::tests
