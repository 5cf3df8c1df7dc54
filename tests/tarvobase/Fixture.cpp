#include "tests/tarvobase/Fixture.h"

#include "platform/Clock.h"
#include "platform/DispatchQueue.h"
#include "platform/Files.h"
#include "platform/MainQueue.h"
#include "platform/ProcessState.h"
#include "platform/ProgrammingError.h"
#include "platform/SettingsStore.h"
#include "platform/Text.h"
#include "tarvobase/configuration/DatabaseConstants.h"

namespace tarvo {

namespace {
constexpr std::chrono::seconds patience{30};
}

// Already here, so that members of a derived fixture find the state of their own test.
FoundationTest::FoundationTest() { platform::ProcessState::installFresh(); }

void FoundationTest::SetUp() {
    folder_ = files::makeTemporaryDirectory("tarvo-foundation");
    platform::setLogSink([this](std::string_view line) {
        std::lock_guard lock(mutex_);
        log_.emplace_back(line);
    });
    platform::setProgrammingErrorHandler([this](std::string_view what) {
        std::lock_guard lock(mutex_);
        programmingErrors_.emplace_back(what);
    });
    platform::ProcessState::current().get<SettingsStores>().setFolder(folder_ + "/settings");
    configuration().localDirectoryLocation = folder_;
    configuration().userDefaultsGroup = "tests";
    signIn("1001");
}

void FoundationTest::TearDown() {
    settle();
    for (auto& database : databases_) database->deregisterDB();
    databases_.clear();
    configuration().databaseAdapter = nullptr;
    platform::Clock::release();
    platform::Clock::setTimeZone(std::nullopt);
    settle();
    platform::setLogSink(nullptr);
    platform::setProgrammingErrorHandler(nullptr);
    EXPECT_THAT(takeProgrammingErrors(), ::testing::IsEmpty());
    EXPECT_FALSE(wasLogged("secret-token"));
    EXPECT_FALSE(wasLogged("a passphrase"));
    files::remove(folder_);
}

std::shared_ptr<KelvaDatabasePersistance> FoundationTest::openDatabase(const std::string& passphrase) {
    auto adapter =
        std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(DatabaseConstants().databaseName()));
    auto opened = adapter->registerDB(passphrase);
    EXPECT_TRUE(opened.ok()) << (opened.ok() ? "" : opened.error().message);
    configuration().databaseAdapter = adapter;
    databases_.push_back(adapter);
    return adapter;
}

void FoundationTest::setFull(DatabaseAdapter& database, bool isFull) {
    // A limit below the present size counts as the present size.
    EXPECT_TRUE(
        database.execute(isFull ? "PRAGMA max_page_count = 1" : "PRAGMA max_page_count = 1000000", std::nullopt));
}

std::vector<std::string> FoundationTest::difficultTexts() {
    auto texts = text::split(
        "O'Brien|say \"hi\"|100%|1000|a_b|back\\slash|{2}|{0} = '{1}'|a[x]|' or 1=1 --|'); DROP TABLE LeadsRecords; --|"
        "Company|${EMPTY}|\xF0\x9F\x99\x82",
        "|");
    texts.push_back(std::string("a\0b", 3));
    texts.push_back(longText());
    return texts;
}

void FoundationTest::pump(const std::function<bool()>& until) {
    ASSERT_TRUE(MainQueue::shared()->runUntil(until, patience));
}

void FoundationTest::settle() {
    do {
        ASSERT_TRUE(platform::WorkerPool::waitUntilIdle(patience));
    } while (MainQueue::shared()->drain() > 0);
}

std::vector<std::string> FoundationTest::logged() const {
    std::lock_guard lock(mutex_);
    return log_;
}

long FoundationTest::linesWith(std::string_view piece) const {
    auto lines = logged();
    return std::count_if(lines.begin(), lines.end(), [&](auto& line) { return line.find(piece) != std::string::npos; });
}

std::vector<std::string> FoundationTest::takeProgrammingErrors() {
    std::lock_guard lock(mutex_);
    return std::exchange(programmingErrors_, {});
}

}  // namespace tarvo
