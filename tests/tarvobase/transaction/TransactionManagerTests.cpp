#include <deque>

#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/change_queues/TransactionAssembler.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tarvobase/transaction/TransactionManager.h"
#include "tarvobase/transaction/TransactionStatusObserver.h"
#include "tarvobase/value_objects/transaction/TransactionInDatabase.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using namespace std::chrono_literals;
using Kind = NTransaction::Kind;
using Ids = TransactionManager::Ids;
using Attempts = TransactionManager::Attempts;

const std::string newNote = "NEW_000000001";

/// Keeps what is executed until the test completes it.
class HeldExecutor final : public TransactionExecutor, public TransactionExecutorDIContract {
public:
    struct Run {
        NTransaction transaction;
        Completion completion;
    };
    std::deque<Run> runs;  // in the order of the starts
    std::vector<std::string> log;

    void execute(const NTransaction& transaction, Completion onCompletion) override {
        runs.push_back({transaction, std::move(onCompletion)});
        log.push_back(std::to_string(transaction.id));
    }
    std::shared_ptr<TransactionExecutor> getExecutor(const NTransaction&) override {
        return std::dynamic_pointer_cast<HeldExecutor>(shared_from_this());
    }
};

class TransactionNotices final : public ChangeQueueObserver, public TransactionStatusObserver {
public:
    std::vector<std::string> notices;

    void changeSaved(const Change& change) override { notices.push_back("saved " + change.transactionId); }
    void changeAccepted(const Change& change, const std::optional<std::string>& former) override {
        notices.push_back("accepted " + change.transactionId + " " + change.recordId + " " + former.value_or("-"));
    }
    void changeRefused(const Change& change) override {
        notices.push_back("refused " + change.transactionId + " " + change.error->code);
    }
    void transactionGaveUp(const NTransaction& transaction) override {
        notices.push_back("gave up " + std::to_string(transaction.id));
    }
};

/// The current queue with its schedulers over real tables. The test plays the server.
class TransactionManagerTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        platform::Clock::set(platform::Clock::now());
        configuration().databaseAdapter = openDatabase();
        begin();
        ASSERT_TRUE(manager->initialize());
        manager->startSync();
        settle();
    }
    void TearDown() override {
        manager.reset();
        platform::Clock::release();
        FoundationTest::TearDown();
    }
    /// Begins as a process does that finds this database.
    void begin() {
        stores.emplace(Stores::current());
        executor = std::make_shared<HeldExecutor>();
        manager =
            TransactionAssembler::getTransactionManager(*stores, std::make_shared<SendingLock>(folder() + "/lock"));
        manager->transactionExecutorDI = executor;
    }
    static NTransaction transaction(std::int64_t id, Kind kind, const std::string& recordId, ValueMap payload = {}) {
        return {.id = id,
                .recordId = recordId,
                .module = ModuleIdentifier::Case::notes,
                .kind = kind,
                .payload = std::move(payload)};
    }
    void add(std::int64_t id, Kind kind, const std::string& recordId, const std::vector<std::string>& lookups = {},
             ValueMap payload = {}) {
        ASSERT_TRUE(manager->addTransaction(transaction(id, kind, recordId, std::move(payload)), lookups, {}));
        settle();
    }
    /// Completes the run that was started first.
    void complete(TransactionResult result) {
        ASSERT_FALSE(executor->runs.empty());
        auto completion = std::move(executor->runs.front().completion);
        executor->runs.pop_front();
        completion(std::move(result));
        settle();
    }
    void accept(TransactionResult::Identifiers identifiers = {}) {
        complete(TransactionResult::success(std::move(identifiers)));
    }
    void refuse(const std::string& code = "crmINVALID_DATA") {
        complete(TransactionResult::failure({.code = code, .message = code}));
    }
    void advance(std::chrono::milliseconds by) {
        platform::Clock::advance(by);
        settle();
    }
    /// Returns the ids of the transactions that were started since the last call.
    std::string started() { return text::join(std::exchange(executor->log, {}), " "); }
    /// Returns the rows of the queue: id, record, status, attempts and error.
    std::string rows() {
        std::vector<std::string> texts;
        auto queued = stores->currentTransactions()->getTransactions();
        for (auto& row : queued->transactions)
            texts.push_back(std::to_string(row.id) + " " + row.recordId + " " +
                            std::string(caseName(row.status.which)) + " " + std::to_string(row.syncAttempt) +
                            (row.errorResponse ? " " + row.errorResponse->code : ""));
        return text::join(texts, ", ");
    }
    std::string payloadOf(std::int64_t id) {
        auto found = stores->currentTransactions()->getTransactionsWithIds({id});
        return json::write(found->front().payload).value_or("");
    }
    std::string keyOf(std::int64_t id) {
        return stores->changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(id)})->front().key;
    }

    std::optional<Stores> stores;
    std::shared_ptr<HeldExecutor> executor;
    std::shared_ptr<TransactionManager> manager;
};

}  // namespace

TEST_F(TransactionManagerTest, SuccessGivesTheIdToWhatWaitsAndFreesIt) {
    auto log = std::make_shared<TransactionNotices>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    add(1, Kind::addTextNote, newNote, {}, {{"Note_Content", "NEW_0000000012 NEW_000000001"}});
    add(2, Kind::editNote, newNote, {}, {{"id", newNote}});
    add(3, Kind::editNote, "7", {newNote},
        {{"Parent", newNote}, {"Note_Title", newNote}, {"Other", "NEW_000000009x"}, {"rows", ValueList{newNote}}});
    EXPECT_EQ(started(), "1");
    bool isStored = false;
    // A create is in the queue until its ids are; anything else goes before the server's values are stored.
    complete(TransactionResult::success({{newNote, "4\"2"}}, [&] { return isStored = rows().starts_with("1 "); }));
    EXPECT_TRUE(isStored);
    EXPECT_EQ(rows(), "2 4\"2 syncing 1, 3 7 active 0");
    EXPECT_EQ(payloadOf(2), R"({"id":"4\"2"})");
    EXPECT_EQ(payloadOf(3),
              R"({"Parent":"4\"2","Note_Title":"NEW_000000001","Other":"NEW_000000009x","rows":["4\"2"]})");
    complete(TransactionResult::success({}, [&] { return rows() == "3 7 active 0"; }));
    EXPECT_EQ(started(), "2 3");
    EXPECT_EQ(log->notices, (std::vector<std::string>{"saved 1", "saved 2", "saved 3", "accepted 1 4\"2 NEW_000000001",
                                                      "accepted 2 4\"2 -"}));
    EXPECT_EQ(stores->changeRegister()->entries()->size(), 1u);
}

TEST_F(TransactionManagerTest, RefusalFailsWhatWaitsForItAndResetFreesIt) {
    auto log = std::make_shared<TransactionNotices>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    add(1, Kind::addVoiceNote, newNote);
    add(2, Kind::addVoiceNote, "NEW_000000002", {newNote});
    add(3, Kind::editNote, "7", {"NEW_000000002"});
    add(4, Kind::editNote, "8");
    refuse();
    EXPECT_EQ(rows(),
              "1 NEW_000000001 active 1 crmINVALID_DATA, "
              "2 NEW_000000002 active 0 txnDEPENDING_TRANSACTION_FAILED, "
              "3 7 active 0 txnDEPENDING_TRANSACTION_FAILED, 4 8 syncing 1");
    auto waiter = stores->currentTransactions()->getTransactionsWithIds({3})->front();
    EXPECT_EQ(json::write(*waiter.errorResponse->details).value(), R"({"ids":[2]})");
    EXPECT_EQ(std::vector<std::string>(log->notices.begin() + 4, log->notices.end()),
              (std::vector<std::string>{"refused 1 crmINVALID_DATA", "refused 2 txnDEPENDING_TRANSACTION_FAILED",
                                        "refused 3 txnDEPENDING_TRANSACTION_FAILED"}));
    // A reset takes back the errors of those behind, not its own.
    EXPECT_TRUE(manager->resetTransaction(1));
    settle();
    EXPECT_EQ(rows(),
              "1 NEW_000000001 active 0 crmINVALID_DATA, 2 NEW_000000002 active 0, 3 7 active 0, 4 8 syncing 1");
    EXPECT_TRUE(manager->resetTransaction(4));
    EXPECT_EQ(started(), "1 4");
}

TEST_F(TransactionManagerTest, FailureWithoutAnAnswerWaitsAndGoesAgainUnderItsKey) {
    add(1, Kind::editNote, "7");
    auto key = keyOf(1);
    std::vector<std::int64_t> waits;
    for (int round = 0; round < 5; ++round) {
        complete(TransactionResult::noAnswer("timeout"));
        EXPECT_EQ(rows(), "1 7 active 1 txnPARSING_FAILED");
        waits.push_back(*manager->status().until - platform::Clock::now().time_since_epoch().count());
        advance(std::chrono::milliseconds(waits.back()));
    }
    EXPECT_EQ(waits, (std::vector<std::int64_t>{1000, 2000, 4000, 8000, 16000}));
    EXPECT_EQ(started(), "1 1 1 1 1 1");
    complete(TransactionResult::noAnswer("timeout"));
    add(2, Kind::editNote, "8");  // ends the wait
    EXPECT_EQ(started(), "1");
    complete(TransactionResult::noAnswer("timeout"));
    manager->stopSync();
    begin();  // the next process sends it again as well
    ASSERT_TRUE(manager->initialize());
    EXPECT_EQ(rows(), "1 7 active 0, 2 8 active 0");
    EXPECT_EQ(keyOf(1), key);
}

TEST_F(TransactionManagerTest, AResultThatCannotBeStoredIsRepeated) {
    add(1, Kind::addTextNote, newNote);
    complete(TransactionResult::success({{newNote, "42"}}, [] { return false; }));
    EXPECT_EQ(rows(), "1 NEW_000000001 syncing 1");
    advance(1s);
    EXPECT_EQ(started(), "1 1");
    // What completes twice counts once.
    auto completion = executor->runs.front().completion;
    accept({{newNote, "42"}});
    completion(TransactionResult::failure(ErrorResponse::parsingFailed()));
    settle();
    EXPECT_EQ(rows(), "");
}

TEST_F(TransactionManagerTest, HeldBackTransactionsWaitForTheirTimerOrANewerOne) {
    auto held = transaction(1, Kind::editNote, "7");
    held.status = NTransaction::Status::inactive(2);
    ASSERT_TRUE(manager->addTransaction(held, TransactionManager::RecordIds(), {}));
    auto other = transaction(2, Kind::editNote, "8");
    other.status = NTransaction::Status::inactive(2);
    ASSERT_TRUE(manager->addTransactions({other}, {}));
    settle();
    EXPECT_EQ(started(), "");
    add(3, Kind::editNote, "7");
    EXPECT_EQ(started(), "1");
    accept();
    advance(12s);
    accept();
    accept();
    EXPECT_EQ(started(), "3 2");
    EXPECT_EQ(rows(), "");
}

TEST_F(TransactionManagerTest, OneProcessSendsAtATime) {
    add(1, Kind::editNote, "7");
    auto first = std::exchange(manager, nullptr);
    auto server = executor;
    begin();
    ASSERT_TRUE(manager->initialize());
    manager->startSync();
    add(2, Kind::editNote, "8");
    EXPECT_TRUE(manager->status().isLockedOut);
    advance(SendingLock::retryWait);
    EXPECT_EQ(rows(), "1 7 syncing 1, 2 8 active 0");
    first->stopSync();
    executor.swap(server);
    accept();
    executor.swap(server);
    advance(SendingLock::retryWait);
    EXPECT_EQ(started(), "2");
    // The second process ends before the answer.
    executor = server;
    manager = first;
    manager->startSync();
    settle();
    EXPECT_EQ(rows(), "2 8 syncing 2");
}

TEST_F(TransactionManagerTest, TransactionsThatWereStartedTooOftenGiveUp) {
    auto log = std::make_shared<TransactionNotices>();
    BrenNotificationCenter::shared().add<TransactionStatusObserver>(log);
    add(1, Kind::editNote, "7");
    for (int round = 0; round < 2; ++round) {
        begin();  // the process ends while it is on its way
        ASSERT_TRUE(manager->initialize());
        manager->startSync();
        settle();
        EXPECT_EQ(started(), "1");
    }
    begin();
    ASSERT_TRUE(manager->initialize());
    manager->startSync();
    settle();
    EXPECT_EQ(started(), "");
    EXPECT_EQ(rows(), "1 7 active 3 txnMAX_SYNC_ATTEMPT_REACHED");
    EXPECT_EQ(log->notices, std::vector<std::string>{"gave up 1"});
}

TEST_F(TransactionManagerTest, ASlowUploadHoldsUpOnlyWhatWaitsForIt) {
    add(1, Kind::addVoiceNote, newNote);
    add(2, Kind::editNote, newNote, {}, {{"id", newNote}});
    add(3, Kind::editNote, "7");
    add(4, Kind::editNote, "8");
    auto acceptQuickOne = [&] {
        std::swap(executor->runs[0], executor->runs[1]);
        accept();
    };
    acceptQuickOne();
    acceptQuickOne();
    EXPECT_EQ(started(), "1 3 4");
    EXPECT_EQ(rows(), "1 NEW_000000001 syncing 1, 2 NEW_000000001 active 0");
    accept({{newNote, "42"}});
    EXPECT_EQ(started(), "2");
    accept();
    // An upload does not go with the others.
    manager->attachmentScheduler->stopSync();
    add(5, Kind::addVoiceNote, newNote);
    EXPECT_EQ(started(), "");
}

TEST_F(TransactionManagerTest, TheEndOfSendingIsAfterWhatFollowsAResult) {
    add(1, Kind::editNote, "7");
    bool isAtRest = false;
    manager->whenResting([&] { isAtRest = true; });
    complete(TransactionResult::failure({.code = "crmINVALID_DATA"}, [&] {
        settle();  // the schedulers have nothing to do by now
        stores->currentTransactions()->clearError({1});
        manager->resetTransaction(1);
    }));
    EXPECT_FALSE(isAtRest);
    EXPECT_EQ(started(), "1 1");
    accept();
    EXPECT_TRUE(isAtRest);
}

TEST_F(TransactionManagerTest, TheTimeLimitLeavesOneBehind) {
    add(1, Kind::editNote, "7");
    add(2, Kind::editNote, "8");
    add(3, Kind::editNote, "9");
    add(4, Kind::addVoiceNote, newNote);
    EXPECT_EQ(started(), "1 4");
    advance(299s);
    EXPECT_EQ(started(), "");
    advance(1s);
    EXPECT_EQ(started(), "2");
    accept();  // the late one counts, and frees no second place
    EXPECT_EQ(started(), "");
    EXPECT_EQ(rows(), "2 8 syncing 1, 3 9 active 0, 4 NEW_000000001 syncing 1");
    manager->stopSync();
    complete(TransactionResult::success({{newNote, "42"}}));
    accept();
    EXPECT_EQ(started(), "");
    EXPECT_EQ(rows(), "3 9 active 0");
}

TEST_F(TransactionManagerTest, WhatIsOnItsWayIsNeitherMergedNorStartedAgain) {
    add(1, Kind::editNote, "7", {}, {{"a", 1}});
    add(2, Kind::editNote, "7", {}, {{"b", 2}});
    auto survivor = transaction(2, Kind::editNote, "7", {{"a", 1}, {"b", 2}});
    EXPECT_FALSE(
        manager->addMergedTransaction(survivor, TransactionManager::RecordIds(), {1, 2}, Attempts::beginAgain));
    ASSERT_TRUE(manager->initialize());
    EXPECT_TRUE(manager->resetTransaction(1));
    settle();
    EXPECT_EQ(rows(), "1 7 syncing 1, 2 7 active 0");
    auto key = keyOf(2);
    refuse();
    EXPECT_EQ(started(), "1 2");
    refuse();
    // Refused ones merge. After a refusal the attempts stay.
    survivor.syncAttempt = 1;
    EXPECT_TRUE(manager->addMergedTransaction(survivor, TransactionManager::RecordIds(), {1, 2}, Attempts::keep));
    settle();
    EXPECT_EQ(rows(), "2 7 syncing 2");
    EXPECT_EQ(payloadOf(2), R"({"a":1,"b":2})");
    EXPECT_NE(keyOf(2), key);
    EXPECT_EQ(stores->changeRegister()->entries()->size(), 1u);
}

TEST_F(TransactionManagerTest, AnEditThatIsMergedWithTheAddHasItsNumber) {
    manager->stopSync();
    add(1, Kind::addTextNote, newNote);
    add(2, Kind::editNote, newNote);
    add(3, Kind::editNote, newNote);
    auto numberOf = [&](std::int64_t id) {
        auto entries = stores->changeRegister()->entriesOf(ChangeQueue::current, {std::to_string(id)});
        return entries->empty() ? 0 : entries->front().number;
    };
    ASSERT_TRUE(manager->addMergedTransaction(transaction(2, Kind::addTextNote, newNote),
                                              TransactionManager::RecordIds(), {1, 2}, Attempts::keep));
    EXPECT_EQ(rows(), "2 NEW_000000001 active 0, 3 NEW_000000001 active 0");
    EXPECT_EQ(numberOf(2), 1);
    EXPECT_EQ(numberOf(3), 3);
    auto ends = stores->changeRegister()->endsOf({1, 2});
    ASSERT_EQ(ends->size(), 1u);
    EXPECT_EQ(ends->front().number, 2);
    EXPECT_EQ(ends->front().outcome, ChangeOutcome::merged);
}

TEST_F(TransactionManagerTest, WhoNamesARecordThatNobodyCreatesFails) {
    add(1, Kind::editNote, "7", {}, {{"Parent", newNote}});
    EXPECT_EQ(rows(), "1 7 active 1 txnDEPENDING_TRANSACTION_FAILED");
    ASSERT_TRUE(stores->recordIdAliases()->store({newNote, "Notes", "42"}));
    add(2, Kind::editNote, newNote, {newNote}, {{"Parent", newNote}, {"text", "about NEW_000000001"}});
    EXPECT_EQ(rows(), "1 7 active 1 txnDEPENDING_TRANSACTION_FAILED, 2 42 syncing 1");
    EXPECT_EQ(payloadOf(2), R"({"Parent":"42","text":"about NEW_000000001"})");
    accept();
    ASSERT_TRUE(stores->transactionDependencies()->storeTransactionDependency({3, 99}));
    add(3, Kind::editNote, "9");
    EXPECT_EQ(started(), "2");
    ASSERT_TRUE(manager->initialize());
    manager->wake();
    settle();
    EXPECT_EQ(started(), "3");
    accept();
    add(4, Kind::editNote, "9", {}, {{"Note_Title", "NEW_000000777"}});
    EXPECT_EQ(started(), "4") << "a title names nobody";
}

TEST_F(TransactionManagerTest, BrokenRowsHoldUpNothing) {
    manager->stopSync();
    add(1, Kind::addTextNote, newNote);
    add(2, Kind::editNote, "7", {newNote});
    add(3, Kind::editNote, "8");
    add(4, Kind::editNote, "9");
    add(5, Kind::editNote, "10", {}, {{"Parent", "NEW_000000005"}});
    add(6, Kind::editNote, "11");
    add(7, Kind::editNote, "12");
    for (auto statement : {"UPDATE TRANSACTIONS_NEW SET payload = '{' WHERE txn_id = 1",
                           "UPDATE TRANSACTIONS_NEW SET txn_type = 99 WHERE txn_id = 3",
                           "UPDATE TRANSACTIONS_NEW SET error_response = 'no' WHERE txn_id = 7",
                           // 4, 5 and 6 wait for each other, and 8, which is gone, for itself.
                           "INSERT INTO TRANSACTIONS_DEPENDENCY VALUES (4, 5, 1), (5, 6, 0), (6, 4, 1), (8, 8, 1)"})
        ASSERT_TRUE(stores->databaseAdapter()->execute(statement, std::nullopt));
    begin();
    ASSERT_TRUE(manager->initialize());
    EXPECT_EQ(rows(),
              "2 7 active 0 txnDEPENDING_TRANSACTION_FAILED, 4 9 active 0, 5 10 active 0, 6 11 active 0, "
              "7 12 active 0 txnPARSING_FAILED");
    manager->startSync();
    settle();
    for (int i = 0; i < 2; ++i) accept();
    EXPECT_EQ(started(), "4 6");
    EXPECT_EQ(rows(),
              "2 7 active 0 txnDEPENDING_TRANSACTION_FAILED, 5 10 active 1 txnDEPENDING_TRANSACTION_FAILED, "
              "7 12 active 0 txnPARSING_FAILED");
}

TEST_F(TransactionManagerTest, IdsRiseAboveWhatIsStoredAndAcrossALoss) {
    EXPECT_EQ(manager->getNewTransactionId(), 1);
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000001");
    manager->stopSync();
    add(70, Kind::addTextNote, "NEW_000000500");
    manager->resetTransactionId();
    manager->resetRecordId();
    EXPECT_EQ(manager->getNewTransactionId(), 71);
    EXPECT_EQ(TransactionManager(*stores, stores->userDefaults).getNewTransactionId(), 72);
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000501");
    ASSERT_TRUE(stores->transactions()->storeTransactions({{.transactionID = "a", .recordID = "NEW_000000600"},
                                                           {.transactionID = "b", .recordID = "NEW_1234567890"},
                                                           {.transactionID = "c", .recordID = "NEW_99999999x"},
                                                           {.transactionID = "d", .recordID = "NEWS999999999"}}));
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000601");
    ASSERT_TRUE(stores->recordIdAliases()->store({"NEW_000000700", "Leads", "42"}));
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000701");
    manager->resetRecordId();
    ASSERT_TRUE(files::createDirectories(folder() + "/VoiceNotes") &&
                files::writeAtomically(folder() + "/VoiceNotes/NEW_000000701.wav", "of another account"));
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000702");
    TransactionInDatabase other("TRANSACTIONS_other", stores->databaseAdapter());
    ASSERT_TRUE(other.storeTransactions({{.transactionID = "a", .recordID = "NEW_000000800"}}));
    EXPECT_EQ(manager->getNewRecordId(), "NEW_000000801");
}

TEST_F(TransactionManagerTest, APairCancelsOutUnlessAnotherWaitsForIt) {
    manager->stopSync();
    auto cancelsOut = [&] {
        return manager->isCreateAndDestoryTransaction(newNote, Kind::addVoiceNote, Kind::deleteVoiceNote);
    };
    add(1, Kind::addVoiceNote, newNote);
    EXPECT_EQ(cancelsOut(), false);
    add(2, Kind::deleteVoiceNote, newNote);
    EXPECT_EQ(cancelsOut(), true);
    EXPECT_EQ(manager->isCreateAndDestoryTransaction(newNote, Kind::addRecord, Kind::deleteVoiceNote), false);
    add(3, Kind::editNote, "7", {newNote});
    EXPECT_EQ(cancelsOut(), false);
    EXPECT_TRUE(manager->deleteTransactionWithId(3));
    EXPECT_EQ(cancelsOut(), true);
    EXPECT_TRUE(manager->deleteTransactionWithRecordId(newNote));
    EXPECT_EQ(rows(), "");
    EXPECT_TRUE(stores->changeRegister()->entries()->empty());
}

}  // namespace tarvo
