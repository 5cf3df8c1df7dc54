#include "tarvobase/change_queues/ChangeCancellation.h"

#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/change_queues/TransactionAssembler.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/record_changes/internal/SupersededEdits.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

using T = FieldDataType;
using Kind = NTransaction::Kind;
using Numbers = ChangeCancellation::Numbers;
using Reason = CancelRefusal::Reason;
const std::string firstLead = "NEW_000000001", secondLead = "NEW_000000002", note = "NEW_000000003";

/// Writes down what observers are notified of.
class CancelNotices final : public ChangeQueueObserver, public RecordChangedObserver {
public:
    std::string notices;

    void changeCancelled(const Change& change) override { notices += std::to_string(change.number) + " "; }
    using RecordChangedObserver::recordUpdated;
    void recordUpdated(const std::string&, const RecordIds& ids) override { notices += "updated " + of(ids); }
    void recordAdded(const std::string&, const RecordIds& ids) override { notices += "added " + of(ids); }
    void recordDeleted(const std::string&, const std::vector<std::string>& ids) override {
        notices += "deleted " + text::join(ids, " ") + " ";
    }
    static std::string of(const RecordIds& ids) { return ids.front().recordID + " "; }
};

/// Changes of leads and notes in both queues, over real tables. Nothing is sent.
class ChangeCancellationTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        prepare(Naming::column);
    }
    void prepare(Naming naming) {
        use(naming);
        for (auto table : {"LeadsRecords", "NotesRecords", "TRANSACTIONS", "TARVO_CHANGES", "TARVO_CHANGE_OUTCOMES",
                           "TRANSACTIONS_RECORDS"})
            adapter().dropTable(table);
        makeModule("Notes", {field("Notes", "Note_Content")});
        makeLeads({{"Company", T::text}, {"City", T::text}, {"Parent", T::lookup}});
        stores.emplace(Stores::current());
        manager = TransactionAssembler::getTransactionManager(*stores);
        auto queue = std::make_shared<RecordTransactionManager>(*stores, [] {});
        parts.emplace(RecordChangeParts{.stores = *stores,
                                        .recordPersistance = records,
                                        .editRecordTransactionManager = queue,
                                        .transactionManager = manager});
        ASSERT_TRUE(records->storeRecord(lead("7", {{"Company", "server"}, {"City", "Bonn"}}), "Leads"));
    }
    Record lead(const std::string& id, const std::vector<std::pair<std::string, Value>>& values) {
        Record record(id, "Leads");
        for (auto& [name, value] : values) record.set(identifier(name), value);
        return record;
    }
    void add(const Record& record) { ASSERT_TRUE(AddRecordDataManager(*parts).addRecord(record, leads)); }
    void edit(const Record& record) { ASSERT_TRUE(EditRecordDataManager(*parts).editRecord(record, leads)); }
    void remove(const std::string& id) { ASSERT_TRUE(DeleteRecordDataManager(*parts).deleteRecord(id, leads)); }
    void addToCurrent(Kind kind, const std::string& record, ValueMap payload, const std::string& named) {
        ASSERT_TRUE(manager->addTransaction(
            {.id = manager->getNewTransactionId(),
             .recordId = record,
             .module = kind == Kind::editRecord ? ModuleIdentifier::Case::leads : ModuleIdentifier::Case::notes,
             .kind = kind,
             .payload = std::move(payload)},
            {named}, {}));
    }
    ChangeCancellation cancellation() {
        return ChangeCancellation({.stores = *stores,
                                   .records = records,
                                   .manager = manager,
                                   .fetch = [this](auto&, auto& recordId) { log += "fetch " + recordId + " "; },
                                   .removeSound = [this](auto& recordId) { log += "sound of " + recordId + " "; },
                                   .wake = [this] { log += "wake "; }});
    }
    auto cancel(const Numbers& numbers, bool revert = false, bool withWaiters = false) {
        return cancellation().cancel({numbers, revert, withWaiters});
    }
    std::string stored(const std::string& order = "1") {
        return cells("LeadsRecords ORDER BY " + order, {idColumn(), identifier("Company"), identifier("City")});
    }
    std::string numbersLeft() {
        std::string numbers;
        for (auto entries = stores->changeRegister()->entries(); auto& entry : *entries)
            numbers += std::to_string(entry.number) + " ";
        return numbers;
    }
    std::string outcomes(const Numbers& numbers) {
        std::string texts;
        auto found = QueuedChanges(*stores).outcomes(numbers);
        for (auto& each : *found) texts += std::string(caseName(each.outcome)) + " ";
        return texts;
    }

    const Module leads{.moduleName = "Leads", .apiName = "Leads"};
    std::optional<Stores> stores;
    std::optional<RecordChangeParts> parts;
    std::shared_ptr<TransactionManager> manager;
    std::string log;
};

}  // namespace

TEST_F(ChangeCancellationTest, EditsAreTakenBackBeneathThoseThatStay) {
    struct Case {
        Numbers cancelled;
        bool revert;
        const char *expected, *left;
    };
    for (auto naming : {Naming::column, Naming::api})
        for (auto& each :
             {Case{{3}, true, R"("7","a","b")", "1 2 "}, Case{{1}, true, R"("7","c","b")", "2 3 "},
              Case{{1, 3}, true, R"("7","server","b")", "2 "}, Case{{2}, true, R"("7","c","Bonn")", "1 3 "},
              Case{{1, 2, 3}, true, R"("7","server","Bonn")", ""}, Case{{3}, false, R"("7","c","b")", "1 2 "}}) {
            SCOPED_TRACE(std::string(each.expected) + each.left);
            prepare(naming);
            edit(lead("7", {{"Company", "a"}}));
            edit(lead("7", {{"City", "b"}}));
            edit(lead("7", {{"Company", "c"}}));
            EXPECT_EQ(cancel(each.cancelled, each.revert).value(), each.cancelled);
            EXPECT_EQ(stored(), each.expected);
            EXPECT_EQ(numbersLeft(), each.left);
            auto sides = stores->transactionRecords()->getTransactionRecord("7");
            EXPECT_EQ(sides.value().has_value(), *each.left != 0) << "without changes nothing is to be taken back";
        }
    EXPECT_EQ(outcomes({1, 3}), "queued cancelled ");
}

TEST_F(ChangeCancellationTest, AnAddTakesItsRecordAndOnDemandWhatHangsOnIt) {
    auto notices = std::make_shared<CancelNotices>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(notices);
    BrenNotificationCenter::shared().add<RecordChangedObserver>(notices);
    ASSERT_TRUE(records->saveRecordDictionary({{idColumn(), note}}, ModuleIdentifier::Case::notes));
    add(lead(firstLead, {{"Company", "a"}}));                                      // 1
    edit(lead("7", {{"Parent", firstLead}, {"City", "stays"}}));                   // 2
    addToCurrent(Kind::addTextNote, note, {{"Parent_Id", firstLead}}, firstLead);  // 3
    addToCurrent(Kind::editNote, note, {{"Note_Content", "b"}}, note);             // 4
    add(lead(secondLead, {{"Parent", firstLead}}));                                // 5
    edit(lead(secondLead, {{"City", "b"}}));                                       // 6
    edit(lead("7", {{"Company", "other"}}));                                       // 7
    auto refused = cancel({1});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, Reason::hasWaiters);
    EXPECT_EQ(refused.error().numbers, (Numbers{2, 3, 4, 5, 6}));
    EXPECT_EQ(numbersLeft(), "1 2 3 4 5 6 7 ");
    EXPECT_EQ(cancel({1}, false, true).value(), (Numbers{1, 2, 3, 4, 5, 6}));
    settle();
    EXPECT_EQ(numbersLeft(), "7 ");
    EXPECT_EQ(outcomes({1, 2, 3, 4, 5, 6, 7}), "cancelled cancelled cancelled cancelled cancelled cancelled queued ");
    EXPECT_EQ(stored(), R"("7","other","stays")");
    // A lookup of a record that will never be would be refused with each later edit.
    EXPECT_EQ(cells("LeadsRecords", {identifier("Parent")}), "null");
    EXPECT_EQ(cells("NotesRecords", {"1"}), "");
    EXPECT_TRUE(stores->currentTransactions()->getTransactions()->transactions.empty());
    for (auto text : {"sound of NEW_000000003 ", "wake "}) EXPECT_NE(log.find(text), std::string::npos) << text;
    for (auto text : {"1 ", "4 ", "updated 7 ", "deleted NEW_000000001 ", "deleted NEW_000000003 "})
        EXPECT_NE(notices->notices.find(text), std::string::npos) << text << notices->notices;
}

TEST_F(ChangeCancellationTest, WhatTheServerMayHaveStays) {
    for (auto id : {"7", "8", "9"}) edit(lead(id, {{"City", "Ulm"}}));
    add(lead(firstLead, {}));
    auto changes = stores->changeRegister();
    ASSERT_TRUE(changes->noteSends({1, 2, 3, 4}));
    ErrorResponse error{.code = "code", .message = "no"};
    // The first got no answer. The answer to the second cannot be read, and the third and fourth are refused.
    ASSERT_TRUE(changes->noteRefusal(2, error, true) && changes->noteRefusal(3, error, false) &&
                changes->noteRefusal(4, error, false));
    ASSERT_TRUE(changes->forgetRefusal(3)) << "it is to be sent again";
    struct Case {
        Numbers numbers;
        Reason reason;
        Numbers named;
    };
    for (auto& each : {Case{{1}, Reason::sent, {1}}, Case{{3, 2}, Reason::sent, {2}},
                       Case{{3, 77}, Reason::notQueued, {77}}, Case{}}) {
        auto refused = cancel(each.numbers);
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().reason, each.numbers.empty() ? Reason::notQueued : each.reason);
        EXPECT_EQ(refused.error().numbers, each.named) << refused.error().message();
    }
    EXPECT_EQ(cancel({4, 3}).value(), (Numbers{3, 4}));
    EXPECT_EQ(numbersLeft(), "1 2 ");
}

TEST_F(ChangeCancellationTest, ARecordWhoseDeleteIsCancelledComesBackAsTheServerHasIt) {
    edit(lead("7", {{"Company", "a"}}));
    remove("7");
    EXPECT_EQ(stored(), "");
    EXPECT_TRUE(cancel({2}, true));
    EXPECT_EQ(stored(), R"("7","server","Bonn")");
    remove("7");
    EXPECT_TRUE(cancel({3}));
    EXPECT_EQ(stored() + log, "wake fetch 7 wake ");
    remove("8");
    EXPECT_TRUE(cancel({4}, true));
    EXPECT_EQ(log, "wake fetch 7 wake wake fetch 8 ");
    add(lead(firstLead, {}));
    remove(firstLead);
    auto refused = cancel({6}, true);
    ASSERT_FALSE(refused) << "nothing would create the record at the server any more";
    EXPECT_EQ(refused.error().reason, Reason::neverSent);
    EXPECT_TRUE(cancel({6}));
    EXPECT_EQ(stored() + numbersLeft(), "");
    // A refused add that an edit has changed is on its way again. The record comes back as the add has it.
    add(lead(secondLead, {{"Company", "a"}}));
    auto row = stores->transactions()->getTransactions(secondLead)->transactions.front().transactionID;
    ASSERT_TRUE(stores->transactions()->updateTransaciton(row, std::nullopt, std::nullopt,
                                                          std::string(Transaction::State::error)) &&
                stores->changeRegister()->noteRefusal(7, ErrorResponse{.code = "code", .message = "no"}, false));
    edit(lead(secondLead, {{"Company", "b"}}));
    ASSERT_TRUE(stores->changeRegister()->noteSends({8}));
    remove(secondLead);
    EXPECT_TRUE(cancel({9}, true));
    EXPECT_EQ(cells("LeadsRecords", {identifier("Company")}) + " " + numbersLeft(), R"("b" 8 )");
}

TEST_F(ChangeCancellationTest, ChangesOfOneRecordWaitForEarlierOnesInTheOtherQueue) {
    edit(lead("7", {{"Company", "a"}}));                                // 1
    addToCurrent(Kind::editRecord, "7", {{"Company", "b"}}, "");        // 2
    edit(lead("7", {{"Company", "c"}}));                                // 3
    addToCurrent(Kind::editRecord, "7", {{"Company", "d"}}, "");        // 4
    addToCurrent(Kind::editRecord, "8", {{"Company", "other"}}, "");    // 5
    addToCurrent(Kind::addTextNote, firstLead, {{"City", "new"}}, "");  // 6
    edit(lead(firstLead, {{"City", "newer"}}));                         // 7
    auto waiting = [&] {
        std::string texts;
        auto changes = QueuedChanges(*stores).list(ChangeQueueStatus{.state = ChangeQueueStatus::State::idle},
                                                   ChangeQueueStatus{.state = ChangeQueueStatus::State::idle});
        for (auto& each : *changes) {
            texts += std::to_string(each.number) + ":";
            if (each.waitingFor)
                for (auto number : each.waitingFor->numbers) texts += " " + std::to_string(number);
            texts += each.state == Change::State::failed ? " failed, " : ", ";
        }
        return texts;
    };
    auto next = [&] {
        auto found = stores->currentTransactions()->getNextRunnableTransaction({Kind::editRecord});
        return found.value() ? found.value()->payload.valueOf("Company").textOr("") : "none";
    };
    EXPECT_EQ(waiting(), "1:, 2: 1, 3: 1 2, 4: 3, 5:, 6:, 7: 6, ");
    EXPECT_EQ(next(), "other");
    auto first = stores->changeRegister()->entriesWithNumbers({1})->front().transactionId;
    ASSERT_TRUE(stores->transactions()->updateTransaciton(first, std::nullopt, std::nullopt, "error"));
    EXPECT_EQ(waiting(), "1: failed, 2:, 3: 2, 4: 3, 5:, 6:, 7: 6, ") << "a failed change holds nothing up";
    EXPECT_EQ(next(), "b");
    ASSERT_TRUE(manager->updateError(1, ErrorResponse{.code = "crmINVALID_DATA"}));
    EXPECT_EQ(waiting(), "1: failed, 2: failed, 3:, 4: 3, 5:, 6:, 7: 6, ");
    EXPECT_EQ(next(), "other");
    EXPECT_EQ(cancel({4}, true).value(), (Numbers{4}));
    EXPECT_EQ(stored(), R"("7","c","Bonn")") << "what comes last in the order of both is on the screen";
}

TEST_F(ChangeCancellationTest, ARowThatCannotBeReadHoldsUpNoOther) {
    edit(lead("7", {{"Company", "a"}}));                          // 1
    addToCurrent(Kind::editRecord, "7", {{"Company", "b"}}, "");  // 2
    ASSERT_TRUE(adapter().execute("UPDATE TRANSACTIONS_NEW SET payload = 'broken'", std::nullopt));
    EXPECT_EQ(cancel({1}, true).value(), (Numbers{1}));
    EXPECT_EQ(stored(), R"("7","server","Bonn")");
    remove("7");
    EXPECT_EQ(numbersLeft(), "2 3 ");
}

TEST_F(ChangeCancellationTest, AnAcceptedEditIsNotUndoneByAnEarlierOneOfTheOtherQueue) {
    edit(lead("7", {{"Company", "a"}, {"City", "x"}}));                        // 1
    addToCurrent(Kind::editRecord, "7", {{"id", "7"}, {"Company", "b"}}, "");  // 2
    edit(lead("7", {{"Company", "c"}}));                                       // 3
    auto older = [&] { return stores->transactions()->getTransactions("7")->transactions; };
    auto current = [&] { return *stores->currentTransactions()->getTransactionsWithRecordIds({"7"}); };
    auto second = current().front();
    auto third = older().back();
    ASSERT_TRUE(
        stores->transactions()->updateTransaciton(older().front().transactionID, std::nullopt, std::nullopt, "error"));
    ASSERT_TRUE(manager->updateError(second.id, ErrorResponse{.code = "crmINVALID_DATA"}));
    ASSERT_TRUE(manager->editSettled(second, 2));
    EXPECT_EQ(older().front().dataJSON->text(), R"({"data":[{"id":"7","City":"x"}]})");
    EXPECT_EQ(older().back(), third) << "what was made after it stays";
    ASSERT_TRUE(SupersededEdits::leaveOutOfCurrent(*stores, older().front(), 1));
    EXPECT_EQ(current().front().payload, second.payload);
    ASSERT_TRUE(SupersededEdits::leaveOutOfCurrent(*stores, third, 3));
    EXPECT_TRUE(current().empty()) << "nothing is left of it";
    EXPECT_EQ(numbersLeft(), "1 3 ");
    EXPECT_EQ(outcomes({2}), "merged ");
}

}  // namespace tarvo
