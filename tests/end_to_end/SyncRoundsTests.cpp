#include <array>
#include <set>

#include "tests/end_to_end/ChangeWorld.h"

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

}  // namespace

}  // namespace tarvo::tests
