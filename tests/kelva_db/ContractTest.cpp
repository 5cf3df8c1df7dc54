#include "tests/kelva_db/DatabaseFixture.h"

namespace kelva::tests {

namespace {

enum class Sort { pool, memory, fileQueue };

/// What every database promises, whatever it stores in.
class ContractTest : public testing::TestWithParam<Sort> {
protected:
    void SetUp() override {
        switch (GetParam()) {
            case Sort::pool: database_ = std::make_shared<DatabasePool>(folder_.file("a.db"), rawConfiguration()); break;
            case Sort::memory:
                database_ = std::make_shared<DatabaseQueue>("file::memory:?cache=shared", rawConfiguration());
                break;
            case Sort::fileQueue:
                database_ = std::make_shared<DatabaseQueue>(folder_.file("a.db"), rawConfiguration());
                break;
        }
        database_->write([](Database& writer) {
            writer.execute("CREATE TABLE people (id TEXT NOT NULL UNIQUE, age INTEGER, note)");
        });
    }

    std::int64_t count() { return integer(*database_, "SELECT count(*) FROM people"); }
    static void addPerson(Database& writer, const std::string& id) {
        writer.insert("people", ValueMap{{"id", id}, {"age", 30}});
    }

    Folder folder_;
    std::shared_ptr<KelvaDatabase> database_;
};

INSTANTIATE_TEST_SUITE_P(Databases, ContractTest, testing::Values(Sort::pool, Sort::memory, Sort::fileQueue),
                         [](auto& info) {
                             return info.param == Sort::pool ? "Pool" : info.param == Sort::memory ? "Memory" : "File";
                         });

TEST_P(ContractTest, ThrowUndoesEverythingAndIsRethrown) {
    EXPECT_THROW(database_->write([](Database& writer) {
        addPerson(writer, "a");
        throw std::string("mine");
    }), std::string);
    EXPECT_EQ(count(), 0);
    database_->inTransaction([](Database& writer) {
        addPerson(writer, "b");
        return TransactionCompletion::rollback;
    });
    EXPECT_EQ(count(), 0);
    database_->write([](Database& writer) { addPerson(writer, "c"); });
    EXPECT_EQ(count(), 1);
}

}  // namespace

}  // namespace kelva::tests
