#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/Files.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tests/support/OpaqueValue.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

class AdapterTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        adapter = openDatabase();
        adapter->create("t", {{"id", TableColumnType::text}, {"n", TableColumnType::integer}}, {"id"});
    }
    std::vector<std::string> allIds() {
        std::vector<std::string> list;
        auto rows = adapter->fetchObjects(FetchQuery("t").sortedBy({"id"})).value();
        for (auto row : rows) list.emplace_back(*row.find("id")->asText());
        return list;
    }
    void fill() {
        adapter->insertInto(
            "t", std::vector<ValueMap>{{{"id", "a"}, {"n", 1}}, {{"id", "b"}, {"n", 2}}, {{"id", "c"}, {"n", 3}}});
    }

    std::shared_ptr<KelvaDatabasePersistance> adapter;
    const Value opaque = opaqueValue();
};

TEST_F(AdapterTest, AnEmptyAnswerIsPresentAndAFailedOneIsAbsent) {
    auto none = adapter->fetchObjects(FetchQuery("t"));
    ASSERT_TRUE(none.has_value());
    EXPECT_TRUE(none->empty());
    EXPECT_EQ(adapter->fetchObjects(FetchQuery("no_such_table")), std::nullopt);
    EXPECT_EQ(adapter->count("no_such_table", std::nullopt), std::nullopt);
    EXPECT_EQ(adapter->fetchObjects("SELECT ?", ValueList{opaque}), std::nullopt);
    EXPECT_TRUE(wasLogged("Could not convert [object] to [DatabaseValueConvertible?"));
}

TEST_F(AdapterTest, UpdatesByMapAndByList) {
    fill();
    EXPECT_TRUE(adapter->update("t", ValueMap{{"n", 10}}, Criteria::equalTo("id", "a")));
    EXPECT_TRUE(adapter->update("t", std::vector<ValueMap>{{{"n", 20}}, {{"n", 30}}},
                                {Criteria::equalTo("id", "b"), Criteria::equalTo("id", "c")}));
    EXPECT_EQ(adapter->count("t", Criteria::in("n", {10, 20, 30})), 3);
}

TEST_F(AdapterTest, AnUpdateThatCannotBeMadeIsRefused) {
    fill();
    EXPECT_FALSE(adapter->update("t", ValueMap{{"n", opaque}}, Criteria::equalTo("id", "a")));
    EXPECT_TRUE(wasLogged("Could not convert cast values to [String: DatabaseValueConvertible?"));
    EXPECT_FALSE(adapter->update("t", ValueMap{{"n", 0}}, Criteria::equalTo("id", opaque)));
    EXPECT_TRUE(wasLogged("Could not convert criteria values to [DatabaseValueConvertible?"));
    EXPECT_FALSE(adapter->update("t", std::vector<ValueMap>{{{"n", 0}}}, {})) << "fewer criteria than maps";
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
    EXPECT_EQ(adapter->count("t", Criteria::in("n", {1, 2, 3})), 3);
}

TEST_F(AdapterTest, AListOfStatementsRunsWholeOrNotAtAll) {
    auto insert = [](const char* table, Value id) {
        return DatabaseAdapter::Statement{"INSERT INTO " + std::string(table) + " VALUES (?, 1)", ValueList{id}};
    };
    EXPECT_FALSE(adapter->execute({insert("t", "x"), insert("nowhere", "x"), insert("t", "y")}));
    EXPECT_FALSE(adapter->execute({insert("t", "x"), insert("t", opaque)}));
    EXPECT_TRUE(wasLogged("could not convert `[object] to [DatabaseValueConvertible]`"));
    EXPECT_TRUE(allIds().empty());
    fill();
    DeleteQuery remove("t", ValueMap{{"id", "b"}});
    InsertQuery add("t", {{"id", "b"}, {"n", 0}});
    EXPECT_TRUE(adapter->execute(std::vector<std::reference_wrapper<const Query>>{remove, add}));
    EXPECT_EQ(adapter->count("t", Criteria::equalTo("n", 0)), 1) << "in their order";
}

TEST_F(AdapterTest, WorkForTheCommitRunsAfterItAndOnlyThen) {
    std::string log;
    auto note = [&](const std::string& piece) { return [&log, piece] { log += piece; }; };
    auto nested = [&](bool isOuterKept, bool isInnerKept) {
        log.clear();
        bool isCommitted = adapter->transaction("outer", [&] {
            afterCommit(note("1"));
            afterTransaction(note("2"));
            auto inner = adapter->transaction("inner", [&] {
                afterTransaction(note("3"));
                afterCommit(note("4"));
                return isInnerKept;
            });
            EXPECT_EQ(inner, isInnerKept);
            afterCommit(note("5"));
            EXPECT_EQ(log, "");
            return isOuterKept;
        });
        EXPECT_EQ(isCommitted, isOuterKept);
        return log;
    };
    EXPECT_EQ(nested(true, true), "12345");
    EXPECT_EQ(nested(true, false), "1235");
    EXPECT_EQ(nested(false, true), "23");
    afterCommit(note("at once"));
    EXPECT_EQ(log, "23at once");
}

TEST_F(AdapterTest, CreateTableLeavesOutWhatIsNotForTables) {
    EXPECT_TRUE(adapter->createTable("CREATE TABLE u (id); PRAGMA rekey = 'mine'; CREATE TABLE v (id)"));
    EXPECT_FALSE(adapter->columnNames("u").empty());
    EXPECT_FALSE(adapter->columnNames("v").empty());
    EXPECT_TRUE(wasLogged("since it wants more than tables: PRAGMA"));
    EXPECT_FALSE(wasLogged("mine"));
    EXPECT_FALSE(adapter->createTable("CREATE TABLE u (id)")) << "a statement that fails is a failure";
}

TEST_F(AdapterTest, OpensOnceAndAgainAfterClosing) {
    EXPECT_FALSE(adapter->registerDB("another").value());
    EXPECT_TRUE(wasLogged("Already registered database at path: "));
    EXPECT_TRUE(adapter->deregisterDB());
    EXPECT_FALSE(adapter->deregisterDB());
    EXPECT_EQ(adapter->fetchAllObjects("t"), std::nullopt);
    EXPECT_FALSE(adapter->insertInto("t", ValueMap{{"id", "a"}}));
    EXPECT_TRUE(adapter->registerDB("a passphrase").value());
    EXPECT_TRUE(allIds().empty());
}

TEST_F(AdapterTest, AFileThatDoesNotOpenSaysWhyAndStays) {
    using Kind = KelvaDatabasePersistance::OpeningFailure::Kind;
    adapter->deregisterDB();
    const struct {
        std::optional<std::string> content;
        const char* passphrase;
        Kind kind;
    } cases[] = {{{}, "wrong", Kind::wrongPassphrase},
                 {"short", "a passphrase", Kind::damaged},
                 {std::string(8192, '\0'), "a passphrase", Kind::damaged}};
    for (auto& one : cases) {
        if (one.content) std::ofstream(adapter->databaseName()) << *one.content;
        auto before = files::read(adapter->databaseName());
        auto refused = adapter->registerDB(one.passphrase);
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().kind, one.kind);
        EXPECT_EQ(files::read(adapter->databaseName()), before);
    }
}

TEST_F(AdapterTest, ADatabaseKeepsItsIdentityAndANewOneHasAnother) {
    auto identity = adapter->identity();
    ASSERT_TRUE(identity.has_value());
    EXPECT_EQ(adapter->identity(), identity);
    adapter->deregisterDB();
    EXPECT_EQ(adapter->identity(), std::nullopt);
    ASSERT_TRUE(adapter->registerDB("a passphrase").ok());
    EXPECT_EQ(adapter->identity(), identity);
    adapter->deregisterDB();
    files::remove(adapter->databaseName());
    ASSERT_TRUE(adapter->registerDB("a passphrase").ok());
    EXPECT_TRUE(adapter->identity().has_value());
    EXPECT_NE(adapter->identity(), identity);
}

TEST_F(AdapterTest, AttachesAnotherAccountsFileAndCopiesFromIt) {
    fill();
    KelvaDatabasePersistance other(StorageLocation::onDisk(DatabaseConstants().databaseName("other")));
    ASSERT_TRUE(other.registerDB("a passphrase").ok());
    other.create("t", {{"id", TableColumnType::text}, {"n", TableColumnType::integer}}, {"id"});
    other.insertInto("t", std::vector<ValueMap>{{{"id", "far"}, {"n", 9}}, {{"id", "near"}, {"n", 8}}});
    other.deregisterDB();
    adapter->attachDatabase(other.databaseName(), "far");
    EXPECT_TRUE(adapter->copyRecord(CopyQuery("far.t", "t").filter(Criteria::greaterThan("n", 8))));
    EXPECT_EQ(allIds(), (std::vector<std::string>{"a", "b", "c", "far"}));
    adapter->detachDatabase("far");
    EXPECT_EQ(adapter->fetchAllObjects("far.t"), std::nullopt);
    EXPECT_TRUE(wasLogged("Detached database having name `far`"));
}

/// A database on a queue of the host.
class HostQueueTest : public AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        configuration().dbQueue = queue;
        own = std::make_unique<KelvaDatabasePersistance>(StorageLocation::onDisk(folder() + "/own.sqlite"));
    }
    const std::shared_ptr<DispatchQueue> queue = DispatchQueue::serial("tests.db");
    std::unique_ptr<KelvaDatabasePersistance> own;
};

TEST_F(HostQueueTest, OpeningWaitsForTheQueueWithoutALock) {
    std::atomic<bool> isOpening = false;
    std::thread opening;
    queue->sync([&] {
        opening = std::thread([&] {
            isOpening = true;
            EXPECT_FALSE(own->registerDB("a passphrase").value()) << "it was opened meanwhile";
        });
        while (!isOpening) std::this_thread::yield();
        // The queue is held here, and the other thread waits for it.
        EXPECT_EQ(own->fetchAllObjects("t"), std::nullopt);
        EXPECT_TRUE(own->registerDB("a passphrase").value());
    });
    opening.join();
    own->deregisterDB();
}

TEST_F(HostQueueTest, AWriteFromElsewhereWaitsForItsTurn) {
    ASSERT_TRUE(own->registerDB(std::nullopt).ok());  // without a passphrase there is no key
    own->create("t", {{"id", TableColumnType::text}}, {"id"});
    std::atomic<bool> done = false;
    queue->sync([&] {
        DispatchQueue::concurrent("tests.writer")->async([&] {
            done = own->insertInto("t", ValueMap{{"id", "late"}});
        });
        EXPECT_EQ(own->count("t", std::nullopt), 0);
        EXPECT_FALSE(done);
    });
    settle();
    EXPECT_EQ(own->count("t", std::nullopt), 1);
    own->deregisterDB();
}

}  // namespace
}  // namespace tarvo
