#include <deque>
#include <set>

#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/change_queues/TransactionAssembler.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/record_changes/internal/OlderChangeQueue.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

using T = TransactionType;

/// Keeps what is sent until the test answers it.
class HeldSender final : public ChangeSender {
public:
    struct Sent {
        Transaction change;
        std::string key;
        ChangeCompletion completion;
    };
    std::deque<Sent> sent;

    void send(const Transaction& change, const std::string& key, ChangeCompletion completion) override {
        sent.push_back({change, key, std::move(completion)});
    }
};

/// The older queue over real tables. The test plays the drain and the server.
class OlderChangeQueueTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        makeLeads({{"Company", FieldDataType::text}, {"City", FieldDataType::text}});
        begin();
    }
    /// Begins as a process does that finds this database.
    void begin() {
        stores = Stores::current();
        sender = std::make_shared<HeldSender>();
        auto fetch = [this](auto&, auto& recordId, auto reason) {
            if (reason != RecordRefetch::Reason::acceptance) fetched.push_back(recordId);
        };
        queue = std::make_shared<OlderChangeQueue>(*stores, sender, ChangeSettlement(*stores, records, fetch));
        ASSERT_TRUE(queue->reclaim());
    }
    void enqueue(const std::string& id, T type, const std::string& record, const std::string& payload = "") {
        Transaction change{.transactionID = id,
                           .recordID = record,
                           .moduleName = "Leads",
                           .operationType = type,
                           .dataJSON = platform::Data(R"({"data":[{)" + payload + "}]}"),
                           .uriData = platform::Data(R"({"module":"Leads"})"),
                           .transactionTime = ++time};
        ASSERT_TRUE(stores->transactions()->storeTransaction(change));
        queue->refresh();
    }
    void storeLead(const std::string& id, const std::string& company, const std::string& city = "Bonn") {
        ASSERT_TRUE(records->saveRecordDictionary({{"ID", id}, {"COMPANY", company}, {"CITY", city}},
                                                  ModuleIdentifier::Case::leads));
    }
    /// Sends all that can go, and returns their ids.
    std::string sendAll() {
        auto claims = queue->claim(100);
        if (claims.hasFailed) return "failed";
        for (auto& id : claims.transactionIDs)
            queue->send(id, [this, id](ChangeAnswer answer) { answers.push_back({id, std::move(answer)}); });
        return text::join(claims.transactionIDs, " ");
    }
    /// Answers the change that was sent first. Returns whether the server's decision is stored.
    bool answer(const ChangeAnswer& answer) {
        auto sent = std::move(sender->sent.front());
        sender->sent.pop_front();
        sent.completion(answer);
        return storeAnswers();
    }
    bool storeAnswers() { return !queue->settle(std::exchange(answers, {})).hasLeft; }
    static ChangeAnswer refusal() { return ChangeAnswer::refused({.code = "crmINVALID_DATA", .message = "no"}); }
    std::string leads() { return cells("LeadsRecords ORDER BY ID", {"ID", "COMPANY", "CITY"}); }
    /// Returns the rows of the queue: id, record and state.
    std::string rows() {
        return cells("TRANSACTIONS ORDER BY transaction_time", {"transaction_id", "record_id", "extras"});
    }

    std::optional<Stores> stores;
    std::shared_ptr<HeldSender> sender;
    std::shared_ptr<OlderChangeQueue> queue;
    std::vector<std::string> fetched;
    std::vector<DrainedChanges::Answer> answers;
    std::int64_t time = 0;
};

const std::string temporaryId = "NEW_000000001";

/// Writes down what observers are notified of.
class NoticeLog final : public ChangeQueueObserver {
public:
    std::vector<std::string> notices;

    void changeAccepted(const Change& change, const std::optional<std::string>& formerRecordId) override {
        notices.push_back("accepted " + change.transactionId + " " + change.recordId + " " +
                          formerRecordId.value_or("-"));
    }
    void changeRefused(const Change& change) override {
        notices.push_back("refused " + change.transactionId + " " + std::to_string(change.attempts) + " " +
                          change.error->code);
    }
};

}  // namespace

TEST_F(OlderChangeQueueTest, AddGivesItsIdToWhatWaitsForIt) {
    storeLead(temporaryId, "mine");
    storeLead("7", "other");
    enqueue("add", T::addRecord, temporaryId, R"("Company":"mine")");
    enqueue("edit", T::editRecord, temporaryId, R"("City":"Ulm")");
    enqueue("lookup", T::editRecord, "7", R"("Parent":"NEW_000000001")");
    EXPECT_EQ(sendAll(), "add");
    EXPECT_TRUE(answer(ChangeAnswer::accepted("42")));
    EXPECT_EQ(leads(), R"("42","mine","Bonn";"7","other","Bonn")");
    // What is fetched now could be stored after the answer to the edit.
    EXPECT_EQ(fetched, std::vector<std::string>());
    EXPECT_EQ(sendAll(), "edit lookup");
    EXPECT_EQ(sender->sent[0].change.recordID, "42");
    EXPECT_EQ(sender->sent[1].change.dataJSON->text(), R"({"data":[{"Parent":"42"}]})");
    answer(ChangeAnswer::accepted("42"));
    EXPECT_EQ(fetched, std::vector<std::string>{"42"});
    EXPECT_EQ(stores->recordIdAliases()->realId("Leads", temporaryId).value(), "42");
}

TEST_F(OlderChangeQueueTest, FreeTextThatLooksLikeAnIdIsSentAsItWasWritten) {
    storeLead("7", temporaryId);
    enqueue("add", T::addRecord, temporaryId, R"("Company":"NEW_000000999")");
    enqueue("edit", T::editRecord, "7", R"("Company":"NEW_000000001")");
    enqueue("lookup", T::editRecord, "8", R"("City":"NEW_000000001","Parent":"NEW_000000001")");
    EXPECT_EQ(sendAll(), "add edit");
    EXPECT_TRUE(answer(ChangeAnswer::accepted("42")));
    EXPECT_EQ(leads(), R"("7","NEW_000000001","Bonn")");
    EXPECT_EQ(sendAll(), "lookup");
    EXPECT_EQ(sender->sent.back().change.dataJSON->text(), R"({"data":[{"City":"NEW_000000001","Parent":"42"}]})");
}

TEST_F(OlderChangeQueueTest, AnswerToAnEditLeavesLaterEditsOnTheScreen) {
    storeLead("7", "second edit", "local");
    ASSERT_TRUE(stores->transactionRecords()->storeTransactionRecordPersistance({.recordID = "7"}));
    enqueue("1", T::editRecord, "7", R"("City":"local")");
    enqueue("2", T::editRecord, "7", R"("Company":"second edit")");
    EXPECT_EQ(sendAll(), "1");
    ValueMap record{{"id", "7"}, {"Company", "server"}, {"City", "server"}};
    answer(ChangeAnswer::accepted("7", record));
    EXPECT_EQ(leads(), R"("7","second edit","server")");
    EXPECT_TRUE(stores->transactionRecords()->getTransactionRecord("7").value());
    EXPECT_EQ(sendAll(), "2");
    answer(ChangeAnswer::accepted("7", record));
    EXPECT_EQ(leads(), R"("7","server","server")");
    EXPECT_FALSE(stores->transactionRecords()->getTransactionRecord("7").value());
    EXPECT_EQ(rows(), "");
    EXPECT_TRUE(stores->changeRegister()->entries()->empty());
    EXPECT_TRUE(fetched.empty());
}

TEST_F(OlderChangeQueueTest, RefusedAddFailsWhatNamesItAndStays) {
    enqueue("add", T::addRecord, temporaryId);
    enqueue("edit", T::editRecord, temporaryId);
    enqueue("other", T::editRecord, "7");
    EXPECT_EQ(sendAll(), "add other");
    EXPECT_TRUE(answer(refusal()));
    answer(ChangeAnswer::unreadable());
    EXPECT_EQ(sendAll(), "");
    EXPECT_EQ(rows(), R"("add","NEW_000000001","error";"edit","NEW_000000001","error";"other","7","error")");
    std::vector<std::string> codes;
    for (auto entries = stores->changeRegister()->entries(); auto& entry : *entries)
        codes.push_back(entry.transactionId + " " + (entry.lastRefusal ? entry.lastRefusal->code : "none"));
    EXPECT_EQ(text::join(codes, ", "),
              "add crmINVALID_DATA, other txnPARSING_FAILED, edit txnDEPENDING_TRANSACTION_FAILED");
}

TEST_F(OlderChangeQueueTest, DeletesEndAtTheServersWord) {
    adapter().createTable("CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id, record, module_name)");
    ASSERT_TRUE(adapter().execute(
        "INSERT INTO Leads_CUSTOM_VIEW_RECORDS VALUES ('v1', '7', 'Leads'), ('v1', '8', 'Leads'), ('v2', '8', 'Leads')",
        std::nullopt));
    storeLead("7", "shown again");
    enqueue("1", T::deleteRecord, "7");
    enqueue("2", T::deleteRecord, "8");
    enqueue("3", T::deleteRecord, temporaryId);
    EXPECT_EQ(sendAll(), "1 2");
    ASSERT_TRUE(stores->transactionRecords()->storeTransactionRecordPersistance({.recordID = "8"}));
    answer(refusal());
    answer(ChangeAnswer::accepted("8"));
    EXPECT_FALSE(stores->transactionRecords()->getTransactionRecord("8").value());
    EXPECT_EQ(fetched, std::vector<std::string>{"7"});
    EXPECT_EQ(rows(), R"("1","7","error")");
    EXPECT_EQ(cells("Leads_CUSTOM_VIEW_RECORDS", {"cv_id", "record"}), R"("v1","7")");
}

TEST_F(OlderChangeQueueTest, FailedEditsDoNotUndoWhatWasAcceptedAfterThem) {
    storeLead("7", "second", "Ulm");
    enqueue("1", T::editRecord, "7", R"("id":"7","Company":"first","City":"Ulm")");
    enqueue("2", T::editRecord, "7", R"("id":"7","Company":"first")");
    enqueue("3", T::editRecord, "7", R"("id":"7","Company":"second")");
    EXPECT_EQ(sendAll(), "1");
    auto key = sender->sent.front().key;
    answer(ChangeAnswer::unreadable());
    EXPECT_EQ(sendAll(), "2");
    answer(refusal());
    EXPECT_EQ(sendAll(), "3");
    answer(ChangeAnswer::accepted("7", ValueMap{{"id", "7"}, {"Company", "second"}}));
    EXPECT_EQ(rows(), R"("1","7","error")");
    EXPECT_TRUE(QueuedChanges(*stores).retry({}));
    queue->refresh();
    EXPECT_EQ(sendAll(), "1");
    EXPECT_EQ(sender->sent.front().change.dataJSON->text(), R"({"data":[{"id":"7","City":"Ulm"}]})");
    EXPECT_EQ(sender->sent.front().key, key) << "the server may have applied it";
    // The server repeats its first answer.
    answer(ChangeAnswer::accepted("7", ValueMap{{"id", "7"}, {"Company", "first"}}));
    EXPECT_EQ(leads(), R"("7","second","Ulm")");
    EXPECT_EQ(fetched, std::vector<std::string>{"7"});
}

TEST_F(OlderChangeQueueTest, ARetryPassesOverAnEditOfWhichNothingIsLeft) {
    enqueue("lost", T::editRecord, temporaryId, R"("id":"NEW_000000001","City":"Ulm")");
    EXPECT_EQ(sendAll(), "");  // its add is gone
    enqueue("add", T::addRecord, temporaryId);
    EXPECT_EQ(sendAll(), "add");
    answer(refusal());
    enqueue("later", T::editRecord, temporaryId, R"("id":"NEW_000000001","City":"Bonn")");
    EXPECT_EQ(sendAll(), "");
    EXPECT_EQ(QueuedChanges(*stores).retry({}), (QueuedChanges::Numbers{2, 3}));
    EXPECT_EQ(rows(), R"("add","NEW_000000001",null;"later","NEW_000000001",null)");
    queue->refresh();
    EXPECT_EQ(sendAll(), "add");
    answer(ChangeAnswer::accepted("42"));
    std::string outcomes;
    auto found = QueuedChanges(*stores).outcomes({1, 2, 3, 4});
    for (auto& each : *found) outcomes += std::string(caseName(each.outcome)) + " " + each.recordId.value_or("-") + ";";
    EXPECT_EQ(outcomes, "merged 42;accepted 42;queued 42;unknown -;");
}

TEST_F(OlderChangeQueueTest, AFailedAddGoesWithItsDeleteUnlessTheServerMayHaveTheRecord) {
    for (auto& [failure, left] : std::vector<std::pair<ChangeAnswer, std::string>>{
             {refusal(), ""},
             {ChangeAnswer::unreadable(), R"("add","NEW_000000001","error";"delete","NEW_000000001","error")"}}) {
        enqueue("add", T::addRecord, temporaryId);
        EXPECT_EQ(sendAll(), "add");
        enqueue("delete", T::deleteRecord, temporaryId);
        answer(failure);
        EXPECT_EQ(sendAll(), "");
        EXPECT_EQ(rows(), left);
    }
    EXPECT_TRUE(QueuedChanges(*stores).retry({}));
    queue->refresh();
    EXPECT_EQ(sendAll(), "add");
    answer(ChangeAnswer::accepted("42"));
    EXPECT_EQ(sendAll(), "delete");
    EXPECT_EQ(sender->sent.front().change.recordID, "42");
}

TEST_F(OlderChangeQueueTest, ADeleteGoesByWhatBecameOfTheAddInTheCurrentQueue) {
    auto crm = ErrorResponse{.code = "crmINVALID_DATA", .message = "no"};
    struct {
        ErrorResponse refusal;
        bool mayBeApplied;
        std::string deletes;
        std::size_t adds;
    } cases[] = {
        {crm, false, "", 0},
        {ErrorResponse::parsingFailed(), true, R"("delete","NEW_000000001","error")", 1},
        {ErrorResponse::noAnswer("timeout"), true, R"("delete","NEW_000000001",null)", 1},
    };
    for (auto& each : cases) {
        SCOPED_TRACE(each.refusal.code);
        stores->transactions()->removeTransactions(temporaryId);
        auto current = stores->currentTransactions();
        current->deleteTransactionWithRecordId(temporaryId);
        ASSERT_TRUE(current->storeTransactions({{.id = 5,
                                                 .recordId = temporaryId,
                                                 .module = ModuleIdentifier::Case::leads,
                                                 .kind = NTransaction::Kind::addTextNote}},
                                               {}));
        auto entry = stores->changeRegister()->enter(ChangeQueue::current, "5");
        stores->changeRegister()->noteSend(entry->number);
        stores->changeRegister()->noteRefusal(entry->number, each.refusal, each.mayBeApplied);
        current->setTransactionErrors({{5, crm}});
        enqueue("delete", T::deleteRecord, temporaryId);
        EXPECT_EQ(sendAll(), "");
        EXPECT_EQ(rows(), each.deletes);
        EXPECT_EQ(current->getTransactions()->transactions.size(), each.adds);
    }
}

TEST_F(OlderChangeQueueTest, AnswerToADroppedEditBringsNothingBack) {
    enqueue("1", T::editRecord, "7");
    EXPECT_EQ(sendAll(), "1");
    ASSERT_TRUE(stores->transactions()->removeTransactions("7"));
    auto log = std::make_shared<NoticeLog>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    answer(ChangeAnswer::accepted("7", ValueMap{{"id", "7"}, {"Company", "server"}}));
    EXPECT_EQ(leads(), "");
    settle();
    EXPECT_EQ(log->notices, std::vector<std::string>());
}

TEST_F(OlderChangeQueueTest, RowThatWasDroppedSinceTheLastReadIsNotSent) {
    enqueue("1", T::editRecord, "7");
    enqueue("2", T::editRecord, "7");
    EXPECT_EQ(sendAll(), "1");
    ASSERT_TRUE(stores->transactions()->removeTransaction("2"));
    answer(ChangeAnswer::accepted("7", ValueMap{{"id", "7"}}));
    EXPECT_EQ(sendAll(), "");
}

TEST_F(OlderChangeQueueTest, NothingFailsOrIsDroppedByRowsThatHaveChangedSince) {
    auto log = std::make_shared<NoticeLog>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    enqueue("1", T::editRecord, "7");
    enqueue("add", T::addRecord, temporaryId);
    ASSERT_TRUE(stores->transactions()->updateTransaciton("add", std::nullopt, std::nullopt, "error"));
    enqueue("gone", T::editRecord, "NEW_000000002");
    enqueue("waiter", T::editRecord, "8", R"("Parent":"NEW_000000001")");
    enqueue("delete", T::deleteRecord, temporaryId);
    EXPECT_EQ(queue->claim(1).transactionIDs, std::vector<std::string>{"1"});
    ASSERT_TRUE(stores->transactions()->removeTransaction("gone"));
    ASSERT_TRUE(stores->transactions()->makeReady({"add"}));
    EXPECT_EQ(sendAll(), "add");
    EXPECT_EQ(rows(), R"("1","7","InProgress";"add","NEW_000000001","InProgress";"waiter","8",null;)"
                      R"("delete","NEW_000000001",null)");
    settle();
    EXPECT_EQ(log->notices, std::vector<std::string>());
}

TEST_F(OlderChangeQueueTest, ChangeOfUnknownOutcomeIsSentAgainUnderItsKey) {
    storeLead(temporaryId, "mine");
    enqueue("add", T::addRecord, temporaryId);
    std::vector<std::string> keys;
    auto sendOnce = [&] {
        EXPECT_EQ(sendAll(), "add");
        keys.push_back(sender->sent.front().key);
    };
    sendOnce();
    EXPECT_FALSE(answer(ChangeAnswer::noAnswer(ChangeAnswer::Silence::timeout)));
    sendOnce();
    EXPECT_EQ(sendAll(), "");
    begin();  // the process ended while the request was on its way
    sendOnce();
    auto refuse = "CREATE TRIGGER refuse BEFORE UPDATE ON LeadsRecords BEGIN SELECT RAISE(ABORT, 'full'); END";
    ASSERT_TRUE(adapter().execute(refuse, std::nullopt));
    EXPECT_FALSE(answer(ChangeAnswer::accepted("42")));
    ASSERT_TRUE(adapter().execute("DROP TRIGGER refuse", std::nullopt));
    ASSERT_TRUE(queue->reclaim());
    sendOnce();
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()).size(), 1u);
    EXPECT_EQ(stores->changeRegister()->entries()->front().sends, 4);
    EXPECT_TRUE(answer(ChangeAnswer::accepted("42")));
    EXPECT_EQ(leads(), R"("42","mine","Bonn")");
}

TEST_F(OlderChangeQueueTest, AnswerThatCannotBeStoredCostsNoOther) {
    storeLead("7", "mine");
    storeLead("8", "mine");
    storeLead("9", "mine");
    for (auto id : {"7", "8", "9"}) enqueue(id, T::editRecord, id);
    EXPECT_EQ(sendAll(), "7 8 9");
    auto refuse =
        "CREATE TRIGGER refuse BEFORE UPDATE ON LeadsRecords WHEN OLD.ID = '8' BEGIN SELECT RAISE(ABORT, "
        "'full'); END";
    ASSERT_TRUE(adapter().execute(refuse, std::nullopt));
    for (auto& sent : sender->sent)
        sent.completion(ChangeAnswer::accepted(sent.change.recordID,
                                               ValueMap{{"id", sent.change.recordID}, {"Company", "server"}}));
    EXPECT_FALSE(storeAnswers());
    EXPECT_EQ(leads(), R"("7","server","Bonn";"8","mine","Bonn";"9","server","Bonn")");
    EXPECT_EQ(rows(), R"("8","8","InProgress")");
}

TEST_F(OlderChangeQueueTest, ChangesThatAreGivenBackWereNotSent) {
    enqueue("1", T::editRecord, "7");
    enqueue("2", T::editRecord, "8");
    EXPECT_EQ(queue->claim(100).transactionIDs.size(), 2u);
    queue->giveBack({"2"});
    EXPECT_EQ(rows(), R"("1","7","InProgress";"2","8",null)");
    EXPECT_EQ(cells("TARVO_CHANGES ORDER BY transaction_id", {"sends"}), "1;0");
    EXPECT_EQ(sendAll(), "2");
}

TEST_F(OlderChangeQueueTest, RowsThatCannotBeReadFailAloneAndKindsWithoutARequestStay) {
    enqueue("mail", T::sendMail, "7");
    enqueue("1", T::editRecord, "7");
    ASSERT_TRUE(adapter().execute("INSERT INTO TRANSACTIONS (transaction_id, operation_type) VALUES ('bad', 99)",
                                  std::nullopt));
    begin();
    EXPECT_EQ(sendAll(), "1");
    EXPECT_EQ(rows(), R"("bad",null,"error";"mail","7",null;"1","7","InProgress")");
}

TEST_F(OlderChangeQueueTest, ObserversLearnWhatBecameOfEachChange) {
    auto log = std::make_shared<NoticeLog>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    enqueue("add", T::addRecord, temporaryId);
    enqueue("refused", T::addRecord, "NEW_000000002");
    enqueue("waiter", T::editRecord, "9", R"("Parent":"NEW_000000002")");
    enqueue("silent", T::editRecord, "7");
    enqueue("dropped", T::editRecord, "8");
    enqueue("no record", T::deleteRecord, "NEW_000000003");
    EXPECT_EQ(sendAll(), "add refused silent dropped");
    ASSERT_TRUE(stores->transactions()->removeTransaction("dropped"));
    answer(ChangeAnswer::accepted("42"));
    answer(refusal());
    answer(ChangeAnswer::noAnswer(ChangeAnswer::Silence::timeout));
    answer(refusal());
    EXPECT_EQ(sendAll(), "silent");
    settle();
    EXPECT_EQ(log->notices,
              (std::vector<std::string>{"accepted no record NEW_000000003 -", "accepted add 42 NEW_000000001",
                                        "refused refused 1 crmINVALID_DATA",
                                        "refused waiter 0 txnDEPENDING_TRANSACTION_FAILED"}));
}

TEST_F(OlderChangeQueueTest, EachChangeIsListedWithWhatItWaitsFor) {
    using State = ChangeQueueStatus::State;
    enqueue("add", T::addRecord, temporaryId);
    enqueue("edit", T::editRecord, temporaryId);
    enqueue("lookup", T::editRecord, "7", R"("Parent":"NEW_000000001")");
    enqueue("later", T::editRecord, "7");
    enqueue("mail", T::sendMail, "8");
    enqueue("gone", T::editRecord, "NEW_000000005");
    begin();
    auto listed = [&](const ChangeQueueStatus& status) {
        std::vector<std::string> lines;
        auto changes = QueuedChanges(*stores).list(status, {});
        for (auto& change : *changes) {
            std::string line = change.transactionId + " " + std::string(caseName(change.state));
            if (change.waitingFor) {
                line += " " + std::string(caseName(change.waitingFor->reason));
                for (auto number : change.waitingFor->numbers) line += " " + std::to_string(number);
                if (change.waitingFor->until) line += " " + std::to_string(*change.waitingFor->until);
            }
            lines.push_back(line);
        }
        return text::join(lines, ", ");
    };
    std::string rest =
        ", edit waiting newRecord 1, lookup waiting newRecord 1, later waiting earlierChange 3, mail "
        "waiting notSendable, gone ";
    EXPECT_EQ(listed({State::idle}), "add ready" + rest + "ready");
    EXPECT_EQ(listed({}), "add waiting queueOff" + rest + "waiting queueOff");
    EXPECT_EQ(listed({State::waiting, 77}), "add waiting server 77" + rest + "waiting server 77");
    EXPECT_EQ(listed({State::waiting, 78, true}), "add waiting otherProcess 78" + rest + "waiting otherProcess 78");
    EXPECT_EQ(sendAll(), "add");
    EXPECT_EQ(listed({State::sending}), "add sending" + rest + "failed");
}

TEST_F(OlderChangeQueueTest, BothQueuesAreOneOrder) {
    auto noteOn = [](std::int64_t id, const std::string& noteId, const std::string& parent) {
        return NTransaction{.id = id,
                            .recordId = noteId,
                            .module = ModuleIdentifier::Case::notes,
                            .kind = NTransaction::Kind::addTextNote,
                            .payload = {{"Parent_Id", parent}}};
    };
    auto waiting = [&] {
        std::string texts;
        auto queued = stores->currentTransactions()->getTransactions();
        for (auto& row : queued->transactions)
            texts += std::to_string(row.id) + " " + row.payload.find("Parent_Id")->textOr("") + " " +
                     (row.errorResponse ? row.errorResponse->code : "") + ";";
        auto next = stores->currentTransactions()->getNextRunnableTransaction({NTransaction::Kind::addTextNote});
        return texts + (next.value() ? " next " + std::to_string(next.value()->id) : "");
    };
    auto manager = TransactionAssembler::getTransactionManager(*stores);
    enqueue("add", T::addRecord, temporaryId);
    enqueue("refused", T::addRecord, "NEW_000000002");
    ASSERT_TRUE(queue->reclaim());  // numbers the changes
    manager->addTransaction(noteOn(100, "NEW_000000010", temporaryId), {temporaryId}, {});
    manager->addTransaction(noteOn(200, "NEW_000000011", "NEW_000000002"), {"NEW_000000002"}, {});
    ASSERT_TRUE(manager->initialize());
    enqueue("on a note", T::editRecord, "7", R"("Parent":"NEW_000000010")");
    ASSERT_TRUE(queue->reclaim());
    EXPECT_EQ(waiting(), "100 NEW_000000001 ;200 NEW_000000002 ;");
    EXPECT_EQ(sendAll(), "add refused");
    answer(ChangeAnswer::accepted("42"));
    answer(refusal());
    EXPECT_EQ(waiting(), "100 42 ;200 NEW_000000002 txnDEPENDING_TRANSACTION_FAILED; next 100");
    auto changes = QueuedChanges(*stores).list({ChangeQueueStatus::State::idle}, {ChangeQueueStatus::State::idle});
    std::string listed;
    for (auto& change : *changes)
        listed += change.transactionId + " " + std::string(caseName(change.state)) +
                  (change.waitingFor ? " for " + std::to_string(change.waitingFor->numbers.at(0)) : "") + ";";
    EXPECT_EQ(listed, "refused failed;100 ready;200 failed;on a note waiting for 3;");
    // The retry of an add frees what waits for it in both queues.
    EXPECT_EQ(QueuedChanges(*stores).retry({2}), (QueuedChanges::Numbers{2, 4}));
    EXPECT_EQ(waiting(), "100 42 ;200 NEW_000000002 ; next 100");
    // What fails in the current queue fails what waits for it in this one.
    ASSERT_TRUE(manager->updateError(100, ErrorResponse::invlaidTransaction()));
    queue->refresh();
    EXPECT_EQ(sendAll(), "refused");
    EXPECT_EQ(rows(), R"("refused","NEW_000000002","InProgress";"on a note","7","error")");
    EXPECT_EQ(QueuedChanges(*stores).retry({3}), (QueuedChanges::Numbers{3, 5}));
    // The retry of an add frees what names the note that waits for it.
    answer(refusal());
    enqueue("on a refused note", T::editRecord, "8", R"("Parent":"NEW_000000011")");
    ASSERT_TRUE(queue->reclaim());
    EXPECT_EQ(sendAll(), "");
    EXPECT_EQ(QueuedChanges(*stores).retry({2}), (QueuedChanges::Numbers{2, 4, 6}));
}

}  // namespace tarvo
