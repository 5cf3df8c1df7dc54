#include <random>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"
#include "tests/end_to_end/ServerRecords.h"
#include "tests/end_to_end/TableContents.h"

namespace tarvo::tests {

namespace {

constexpr const char* passphrase = "right passphrase";

class FirstDownload : public ::testing::Test {
protected:
    Ended init(const std::vector<std::string>& further = {}) {
        std::vector<std::string> arguments = {"--json", "init"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return endOf(world.host(arguments, passphrase));
    }
    void forgetHome() { files::remove(world.home()); }
    EncryptedFile::Tables tables() const { return EncryptedFile(world.databasePath(), passphrase).tables(); }

    /// Returns the modules whose first records are noted as done.
    std::vector<std::string> modulesDone(const std::vector<std::string>& modules) const {
        auto settings = world.content(world.home() + "/settings/tarvo-host.jsonl");
        std::vector<std::string> done;
        for (auto& module : modules)
            if (contains(settings, "initialRecords_" + module + "_downloadable")) done.push_back(module);
        return done;
    }
    /// Returns the modules whose first records were requested from the server since the last call.
    std::vector<std::string> modulesAsked() {
        std::vector<std::string> asked;
        for (auto& request : world.requests()) {
            if (!member(request, "path").textOr("").ends_with("/getcvrecords")) continue;
            auto list = member(member(request, "parameters"), "module").textOr("");
            const auto modules = json::parse(list).value_or(Value());
            for (auto& module : *modules.asList()) asked.push_back(module.textOr(""));
        }
        world.control->remove("/control/requests");
        return asked;
    }

    EndToEnd world{{"--records", "30", "--log-values"}};
};

TEST_F(FirstDownload, EndsWithTheSameTablesWhereverItWasKilled) {
    auto whole = init();
    ASSERT_EQ(whole.status, 0) << whole.errors;
    const auto expected = tables();
    const auto modules = modulesAsked();
    ASSERT_GT(modules.size(), 15u);
    ASSERT_GT(expected.size(), 60u);
    EncryptedFile file(world.databasePath(), passphrase);
    expectServerRecords(world, file, Held::some);
    const auto lines = static_cast<std::size_t>(std::count(whole.output.begin(), whole.output.end(), '\n'));

    std::mt19937 random(20261123);
    std::size_t sparedModules = 0;
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        forgetHome();
        auto host = world.host({"--json", "init"}, passphrase);
        // The program goes on while its lines are read, so that it is killed anywhere between two of them.
        for (auto count = random() % lines; count > 0 && host->line(); --count) {
        }
        host->kill();
        const auto done = modulesDone(modules);
        sparedModules += done.size();
        modulesAsked();

        auto second = init({"--fetch"});
        ASSERT_EQ(second.status, 0) << second.errors;
        expectSameTables(expected, tables());
        for (auto& module : modulesAsked())
            EXPECT_EQ(std::count(done.begin(), done.end(), module), 0) << module << " again";
    }
    EXPECT_GT(sparedModules, 0u) << "no round was killed after a batch";
}

TEST_F(FirstDownload, ReportsEveryFaultAndTheNextRunCompletes) {
    const std::vector<std::pair<std::string, std::string>> calls = {
        {"getuserdetails", "currentUser"},          {"getmetadatainfo", "metadata"},
        {"getcustomviewsinfo", "customviews"},      {"gettaxcurrencies", "currency"},
        {"getpermissions", "permission"},           {"getpipelines", "pipelines"},
        {"products/getcvrecords", "initialRecords"}};
    struct {
        std::string fault;
        bool isWhole;  // nothing of the answer can be used
    } faults[] = {{R"("fault":"dropBefore")", true},
                  {R"("fault":"dropAfter")", true},
                  {R"("fault":"truncate")", true},
                  {R"("fault":"nonJson")", true},
                  {R"("fault":"errorEnvelope","status":500)", true},
                  {R"("fault":"wrongTypes","level":0)", true},
                  {R"("fault":"wrongTypes","level":2)", true},
                  {R"("fault":"wrongTypes","level":4)", false},
                  {R"("fault":"wrongTypes","level":6)", false},
                  {R"("fault":"missingBlocks")", false},
                  {R"("fault":"shortRows")", false},
                  {R"("fault":"repeatBlocks")", false}};
    for (auto& one : faults) {
        SCOPED_TRACE(one.fault);
        forgetHome();
        for (auto& [call, step] : calls) world.setFault(R"({"call":")" + call + R"(","times":1,)" + one.fault + "}");
        auto first = init();
        // A step after a failed one may have had no request to make.
        world.control->remove("/control/faults");
        ASSERT_EQ(first.status, 0) << first.errors;
        auto reported = json::write(member(lastLineOf(first.output), "failures")).value_or("");
        for (auto& [call, step] : calls)
            EXPECT_TRUE(!one.isWhole || contains(reported, "\"" + step + ": ")) << reported;
        auto second = init({"--fetch"});
        ASSERT_EQ(second.status, 0) << second.errors;
        auto summary = lastLineOf(second.output);
        // A batch that failed is left to a later sync, and pipelines need the layouts of deals. Rows of fields that
        // were cut are missing until metadata is asked for again; if the same module's records failed too, they fail
        // again.
        auto left = json::write(member(summary, "failures"));
        bool isAboutRecords = contains(one.fault, "shortRows") && contains(*left, R"(["initialRecords: )");
        EXPECT_TRUE(left == "[]" || left == R"(["pipelines: not done"])" || isAboutRecords) << *left;
        EXPECT_GT(member(summary, "modules").asInteger().value_or(0), 15) << second.output;
    }
}

}  // namespace

}  // namespace tarvo::tests
