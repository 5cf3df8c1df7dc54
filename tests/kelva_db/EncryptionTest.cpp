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
        database.write([](Database& writer) {
            writer.execute("CREATE TABLE t (id TEXT PRIMARY KEY, word)");
            for (int i = 0; i < 500; ++i) writer.insert("t", ValueMap{{"id", std::to_string(i)}, {"word", "findable"}});
        });
    }
    std::optional<FailureKind> opening(const Configuration& configuration) {
        return failureOf([&] {
            DatabasePool database(path_, configuration);
            EXPECT_EQ(integer(database, "SELECT count(*) FROM t"), 500);
        });
    }
    /// Runs the command line shell of SQLCipher; its first line of output.
    static std::string shell(const std::string& file, const std::string& sql) {
        auto command = "sqlcipher '" + file + "' \"" + sql + "\" 2>&1";
        char line[200] = "";
        auto pipe = popen(command.c_str(), "r");
        while (pipe && std::fgets(line, sizeof line, pipe)) {
        }
        if (pipe) pclose(pipe);
        return line;
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
        database.write([](Database& writer) { writer.execute("CREATE TABLE t (x)"); });
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
    EXPECT_EQ(failureOf([&] {
                  DatabasePool database(path_, passphraseConfiguration(passphrase));
                  database.read([](Database& reader) { reader.query("SELECT * FROM t"); });
              }),
              FailureKind::corrupt);
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
    struct Case {
        std::string name;
        Configuration configuration;
        std::string pragmas;
    };
    const std::vector<Case> cases = {
        {"passphrase", passphraseConfiguration(passphrase), "PRAGMA key='correct horse';"},
        {"raw", rawConfiguration(), ""},
        {"plain", Configuration(), ""},
        {"small pages", passphraseConfiguration(passphrase),
         "PRAGMA key='correct horse'; PRAGMA cipher_page_size=1024;"},
    };
    for (auto& [name, configuration, pragmas] : cases) {
        SCOPED_TRACE(name);
        auto other = folder_.file(name + "-other.db");
        if (name == "small pages") shell(other, pragmas + " CREATE TABLE u (x);");
        DatabasePool database(folder_.file(name + ".db"), configuration);
        integer(database, "SELECT 1");
        database.attachDatabase(other, "beside");
        database.write([](Database& writer) {
            writer.execute("CREATE TABLE IF NOT EXISTS beside.u (x)");
            writer.insert("beside.u", ValueMap{{"x", "findable"}});
        });
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
    auto pipe = popen((std::string(folder) + "/kelva_db_plain '" + path_ + "'").c_str(), "r");
    ASSERT_TRUE(pipe);
    char line[200] = "";
    std::fgets(line, sizeof line, pipe);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_STREQ(line, "notEncrypted\n");
    EXPECT_FALSE(tarvo::files::exists(path_));
}

}  // namespace

}  // namespace kelva::tests
