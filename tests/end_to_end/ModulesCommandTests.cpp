#include <fstream>
#include <sstream>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

/// Returns what the kernel says about a program.
std::string procFile(const Process& process, const std::string& name) {
    std::ifstream file("/proc/" + std::to_string(process.pid()) + "/" + name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace

TEST(ModulesCommand, ListsTheModulesByPositionForPeopleAndPrograms) {
    EndToEnd world;
    auto listed = endOf(world.host({"modules"}));
    ASSERT_EQ(listed.status, 0) << listed.errors;
    EXPECT_EQ(listed.errors, "");
    EXPECT_TRUE(contains(listed.output, "\nLeads  ")) << listed.output;
    EXPECT_LT(listed.output.find("Leads"), listed.output.find("Contacts")) << "sorted by position";
    EXPECT_TRUE(contains(listed.output, "Café Visits"));
    EXPECT_TRUE(contains(listed.output, world.databasePath()));
    auto printed = json::parse(endOf(world.host({"modules", "--json"})).output).value_or(Value());
    auto modules = member(printed, "modules");
    ASSERT_TRUE(modules.asList() && !modules.asList()->empty());
    EXPECT_EQ(member(modules.asList()->front(), "moduleName"), Value("Leads"));
    EXPECT_EQ(member(printed, "database"), Value(world.databasePath()));
}

TEST(ModulesCommand, AsksTheServerOnceAndThenWorksWithoutIt) {
    EndToEnd world;
    auto first = endOf(world.host({"modules"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    EXPECT_EQ(world.initRequests(), 1u);
    EXPECT_EQ(endOf(world.host({"modules"})).output, first.output);
    EXPECT_EQ(world.initRequests(), 1u) << "stored modules need no server";
    world.stopServer();
    EXPECT_EQ(endOf(world.host({"modules"})).output, first.output);
    expectRefusal(endOf(world.host({"modules", "--fetch"})), 1, "server");
}

TEST(ModulesCommand, LeavesNoReadableFileAndOpensWithTheRightPassphraseAlone) {
    EndToEnd world;
    ASSERT_EQ(endOf(world.host({"modules"})).status, 0);
    auto file = world.content(world.databasePath());
    ASSERT_GT(file.size(), 1024u);
    for (auto name : {"Leads", "Contacts", "Campaigns", "MODULE_DETAILS", "SQLite format"})
        EXPECT_FALSE(contains(file, name)) << name;

    auto wrong = endOf(world.host({"modules"}, "wrong passphrase"));
    expectRefusal(wrong, 1, "wrong passphrase: ");
    EXPECT_EQ(wrong.output, "");
    EXPECT_TRUE(world.content(world.databasePath()) == file) << "a refused passphrase changed the file";
    EXPECT_EQ(endOf(world.host({"modules"})).status, 0);
}

TEST(ModulesCommand, RefusesADatabaseInTheOtherNaming) {
    EndToEnd world;
    auto first = endOf(world.host({"modules"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    expectRefusal(endOf(world.host({"--identifier", "api", "modules"})), 1, "--identifier");
    EXPECT_EQ(endOf(world.host({"modules"})).output, first.output);
}

TEST(ModulesCommand, KeepsThePassphraseOutOfItsEnvironment) {
    EndToEnd world;
    auto host = world.host({"serve"});
    host->send(R"({"id":1,"call":"host.wait"})");
    ASSERT_TRUE(host->line());
    auto environment = procFile(*host, "environ");
    EXPECT_FALSE(environment.empty() || contains(environment, "right passphrase"));
    EXPECT_TRUE(contains(procFile(*host, "limits"), "Max core file size        0 "));
}

TEST(ModulesCommand, ReadsThePassphraseFromADescriptor) {
    EndToEnd world;
    auto listed = std::make_unique<Process>("tarvo-host", world.arguments({"--passphrase-fd", "0", "modules"}),
                                            world.folder + "/host.log");
    listed->send("right passphrase");
    auto ended = endOf(std::move(listed));
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(endOf(world.host({"modules"})).output, ended.output) << "the same passphrase opens it";
}

TEST(ModulesCommand, SaysInOneLineWhatIsWrong) {
    EndToEnd world;
    auto missing = world.folder + "/missing.pem";
    auto noCertificate = world.folder + "/server.log";
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string says;
    };
    const std::vector<Case> cases = {
        {{}, 2, "subcommand"},
        {{"dance"}, 2, ""},
        {{"modules", "--colour", "red"}, 2, "--colour"},
        {{"modules", "--co\x1b[31m\u202Elour"}, 2, "--co [31m lour"},
        {{"modules", "--server-type", "12"}, 2, "--server-type"},
        {{"modules", "--server-type", "one"}, 2, "--server-type"},
        {{"modules", "--servlet", "other"}, 2, "--servlet"},
        {{"modules", "--identifier", "id"}, 2, "--identifier"},
        {{"modules", "--ca", missing}, 2, "--ca"},
        {{"modules", "--ca", noCertificate, "--account", "1", "--passphrase", "p"}, 2, noCertificate},
        {{"modules", "--passphrase", "p"}, 2, "--account"},
        {{"modules", "--account", "1"}, 2, "--passphrase"},
        {{"modules", "--account", "1", "--passphrase", ""}, 2, "--passphrase"},
        {{"modules", "--account", "1", "--passphrase", "p"}, 2, "--token"},
        {{"modules", "--account", "1", "--passphrase", "p", "--home", "/dev/null/home"}, 2, "/dev/null/home"},
        {{"modules", "--account", "42", "--passphrase", "p", "--token", "secret", "--server-type", "0", "--ca",
          world.authority, "--domain", "localhost:" + std::to_string(world.port)},
         1,
         "token"},
        {{"modules", "--account", "42", "--passphrase", "p", "--token", "secret", "--server-type", "0", "--domain",
          "localhost:" + std::to_string(world.port)},
         1,
         "certificate of an unknown authority"},
    };
    for (auto& one : cases) {
        auto arguments = one.arguments;
        if (std::find(arguments.begin(), arguments.end(), "--home") == arguments.end())
            arguments.insert(arguments.begin(), {"--home", world.folder + "/other"});
        SCOPED_TRACE(text::join(arguments, " "));
        auto ended = endOf(std::make_unique<Process>("tarvo-host", arguments, world.folder + "/host.log",
                                                     std::vector<std::string>{"TARVO_PASSPHRASE="}));
        expectRefusal(ended, one.status, one.says);
        EXPECT_FALSE(contains(ended.errors, "secret")) << ended.errors;
    }
}

}  // namespace tarvo::tests
