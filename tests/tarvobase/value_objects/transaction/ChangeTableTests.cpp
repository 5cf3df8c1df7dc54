#include <limits>

#include "platform/Clock.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionRecordInDatabase.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

Transaction changeNamed(const std::string& id, std::int64_t time = 1, const std::string& record = "r1") {
    return {.transactionID = id,
            .recordID = record,
            .moduleName = "Leads",
            .operationType = TransactionType::editRecord,
            .dataJSON = platform::Data(std::string("{\"a\":\0}", 7)),
            .uriData = platform::Data(R"({"module":"Leads"})"),
            .transactionTime = time};
}

std::string idsOf(const std::optional<QueuedTransactions>& queued) {
    if (!queued) return "absent";
    std::string ids;
    for (auto& change : queued->transactions) ids += change.transactionID + " ";
    for (auto& row : queued->unreadable) ids += row.transactionID.value_or("none") + "/" + row.column + " ";
    return ids;
}

class ChangeTableTest : public ServerTest {
protected:
    TransactionInDatabase queue() { return {"TRANSACTIONS", database}; }
    std::string next() {
        auto found = queue().getNextRunnableTransaction();
        return !found ? found.error().logText() : found->has_value() ? (*found)->transactionID : "none";
    }
};

TEST_F(ChangeTableTest, TheQueueMakesWhatTheServerForgot) {
    struct {
        std::string name, organisation, serverSql;
    } cases[] = {
        {"TRANSACTIONS", "", ""},
        {"TRANSACTIONS_77", "77", ""},
        {"TRANSACTIONS_78", "78", "CREATE TABLE TRANSACTIONS_78 (transaction_id TEXT, record_id TEXT)"},
        {"TRANSACTIONS_x y", "x y", ""},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.name);
        if (!one.serverSql.empty()) database->createTable(one.serverSql);
        configuration().currentOrgID = one.organisation;
        auto transactions = Stores::current().transactions();
        if (one.serverSql.empty()) {
            EXPECT_EQ(idsOf(transactions->getTransactions()), "");
        }
        auto change = changeNamed("t1");
        change.extras = "InProgress";
        EXPECT_TRUE(transactions->storeTransaction(change));
        EXPECT_EQ(transactions->getTransactions()->transactions, std::vector{change});
        EXPECT_EQ(column("SELECT COUNT(*) FROM \"" + one.name + "\"").at(0), "1");
    }
}

TEST_F(ChangeTableTest, WithoutADatabaseNothingCountsAsStoredOrEmpty) {
    EXPECT_TRUE(queue().storeTransaction(changeNamed("t1")));
    auto record = TransactionRecord{.recordID = "r1"};
    database->deregisterDB();
    for (auto& closed : {std::shared_ptr<DatabaseAdapter>(database), std::shared_ptr<DatabaseAdapter>()}) {
        TransactionInDatabase transactions("TRANSACTIONS", closed);
        EXPECT_FALSE(transactions.storeTransaction(changeNamed("t2")));
        EXPECT_EQ(idsOf(transactions.getTransactions()), "absent");
        EXPECT_EQ(transactions.highestTransactionTime(), std::nullopt);
        EXPECT_FALSE(transactions.getNextRunnableTransaction());
        EXPECT_FALSE(TransactionRecordInDatabase(closed).storeTransactionRecordPersistance(record));
        EXPECT_FALSE(TransactionRecordInDatabase(closed).getTransactionRecord("r1"));
        EXPECT_FALSE(ChangeRegisterInDatabase(closed, "").enter(ChangeQueue::older, "t1"));
        EXPECT_FALSE(ChangeRegisterInDatabase(closed, "").entries());
        EXPECT_FALSE(RecordIdAliasesInDatabase(closed, "").realId("Leads", "NEW_1"));
    }
}

TEST_F(ChangeTableTest, AChangeIsStoredWithTheCommitAroundItOrNotAtAll) {
    auto store = [&] {
        return queue().storeTransaction(changeNamed("t1")) &&
               ChangeRegisterInDatabase(database, "").enter(ChangeQueue::older, "t1").has_value();
    };
    EXPECT_FALSE(database->transaction("undone", [&] { return store() && false; }));
    EXPECT_EQ(idsOf(queue().getTransactions()), "");
    EXPECT_TRUE(database->transaction("kept", store));
    EXPECT_EQ(idsOf(queue().getTransactions()), "t1 ");
    EXPECT_EQ(ChangeRegisterInDatabase(database, "").entries()->size(), 1u);

    auto large = changeNamed("t2");
    large.dataJSON = platform::Data(longText());
    setFull(*database, true);
    EXPECT_FALSE(queue().storeTransaction(large));
    setFull(*database, false);
    EXPECT_EQ(idsOf(queue().getTransactions()), "t1 ");
}

TEST_F(ChangeTableTest, TheOrderIsThatOfTheTimesAsNumbers) {
    database->createTable(
        "CREATE TABLE TRANSACTIONS (transaction_id TEXT, record_id TEXT, module_name TEXT, operation_type TEXT, "
        "data_json, uri_data, error_message, parent_record_id, parent_record_module, transaction_time TEXT, "
        "server_response, extras)");
    EXPECT_TRUE(
        queue().storeTransactions({changeNamed("ten", 10), changeNamed("nine", 9, "r2"), changeNamed("ten2", 10)}));
    EXPECT_EQ(idsOf(queue().getTransactions()), "nine ten ten2 ");
    EXPECT_EQ(idsOf(queue().getTransactions("r1")), "ten ten2 ");
    EXPECT_EQ(queue().highestTransactionTime(), 10);
    // The table has no key, and yet a row is overwritten.
    auto again = changeNamed("nine", 9, "r2");
    again.parentRecordID = "p1";
    EXPECT_TRUE(queue().storeTransaction(again));
    EXPECT_EQ(idsOf(queue().getTransactions()), "nine ten ten2 ");
    EXPECT_EQ(idsOf(queue().getTransactionsWithParentID("p1")), "nine ");
    EXPECT_TRUE(queue().removeTransactions("r1"));
    EXPECT_EQ(idsOf(queue().getTransactions()), "nine ");
}

TEST_F(ChangeTableTest, NumbersAreBoundAsIntegersAndBodiesAsBytes) {
    EXPECT_TRUE(queue().storeTransaction(changeNamed("t1")));
    EXPECT_EQ(column("SELECT typeof(operation_type) || typeof(transaction_time) || typeof(data_json) || "
                     "typeof(uri_data) || typeof(extras) FROM TRANSACTIONS")
                  .at(0),
              "integerintegerblobblobnull");
    EXPECT_EQ(**queue().getTransaction("t1"), changeNamed("t1"));
}

TEST_F(ChangeTableTest, ARowIsPickedOnlyWhileItHasNoState) {
    struct {
        std::optional<std::string> error, response, extras;
    } states[] = {{"refused", std::nullopt, std::nullopt},
                  {std::nullopt, "{}", std::nullopt},
                  {std::nullopt, std::nullopt, "InProgress"},
                  {"refused", std::nullopt, "error"}};
    EXPECT_TRUE(queue().storeTransactions({changeNamed("t1", 1), changeNamed("t2", 2)}));
    for (auto& state : states) {
        EXPECT_EQ(next(), "t1");
        EXPECT_TRUE(queue().updateTransaciton("t1", state.error, state.response, state.extras));
        EXPECT_EQ(next(), "t2");
        // Absent arguments leave the columns as they are.
        EXPECT_TRUE(queue().updateTransaciton("t1", std::nullopt, std::nullopt, std::nullopt));
        auto stored = **queue().getTransaction("t1");
        EXPECT_EQ(std::tie(stored.errorMessage, stored.serverResponse, stored.extras),
                  std::tie(state.error, state.response, state.extras));
        EXPECT_TRUE(queue().makeReady({"t1"}));
    }
    EXPECT_TRUE(queue().removeTransactionsWithIds({"t1"}));
    EXPECT_TRUE(queue().removeTransaction("t2"));
    EXPECT_EQ(next(), "none");
}

TEST_F(ChangeTableTest, RowsThatCannotBeReadAreListedAndBlockNobody) {
    EXPECT_TRUE(queue().storeTransaction(changeNamed("good", 50)));
    struct {
        std::string id, record, type, time, column;
    } rows[] = {{"NULL", "'r'", "1", "1", "transaction_id"},       {"'b'", "NULL", "1", "2", "record_id"},
                {"'c'", "'r'", "9", "3", "operation_type"},        {"'d'", "'r'", "'edit'", "4", "operation_type"},
                {"'e'", "'r'", "1", "'soon'", "transaction_time"}, {"'f'", "'r'", "1.5", "5", "operation_type"}};
    for (auto& row : rows)
        database->execute(
            "INSERT INTO TRANSACTIONS (transaction_id, record_id, module_name, operation_type, "
            "transaction_time) VALUES (" +
                row.id + "," + row.record + ",'Leads'," + row.type + "," + row.time + ")",
            std::nullopt);
    database->execute(
        "INSERT INTO TRANSACTIONS (transaction_id, record_id, module_name, operation_type, "
        "transaction_time) VALUES (7, 8, 'Leads', '2', '99999999999999999999')",
        std::nullopt);
    EXPECT_EQ(idsOf(queue().getTransactions()),
              "good e/transaction_time none/transaction_id b/record_id c/operation_type d/operation_type "
              "f/operation_type 7/transaction_time ");
    EXPECT_EQ(next(), "good");
    EXPECT_EQ(queue().highestTransactionTime(), 50);
    EXPECT_EQ(queue().getTransaction("c").error(), ParserError::typeConversionFailedForKey("operation_type"));

    std::vector<std::int64_t> numbers;
    auto queued = *queue().getTransactions();
    for (auto& row : queued.unreadable) numbers.push_back(row.row);
    EXPECT_TRUE(queue().failUnreadable(numbers));
    queued = *queue().getTransactions();
    for (auto& row : queued.unreadable) EXPECT_EQ(row.extras, "error") << row.column;
    EXPECT_EQ(column("SELECT COUNT(*) FROM TRANSACTIONS WHERE extras IS NULL").at(0), "1");
}

TEST_F(ChangeTableTest, BothSidesOfARecordAreKeptAsJson) {
    TransactionRecordInDatabase records(database);
    EXPECT_EQ(*records.getTransactionRecord("r1"), std::nullopt);
    TransactionRecord record{.recordID = "r1",
                             .deviceData = {{"name", "Ångström"}, {"rate", 1.5}, {"rows", ValueList{ValueMap{}}}},
                             .serverData = {{"name", "A"}}};
    EXPECT_TRUE(records.storeTransactionRecordPersistance(record));
    EXPECT_EQ(**records.getTransactionRecord("r1"), record);
    // What JSON cannot express costs only itself.
    auto partly = record;
    partly.deviceData.set("photo", std::numeric_limits<double>::infinity());
    EXPECT_TRUE(records.storeTransactionRecordPersistance(partly));
    EXPECT_EQ(**records.getTransactionRecord("r1"), record);
    EXPECT_EQ(column("SELECT COUNT(*) FROM TRANSACTIONS_RECORDS").at(0), "1");

    for (auto text : {"NULL", "'[1]'", "'{'", "7"}) {
        database->execute("UPDATE TRANSACTIONS_RECORDS SET server_data = " + std::string(text), std::nullopt);
        auto found = records.getTransactionRecord("r1");
        EXPECT_TRUE(!found && found.error() == ParserError::typeConversionFailedForKey("server_data")) << text;
    }
    EXPECT_TRUE(records.removeTransactionRecord("r1"));
    EXPECT_EQ(*records.getTransactionRecord("r1"), std::nullopt);
}

TEST_F(ChangeTableTest, NumbersOfChangesRiseForEver) {
    auto changes = [&](std::string organisation = "1") {
        return ChangeRegisterInDatabase(database, std::move(organisation));
    };
    auto numberOf = [&](ChangeQueue queue, const std::string& id, std::string organisation = "1") {
        return changes(std::move(organisation)).enter(queue, id)->number;
    };
    auto first = numberOf(ChangeQueue::older, "t1");
    EXPECT_EQ(numberOf(ChangeQueue::current, "t1"), first + 1);
    EXPECT_EQ(numberOf(ChangeQueue::older, "t2", "2"), first + 2);
    EXPECT_EQ(numberOf(ChangeQueue::older, "t1"), first) << "a change that has an entry keeps it";
    EXPECT_EQ(numberOf(ChangeQueue::older, "t3"), first + 3) << "it uses up no number";
    EXPECT_TRUE(changes().end(ChangeQueue::older, {{"t1"}, {"t2"}, {"t3"}}, ChangeOutcome::accepted));
    EXPECT_EQ(changes().entries()->size(), 1u);
    EXPECT_EQ(changes("2").entries()->size(), 0u);
    EXPECT_TRUE(changes().end(ChangeQueue::current, {{"t1"}}, ChangeOutcome::accepted));
    database->deregisterDB();
    ASSERT_TRUE(database->registerDB("a passphrase"));
    EXPECT_GT(numberOf(ChangeQueue::older, "t9"), first + 3);
}

TEST_F(ChangeTableTest, WhatBecameOfTheChangesThatEndedLastIsRemembered) {
    ChangeRegisterInDatabase changes(database, "1");
    auto first = changes.enter(ChangeQueue::older, "waits for long")->number;
    std::vector<EndedChange> ended;
    ASSERT_TRUE(database->transaction("enter", [&] {
        for (int i = 1; i <= 1001; ++i) {
            ended.push_back({std::to_string(i), "Leads", "7"});
            changes.enter(ChangeQueue::older, std::to_string(i));
        }
        return changes.end(ChangeQueue::older, ended, ChangeOutcome::accepted);
    }));
    EXPECT_TRUE(changes.end(ChangeQueue::older, {{"waits for long", "Notes", "8"}, {"9", "", ""}, {"never entered"}},
                            ChangeOutcome::cancelled));
    EXPECT_EQ(*changes.endsOf({first, first + 1, first + 2, first + 3, first + 9, first + 5000}),
              (std::vector<ChangeEnd>{{first, ChangeOutcome::cancelled, "Notes", "8"},
                                      {first + 3, ChangeOutcome::accepted, "Leads", "7"},
                                      {first + 9, ChangeOutcome::accepted, "Leads", "7"}}));
}

TEST_F(ChangeTableTest, AnEntryKeepsKeySendsAndRefusal) {
    ChangeRegisterInDatabase changes(database, "1");
    platform::Clock::set(platform::Clock::WallTime(std::chrono::milliseconds(1'700'000'000'123)));
    auto entered = *changes.enter(ChangeQueue::older, "t1");
    auto other = *changes.enter(ChangeQueue::older, "t2");
    platform::Clock::release();
    EXPECT_EQ(entered.enteredAt, 1'700'000'000'123);
    EXPECT_NE(entered.key, other.key);

    auto expected = entered;
    expected.sends = 2;
    expected.lastRefusal = ErrorResponse{"crmINVALID_DATA", "Duplicate value", ValueMap{{"api_name", "Email"}}};
    EXPECT_TRUE(changes.noteSend(entered.number) && changes.noteSend(entered.number));
    expected.mayBeApplied = true;
    EXPECT_TRUE(changes.noteRefusal(entered.number, *expected.lastRefusal, true));
    EXPECT_EQ(*changes.entriesOf(ChangeQueue::older, {"t1"}), std::vector{expected});

    auto key = changes.renewKey(entered.number);
    ASSERT_TRUE(key);
    EXPECT_NE(*key, entered.key);
    expected.key = *key;
    expected.lastRefusal = std::nullopt;
    expected.mayBeApplied = false;
    EXPECT_EQ(*changes.entries(), (std::vector{expected, other}));
}

TEST_F(ChangeTableTest, ATemporaryIdLeadsToTheRealOneOfItsModule) {
    RecordIdAliasesInDatabase aliases(database, "org");
    EXPECT_EQ(*aliases.realId("Leads", "NEW_000000001"), std::nullopt);
    EXPECT_TRUE(aliases.store({"NEW_000000001", "Leads", "1"}));
    EXPECT_TRUE(aliases.store({"NEW_000000001", "Deals", "2"}));
    EXPECT_TRUE(aliases.store({"NEW_000000001", "Leads", "3"}));
    EXPECT_EQ(*aliases.realId("Leads", "NEW_000000001"), "3");
    EXPECT_EQ(aliases.aliasesOf({"NEW_000000001", "TarvoTEMPID#1"})->size(), 2u);
    EXPECT_TRUE(aliases.forget("Leads", "NEW_000000001"));
    EXPECT_EQ(*aliases.realId("Leads", "NEW_000000001"), std::nullopt);
    EXPECT_EQ(*aliases.realId("Deals", "NEW_000000001"), "2");
    EXPECT_EQ(aliases.lastNumber(), 3);
    EXPECT_TRUE(aliases.store({"NEW_000000001", "Leads", "4"}));
    EXPECT_EQ(aliases.lastNumber(), 4);
}

}  // namespace
}  // namespace tarvo
