#include <cstdio>
#include <fstream>

#include "tests/kelva_db/DatabaseFixture.h"

namespace kelva::tests {

namespace {

constexpr const char* passphrase = "correct horse";

class EncryptionTest : public testing::Test {
protected:
    /// A closed database of one table with the text "findable" many times.
    void makeFile(const Configuration& configuration) {
        DatabasePool database(path_, configuration);
        execute(database,
                "CREATE TABLE t (id TEXT PRIMARY KEY, word); WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE "
                "i < 500) INSERT INTO t SELECT i, 'findable' FROM n");
    }
    std::optional<FailureKind> opening(const Configuration& configuration) {
        return failureOf([&] {
            DatabasePool database(path_, configuration);
            EXPECT_EQ(integer(database, "SELECT count(*) FROM t"), 500);
        });
    }
    /// Runs a command; returns its last line of output, and expects it to end well on demand.
    static std::string lastLineOf(const std::string& command, bool endsWell = false) {
        char line[200] = "";
        auto pipe = popen(command.c_str(), "r");
        while (pipe && std::fgets(line, sizeof line, pipe)) continue;
        auto status = pipe ? pclose(pipe) : -1;
        EXPECT_TRUE(status == 0 || !endsWell) << command;
        return line;
    }
    /// Runs the command line shell of SQLCipher.
    static std::string shell(const std::string& file, const std::string& sql) {
        return lastLineOf("sqlcipher '" + file + "' \"" + sql + "\" 2>&1");
    }

    Folder folder_;
    std::string path_ = folder_.file("a.db");
};

TEST_F(EncryptionTest, OnlyTheRightKeyOpensTheFileAndOthersLeaveItAlone) {
    makeFile(passphraseConfiguration(passphrase));
    auto before = contentOf(path_);
    EXPECT_EQ(before.find("findable"), std::string::npos);
    EXPECT_EQ(opening(passphraseConfiguration("wrong")), FailureKind::wrongKey);
    EXPECT_EQ(opening(rawConfiguration()), FailureKind::wrongKey);
    EXPECT_EQ(opening(Configuration()), FailureKind::wrongKey);
    EXPECT_TRUE(contentOf(path_) == before);
    EXPECT_EQ(opening(passphraseConfiguration(passphrase)), std::nullopt);
}

TEST_F(EncryptionTest, WrongKeyLeavesAlsoTheLogOfACrashAlone) {
    {
        DatabasePool database(path_, passphraseConfiguration(passphrase));
        execute(database, "CREATE TABLE t (x)");
        // What a crash would leave: the file and its log as they are while the database is in use.
        ASSERT_TRUE(tarvo::files::copy(path_, folder_.file("b.db")));
        ASSERT_TRUE(tarvo::files::copy(path_ + "-wal", folder_.file("b.db-wal")));
    }
    path_ = folder_.file("b.db");
    auto file = contentOf(path_), log = contentOf(path_ + "-wal");
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(opening(passphraseConfiguration("wrong")), FailureKind::wrongKey);
    EXPECT_TRUE(contentOf(path_) == file);
    EXPECT_TRUE(contentOf(path_ + "-wal") == log);
    DatabasePool database(path_, passphraseConfiguration(passphrase));
    EXPECT_EQ(integer(database, "SELECT count(*) FROM t"), 0);
}

TEST_F(EncryptionTest, PlainFilesOpenWithoutKeyAlone) {
    makeFile(Configuration());
    auto before = contentOf(path_);
    EXPECT_NE(before.find("findable"), std::string::npos);
    EXPECT_EQ(opening(passphraseConfiguration(passphrase)), FailureKind::notEncrypted);
    EXPECT_TRUE(contentOf(path_) == before);
    EXPECT_EQ(opening(Configuration()), std::nullopt);
}

TEST_F(EncryptionTest, PathsAndKeysThatCannotBeUsedAreRefused) {
    path_ = folder_.file("missing/a.db");
    EXPECT_EQ(opening(Configuration()), FailureKind::cannotOpen);
    EXPECT_EQ(opening(passphraseConfiguration(passphrase)), FailureKind::cannotOpen);
    path_ = folder_.file("");
    EXPECT_EQ(opening(passphraseConfiguration(passphrase)), FailureKind::cannotOpen);
    EXPECT_EQ(failureOf([] { passphraseConfiguration(""); }), FailureKind::misuse);
    EXPECT_EQ(failureOf([] { Configuration().setRawKey("short", "salt"); }), FailureKind::misuse);
}

TEST_F(EncryptionTest, DamageIsToldAndNotRepaired) {
    makeFile(passphraseConfiguration(passphrase));
    auto damage = [&](std::size_t at) {
        auto content = contentOf(path_);
        ASSERT_GT(content.size(), at + 100);
        for (std::size_t i = at; i < at + 100; ++i) content[i] = static_cast<char>(content[i] ^ 0x55);
        std::ofstream(path_) << content;
    };
    damage(3 * 4096 + 200);
    auto before = contentOf(path_);
    DatabasePool database(path_, passphraseConfiguration(passphrase));
    EXPECT_EQ(failureOf([&] { integer(database, "SELECT * FROM t"); }), FailureKind::corrupt);
    database.close();
    EXPECT_TRUE(contentOf(path_) == before);
    damage(200);
    before = contentOf(path_);
    EXPECT_EQ(opening(passphraseConfiguration(passphrase)), FailureKind::wrongKey);
    EXPECT_TRUE(contentOf(path_) == before);
}

TEST_F(EncryptionTest, FilesOfOtherToolsOpenAndOursOpenThere) {
    for (std::string pageSize : {"1024", "4096", "8192"}) {
        path_ = folder_.file(pageSize + ".db");
        shell(path_, "PRAGMA key='correct horse'; PRAGMA cipher_page_size=" + pageSize +
                         "; CREATE TABLE t (id); WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 500) "
                         "INSERT INTO t SELECT i FROM n;");
        EXPECT_EQ(opening(passphraseConfiguration(passphrase)), std::nullopt) << pageSize;
    }
    path_ = folder_.file("ours.db");
    std::string version;
    DatabaseQueue(":memory:", Configuration()).read([&](Database& reader) {
        version = *reader.query("PRAGMA cipher_version").cell(0, 0).asText();
    });
    if (shell(path_, "PRAGMA cipher_version") != version + "\n") GTEST_SKIP() << "the shell is of another version";
    makeFile(passphraseConfiguration(passphrase));
    EXPECT_EQ(shell(path_, "PRAGMA key='correct horse'; PRAGMA cipher_page_size=4096; SELECT count(*) FROM t;"),
              "500\n");
}

TEST_F(EncryptionTest, NewFilesHaveASaltOfTheirOwn) {
    makeFile(passphraseConfiguration(passphrase));
    auto first = contentOf(path_).substr(0, 16);
    path_ = folder_.file("b.db");
    makeFile(passphraseConfiguration(passphrase));
    EXPECT_TRUE(contentOf(path_).substr(0, 16) != first);
}

TEST_F(EncryptionTest, AttachedFilesAreReadAndWritten) {
    const std::pair<std::string, Configuration> cases[] = {{"passphrase", passphraseConfiguration(passphrase)},
                                                           {"raw", rawConfiguration()},
                                                           {"plain", Configuration()},
                                                           {"small pages", passphraseConfiguration(passphrase)}};
    for (auto& [name, configuration] : cases) {
        SCOPED_TRACE(name);
        auto other = folder_.file(name + "-other.db");
        if (name == "small pages")
            shell(other, "PRAGMA key='correct horse'; PRAGMA cipher_page_size=1024; CREATE TABLE u (x);");
        DatabasePool database(folder_.file(name + ".db"), configuration);
        integer(database, "SELECT 1");
        database.attachDatabase(other, "beside");
        execute(database, "CREATE TABLE IF NOT EXISTS beside.u (x); INSERT INTO beside.u VALUES ('findable')");
        EXPECT_EQ(integer(database, "SELECT count(*) FROM beside.u"), 1);
        database.detachDatabase("beside");
        EXPECT_EQ(failureOf([&] { integer(database, "SELECT count(*) FROM beside.u"); }), FailureKind::schema);
        EXPECT_EQ(contentOf(other).find("findable") != std::string::npos, name == "plain");
        std::ofstream(folder_.file("garbage")) << std::string(5'000, 'x');
        EXPECT_EQ(failureOf([&] { database.attachDatabase(folder_.file("garbage"), "bad"); }), FailureKind::wrongKey);
        database.write([&](Database&) {
            EXPECT_EQ(failureOf([&] { database.attachDatabase(other, "beside"); }), FailureKind::misuse);
        });
    }
}

/// Another SQLite ahead of SQLCipher in the process must end in an error, not in a plain file.
TEST_F(EncryptionTest, ProcessWithAnotherSqliteIsRefused) {
    auto folder = std::getenv("TARVO_BIN_DIR");
    if (!folder) GTEST_SKIP() << "TARVO_BIN_DIR tells where the programs are";
    EXPECT_EQ(lastLineOf(std::string(folder) + "/kelva_db_plain '" + path_ + "'", true), "notEncrypted\n");
    EXPECT_FALSE(tarvo::files::exists(path_));
}

}  // namespace

}  // namespace kelva::tests
