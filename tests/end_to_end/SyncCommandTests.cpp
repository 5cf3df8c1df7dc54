#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

/// The program of a user with all modules, and a server that changes.
class SyncCommands : public ::testing::Test {
protected:
    void SetUp() override {
        world.emplace(std::vector<std::string>{"--records", "5"});
        run({"init"}, 0);
    }
    /// Runs a command that must end with this status, and returns its answer for programs.
    Value run(std::vector<std::string> arguments, int status) {
        arguments.insert(arguments.begin(), "--json");
        auto ended = endOf(world->host(arguments));
        EXPECT_EQ(ended.status, status) << text::join(arguments, " ") << ": " << ended.errors;
        return lastLineOf(ended.output);
    }
    /// Returns "module outcome added/edited/deleted" of each round.
    static std::string rounds(const Value& answer) {
        std::string all;
        auto rounds = member(answer, "rounds");
        for (auto& round : *rounds.asList()) {
            all += member(round, "moduleName").textOr("") + " " + member(round, "outcome").textOr("");
            for (auto count : {"added", "edited", "deleted"})
                all += "/" + std::to_string(member(round, count).asInteger().value_or(-1));
            all += " ";
        }
        return all;
    }
    void changeLeads(const std::string& changes) {
        auto answer = world->control->postJson("/control/records", R"({"module":"Leads",)" + changes + "}");
        ASSERT_TRUE(answer && answer->status == 200);
    }

    std::optional<EndToEnd> world;
};

}  // namespace

TEST_F(SyncCommands, BringWhatChangedAndRepeatWhatTheLastRoundBrought) {
    auto before = endOf(world->host({"changes", "Leads"}));
    EXPECT_EQ(before.output, "Leads was never synced.\n");
    // Modules whose rows lie below records have no list at the server, and do not count.
    auto all = rounds(run({"sync"}, 0));
    EXPECT_TRUE(contains(all, "Leads finished/5/0/0 ")) << all;
    EXPECT_TRUE(contains(all, "CustomModule3 broken/0/0/0 ")) << all;
    changeLeads(R"("add":[{"Last_Name":"theirs"}])");
    run({"add", "Leads", "Last_Name=mine", "--no-wait"}, 0);
    EXPECT_EQ(rounds(run({"sync", "Leads"}, 0)), "Leads finished/2/0/0 ") << "what waits is sent first";
    EXPECT_EQ(rounds(run({"changes", "Leads"}, 0)), "Leads finished/2/0/0 ");
}

TEST_F(SyncCommands, SayThatTheyFailed) {
    expectRefusals(*world, {{{"sync", "Nope"}, 1, "there is no module \"Nope\""},
                            {{"changes", "Nope"}, 1, "there is no module \"Nope\""},
                            {{"changes"}, 2, "MODULE is required"},
                            {{"download"}, 2, "MODULES is required"},
                            {{"download", "Leads", "--more", "--limit"}, 2, "--more excludes --limit"}});
    const std::string refusal = R"("fault":"errorEnvelope","status":403)";
    world->setFault(R"({"call":"products/getsyncrecords",)" + refusal + "}");
    EXPECT_TRUE(contains(rounds(run({"sync"}, 1)), "Leads broken")) << "no module syncs at all";
    world->control->remove("/control/faults");
    run({"sync"}, 0);
    world->setFault(R"({"call":"products/getsyncrecords","times":1,)" + refusal + "}");
    run({"sync"}, 1);
    run({"sync", "CustomModule3"}, 1);
}

TEST_F(SyncCommands, DownloadFromWhereTheLastDownloadEnded) {
    auto downloaded = [&](const std::string& more, int status) {
        std::vector<std::string> arguments{"download", "Leads", "--more"};
        if (!more.empty()) arguments.insert(arguments.begin() + 1, more);
        auto modules = member(run(arguments, status), "modules");
        return json::write(modules).value_or("");
    };
    EXPECT_EQ(downloaded("", 0), R"([{"moduleName":"Leads","from":0,"to":5,"hasMore":false,"isComplete":true}])");
    EXPECT_EQ(downloaded("", 0), R"([{"moduleName":"Leads","from":5,"to":5,"hasMore":false,"isComplete":true}])");
    EXPECT_TRUE(contains(downloaded("CustomModule3", 1), R"("isComplete":false)"));
}

}  // namespace tarvo::tests
