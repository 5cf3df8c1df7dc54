#include "tests/kelva_db/DatabaseFixture.h"

namespace kelva::tests {

namespace {

class UntrustedSqlTest : public testing::Test {
protected:
    UntrustedSqlTest() { execute(database_, "CREATE TABLE t (x); INSERT INTO t VALUES (1)"); }
    std::vector<std::string> run(const std::string& sql, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        std::vector<std::string> refused;
        database_.write([&](Database& writer) { refused = writer.executeUntrusted(sql, limit); });
        return refused;
    }

    Folder folder_;
    std::string path_ = folder_.file("a.db");
    DatabasePool database_{path_, rawConfiguration()};
};

TEST_F(UntrustedSqlTest, HostileStatementsAreLeftOutAndTheFileStays) {
    auto outside = folder_.file("outside");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"PRAGMA cipher_profile='" + outside + "'", "PRAGMA"},
        {"PRAGMA rekey='mine'", "PRAGMA"},
        {"PRAGMA query_only=1", "PRAGMA"},
        {"/* a comment */ PRAGMA writable_schema=1", "PRAGMA"},
        {"UPDATE sqlite_master SET sql = 'x'", "write to the schema"},
        {"DELETE FROM sqlite_master", "write to the schema"},
        {"ATTACH '" + outside + "' AS outside KEY ''", "ATTACH"},
        {"DETACH main", "DETACH"},
        {"COMMIT", "transaction"},
        {"/* a comment */ vacuum", "VACUUM"},
        {"SAVEPOINT s", "transaction"},
        {"SELECT load_extension('" + outside + "')", "function"},
        {"INSERT INTO t SELECT load_extension('" + outside + "')", "function"},
        {"CREATE TABLE u AS SELECT sqlcipher_export('main')", "function"},
        {"SELECT x FROM t", "query"},
        {"EXPLAIN DELETE FROM t", "query"},
        {"CREATE TRIGGER g AFTER INSERT ON t BEGIN DELETE FROM t; DELETE FROM t; END", "trigger"},
        {"INSERT INTO t WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n) SELECT count(*) FROM n", "recursive query"},
        {"CREATE TABLE u AS WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n) SELECT i FROM n", "recursive query"},
        {"CREATE VIEW v AS SELECT * FROM t", "view"},
        {"CREATE VIRTUAL TABLE w USING fts4(x)", "virtual table"},
    };
    database_.close();
    auto before = contentOf(path_);
    for (auto& [sql, kind] : cases) {
        DatabasePool database(path_, rawConfiguration());
        database.write([&, &sql = sql, &kind = kind](Database& writer) {
            EXPECT_EQ(writer.executeUntrusted(sql, std::chrono::seconds(10)), std::vector<std::string>{kind}) << sql;
        });
        database.close();
        EXPECT_TRUE(contentOf(path_) == before) << sql;
        EXPECT_FALSE(tarvo::files::exists(outside)) << sql;
    }
}

TEST_F(UntrustedSqlTest, TheStatementsBesideARefusedOneRun) {
    EXPECT_EQ(run("CREATE TABLE a (x); PRAGMA query_only=1; CREATE TABLE b (x) ;"), std::vector<std::string>{"PRAGMA"});
    EXPECT_EQ(integer(database_, "SELECT count(*) FROM sqlite_master WHERE name IN ('a', 'b')"), 2);
    EXPECT_EQ(run("CREATE TRIGGER g AFTER INSERT ON t BEGIN SELECT 1; DELETE FROM t; END"),
              std::vector<std::string>{"trigger"});
    EXPECT_EQ(integer(database_, "SELECT count(*) FROM t"), 1) << "the body of a trigger is not run by itself";
}

TEST_F(UntrustedSqlTest, WhatTablesNeedIsAllowed) {
    const std::string texts[] = {
        "CREATE TABLE IF NOT EXISTS Leads (_id INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, n DEFAULT "
        "(1+1))",
        "CREATE TABLE IF NOT EXISTS Leads (id)",
        "CREATE TABLE kids (id TEXT PRIMARY KEY REFERENCES Leads(id) ON DELETE CASCADE ON UPDATE CASCADE) WITHOUT "
        "ROWID",
        "CREATE UNIQUE INDEX IF NOT EXISTS i ON Leads (n, lower(id))",
        "ALTER TABLE Leads ADD COLUMN late TEXT DEFAULT 'x'; ALTER TABLE kids RENAME TO children",
        "INSERT INTO Leads (id) VALUES ('a'); UPDATE Leads SET n = 3; DELETE FROM Leads WHERE id = 'b'",
        "CREATE TABLE copied AS SELECT upper(id) AS id FROM Leads",
        "DROP INDEX i; DROP TABLE IF EXISTS children; -- the end",
    };
    for (auto& sql : texts) EXPECT_TRUE(run(sql).empty()) << sql;
    EXPECT_EQ(integer(database_, "SELECT count(*) FROM copied WHERE id = 'A'"), 1);
    execute(database_, "PRAGMA cache_size = -65536; CREATE VIEW v AS SELECT 1");
}

TEST_F(UntrustedSqlTest, AFailureUndoesTheText) {
    EXPECT_EQ(failureOf([&] { run("CREATE TABLE a (x); INSERT INTO nowhere VALUES (1)"); }), FailureKind::schema);
    EXPECT_EQ(failureOf([&] { run("CREATE TABLE a (x) nonsense"); }), FailureKind::schema);
    EXPECT_EQ(failureOf([&] { run("INSERT INTO t VALUES (?)"); }), FailureKind::misuse);
    EXPECT_EQ(integer(database_, "SELECT count(*) FROM sqlite_master WHERE name = 'a'"), 0);
}

TEST_F(UntrustedSqlTest, AnEndlessStatementIsStopped) {
    database_.write([](Database& writer) {
        std::vector<ValueMap> rows(1000, ValueMap{{"y", 1}});
        writer.execute("CREATE TABLE big (y)");
        writer.insert("big", rows);
    });
    const std::string endless[] = {
        "INSERT INTO t SELECT count(*) FROM big a, big b, big c, big d",
        "CREATE TABLE u AS SELECT a.y FROM big a, big b, big c, big d WHERE a.y + b.y + c.y < d.y",
        "UPDATE t SET x = (SELECT sum(a.y + b.y + c.y + d.y) FROM big a, big b, big c, big d)",
    };
    for (auto& sql : endless) {
        EXPECT_NE(failureOf([&] { run(sql, std::chrono::milliseconds(50)); }), std::nullopt) << sql;
        EXPECT_EQ(integer(database_, "SELECT count(*) FROM t"), 1) << sql;
    }
    EXPECT_NE(failureOf([&] { run("INSERT INTO t VALUES (randomblob(900000000))"); }), std::nullopt);
    EXPECT_TRUE(run("INSERT INTO t VALUES (2)").empty());
}

}  // namespace

}  // namespace kelva::tests
