#include <csignal>
#include <cstdlib>
#include <future>
#include <thread>

#include "tests/support/OpaqueValue.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

class TransactionTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        adapter = openDatabase();
        makeTables(*adapter);
    }
    static void makeTables(DatabaseAdapter& adapter) {
        for (auto table : {"records", "tags"})
            ASSERT_TRUE(
                adapter.create(table, {{"id", TableColumnType::text}, {"n", TableColumnType::integer}}, {"id"}));
    }
    static bool add(DatabaseAdapter& adapter, const std::string& table, const std::string& id) {
        return adapter.insertInto(table, ValueMap{{"id", id}, {"n", 1}});
    }
    bool add(const std::string& table, const std::string& id) { return add(*adapter, table, id); }
    bool addToMissingTable() { return add("nowhere", "x"); }
    bool execute(const std::string& sql) { return adapter->execute(sql, std::nullopt); }
    std::int64_t count(const std::string& table) { return adapter->count(table, std::nullopt).value_or(-1); }

    std::shared_ptr<KelvaDatabasePersistance> adapter;
};

TEST_F(TransactionTest, CommitsAllTablesOrNone) {
    EXPECT_TRUE(adapter->transaction("both", [&] {
        add("records", "a");
        add("tags", "a");
        EXPECT_EQ(count("tags"), 1) << "a read inside sees the writes";
        EXPECT_EQ(count("nowhere"), -1) << "a failed read fails no transaction";
        return true;
    }));
    EXPECT_FALSE(adapter->transaction("given up", [&] { return add("records", "b") && !add("tags", "b"); }));
    EXPECT_EQ(count("records"), 1);
    EXPECT_EQ(count("tags"), 1);
}

TEST_F(TransactionTest, AFailedWriteFailsItWhateverTheWorkReturns) {
    auto unbindable = opaqueValue();
    const std::vector<ValueMap> rows = {{{"id", "x"}}, {{"id", "y"}}};
    auto isX = Criteria::equalTo("id", "x");
    const std::vector<std::pair<std::string, std::function<bool()>>> writes = {
        {"insert", [&] { return addToMissingTable(); }},
        {"batch", [&] { return adapter->insertInto("nowhere", rows); }},
        {"accepted", [&] { return adapter->insertAccepted("nowhere", MapRowSource(rows)).has_value(); }},
        {"update", [&] { return adapter->update("nowhere", rows[0], isX); }},
        {"update value",
         [&] {
             return adapter->update("tags", ValueMap{{"n", unbindable}}, isX);
         }},
        {"delete", [&] { return adapter->deleteAllObjects("nowhere"); }},
        {"statement value", [&] { return adapter->execute("DELETE FROM tags WHERE id = ?", ValueList{unbindable}); }},
        {"create", [&] { return adapter->createTable("CREATE TABLE records (id)"); }},
        {"attach", [&] { return adapter->attachDatabase(adapter->databaseName(), "other"); }},
        {"detach", [&] { return adapter->detachDatabase("other"); }},
    };
    for (auto& [what, write] : writes) {
        EXPECT_FALSE(adapter->transaction(what, [&, &write = write] {
            add("records", "x");
            EXPECT_FALSE(write());
            return add("tags", "x");
        })) << what;
        EXPECT_EQ(count("records") + count("tags"), 0) << what;
        EXPECT_TRUE(wasLogged("transaction " + what)) << what;
    }
}

TEST_F(TransactionTest, InnerOnesAreSavepointsOfTheOuter) {
    auto addInner = [&] { return add("records", "inner"); };
    const struct {
        const char* what;
        std::function<bool()> inner;
        bool isInnerKept, isOuterWanted;
        int records;
    } cases[] = {
        {"kept", addInner, true, true, 2},
        {"gives up", [&] { return !addInner(); }, false, true, 1},
        {"a write in it fails", [&] { return !addToMissingTable(); }, false, true, 0},
        {"the outer gives up", addInner, true, false, 0},
    };
    for (auto& one : cases) {
        adapter->deleteAllObjects("records");
        bool isKept = adapter->transaction("outer", [&] {
            add("records", "outer");
            EXPECT_EQ(adapter->transaction("inner", one.inner), one.isInnerKept) << one.what;
            return one.isOuterWanted;
        });
        EXPECT_EQ(isKept, one.records > 0) << one.what;
        EXPECT_EQ(count("records"), one.records) << one.what;
    }
}

TEST_F(TransactionTest, AWholeOneIsUndoneAndTheNextWriteWorks) {
    const std::vector<std::pair<std::string, std::function<bool()>>> works = {
        {"a throw of the work", []() -> bool { throw std::runtime_error("of the work"); }},
        {"a commit that fails",
         [&] {
             return execute("CREATE TABLE kids (id REFERENCES records(id) DEFERRABLE INITIALLY DEFERRED)") &&
                    execute("INSERT INTO kids VALUES ('nobody')");
         }},
        {"a full database",
         [&] {
             setFull(*adapter, true);
             EXPECT_FALSE(add("records", longText() + longText()));
             add("tags", "after");
             std::ignore = adapter->transaction("inner", [&] { return add("tags", "inside"); });
             return true;
         }},
    };
    for (auto& [what, work] : works) {
        EXPECT_FALSE(adapter->transaction(what, [&, &work = work] { return add("records", "a") && work(); })) << what;
        setFull(*adapter, false);
        EXPECT_EQ(count("records") + count("tags"), 0) << what;
        EXPECT_TRUE(add("records", "next") && adapter->deleteAllObjects("records")) << what;
    }
    EXPECT_TRUE(adapter->columnNames("kids").empty());
    EXPECT_TRUE(wasLogged("transaction a throw of the work: of the work"));
}

TEST_F(TransactionTest, ColumnsOfAnUndoneTableAreForgotten) {
    using Names = std::vector<std::string>;
    std::ignore = adapter->transaction("undone", [&] {
        execute("CREATE TABLE late (a)");
        EXPECT_EQ(adapter->columnNames("late"), Names{"a"});
        return false;
    });
    EXPECT_TRUE(adapter->transaction("again", [&] {
        // The schema has the same version as in the undone transaction.
        execute("CREATE TABLE late (b)");
        EXPECT_EQ(adapter->columnNames("late"), Names{"b"});
        std::ignore = adapter->transaction("savepoint", [&] {
            execute("ALTER TABLE late ADD COLUMN c");
            EXPECT_EQ(adapter->columnNames("late").size(), 2u);
            return false;
        });
        execute("ALTER TABLE late ADD COLUMN d");
        EXPECT_EQ(adapter->columnNames("late"), (Names{"b", "d"}));
        return adapter->insertInto("late", ValueMap{{"d", 1}});
    }));
}

TEST_F(TransactionTest, TransactionsOfTwoThreadsNeverMix) {
    auto run = [&](const std::string& name, bool isKept) {
        for (int i = 0; i < 50; ++i) {
            auto before = std::int64_t(0);
            bool isCommitted = adapter->transaction(name, [&] {
                before = count("records");
                add("records", name + std::to_string(i));
                std::this_thread::yield();
                EXPECT_EQ(count("records"), before + 1);
                return isKept;
            });
            EXPECT_EQ(isCommitted, isKept);
        }
    };
    std::thread keeping([&] { run("kept", true); }), undoing([&] { run("undone", false); });
    keeping.join();
    undoing.join();
    EXPECT_EQ(count("records"), 50);
}

TEST_F(TransactionTest, ClosingWaitsForItAndFailsLaterOnes) {
    std::thread closing;
    EXPECT_TRUE(adapter->transaction("running", [&] {
        EXPECT_FALSE(adapter->deregisterDB()) << "not from inside";
        add("records", "a");
        closing = std::thread([&] { EXPECT_TRUE(adapter->deregisterDB()); });
        // Other threads find no open database any more, while this transaction keeps its own.
        auto isOpenForOthers = [&] { return !adapter->columnNames("records").empty(); };
        while (std::async(std::launch::async, isOpenForOthers).get()) {
        }
        std::thread([&] { EXPECT_FALSE(adapter->transaction("late", [] { return true; })); }).join();
        return add("records", "b");
    }));
    closing.join();
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
    ASSERT_TRUE(adapter->registerDB("a passphrase").value());
    EXPECT_EQ(count("records"), 2);
}

TEST_F(TransactionTest, TheMemoryDatabaseHasThemToo) {
    KelvaDatabasePersistance memory(StorageLocation::inMemory());
    ASSERT_TRUE(memory.registerDB(std::nullopt).ok());
    makeTables(memory);
    EXPECT_FALSE(memory.transaction("undone", [&] { return !add(memory, "records", "a"); }));
    EXPECT_TRUE(memory.transaction("kept", [&] {
        // Another adapter inside: its writes belong to no transaction of this one.
        EXPECT_FALSE(addToMissingTable());
        return add("records", "disk") && add(memory, "records", "b");
    }));
    EXPECT_EQ(memory.count("records", std::nullopt), 1);
    EXPECT_EQ(count("records"), 1);
    memory.deregisterDB();
}

TEST_F(TransactionTest, AKillInsideLeavesTheLastCommit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The process that is killed runs this test from its beginning, with the folder of this one.
    ::setenv("TARVO_KILLED_FOLDER", folder().c_str(), 0);
    KelvaDatabasePersistance killed(StorageLocation::onDisk(std::getenv("TARVO_KILLED_FOLDER") + std::string("/k.db")));
    auto killInside = [&] {
        ASSERT_TRUE(killed.registerDB("a passphrase").ok());
        makeTables(killed);
        ASSERT_TRUE(
            killed.transaction("first", [&] { return add(killed, "records", "a") && add(killed, "tags", "a"); }));
        std::ignore = killed.transaction("second", [&] {
            for (int i = 0; i < 50; ++i) add(killed, "records", longText() + std::to_string(i));
            return ::raise(SIGKILL) == 0;
        });
    };
    EXPECT_EXIT(killInside(), ::testing::KilledBySignal(SIGKILL), "");
    ASSERT_TRUE(killed.registerDB("a passphrase").ok());
    EXPECT_EQ(killed.count("records", std::nullopt), 1);
    EXPECT_EQ(killed.count("tags", std::nullopt), 1);
    EXPECT_TRUE(add(killed, "tags", "b"));
    killed.deregisterDB();
    ::unsetenv("TARVO_KILLED_FOLDER");
}

}  // namespace
}  // namespace tarvo
