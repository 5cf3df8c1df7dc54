#include <algorithm>
#include <filesystem>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

std::string scriptFolder() {
    const char* root = std::getenv("TARVO_SOURCE_DIR");
    return std::string(root ? root : ".") + "/tests/end_to_end/scripts";
}

std::vector<std::string> scripts() {
    std::vector<std::string> names;
    std::error_code missing;
    for (auto& file : std::filesystem::directory_iterator(scriptFolder(), missing))
        names.push_back(file.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The text "*" matches any value that is present.
bool matches(const Value& expected, const Value& found) {
    if (expected == Value("*")) return true;
    if (auto map = expected.asMap()) {
        auto other = found.asMap();
        return other && map->size() == other->size() && std::all_of(map->begin(), map->end(), [&](auto& entry) {
                   auto value = other->find(entry.name);
                   return value && matches(entry.value, *value);
               });
    }
    if (auto list = expected.asList()) {
        auto other = found.asList();
        return other && std::equal(list->begin(), list->end(), other->begin(), other->end(), matches);
    }
    return expected == found;
}

}  // namespace

/// A script is a file of lines: `>` sends the rest to the host, `<` is the next line that the host must write, `!` is a
/// control call of the server (its name and its body), `=` the number of init requests that the server has got so far.
/// At its end the host must end by itself without a further line.
class Script : public ::testing::TestWithParam<std::string> {
protected:
    EndToEnd world;
    std::unique_ptr<Process> host = world.host({"serve"});

    void step(char kind, const std::string& rest) {
        switch (kind) {
            case '>':
                return host->send(rest);
            case '<':
                return expectLine(rest);
            case '!':
                return control(rest);
            case '=':
                EXPECT_EQ(std::to_string(world.initRequests()), rest);
                return;
            default:
                FAIL() << "a line of a script cannot begin with " << kind;
        }
    }
    void expectLine(const std::string& expected) {
        auto found = host->line();
        ASSERT_TRUE(found) << "no further line where expected: " << expected;
        auto expectedJson = json::parse(expected);
        auto foundJson = json::parse(*found);
        ASSERT_TRUE(expectedJson && foundJson) << expected << "\n" << *found;
        EXPECT_TRUE(matches(*expectedJson, *foundJson)) << "expected " << expected << "\nfound    " << *found;
    }
    void control(const std::string& call) {
        auto blank = call.find(' ');
        auto answer = world.control->postJson("/control/" + call.substr(0, blank), call.substr(blank + 1));
        ASSERT_TRUE(answer && answer->status == 200) << call;
    }
};

TEST_P(Script, WritesExactlyTheExpectedLinesInOrder) {
    auto lines = text::split(world.content(scriptFolder() + "/" + GetParam() + ".script"), "\n");
    for (std::size_t i = 0; i < lines.size() && !HasFailure(); ++i) {
        SCOPED_TRACE(GetParam() + ".script, line " + std::to_string(i + 1));
        if (!lines[i].empty() && lines[i].front() != '#') step(lines[i].front(), lines[i].substr(2));
    }
    EXPECT_EQ(host->finish(), 0) << host->errors();
    EXPECT_EQ(host->output(), "");
    for (auto secret : {"token-of-42", "right passphrase"})
        EXPECT_EQ(host->errors().find(secret), std::string::npos) << "a secret stands in the log";
}

INSTANTIATE_TEST_SUITE_P(Serve, Script, ::testing::ValuesIn(scripts()), [](auto& test) { return test.param; });

TEST(Serve, AnswersWhatIsUnderWayBeforeItEndsWithItsInput) {
    EndToEnd world;
    world.setFault(R"({"call":"getappinitdata","fault":"delay","milliseconds":300})");
    auto host = world.host({"serve"});
    host->send(R"({"id":1,"call":"host.openDatabase"})");
    host->send(R"({"id":2,"call":"host.appInit"})");
    host->send(R"({"id":3,"call":"GetModulesUC","request":{"moduleNames":[]}})");
    EXPECT_EQ(host->finish(), 0) << host->errors();
    auto lines = text::split(host->output(), "\n");
    ASSERT_EQ(lines.size(), 7u) << host->output();
    EXPECT_EQ(lines[2], R"({"id":2,"event":"done"})");
    EXPECT_EQ(lines[4], R"({"id":3,"event":"didComplete","response":{"modules":[],"source":"database"}})");
    EXPECT_EQ(lines[5], R"({"id":3,"event":"done"})");
}

TEST(Serve, ListensToEveryTopicOfTheBusUntilItStops) {
    EndToEnd world;
    auto host = world.host({"serve"});
    auto listen = [&](const std::string& topic, const std::string& further = "") {
        host->send(R"({"id":1,"call":"host.notifications","request":{"topic":")" + topic + "\"" + further + "}}");
        EXPECT_EQ(host->line(), R"({"id":1,"event":"done"})") << topic;
    };
    for (auto topic : {"CVObserver", "CustomViewChangedObserver", "InitialProcessComplete", "ModuleChangedObserver",
                       "RecordChangedObserver", "SearchTokenChangedObserver"})
        listen(topic);
    listen("UserDefaultsValueObserver", R"(,"keys":["TarvoDateFormat"],"groups":["42"])");
    listen("InitialProcessComplete", R"(,"listen":false)");
    for (auto call : {"host.openDatabase", "host.appInit", "InitProcessUseCase"})
        host->send(R"({"id":2,"call":")" + std::string(call) + "\"}");
    EXPECT_EQ(host->finish(), 0) << host->errors();
    for (
        auto notice :
        {R"("topic":"ModuleChangedObserver","name":"modulesAdded","arguments":{}})",
         R"("topic":"CustomViewChangedObserver","name":"customViewChanged","arguments":{"viewIDs":[)",
         R"("topic":"UserDefaultsValueObserver","name":"newValue","arguments":{"value":"dd/MM/yyyy","forKey":"TarvoDateFormat","inGroup":"42"}})"})
        EXPECT_TRUE(contains(host->output(), notice)) << notice;
    EXPECT_FALSE(contains(host->output(), R"("topic":"InitialProcessComplete")"));
}

TEST(Serve, ReportsASettingThatTheDiskRefuses) {
    EndToEnd world;
    auto host = world.host({"serve"});
    auto answerTo = [&](const std::string& request) {
        host->send(R"({"id":1,"call":"host.settings","request":)" + request + "}");
        std::string lines;
        while (auto line = host->line()) {
            lines += *line;
            if (contains(*line, R"("event":"done")")) break;
        }
        return lines;
    };
    EXPECT_EQ(answerTo(R"({"key":"colour","action":"write","value":"red"})"), R"({"id":1,"event":"done"})");
    // No change of this process can be appended to a file that is a folder now.
    auto file = world.home() + "/settings/tarvo-host.jsonl";
    files::remove(file);
    ASSERT_TRUE(files::createDirectories(file));
    for (auto action : {R"("write","value":"blue")", R"("remove")"})
        EXPECT_TRUE(contains(answerTo(R"({"key":"colour","action":)" + std::string(action) + "}"),
                             R"("event":"onError","error":{"case":"notStored")"))
            << action;
}

}  // namespace tarvo::tests
