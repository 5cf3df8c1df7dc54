#include "platform/ProgrammingError.h"
#include "tests/kelva_db/DatabaseFixture.h"

namespace kelva::tests {

namespace {

/// Writes down each notification, one word per call.
class Listener final : public TransactionObserver, public SimpleObserver {
public:
    bool observeEvent(DatabaseEvent, std::string_view, std::string_view tableName) override {
        return tableName != "unwatched";
    }
    void didChange(DatabaseEvent type, std::string_view databaseName, std::string_view tableName,
                   std::int64_t rowID) override {
        static constexpr const char* names[] = {"insert", "update", "delete"};
        std::string prefix = databaseName == "main" ? "" : std::string(databaseName) + ".";
        say(std::string(names[static_cast<int>(type)]) + ":" + prefix + std::string(tableName) + ":" +
            std::to_string(rowID));
    }
    void didCommit(Database& database) override {
        say("commit");
        if (auto work = std::exchange(onCommit, nullptr)) work(database);
    }
    void didRollback(Database&) override { say("rollback"); }
    void databaseChanged(const std::set<std::string>& tableNames) override {
        for (auto& name : tableNames) say("changed:" + name);
    }
    std::string take() { return std::exchange(heard_, {}); }

    std::function<void(Database&)> onCommit;  // runs once

private:
    void say(const std::string& word) { heard_ += (heard_.empty() ? "" : " ") + word; }
    std::string heard_;
};

class ObserverTest : public testing::Test {
protected:
    ObserverTest() : database_(folder_.file("a.db"), rawConfiguration()) {
        execute(database_,
                "CREATE TABLE People (id INTEGER PRIMARY KEY, name TEXT UNIQUE);"
                "CREATE TABLE pets (id INTEGER PRIMARY KEY, owner REFERENCES People(id) ON DELETE CASCADE);"
                "CREATE TABLE unwatched (x)");
        database_.write(&fill);
        database_.add(std::shared_ptr<TransactionObserver>(listener_));
    }
    static void fill(Database& writer) {
        writer.execute("INSERT INTO People VALUES (1, 'a'), (2, 'b'); INSERT INTO pets VALUES (7, 2)");
    }
    static void failInside(Database& writer, const std::string& sql) {
        EXPECT_THROW(writer.inSavepoint([&] {
            writer.execute(sql);
            throw std::runtime_error("undo");
        }),
                     std::runtime_error);
    }

    Folder folder_;
    DatabasePool database_;
    std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

TEST_F(ObserverTest, ChangesAreToldAtTheCommitAndOnlyWhenTheyLast) {
    struct Case {
        std::string name;
        std::function<void(Database&)> work;
        std::string heard;
    };
    using Fails = std::runtime_error;
    auto run = [](std::string sql) { return [sql](Database& writer) { writer.execute(sql); }; };
    const std::vector<Case> cases = {
        {"row changes in order", run("INSERT INTO People VALUES (3,'c'); UPDATE people SET name = 'd' WHERE id = 3"),
         "insert:people:3 update:people:3 commit"},
        {"delete twice", run("DELETE FROM pets; DELETE FROM pets"), "delete:pets:7 commit"},
        {"cascade", run("DELETE FROM People WHERE id = 2"), "delete:people:2 delete:pets:7 commit"},
        {"replaced row", run("REPLACE INTO People VALUES (9, 'a')"), "insert:people:9 commit"},
        {"batch",
         [](Database& writer) {
             writer.insert("People", std::vector<ValueMap>{{{"id", 5}}, {{"id", 6}}});
         },
         "insert:people:5 insert:people:6 commit"},
        {"nothing of interest", run("INSERT INTO unwatched VALUES (1)"), "commit"},
        {"drop after delete",
         run("CREATE TABLE gone (x); INSERT INTO gone VALUES (1); DELETE FROM gone; DROP TABLE gone"),
         "insert:gone:1 delete:gone:1 commit"},
        {"undone savepoint",
         [](Database& writer) {
             writer.execute("INSERT INTO pets (id) VALUES (1)");
             failInside(writer, "INSERT INTO pets (id) VALUES (2)");
             writer.inSavepoint([&] {
                 failInside(writer, "DELETE FROM pets");
                 writer.execute("INSERT INTO pets (id) VALUES (3)");
             });
         },
         "insert:pets:1 insert:pets:3 commit"},
        {"failed statement",
         [](Database& writer) {
             EXPECT_THROW(writer.execute("INSERT INTO People VALUES (5, 'e'), (6, 'a')"), DatabaseError);
             EXPECT_THROW(writer.execute("INSERT OR FAIL INTO People VALUES (7, 'f'), (8, 'a')"), DatabaseError);
         },
         "insert:people:7 commit"},
        {"throw",
         [](Database& writer) {
             writer.execute("DELETE FROM pets");
             throw Fails("undo");
         },
         "rollback"},
        {"failing commit",
         [](Database& writer) { writer.execute("PRAGMA defer_foreign_keys = 1; INSERT INTO pets VALUES (8, 99)"); },
         "rollback"},
    };
    for (auto& [name, work, heard] : cases) {
        try {
            database_.write(work);
        } catch (const Fails&) {
        }
        EXPECT_EQ(listener_->take(), heard) << name;
        database_.remove(std::shared_ptr<TransactionObserver>(listener_));
        execute(database_, "DELETE FROM pets; DELETE FROM People");
        database_.write(&fill);
        EXPECT_EQ(listener_->take(), "") << "removed, " << name;
        database_.add(std::shared_ptr<TransactionObserver>(listener_));
    }
}

TEST_F(ObserverTest, SimpleObserversHearTheTablesOfACommit) {
    database_.removeAllObserver();
    database_.add(std::shared_ptr<SimpleObserver>(listener_));
    database_.write([](Database& writer) {
        failInside(writer, "INSERT INTO pets (id) VALUES (1)");
        failInside(writer, "DELETE FROM People");
        writer.execute("DELETE FROM People");
    });
    EXPECT_EQ(listener_->take(), "changed:people changed:pets");
    execute(database_, "DELETE FROM People");
    EXPECT_EQ(listener_->take(), "");
    database_.remove(std::shared_ptr<SimpleObserver>(listener_));
    database_.write(&fill);
    EXPECT_EQ(listener_->take(), "");
}

TEST_F(ObserverTest, DidCommitMayUseTheDatabaseAndChangeTheObservers) {
    auto other = std::make_shared<Listener>();
    listener_->onCommit = [&](Database& writer) {
        EXPECT_EQ(writer.query("SELECT * FROM pets").size(), 0u);
        EXPECT_EQ(failureOf([&] { fill(writer); }), FailureKind::readOnly);
        EXPECT_EQ(integer(database_, "SELECT count(*) FROM pets"), 0);
        EXPECT_EQ(failureOf([&] { database_.close(); }), FailureKind::misuse);
        database_.remove(std::shared_ptr<TransactionObserver>(listener_));
        database_.add(std::shared_ptr<TransactionObserver>(other));
        database_.write([](Database& writer) { writer.execute("INSERT INTO pets (id) VALUES (1)"); });
    };
    execute(database_, "DELETE FROM pets");
    EXPECT_EQ(listener_->take(), "delete:pets:7 commit");
    EXPECT_EQ(other->take(), "insert:pets:1 commit");
}

TEST_F(ObserverTest, ObserverThatThrowsHarmsNothing) {
    std::string reported;
    auto before = tarvo::platform::setProgrammingErrorHandler([&](std::string_view what) { reported = what; });
    auto second = std::make_shared<Listener>();
    database_.add(std::shared_ptr<TransactionObserver>(second));
    listener_->onCommit = [](Database&) { throw std::runtime_error("observer"); };
    EXPECT_NO_THROW(database_.write([](Database& writer) { writer.execute("DELETE FROM pets"); }));
    tarvo::platform::setProgrammingErrorHandler(before);
    EXPECT_NE(reported, "");
    EXPECT_EQ(second->take(), "delete:pets:7 commit");
    EXPECT_EQ(integer(database_, "SELECT count(*) FROM pets"), 0);
}

TEST_F(ObserverTest, AttachedTablesAreToldUnderTheirDatabase) {
    database_.attachDatabase(folder_.file("b.db"), "beside");
    execute(database_, "CREATE TABLE beside.u (x); INSERT INTO u VALUES (1)");
    EXPECT_EQ(listener_->take(), "insert:beside.u:1 commit");
}

}  // namespace

}  // namespace kelva::tests
