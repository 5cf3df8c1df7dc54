#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/kelva_db/DatabaseFixture.h"
#include "tests/kelva_db/KillPoints.h"

namespace kelva::tests {

namespace {

class OpeningTest : public testing::Test {
protected:
    /// Opens the file, writes to it, and returns the rows that it has then.
    static std::int64_t rowsAfterWrite(const std::string& path, const Configuration& configuration) {
        DatabasePool database(path, configuration);
        execute(database, "CREATE TABLE IF NOT EXISTS t (x); INSERT INTO t VALUES ('new')");
        return integer(database, "SELECT count(*) FROM t");
    }
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    }
    /// What a crash leaves of a file in the middle of a transaction of the older kind, which keeps a journal.
    std::string crashedFile() {
        auto path = folder_.file("crashed.db"), busy = folder_.file("busy.db");
        std::ofstream(folder_.file("script"))
            << "PRAGMA key='correct horse'; PRAGMA cipher_page_size=4096;\n"
            << "CREATE TABLE t (x); WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 500) "
            << "INSERT INTO t SELECT 'old' || hex(zeroblob(200)) FROM n;\n"
            << "PRAGMA cache_size=5; BEGIN; UPDATE t SET x = hex(randomblob(300));\n"
            << ".shell cp " << busy << " " << path << "; cp " << busy << "-journal " << path << "-journal\n";
        EXPECT_EQ(std::system(("sqlcipher '" + busy + "' < '" + folder_.file("script") + "' > /dev/null").c_str()), 0);
        EXPECT_GT(tarvo::files::size(path + "-journal").value_or(0), 0u);
        return path;
    }

    Folder folder_;
    std::string path_ = folder_.file("a.db");
};

TEST_F(OpeningTest, AWrongKeyLosesNothingOfACrashedFileAndTheRightOnePlaysItsJournalBack) {
    auto path = crashedFile();
    EXPECT_EQ(failureOf([&] { DatabasePool(path, passphraseConfiguration("wrong")); }), FailureKind::wrongKey);
    DatabasePool database(path, passphraseConfiguration("correct horse"));
    EXPECT_EQ(integer(database, "SELECT count(*) FROM t WHERE x LIKE 'old%'"), 500);
}

TEST_F(OpeningTest, AStrayFileInThePlaceOfTheJournalDoesNoHarm) {
    const std::string garbage[] = {"x", std::string(3000, 'x'), std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8),
                                   std::string(4096, '\0')};
    rowsAfterWrite(path_, rawConfiguration());
    auto rows = 1;
    for (auto suffix : {"-journal", "-wal"}) {
        for (auto& content : garbage) {
            std::ofstream(path_ + suffix) << content;
            EXPECT_EQ(rowsAfterWrite(path_, rawConfiguration()), ++rows) << suffix << " of " << content.size();
        }
    }
    std::ofstream(folder_.file("none.db-journal")) << garbage[1];
    EXPECT_EQ(rowsAfterWrite(folder_.file("none.db"), rawConfiguration()), 1);
}

TEST_F(OpeningTest, FilesAreTheOwnersAlone) {
    ::mode_t before = ::umask(0);
    DatabasePool database(path_, rawConfiguration());
    execute(database, "CREATE TABLE t (x)");
    for (auto suffix : {"", "-wal", "-shm"}) EXPECT_EQ(modeOf(path_ + suffix), 0600u) << suffix;
    database.close();
    ::chmod(path_.c_str(), 0644);
    DatabasePool again(path_, rawConfiguration());
    execute(again, "DROP TABLE t");
    for (auto suffix : {"", "-wal", "-shm"}) EXPECT_EQ(modeOf(path_ + suffix), 0600u) << suffix;
    ::umask(before);
}

TEST_F(OpeningTest, DamageIsNotTakenForAWrongKey) {
    const std::pair<std::string, FailureKind> cases[] = {
        {"SQLite format 3", FailureKind::corrupt},
        {std::string(511, 'x'), FailureKind::corrupt},
        {std::string(8192, '\0'), FailureKind::corrupt},
        {std::string(8192, 'x'), FailureKind::wrongKey},
    };
    for (auto& [content, kind] : cases) {
        std::ofstream(path_) << content;
        EXPECT_EQ(failureOf([&] { DatabasePool(path_, rawConfiguration()); }), kind) << content.size();
        EXPECT_EQ(failureOf([&] { DatabasePool(path_, Configuration()); }), kind) << content.size();
        EXPECT_EQ(contentOf(path_), content);
    }
}

TEST_F(OpeningTest, ClosingWaitsForNoOtherReader) {
    using Clock = std::chrono::steady_clock;
    auto patient = rawConfiguration();
    patient.busyTimeout = 60'000;
    rowsAfterWrite(path_, patient);
    DatabasePool other(path_, rawConfiguration());
    auto began = Clock::now();
    other.read([&](Database& reader) {
        reader.query("SELECT * FROM t");
        EXPECT_EQ(rowsAfterWrite(path_, patient), 2);
    });
    EXPECT_LT(Clock::now() - began, std::chrono::seconds(30));
}

TEST_F(OpeningTest, WritesOfALockedDatabaseDoNotEachWaitTheWholeTime) {
    using Clock = std::chrono::steady_clock;
    auto configuration = rawConfiguration();
    configuration.busyTimeout = 2'000;
    DatabasePool database(path_, configuration), other(path_, configuration);
    auto write = [&] {
        return failureOf([&] { database.write([](Database& writer) { writer.execute("CREATE TABLE u (x)"); }); });
    };
    other.write([&](Database&) {
        EXPECT_EQ(write(), FailureKind::busy);
        auto began = Clock::now();
        for (int i = 0; i < 3; ++i) EXPECT_EQ(write(), FailureKind::busy);
        EXPECT_LT(Clock::now() - began, std::chrono::seconds(5));
    });
    EXPECT_EQ(write(), std::nullopt);
}

// The test below runs this one in processes of their own, which die at one call each.
TEST_F(OpeningTest, DISABLED_DiesWhileItOpens) {
    dieAtCall(std::atol(std::getenv("TARVO_DIE_AT")));
    rowsAfterWrite(std::getenv("TARVO_DIE_PATH"), rawConfiguration());
    dieAtCall(0);
}

/// Runs the test above; returns whether it was killed.
bool isKilledAtCall(long number, const std::string& path) {
    auto program = std::filesystem::read_symlink("/proc/self/exe").string();
    auto command = "exec env TARVO_DIE_AT=" + std::to_string(number) + " TARVO_DIE_PATH='" + path + "' '" + program +
                   "' --gtest_also_run_disabled_tests --gtest_filter=OpeningTest.DISABLED_DiesWhileItOpens > /dev/null";
    auto status = std::system(command.c_str());
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
}

TEST_F(OpeningTest, AFileWhoseFirstOpeningWasKilledOpens) {
    long calls = 0;
    for (bool isKilled = true; isKilled;) {
        auto path = folder_.file(std::to_string(++calls) + ".db");
        isKilled = isKilledAtCall(calls, path);
        auto rows = std::int64_t(0);
        EXPECT_NO_THROW(rows = rowsAfterWrite(path, rawConfiguration())) << "killed at call " << calls;
        EXPECT_TRUE(rows == 1 || rows == 2) << rows;
    }
    EXPECT_GT(calls, 10) << "the calls were not seen";
}

}  // namespace

}  // namespace kelva::tests
