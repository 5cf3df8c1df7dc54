#include "platform/SettingsStore.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <thread>

#include "platform/Files.h"
#include "platform/Json.h"
#include "platform/ProgrammingError.h"
#include "platform/Text.h"
#include "tests/support/LogWatch.h"
#include "tests/support/OnThreads.h"
#include "tests/support/OpaqueValue.h"

namespace tarvo::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class SettingsStoreTests : public ::testing::Test {
protected:
    SettingsStoreTests() : folder_(files::makeTemporaryDirectory("settings")), store_(folder_, "app") {}
    ~SettingsStoreTests() override { files::remove(folder_); }

    std::string path() const { return folder_ + "/app.jsonl"; }
    std::string content(const std::string& file) const { return files::read(file).value_or(Data()).text(); }
    void put(std::string_view text) const { std::ofstream(path(), std::ios::binary) << text; }
    bool add(SettingsStore& store, std::string_view key) const {
        return store.update(key, [](const Value& present) { return Value(present.asInteger().value_or(0) + 1); })
            .has_value();
    }

    LogWatch log_;
    std::string folder_;
    SettingsStore store_;
};

TEST_F(SettingsStoreTests, KeepsEveryKindOverReopening) {
    const ValueMap values{{"text", "a \"b\"\n\xC3\xA9"},
                          {"yes", true},
                          {"least", std::numeric_limits<std::int64_t>::min()},
                          {"most", std::numeric_limits<std::int64_t>::max()},
                          {"whole real", 3.0},
                          {"tiny", 5e-324},
                          {"list", ValueList{1, Value(), ValueMap{{"a", false}}}},
                          {"", "empty key"}};
    for (auto& [key, value] : values) ASSERT_TRUE(store_.set(key, value)) << key;
    SettingsStore reopened(folder_, "app");
    for (auto& [key, value] : values) EXPECT_EQ(reopened.value(key), std::optional(value)) << key;
    EXPECT_EQ(reopened.keys().size(), values.size());
}

TEST_F(SettingsStoreTests, ChangesInsideMapsAreKeptAsTheyAre) {
    ValueMap modules;
    for (int i = 0; i < 50; ++i) modules.set("Module" + std::to_string(i), ValueMap{{"time", "0"}, {"more", true}});
    const auto changed = [&](std::string_view module, Value value) {
        auto maps = modules;
        maps.set(module, std::move(value));
        return maps;
    };
    auto without = modules;
    without.remove("Module7");
    const Value steps[] = {modules,
                           changed("Module7", ValueMap{{"time", "1"}, {"list", ValueList{1, Value()}}}),
                           changed("Module7", ValueMap{{"time", Value()}}),
                           changed("Module7", ValueMap{{"time", ValueMap{{"inner", Value()}}}}),
                           changed("Module7", ValueMap()),
                           changed("Module7", 7),
                           without,
                           changed("Module51", ValueMap{{"", ValueMap()}}),
                           ValueMap(),
                           "no map"};
    SettingsStore watching(folder_, "app");
    for (auto& step : steps) {
        ASSERT_TRUE(store_.set("modules", step));
        EXPECT_EQ(store_.value("modules"), step);
        EXPECT_EQ(watching.value("modules"), step);
        EXPECT_EQ(SettingsStore(folder_, "app").value("modules"), step);
    }
    ASSERT_TRUE(store_.set("modules", modules));
    auto size = files::size(path()).value();
    ASSERT_TRUE(store_.set("modules", changed("Module9", ValueMap{{"time", "1"}, {"more", true}})));
    EXPECT_LT(files::size(path()).value() - size, 100u) << "one entry of one map has changed";
}

TEST_F(SettingsStoreTests, RemovesOneKeyOrThoseChosen) {
    ASSERT_TRUE(store_.change(ValueMap{{"a#CRM#1", 1}, {"b#CRM#2", 2}, {"plain", 3}, {"gone", 4}}));
    EXPECT_TRUE(store_.remove("gone"));
    EXPECT_TRUE(store_.remove("never there"));
    EXPECT_TRUE(store_.removeKeys([](std::string_view key) { return key.find("#CRM#") != key.npos; }));
    EXPECT_THAT(store_.keys(), ElementsAre("plain"));
    EXPECT_THAT(SettingsStore(folder_, "app").keys(), ElementsAre("plain"));
}

TEST_F(SettingsStoreTests, RefusesValuesThatWouldNotReadBack) {
    log_.expectWarning("a value without a JSON form");
    log_.expectWarning("a key of the file's own");
    const Value refused[] = {Bytes{"ab"}, opaqueValue(), std::numeric_limits<double>::infinity(), "\xFF\xFE",
                             ValueList{ValueMap{{"\xC3", 1}}}};
    ASSERT_TRUE(store_.set("key", "kept"));
    for (auto& value : refused) EXPECT_FALSE(store_.set("key", value)) << kindName(value.kind());
    EXPECT_FALSE(store_.set("tarvo.settings.format", 7));
    EXPECT_FALSE(store_.set("tarvo.settings.merge", ValueMap{{"key", 1}}));
    EXPECT_EQ(store_.update("key", [](const Value&) { return Value(Bytes{"x"}); }), std::nullopt);
    EXPECT_EQ(store_.string("key"), "kept");
    EXPECT_EQ(SettingsStore(folder_, "app").string("key"), "kept");
}

TEST_F(SettingsStoreTests, FileIsForItsOwnerAlone) {
    put("{\"a\":1}\n");
    ::chmod(path().c_str(), 0644);
    ASSERT_TRUE(store_.set("b", 2));
    struct stat found {};
    ASSERT_EQ(::stat(path().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777, 0600u);
    EXPECT_EQ(store_.integer("a"), 1);
}

TEST_F(SettingsStoreTests, DamagedFileIsSetAsideAndWhatReadsIsCarriedOver) {
    const std::tuple<const char*, std::string, std::vector<std::string>> cases[] = {
        {"no JSON at all", "garbage", {}},
        {"JSON that is no map", "[1,2]\n", {}},
        {"zeros after the last line", std::string("{\"a\":1}\n\0\0\0\0", 12), {"a"}},
        {"a line cut off", "{\"a\":1}\n{\"b\":", {"a"}},
        {"a bad line in the middle", "{\"a\":1}\n{\"b\":}\n{\"c\":3}\n", {"a", "c"}},
        {"no UTF-8", "{\"a\":\"\xFF\"}\n{\"c\":3}\n", {"c"}},
    };
    log_.expectWarning(".damaged-");
    int number = 0;
    for (auto& [what, bytes, keysLeft] : cases) {
        put(bytes);
        SettingsStore store(folder_, "app");
        EXPECT_THAT(store.keys(), ::testing::UnorderedElementsAreArray(keysLeft)) << what;
        EXPECT_EQ(content(path() + ".damaged-" + std::to_string(++number)), bytes) << what;
        EXPECT_THAT(log_.lines(), ::testing::Contains(HasSubstr(".damaged-" + std::to_string(number)))) << what;
        EXPECT_TRUE(store.set("new", 1)) << what;
        EXPECT_EQ(SettingsStore(folder_, "app").integer("new"), 1) << what;
    }
}

TEST_F(SettingsStoreTests, LeavesFilesOfNewerProgramsAlone) {
    log_.expectWarning("written by a newer version");
    const std::string newer = "{\"tarvo.settings.format\":2}\n{\"a\":1}\nwhatever it says\n";
    put(newer);
    EXPECT_EQ(store_.value("a"), std::nullopt);
    EXPECT_FALSE(store_.set("a", 2));
    EXPECT_FALSE(store_.synchronise());
    EXPECT_EQ(content(path()), newer);
}

TEST_F(SettingsStoreTests, AnswersFalseWhereNothingCanBeWritten) {
    log_.expectWarning("cannot be opened");
    std::filesystem::create_directory(path());
    EXPECT_FALSE(store_.set("a", 1));
    EXPECT_EQ(store_.value("a"), std::nullopt);
    EXPECT_FALSE(add(store_, "counter"));
}

TEST_F(SettingsStoreTests, LongJournalIsRewrittenAsItsState) {
    const std::string filler(2000, 'x');
    ASSERT_TRUE(store_.set("gone", 1));
    ASSERT_TRUE(store_.remove("gone"));
    for (int i = 0; i < 200; ++i) ASSERT_TRUE(store_.set("key", filler + std::to_string(i)));
    EXPECT_LT(files::size(path()), 100'000u);
    SettingsStore reopened(folder_, "app");
    EXPECT_EQ(reopened.string("key"), filler + "199");
    EXPECT_THAT(reopened.keys(), ElementsAre("key"));
    EXPECT_THAT(content(path()), ::testing::StartsWith("{\"tarvo.settings.format\":1}\n"));
}

TEST_F(SettingsStoreTests, TwoStoresOnOneFileSeeEachOther) {
    SettingsStore other(folder_, "app");
    EXPECT_EQ(other.value("a"), std::nullopt);
    ASSERT_TRUE(store_.set("a", 1));
    EXPECT_EQ(other.integer("a"), 1);
    ASSERT_TRUE(other.remove("a"));
    EXPECT_EQ(store_.value("a"), std::nullopt);
    std::filesystem::remove(path());
    ASSERT_TRUE(other.set("b", 2));
    EXPECT_THAT(store_.keys(), ElementsAre("b"));
}

TEST_F(SettingsStoreTests, CountsExactlyFromManyThreadsAndStores) {
    SettingsStore other(folder_, "app");
    // Long enough to be rewritten several times under way.
    ASSERT_TRUE(store_.set("filler", std::string(1000, 'x')));
    std::atomic<int> failures = 0;
    onThreads(4, [&](int t) {
        auto& store = t % 2 ? store_ : other;
        for (int i = 0; i < 50; ++i) {
            failures += !add(store, "counter");
            failures += !store.set("filler" + std::to_string(t), std::string(1000, char('a' + i % 20)));
            failures += store.integer("counter").value_or(0) < i;
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(store_.integer("counter"), 200);
    EXPECT_EQ(SettingsStore(folder_, "app").integer("counter"), 200);
}

TEST_F(SettingsStoreTests, UpdateMayReadButNotChange) {
    std::string reported;
    auto former = setProgrammingErrorHandler([&](std::string_view what) { reported = what; });
    ASSERT_TRUE(store_.set("a", 1));
    auto stored = store_.update("b", [&](const Value& present) {
        EXPECT_TRUE(present.isNull());
        EXPECT_FALSE(store_.set("c", 3));
        return Value(*store_.integer("a") + 1);
    });
    setProgrammingErrorHandler(former);
    EXPECT_EQ(stored, std::optional(Value(2)));
    EXPECT_THAT(reported, HasSubstr("update"));
    EXPECT_THAT(store_.keys(), UnorderedElementsAre("a", "b"));
}

TEST_F(SettingsStoreTests, ThrowingUpdateLeavesTheStoreUsable) {
    EXPECT_THROW(store_.update("a", [](const Value&) -> Value { throw 1; }), int);
    EXPECT_TRUE(add(store_, "a"));
}

TEST_F(SettingsStoreTests, SuitesAreApartAndStayInTheFolder) {
    SettingsStores stores;
    stores.setFolder(folder_ + "/deep/er");
    ASSERT_TRUE(stores.suite()->set("a", 1));
    ASSERT_TRUE(stores.suite("../../odd/name")->set("a", 2));
    EXPECT_EQ(stores.suite()->integer("a"), 1);
    EXPECT_TRUE(files::exists(folder_ + "/deep/er/..%2F..%2Fodd%2Fname.jsonl"));
}

TEST_F(SettingsStoreTests, AFolderToUseInsteadCountsUnlessOneIsSet) {
    SettingsStores stores;
    ASSERT_TRUE(stores.suite("a", folder_ + "/beside")->set("a", 1));
    EXPECT_TRUE(files::exists(folder_ + "/beside/a.jsonl"));
    stores.setFolder(folder_ + "/set");
    EXPECT_EQ(stores.suite("a", folder_ + "/beside")->value("a"), std::nullopt);
}

/// Descriptor on which the writer acknowledges; its standard output belongs to GoogleTest.
constexpr int acknowledgements = 100;

// The other side of `KilledWriterLosesNothingAcknowledged`: folder and pipe come from there.
TEST(SettingsStoreChild, DISABLED_WritesUntilKilled) {
    auto folder = std::getenv("TARVO_SETTINGS_CHILD");
    ASSERT_NE(folder, nullptr);
    SettingsStore store(folder, "app");
    for (;;) {
        auto next =
            store.update("counter", [](const Value& present) { return Value(present.asInteger().value_or(0) + 1); });
        ASSERT_TRUE(next);
        auto number = *next->asInteger();
        ASSERT_TRUE(store.set("text" + std::to_string(number % 7), std::string(500, 'x') + std::to_string(number)));
        if (::write(acknowledgements, &number, sizeof number) != sizeof number) return;
    }
}

/// Runs the writer until it has acknowledged so many numbers, kills it wherever it is, and gives the last number that
/// it acknowledged.
std::int64_t runAndKill(const std::string& folder, int count, std::chrono::microseconds extra) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return -1;
    ::setenv("TARVO_SETTINGS_CHILD", folder.c_str(), 1);
    auto child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], acknowledgements);
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        ::execl("/proc/self/exe", "platform_tests", "--gtest_filter=SettingsStoreChild.*", "--gtest_brief=1",
                "--gtest_also_run_disabled_tests", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    std::int64_t last = 0, number = 0;
    auto readOne = [&] { return ::read(ends[0], &number, sizeof number) == sizeof number; };
    for (int i = 0; i < count && readOne(); ++i) last = number;
    // Busy: the point is to strike in the middle of an operation.
    for (auto end = std::chrono::steady_clock::now() + extra; std::chrono::steady_clock::now() < end;) continue;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    while (readOne()) last = number;
    ::close(ends[0]);
    return last;
}

TEST_F(SettingsStoreTests, KilledWriterLosesNothingAcknowledged) {
    std::mt19937 random(1);
    std::int64_t highest = 0;
    for (int round = 0; round < 50; ++round) {
        auto last =
            runAndKill(folder_, 1 + static_cast<int>(random() % 40), std::chrono::microseconds(random() % 3000));
        ASSERT_GT(last, highest) << "the writer gave a number again, or none";
        highest = last;
        SettingsStore store(folder_, "app");
        auto counter = store.integer("counter").value_or(0);
        ASSERT_GE(counter, last);
        ASSERT_LE(counter, last + 1) << "at most one write was under way";
        ASSERT_EQ(store.string("text" + std::to_string(last % 7)), std::string(500, 'x') + std::to_string(last));
    }
    EXPECT_FALSE(files::exists(path() + ".damaged-1"));
}

TEST_F(SettingsStoreTests, TheWaitForAnotherProcessHasAnEnd) {
    using namespace std::chrono_literals;
    SettingsStore store(folder_, "app", 20ms);
    ASSERT_TRUE(store.set("a", 1));
    auto other = ::open(path().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    log_.expectWarning("is held by another process for too long");
    EXPECT_FALSE(store.set("a", 2));
    EXPECT_EQ(store.integer("a"), 1);
    EXPECT_EQ(SettingsStore(folder_, "app", 20ms).integer("a"), std::nullopt);
    ::close(other);
    EXPECT_TRUE(store.set("a", 3));
    EXPECT_EQ(store.integer("a"), 3);
}

}  // namespace
}  // namespace tarvo::platform
