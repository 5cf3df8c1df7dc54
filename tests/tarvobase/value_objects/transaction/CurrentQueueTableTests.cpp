#include <limits>

#include "platform/Text.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransactionInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransactionRecordInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionDependencyInDatabase.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using Kind = NTransaction::Kind;
using Status = NTransaction::Status;
using Ids = std::vector<std::int64_t>;

constexpr auto lookup = TransactionDependency::Kind::lookupRecord;
constexpr auto sameRecord = TransactionDependency::Kind::sameRecord;

NTransaction transactionOf(std::int64_t id, const std::string& record = "r1", Kind kind = Kind::editRecord) {
    return {
        .id = id, .recordId = record, .module = ModuleIdentifier::Case::notes, .kind = kind, .payload = {{"a", id}}};
}

std::string textOf(const Ids& ids) {
    std::string text;
    for (auto id : ids) text += std::to_string(id) + " ";
    return text;
}
std::string idsOf(const TransactionPersistence::Transactions& transactions) {
    if (!transactions) return "absent";
    Ids ids;
    for (auto& transaction : *transactions) ids.push_back(transaction.id);
    return textOf(ids);
}
std::string textOf(const TransactionDependencyPersistence::Dependencies& dependencies) {
    if (!dependencies) return "absent";
    std::vector<std::string> texts;
    for (auto& one : *dependencies)
        texts.push_back(std::to_string(one.transactionId) + "<" + std::to_string(one.dependentTransaction) +
                        (one.kind == sameRecord ? "s" : ""));
    std::sort(texts.begin(), texts.end());
    return text::join(texts, " ");
}

class CurrentQueueTableTest : public ServerTest {
protected:
    NTransactionInDatabase queue() { return NTransactionInDatabase(database); }
    TransactionDependencyInDatabase dependencies() { return TransactionDependencyInDatabase(database); }
    bool store(const std::vector<NTransaction>& transactions, const std::vector<TransactionDependency>& waiting = {}) {
        return queue().storeTransactions(transactions, waiting);
    }
    std::string next(const std::vector<Kind>& kinds = {Kind::editRecord}) {
        auto found = queue().getNextRunnableTransaction(kinds);
        return !found ? found.error().logText() : found->has_value() ? std::to_string((*found)->id) : "none";
    }
    std::string all() { return idsOf(queue().getTransactions()->transactions); }
};

TEST_F(CurrentQueueTableTest, ATransactionComesBackAsItWasStored) {
    auto transaction = transactionOf(7, "NEW_'1\"", Kind::addVoiceNote);
    transaction.module = ModuleIdentifier::custom("CustomModule3");
    transaction.payload = {
        {"Note_Title", "it's \"x\"\n"}, {"null", Value()}, {"rows", ValueList{ValueMap{{"id", "1"}}}}};
    transaction.errorResponse = ErrorResponse{"crmX", "no", ValueMap{{"ids", ValueList{7}}}};
    transaction.status = Status::syncing();
    transaction.mergeCount = 2;
    transaction.syncAttempt = 3;
    ASSERT_TRUE(store({transaction}));
    EXPECT_EQ(queue().getTransactionsWithRecordIds({"NEW_'1\""}), std::vector{transaction});
    EXPECT_EQ(column("SELECT typeof(txn_id) || typeof(txn_type) || typeof(status) || typeof(merge_count) || "
                     "typeof(sync_attempt) FROM TRANSACTIONS_NEW")
                  .at(0),
              "integerintegerintegerintegerinteger");
    auto heldBack = transactionOf(8);
    heldBack.status = Status::inactive(30);
    ASSERT_TRUE(store({heldBack}));
    EXPECT_EQ(queue().getTransactionsWithIds({8})->front().status, Status::inactive(0));
    EXPECT_EQ(TransactionMapper().getDictionary(transaction).valueOf("mergecount"), Value(2));
    EXPECT_EQ(*TransactionMapper().getValue(TransactionMapper().getDictionary(transaction)), transaction);
}

TEST_F(CurrentQueueTableTest, EachKindHasItsRow) {
    for (auto& one : EnumCases<Kind>::cases)
        EXPECT_EQ(&one - EnumCases<Kind>::cases, static_cast<std::ptrdiff_t>(one.value)) << one.name;
    EXPECT_EQ(kindsWhere(isFileUpload),
              (std::vector{Kind::uploadPhoto, Kind::addAttachment, Kind::addVoiceNote, Kind::addNoteAttachment}));
    EXPECT_EQ(kindsWhere(isCreateState), (std::vector{Kind::addRecord, Kind::addAttachment, Kind::addVoiceNote,
                                                      Kind::addNoteAttachment, Kind::addCheckIn, Kind::import}));
    EXPECT_EQ(depndencyType(Kind::deleteCheckIn), RecordDependency::Kind::delete_);
    EXPECT_EQ(depndencyType(Kind::addTextNote), std::nullopt);
}

TEST_F(CurrentQueueTableTest, AllIsStoredOrNothing) {
    ASSERT_TRUE(store({transactionOf(1)}));
    auto notInJson = transactionOf(3), ofUnknownModule = transactionOf(4);
    notInJson.payload.set("x", std::numeric_limits<double>::infinity());
    ofUnknownModule.module = ModuleIdentifier::unsupportedOrNew("Weather");
    for (auto& refused : {notInJson, ofUnknownModule, transactionOf(1, "another record")}) {
        EXPECT_FALSE(store({transactionOf(2), refused}, {{2, 1, lookup}})) << refused.id;
        EXPECT_EQ(all(), "1 ");
    }
    EXPECT_FALSE(queue().addMergedTransaction(notInJson, {}, {1, 3}));
    EXPECT_EQ(column("SELECT record_id FROM TRANSACTIONS_NEW").at(0), "r1");
    EXPECT_EQ(textOf(dependencies().getTransactionDependencies()), "");

    ErrorResponse notInJsonEither{"c", "m", notInJson.payload};
    EXPECT_FALSE(queue().setTransactionErrors({{1, ErrorResponse::parsingFailed()}, {2, notInJsonEither}}));
    EXPECT_EQ(next(), "1");
}

TEST_F(CurrentQueueTableTest, WithoutADatabaseNothingIsStoredAndNothingCountsAsEmpty) {
    ASSERT_TRUE(store({transactionOf(1)}));
    database->deregisterDB();
    for (auto& closed : {std::shared_ptr<DatabaseAdapter>(database), std::shared_ptr<DatabaseAdapter>()}) {
        NTransactionInDatabase transactions(closed);
        TransactionDependencyInDatabase waiting(closed);
        EXPECT_FALSE(transactions.storeTransactions({transactionOf(2)}, {}));
        EXPECT_FALSE(transactions.getTransactions());
        EXPECT_FALSE(transactions.getNextRunnableTransaction({Kind::editRecord}));
        EXPECT_FALSE(transactions.highestTransactionId());
        EXPECT_FALSE(waiting.storeTransactionDependency({1, 2, lookup}));
        EXPECT_FALSE(waiting.getAllTransitivesLookupDependencies(1));
    }
}

TEST_F(CurrentQueueTableTest, TheFirstThatIsFreeCleanAndActiveRuns) {
    struct {
        std::string name, change, next;
    } cases[] = {
        {"all as stored", "", "2"},
        {"an empty error is none", "UPDATE TRANSACTIONS_NEW SET error_response = '' WHERE txn_id = 2", "2"},
        {"an error", "UPDATE TRANSACTIONS_NEW SET error_response = '{}' WHERE txn_id = 2", "10"},
        {"held back", "UPDATE TRANSACTIONS_NEW SET status = 0 WHERE txn_id = 2", "10"},
        {"on its way", "UPDATE TRANSACTIONS_NEW SET status = 3 WHERE txn_id = 2", "10"},
        {"it waits", "INSERT INTO TRANSACTIONS_DEPENDENCY VALUES (2, 10, 1)", "10"},
        {"another one waits for it", "INSERT INTO TRANSACTIONS_DEPENDENCY VALUES (10, 2, 0)", "2"},
        {"it waits for nobody", "INSERT INTO TRANSACTIONS_DEPENDENCY VALUES (2, 999, 0)", "10"},
        {"they wait for each other", "INSERT INTO TRANSACTIONS_DEPENDENCY VALUES (2, 10, 0), (10, 2, 0)", "none"},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.name);
        ASSERT_TRUE(store({transactionOf(10), transactionOf(2), transactionOf(1, "r", Kind::addVoiceNote)}));
        if (!one.change.empty()) runStatement(one.change);
        EXPECT_EQ(next(), one.next);
        EXPECT_EQ(next({}), "none");
        EXPECT_TRUE(queue().deleteTransactionWithIds({1, 2, 10}));
    }
}

TEST_F(CurrentQueueTableTest, RowsThatCannotBeReadBlockNobody) {
    struct {
        std::string column, value;
    } broken[] = {{"record_id", "NULL"},      {"module_name", "'Weather'"},
                  {"txn_type", "20"},         {"txn_type", "'edit'"},
                  {"payload", "'[1]'"},       {"payload", "'{'"},
                  {"payload", "NULL"},        {"status", "5"},
                  {"merge_count", "NULL"},    {"sync_attempt", "'often'"},
                  {"error_response", "'no'"}, {"error_response", "'{\"code\":\"c\"}'"}};
    std::int64_t id = 0;
    for (auto& one : broken) {
        ASSERT_TRUE(store({transactionOf(++id)}));
        runStatement("UPDATE TRANSACTIONS_NEW SET " + one.column + " = " + one.value +
                     " WHERE txn_id = " + std::to_string(id));
    }
    ASSERT_TRUE(store({transactionOf(50)}));
    auto queued = *queue().getTransactions();
    EXPECT_EQ(idsOf(queued.transactions), "50 ");
    ASSERT_EQ(queued.unreadable.size(), std::size(broken));
    for (std::size_t i = 0; i < std::size(broken); ++i) {
        EXPECT_EQ(queued.unreadable[i].column, broken[i].column) << i;
        EXPECT_EQ(queued.unreadable[i].hasError, broken[i].column == "error_response") << i;
        EXPECT_EQ(idsOf(queue().getTransactionsWithIds({queued.unreadable[i].id, 50})), "absent");
    }
    EXPECT_EQ(next(), "50");
    // What waits for a create whose payload is broken must still find it.
    EXPECT_EQ(textOf(*queue().getTransactionIdsWithRecordIds({"r1"}, {Kind::editRecord})), "2 5 6 7 8 9 10 11 12 50 ");
    // Integers that another program stored as text are read.
    runStatement("CREATE TABLE copy AS SELECT * FROM TRANSACTIONS_NEW WHERE txn_id = 50");
    runStatement("DROP TABLE TRANSACTIONS_NEW");
    runStatement(
        "CREATE TABLE TRANSACTIONS_NEW (txn_id TEXT, record_id TEXT, module_name TEXT, txn_type TEXT, payload TEXT, "
        "error_response TEXT, status TEXT, merge_count TEXT, sync_attempt TEXT)");
    runStatement("INSERT INTO TRANSACTIONS_NEW SELECT * FROM copy");
    EXPECT_EQ(next(), "50");
}

TEST_F(CurrentQueueTableTest, TheSurvivorTakesThePlaceOfTheMerged) {
    struct {
        std::string name;
        Ids merged;
        std::string queue, waiting;
    } cases[] = {
        {"itself only", {3}, "1 2 3 4 5 6 ", "2<1 3<9 4<2 5<2 5<3 6<1"},
        {"those before", {1, 2, 3}, "3 4 5 6 ", "3<9 4<3 5<3 6<3"},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.name);
        ASSERT_TRUE(
            store({transactionOf(1), transactionOf(2), transactionOf(3), transactionOf(4, "r2"), transactionOf(5, "r3"),
                   transactionOf(6, "r4")},
                  {{2, 1, lookup}, {3, 2, lookup}, {4, 2, lookup}, {5, 2, lookup}, {5, 3, lookup}, {6, 1, lookup}}));
        auto survivor = transactionOf(3);
        survivor.mergeCount = 2;
        EXPECT_TRUE(queue().addMergedTransaction(survivor, {{3, 9, lookup}}, one.merged));
        EXPECT_EQ(all(), one.queue);
        EXPECT_EQ(textOf(dependencies().getTransactionDependencies()), one.waiting);
        EXPECT_EQ(queue().getTransactionsWithIds({3})->front(), survivor);
        EXPECT_TRUE(queue().deleteTransactionWithIds({1, 2, 3, 4, 5, 6}));
    }
}

TEST_F(CurrentQueueTableTest, DeletingFreesWhoWaited) {
    std::vector<NTransaction> stored{transactionOf(1), transactionOf(2), transactionOf(3, "it's"),
                                     transactionOf(4, "r2")};
    std::vector<TransactionDependency> waiting{{2, 1, sameRecord}, {3, 1, lookup}, {4, 3, lookup}};
    ASSERT_TRUE(store(stored, waiting));
    EXPECT_TRUE(queue().deleteTransactionWithId(1));
    EXPECT_EQ(textOf(dependencies().getTransactionDependencies()), "4<3");
    EXPECT_TRUE(queue().deleteTransactionWithRecordId("it's"));
    EXPECT_EQ(textOf(dependencies().getTransactionDependencies()), "");
    EXPECT_EQ(all(), "2 4 ");
}

TEST_F(CurrentQueueTableTest, TheNewestOfEachKindIsFound) {
    ASSERT_TRUE(store({transactionOf(1, "r1", Kind::addTextNote), transactionOf(2, "r1", Kind::editNote),
                       transactionOf(3, "r1", Kind::editNote), transactionOf(4, "r2", Kind::editNote),
                       transactionOf(5, "r1", Kind::link)}));
    EXPECT_EQ(idsOf(queue().getLastTransaction("r1", {Kind::editNote, Kind::addTextNote})), "1 3 ");
    EXPECT_EQ(*queue().getLastTransactionId("r1", {Kind::editNote}),
              (std::map<Kind, std::int64_t>{{Kind::editNote, 3}}));
    EXPECT_EQ(idsOf(queue().getLastTransaction("r1", {})), "");
    EXPECT_EQ(idsOf(queue().getTransactionsWithRecordIds({"r1", "r2"}, std::vector{Kind::editNote}, 2)), "2 3 ");
}

TEST_F(CurrentQueueTableTest, AllThatHangsOnATransactionIsFoundOnce) {
    struct {
        std::string name;
        std::vector<TransactionDependency> rows;
        std::string found;
    } cases[] = {
        {"an empty table", {}, ""},
        {"a chain", {{2, 1, lookup}, {3, 2, lookup}, {9, 8, lookup}}, "2<1 3<2"},
        {"the same record does not count", {{2, 1, sameRecord}, {3, 2, lookup}}, ""},
        {"a diamond", {{2, 1, lookup}, {3, 1, lookup}, {4, 2, lookup}, {4, 3, lookup}}, "2<1 3<1 4<2 4<3"},
        {"a cycle", {{2, 1, lookup}, {3, 2, lookup}, {1, 3, lookup}}, "1<3 2<1 3<2"},
        {"itself", {{1, 1, lookup}}, "1<1"},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.name);
        EXPECT_TRUE(dependencies().storeTransactionDependencies(one.rows));
        EXPECT_EQ(textOf(dependencies().getAllTransitivesLookupDependencies(1)), one.found);
        runStatement("DELETE FROM TRANSACTIONS_DEPENDENCY WHERE 1");
    }
    // Each of forty levels has two ways to the next one: by ways there would be more than 10^12 rows.
    std::vector<TransactionDependency> ladder;
    for (std::int64_t level = 0; level < 40; ++level)
        for (int from : {0, 1})
            for (int to : {0, 1}) ladder.push_back({1 + 2 * (level + 1) + to, 1 + 2 * level + from, lookup});
    EXPECT_TRUE(dependencies().storeTransactionDependencies(ladder));
    EXPECT_EQ(dependencies().getAllTransitivesLookupDependencies(1)->size(), 158u);
}

TEST_F(CurrentQueueTableTest, DependenciesOnWhatIsInNeitherQueueGo) {
    ASSERT_TRUE(store({transactionOf(1), transactionOf(2)},
                      {{2, 1, lookup}, {1, 70, lookup}, {2, 80, sameRecord}, {2, 81, lookup}, {90, 1, lookup}}));
    EXPECT_EQ(textOf(*dependencies().removeDanglingDependencies({70})), "2 90 ");
    EXPECT_EQ(textOf(dependencies().getTransactionDependencies()), "1<70 2<1");
    EXPECT_EQ(textOf(*dependencies().removeDanglingDependencies({70})), "");
}

TEST_F(CurrentQueueTableTest, TheHighestIdIsOneThatOthersCanFollow) {
    EXPECT_EQ(queue().highestTransactionId(), 0);
    ASSERT_TRUE(store({transactionOf(9), transactionOf(std::numeric_limits<std::int64_t>::max())}, {{9, 40, lookup}}));
    EXPECT_EQ(queue().highestTransactionId(), 40);
}

TEST_F(CurrentQueueTableTest, ChangesTouchOnlyTheirRows) {
    ASSERT_TRUE(store({transactionOf(1), transactionOf(2), transactionOf(3, "NEW_000000001")}));
    EXPECT_TRUE(
        queue().setTransactionErrors({{1, ErrorResponse::parsingFailed()}, {2, ErrorResponse::moduleNotFound()}}));
    EXPECT_TRUE(queue().clearError({1}));
    EXPECT_TRUE(queue().setSyncAttempt(2, Status::syncing(), 1));
    EXPECT_TRUE(queue().setStatus(Status::inactive(5), 3));
    EXPECT_TRUE(queue().update({{"NEW_000000001", "77"}}, {{1, R"({"a":"77"})"}}));
    auto one = transactionOf(1), two = transactionOf(2), three = transactionOf(3, "77");
    one.status = Status::syncing();
    one.syncAttempt = 2;
    one.payload = {{"a", "77"}};
    two.errorResponse = ErrorResponse::moduleNotFound();
    three.status = Status::inactive(0);
    EXPECT_EQ(queue().getTransactions()->transactions, (std::vector{one, two, three}));
    EXPECT_TRUE(queue().replaceStatus({Status::Case::syncing, Status::Case::inactive}, Status::active()));
    EXPECT_EQ(column("SELECT COUNT(*) FROM TRANSACTIONS_NEW WHERE status = 1").at(0), "3");
    auto payloads = *queue().getPayload({2}, {"77"});
    EXPECT_EQ(payloads, (std::map<std::int64_t, std::string>{{2, R"({"a":2})"}, {3, R"({"a":3})"}}));
}

TEST_F(CurrentQueueTableTest, ARecordMovesToItsRealIdWithItsSides) {
    NTransactionRecordInDatabase records(database);
    EXPECT_TRUE(records.replaceRecordId("5", "NEW_000000001"));
    NTransactionRecord record{.recordId = "NEW_000000001",
                              .deviceData = {{"id", "NEW_000000001"}, {"longer", "NEW_0000000012"}},
                              .serverData = {{"id", "NEW_000000001"}}};
    EXPECT_TRUE(records.storeTransactionRecord(record));
    EXPECT_TRUE(records.storeTransactionRecord(record));
    EXPECT_TRUE(records.replaceRecordId("5", "NEW_000000001"));
    record.recordId = "5";
    record.deviceData.set("id", "5");
    EXPECT_EQ(**records.getTransactionRecord("5"), record);
    EXPECT_EQ(*records.getTransactionRecord("NEW_000000001"), std::nullopt);
}

}  // namespace
TEST_F(CurrentQueueTableTest, WhatAnotherOrganisationMadeIsNotRunnable) {
    ASSERT_TRUE(store({transactionOf(1), transactionOf(2)}));
    auto next = [&] {
        auto found = NTransactionInDatabase(database, "mine").getNextRunnableTransaction({Kind::editRecord});
        return found.value() ? found.value()->id : 0;
    };
    EXPECT_EQ(next(), 1);  // nobody knows where it was made
    ASSERT_TRUE(ChangeRegisterInDatabase(database, "other").enter(ChangeQueue::current, "1"));
    ASSERT_TRUE(ChangeRegisterInDatabase(database, "mine").enter(ChangeQueue::current, "2"));
    EXPECT_EQ(next(), 2);
}

}  // namespace tarvo
