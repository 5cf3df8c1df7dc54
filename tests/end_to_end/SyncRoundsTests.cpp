#include <array>
#include <set>

#include "tests/end_to_end/ChangeWorld.h"
#include "tests/end_to_end/ServerRecords.h"

namespace tarvo::tests {

namespace {

ValueList elements(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

/// Faults of an answer that no client can use, so that its round breaks off or takes longer.
constexpr const char* unusable[] = {
    R"("fault":"delay","milliseconds":20)",
    R"("fault":"delayAfter","milliseconds":20)",
    R"("fault":"dropBefore")",
    R"("fault":"dropAfter")",
    R"("fault":"truncate")",
    R"("fault":"nonJson")",
    R"("fault":"errorEnvelope")",
    R"("fault":"errorEnvelope","status":401)",
    R"("fault":"errorEnvelope","status":429)",
    R"("fault":"errorEnvelope","status":503)",
    R"("fault":"wrongTypes","level":0)",
    R"("fault":"wrongTypes","level":2)",
    R"("fault":"wrongTypes","level":4)",
    R"("fault":"missingBlocks")",
    R"("fault":"olderEnvelope")",
};
/// Faults of an answer that a client takes for good. They are mended only if the round is repeated.
constexpr const char* misleading[] = {
    R"("fault":"missingIds")",           R"("fault":"shortRows")",
    R"("fault":"repeatBlocks")",         R"("fault":"wrongTypes","level":5)",
    R"("fault":"wrongTypes","level":6)", R"("fault":"wrongTypes","level":7)",
};

/// A server whose records change all the time, and a program that keeps up with it.
class SyncRounds : public ChangeWorld {
protected:
    void changeAtRandom(int changes, const ValueList& modules = {}) {
        control("random",
                json::write(ValueMap{{"seed", ++seed}, {"changes", changes}, {"modules", modules}}).value_or(""));
    }
    void setFault(const std::string& fault, int times, const std::string& call = "products/getsyncrecords") {
        control("faults", R"({"call":")" + call + R"(","times":)" + std::to_string(times) + "," + fault + "}");
    }
    void clearFaults() { world->control->remove("/control/faults"); }

    /// Returns the rounds that a call made; an empty list if the program ended.
    ValueList sync(const std::string& module = "") {
        auto call = module.empty() ? "AllModulesSyncUseCase.syncAllModules" : "ModuleyncUseCase.syncRecords";
        ValueMap request{{"tell", "none"}};
        if (!module.empty()) request.set("moduleName", module);
        send(call, request);
        Value last;
        while (auto line = nextLine()) last = *line;
        return elements(member(member(last, "response"), "rounds"));
    }
    static std::string outcomeOf(const Value& round) {
        return member(round, "outcome").textOr("") + member(round, "reason").textOr("");
    }
    static std::int64_t receivedIn(const Value& round) {
        std::int64_t received = 0;
        for (auto kind : {"added", "edited", "deleted"}) received += member(round, kind).asInteger().value_or(0);
        return received;
    }
    void syncAllFinished() {
        auto rounds = sync();
        EXPECT_GT(rounds.size(), 15u);
        for (auto& round : rounds) {
            auto module = member(round, "moduleName").textOr("");
            lastFinish[module] = member(round, "finishedAt");
            // The server has no list of modules whose rows lie below records.
            bool hasList =
                !member(world->controlled("/control/records?changed=true&module=" + module), "records").isNull();
            EXPECT_EQ(outcomeOf(round), hasList ? "finished" : "brokenrefused") << module;
        }
    }

    void syncAndExpectServer() {
        syncAllFinished();
        expectServer();
    }

    int seed = 0;
    std::map<std::string, Value> lastFinish;
};

TEST_F(SyncRounds, AYearOfChangesAndFaultsEndsWithTheTablesOfTheServer) {
    constexpr int rounds = 50, changes = 200;
    constexpr std::int64_t week = 7LL * 24 * 3600 * 1000;
    const std::vector<std::string> modules = {"Leads", "Deals", "Events", "Quotes", "Solutions", "CustomModule1"};
    beginWhole({"--records", "150", "--sync-page", "100"});
    syncAllFinished();
    std::set<std::string> reasons;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        control("clock", R"({"offsetMilliseconds":)" + std::to_string((round + 1) * week) + "}");
        auto one = modules[static_cast<std::size_t>(round) % modules.size()];
        bool isOfOne = round % 3 == 0;
        changeAtRandom(changes, isOfOne ? ValueList{one} : ValueList{});
        if (isOfOne) {
            // The first of several pages misleads, and the round breaks off after it.
            setFault(misleading[static_cast<std::size_t>(round / 3) % std::size(misleading)], 1);
            setFault(R"("fault":"errorEnvelope","status":500)", 1);
            for (auto& each : sync(one)) EXPECT_EQ(member(each, "outcome"), Value("broken"));
        } else {
            setFault(unusable[static_cast<std::size_t>(round) % std::size(unusable)], 1 + round % 4);
        }
        for (auto& each : sync()) reasons.insert(outcomeOf(each));
        clearFaults();
    }
    EXPECT_GE(reasons.size(), 4u) << "no fault broke a round";
    syncAndExpectServer();
    for (auto& round : sync()) EXPECT_EQ(receivedIn(round), 0) << member(round, "moduleName").textOr("");
}

TEST_F(SyncRounds, ChangesBetweenPagesAreNotMissed) {
    beginWhole({"--records", "60", "--sync-page", "7"});
    const ValueList modules{"Leads", "Quotes", "Notes"};
    for (int round = 0; round < 6 && !HasFailure(); ++round) {
        changeAtRandom(60, modules);
        setFault(R"("fault":"delay","milliseconds":2)", 1000);
        send("AllModulesSyncUseCase.syncAllModules", {{"tell", "ids"}});
        int left = 60;
        while (auto line = nextLine())
            if (member(*line, "name") == Value("syncResultsFetched") && left-- > 0) changeAtRandom(2, modules);
        clearFaults();
    }
    syncAndExpectServer();
}

TEST_F(SyncRounds, AKillAtACommitOfARoundCostsNothingButItsRepetition) {
    beginWhole({"--records", "60", "--sync-page", "15"});
    syncAllFinished();
    const std::string modules[] = {"Quotes", "Leads", "Events"};
    int finished = 0, interrupted = 0, at = 0;
    for (bool wasMet = true; wasMet && !HasFailure();) {
        auto& module = modules[++at % 3];
        SCOPED_TRACE("commit " + std::to_string(at) + " of " + module);
        changeAtRandom(70, {module});
        wasMet = !start(faultAt("kill", at)) || sync(module).empty();
        ASSERT_TRUE(start()) << host->errors();
        auto known = elements(member(response("host.sync.rounds", {{"moduleNames", ValueList{module}}}), "rounds"));
        ASSERT_EQ(known.size(), 1u);
        // A kill before the first page is stored leaves the round before as the last one.
        bool isDone =
            !wasMet || (outcomeOf(known[0]) == "finished" && member(known[0], "finishedAt") != lastFinish[module]);
        finished += isDone;
        interrupted += outcomeOf(known[0]) == "brokeninterrupted";
        for (auto& round : sync(module)) {
            EXPECT_EQ(outcomeOf(round), "finished");
            EXPECT_EQ(receivedIn(round) == 0, isDone) << "a finished round is not repeated, and any other is";
            lastFinish[module] = member(round, "finishedAt");
        }
        if (at % 4 == 0) syncAndExpectServer();
    }
    EXPECT_GT(at, 8);
    EXPECT_GT(interrupted, 1);
    EXPECT_GE(finished, 1);
    syncAndExpectServer();
}

/// A user and other people who change the same records, while answers, the network and the program break.
///
/// TARVO_RIG_ROUNDS sets the number of rounds, TARVO_RIG_SEED the seed of the first one.
class BothSides : public SyncRounds {
protected:
    static constexpr int stepsPerRound = 30;
    struct Shared {
        const char *module, *nameColumn;
    };
    static constexpr Shared shared[] = {{"Leads", "LASTNAME"}, {"Contacts", "LASTNAME"}, {"Accounts", "ACCOUNTNAME"}};
    static inline const ValueList sharedModules{"Leads", "Contacts", "Accounts"};

    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }
    bool isOneIn(int count) { return number(1, count) == 1; }

    /// Returns the rows of a module's table by id.
    std::map<std::string, std::string> descriptions(const std::string& module) {
        std::map<std::string, std::string> found;
        for (auto& row : file->select("SELECT ID, DESCRIPTION FROM " + module + "Records"))
            found[row["ID"]] = row["DESCRIPTION"];
        return found;
    }
    std::string anyId(const std::string& module) {
        auto rows = descriptions(module);
        auto row = rows.begin();
        std::advance(row, rows.empty() ? 0 : number(0, static_cast<int>(rows.size()) - 1));
        return rows.empty() ? "" : row->first;
    }

    void step() {
        auto& [module, nameColumn] = shared[number(0, 2)];
        auto text = "text " + std::to_string(++texts);
        auto kind = number(1, 10);
        if (kind <= 4) {
            change("EditRecordUseCase.editRecord", module, anyId(module), {{"DESCRIPTION", text}}, text);
        } else if (kind == 5) {
            auto digits = std::to_string(texts);
            change("AddRecordUseCase.addRecord", module, "NEW_" + std::string(9 - digits.size(), '0') + digits,
                   {{nameColumn, "Rig " + digits}, {"DESCRIPTION", text}}, text);
        } else if (kind == 6) {
            auto id = anyId(module);
            latest.erase({module, id});
            ask("DeleteRecordUseCase.deleteRecord", {{"moduleName", module}, {"recordID", id}});
        } else if (kind <= 8) {
            changeAtRandom(4, sharedModules);
        } else if (kind == 9) {
            editAtServer(module, text);
        } else {
            sync(isOneIn(2) ? module : "");
        }
    }
    void change(const std::string& call, const std::string& module, const std::string& id, const ValueMap& values,
                const std::string& text) {
        ValueMap record{{"recordId", id}, {"moduleName", module}, {"values", values}};
        send(call, {{"record", record}});
        if (isOneIn(20)) host->kill();
        auto line = answer();
        if (!line) {
            EXPECT_TRUE(start()) << host->errors();
            latest.erase({module, id});  // nobody knows whether it was saved
        } else if (member(*line, "name") == Value("changeSaved")) {
            latest[{module, id}] = text;
        }
    }
    /// Has another person change the field that the user has changed last, if the record is still there.
    void editAtServer(const std::string& module, const std::string& text) {
        for (auto& [key, mine] : latest)
            if (key.first == module && isOneIn(3)) {
                auto body = json::write(ValueMap{
                    {"module", module}, {"edit", ValueList{ValueMap{{"id", key.second}, {"Description", text}}}}});
                world->control->postJson("/control/records", body.value_or(""));
            }
    }
    void disturb() {
        if (isOneIn(6)) setFault(silences[number(0, std::size(silences) - 1)], number(1, 2), "*");
        if (isOneIn(10)) ask("host.queue.stop");
        if (isOneIn(6)) ask("host.queue.start");
        if (isOneIn(25)) {
            EXPECT_TRUE(start()) << host->errors();
        }
    }
    /// Expects that the tables show each edit that is still queued. What is queued after the tables were read was
    /// queued before.
    void expectQueuedChangesShown() {
        std::map<std::string, std::map<std::string, std::string>> rows;
        for (auto& each : shared) rows[each.module] = descriptions(each.module);
        for (auto& change : elements(member(response("host.queue.list"), "changes"))) {
            std::pair key(member(change, "moduleName").textOr(""), member(change, "recordId").textOr(""));
            auto mine = latest.find(key);
            auto row = rows[key.first].find(key.second);
            // A record that is gone at the server takes its row with it.
            if (mine == latest.end() || row == rows[key.first].end()) continue;
            EXPECT_EQ(row->second, mine->second) << key.first << " " << key.second << " lacks a queued change";
            ++shown;
        }
    }
    /// Sends what can be sent. Changes of records that are gone at the server stay as failed ones.
    void sendAll() {
        clearFaults();
        ask("host.queue.start");
        bool isDrained = false;
        for (int tries = 0; tries < 20 && !isDrained; ++tries) {
            ask("host.queue.retry");
            auto left = elements(member(response("host.queue.idle"), "changes"));
            isDrained = std::all_of(left.begin(), left.end(),
                                    [](auto& change) { return member(change, "state") == Value("failed"); });
        }
        EXPECT_TRUE(isDrained);
    }

    static constexpr const char* silences[] = {R"("fault":"dropBefore")", R"("fault":"dropAfter")",
                                               R"("fault":"truncate")", R"("fault":"delayAfter","milliseconds":20)",
                                               R"("fault":"errorEnvelope","status":503)"};
    std::optional<EncryptedFile> file;
    /// What the user has last written into the description of a record.
    std::map<std::pair<std::string, std::string>, std::string> latest;
    int texts = 0;
    /// How often a queued change was looked for.
    int shown = 0;
};

TEST_F(BothSides, AreEqualOnceAllIsSentAndSynced) {
    auto numberIn = [](const char* variable, std::uint64_t otherwise) {
        auto text = std::getenv(variable);
        return text ? std::strtoull(text, nullptr, 10) : otherwise;
    };
    auto rounds = numberIn("TARVO_RIG_ROUNDS", 20), first = numberIn("TARVO_RIG_SEED", std::random_device()());
    beginWhole({"--records", "40", "--sync-page", "30"});
    syncAllFinished();
    file.emplace(world->databasePath(), "right passphrase");
    for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
        auto trace = "round " + std::to_string(round) + " of seed " + std::to_string(first);
        SCOPED_TRACE(trace);
        random.seed(first + round);
        seed = static_cast<int>((first + round) % 1'000'000) * 100;
        for (int i = 0; i < stepsPerRound && !HasFailure(); ++i) {
            disturb();
            step();
            expectQueuedChangesShown();
        }
        sendAll();
        syncAllFinished();
        // A user who deletes a record deletes its attachments here, which the server keeps.
        expectServerRecords(*world, *file, Held::all, {"Leads", "Contacts", "Accounts"});
    }
    EXPECT_GT(shown, static_cast<int>(rounds));
}

}  // namespace

}  // namespace tarvo::tests
