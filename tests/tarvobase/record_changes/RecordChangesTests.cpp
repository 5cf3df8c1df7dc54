#include "platform/Clock.h"
#include "platform/Files.h"
#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

using T = FieldDataType;
const std::string newLead = "NEW_000000001";

/// Changes of leads by the three data managers, over real tables.
class RecordChangesTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        prepare(Naming::column);
    }
    void prepare(Naming naming) {
        use(naming);
        adapter().dropTable("LeadsRecords");
        makeLeads({{"Company", T::text}, {"City", T::text}, {"Parent", T::lookup}});
        Stores stores = Stores::current();
        auto queue = std::make_shared<RecordTransactionManager>(stores, [this] { ++wakeUps; });
        parts.emplace(RecordChangeParts{.stores = stores,
                                        .recordPersistance = records,
                                        .editRecordTransactionManager = queue,
                                        .localDirectory = folder(),
                                        .voiceFileDirectory = folder() + "/VoiceNotes/"});
    }
    Module leads(const std::string& name = "Leads") const { return {.moduleName = name, .apiName = "Api_" + name}; }
    Record lead(const std::string& id, const std::vector<std::pair<std::string, Value>>& values) {
        Record record(id, "Leads");
        for (auto& [name, value] : values) record.set(identifier(name), value);
        return record;
    }
    SavedChange add(const Record& record) { return AddRecordDataManager(*parts).addRecord(record, leads()); }
    SavedChange edit(const Record& record) { return EditRecordDataManager(*parts).editRecord(record, leads()); }
    SavedChange remove(const std::string& id) { return DeleteRecordDataManager(*parts).deleteRecord(id, leads()); }

    /// Returns the rows of the queue: kind, record and body.
    std::string queue() {
        std::vector<std::string> rows;
        auto queued = parts->stores.transactions()->getTransactions();
        for (auto& row : queued->transactions)
            rows.push_back(std::string(caseName(row.operationType)) + " " + row.recordID + " " +
                           (row.dataJSON ? row.dataJSON->text() : row.uriData.text()) +
                           (row.extras ? " " + *row.extras : ""));
        return text::join(rows, "\n");
    }
    std::string stored() {
        return cells("LeadsRecords ORDER BY 1", {idColumn(), identifier("Company"), identifier("City")});
    }
    void fail(const std::string& recordId, const std::string& code) {
        auto queued = parts->stores.transactions()->getTransactions(recordId);
        for (auto& row : queued->transactions) {
            auto entry = parts->stores.changeRegister()->enter(ChangeQueue::older, row.transactionID);
            parts->stores.changeRegister()->noteSend(entry->number);
            parts->stores.changeRegister()->noteRefusal(entry->number, {.code = code, .message = code},
                                                        code == ErrorResponse::parsingFailed().code);
            parts->stores.transactions()->updateTransaciton(row.transactionID, std::nullopt, std::nullopt,
                                                            std::string(Transaction::State::error));
        }
    }

    std::optional<RecordChangeParts> parts;
    int wakeUps = 0;
};

}  // namespace

TEST_F(RecordChangesTest, ChangesAreInTableAndQueueAtOnceInBothNamings) {
    for (auto naming : {Naming::column, Naming::api}) {
        SCOPED_TRACE(static_cast<int>(naming));
        prepare(naming);
        EXPECT_TRUE(add(lead(newLead, {{"Company", "a"}, {"City", Value()}})));
        EXPECT_TRUE(edit(lead(newLead, {{"City", "Bonn"}, {"Company", Value()}})));
        EXPECT_EQ(stored(), R"("NEW_000000001",null,"Bonn")");
        auto company = field("Leads", "Company").fieldAPIName, city = field("Leads", "City").fieldAPIName;
        EXPECT_EQ(queue(), "addRecord NEW_000000001 {\"data\":[{\"" + company + "\":\"a\"}]}\n" +
                               "editRecord NEW_000000001 {\"data\":[{\"id\":\"NEW_000000001\",\"" + company +
                               "\":null,\"" + city + "\":\"Bonn\"}]}");
        EXPECT_TRUE(remove(newLead));
        EXPECT_EQ(stored(), "");
        EXPECT_EQ(queue(),
                  R"(deleteRecord NEW_000000001 {"module":"Leads","moduleAPI":"Api_Leads","id":"NEW_000000001"})");
        EXPECT_TRUE(parts->stores.transactions()->removeTransactions(newLead));
    }
    EXPECT_EQ(wakeUps, 6);
}

/// Writes down what observers are notified of.
class SavedLog final : public ChangeQueueObserver {
public:
    std::string notices;

    void changeSaved(const Change& change) override { notices += std::to_string(change.number) + change.kind + " "; }
    void changeAccepted(const Change& change, const std::optional<std::string>&) override {
        notices += "accepted " + std::to_string(change.number) + " ";
    }
    void changeNotSaved(const std::string&, const std::string& recordId, ChangeNotSaved reason) override {
        notices += recordId + std::string(caseName(reason)) + " ";
    }
};

TEST_F(RecordChangesTest, AFailedStepLeavesNothing) {
    auto log = std::make_shared<SavedLog>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    auto refuse = "CREATE TRIGGER refuse BEFORE INSERT ON TARVO_CHANGES BEGIN SELECT RAISE(ABORT, 'full'); END";
    EXPECT_TRUE(add(lead("7", {{"Company", "a"}})));
    ASSERT_TRUE(adapter().execute(refuse, std::nullopt));
    auto before = queue();
    EXPECT_FALSE(add(lead(newLead, {{"Company", "b"}})));
    EXPECT_FALSE(edit(lead("7", {{"Company", "b"}})));
    EXPECT_FALSE(remove("7"));
    EXPECT_EQ(stored(), R"("7","a",null)");
    EXPECT_EQ(queue(), before);
    EXPECT_FALSE(parts->stores.transactionRecords()->getTransactionRecord("7").value());
    EXPECT_EQ(edit(lead("", {})).error(), ChangeNotSaved::noRecordId);
    settle();
    EXPECT_EQ(log->notices, "1addRecord NEW_000000001notStored 7notStored 7notStored noRecordId ");
}

TEST_F(RecordChangesTest, FirstEditKeepsTheServersSide) {
    records->storeRecord(dictionariesOf(R"([[["id","7"],["Company","server"]]])"), "Leads");
    EXPECT_TRUE(edit(lead("7", {{"Company", "first"}})));
    EXPECT_TRUE(edit(lead("7", {{"Company", "second"}})));
    auto sides = parts->stores.transactionRecords()->getTransactionRecord("7").value();
    EXPECT_EQ(sides->serverData.find("COMPANY")->textOr(""), "server");
    EXPECT_EQ(sides->deviceData.find("COMPANY")->textOr(""), "second");
    EXPECT_TRUE(remove("7"));
    sides = parts->stores.transactionRecords()->getTransactionRecord("7").value();
    EXPECT_EQ(sides->serverData.find("COMPANY")->textOr(""), "server") << "a cancelled delete brings it back";
}

TEST_F(RecordChangesTest, EditOfARefusedAddIsTheAddAgain) {
    EXPECT_TRUE(add(lead(newLead, {{"Company", "a"}, {"City", "Bonn"}})));
    EXPECT_TRUE(edit(lead(newLead, {{"City", "Ulm"}})));
    fail(newLead, "crmMANDATORY_NOT_FOUND");
    EXPECT_TRUE(edit(lead("7", {{"Parent", newLead}})));
    fail("7", "txnDEPENDING_TRANSACTION_FAILED");
    EXPECT_TRUE(edit(lead(newLead, {{"Company", "b"}, {"City", Value()}})));
    auto company = field("Leads", "Company").fieldAPIName, parent = field("Leads", "Parent").fieldAPIName;
    EXPECT_EQ(queue(), "editRecord 7 {\"data\":[{\"id\":\"7\",\"" + parent + "\":\"NEW_000000001\"}]}\n" +
                           "addRecord NEW_000000001 {\"data\":[{\"" + company + "\":\"b\"}]}");
    // What came of this one is not known, so that it can only be repeated.
    fail(newLead, ErrorResponse::parsingFailed().code);
    EXPECT_TRUE(edit(lead(newLead, {{"Company", "c"}})));
    EXPECT_EQ(parts->stores.transactions()->getTransactions(newLead)->transactions.size(), 2u);
}

TEST_F(RecordChangesTest, RetryFreesWhatFailedForTheSakeOfTheAdd) {
    EXPECT_TRUE(add(lead(newLead, {{"Company", "a"}})));
    EXPECT_TRUE(add(lead("NEW_000000002", {{"Parent", newLead}})));
    EXPECT_TRUE(edit(lead("7", {{"Parent", "NEW_000000002"}, {"City", "former"}})));
    EXPECT_TRUE(edit(lead("8", {{"Company", "refused for itself"}})));
    fail(newLead, "crmMANDATORY_NOT_FOUND");
    for (auto id : {"NEW_000000002", "7"}) fail(id, "txnDEPENDING_TRANSACTION_FAILED");
    fail("8", "crmINVALID_DATA");
    EXPECT_TRUE(edit(lead("7", {{"City", "later, and may be on its way"}})));
    auto before = parts->stores.changeRegister()->entries();
    QueuedChanges changes(parts->stores);
    EXPECT_EQ(changes.retry({99}), QueuedChanges::Numbers());
    EXPECT_EQ(changes.retry({1}), (QueuedChanges::Numbers{1, 2, 3}));
    auto after = parts->stores.changeRegister()->entries();
    EXPECT_EQ(after->at(0).key, before->at(0).key);
    EXPECT_FALSE(after->at(2).lastRefusal);
    EXPECT_EQ(queue().find("former"), std::string::npos) << queue();
    EXPECT_TRUE(after->at(3).lastRefusal);
    EXPECT_EQ(changes.retry({}), QueuedChanges::Numbers{4});
}

TEST_F(RecordChangesTest, RetryOfAnEditLeavesOutWhatLaterEditsSet) {
    EXPECT_TRUE(edit(lead("7", {{"Company", "a"}, {"City", "a"}})));
    EXPECT_TRUE(edit(lead("8", {{"Company", "a"}})));
    fail("7", "crmINVALID_DATA");
    fail("8", "crmINVALID_DATA");
    EXPECT_TRUE(edit(lead("7", {{"City", Value()}})));
    EXPECT_TRUE(edit(lead("8", {{"Company", "b"}})));
    auto key = parts->stores.changeRegister()->entries()->front().key;
    EXPECT_EQ(QueuedChanges(parts->stores).retry({}), QueuedChanges::Numbers{1});
    EXPECT_NE(parts->stores.changeRegister()->entries()->front().key, key);
    auto company = field("Leads", "Company").fieldAPIName, city = field("Leads", "City").fieldAPIName;
    EXPECT_EQ(queue(), "editRecord 7 {\"data\":[{\"id\":\"7\",\"" + company + "\":\"a\"}]}\n" +
                           "editRecord 7 {\"data\":[{\"id\":\"7\",\"" + city + "\":null}]}\n" +
                           "editRecord 8 {\"data\":[{\"id\":\"8\",\"" + company + "\":\"b\"}]}");
}

TEST_F(RecordChangesTest, DeleteWaitsForAnAddThatWasSent) {
    auto log = std::make_shared<SavedLog>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    EXPECT_TRUE(add(lead(newLead, {{"Company", "a"}})));
    EXPECT_TRUE(edit(lead(newLead, {{"Company", "b"}})));
    auto entries = parts->stores.changeRegister()->entries();
    parts->stores.changeRegister()->noteSend(entries->front().number);
    EXPECT_TRUE(remove(newLead));
    auto queued = parts->stores.transactions()->getTransactions()->transactions;
    ASSERT_EQ(queued.size(), 2u);
    EXPECT_EQ(queued[0].operationType, TransactionType::addRecord);
    EXPECT_EQ(queued[1].operationType, TransactionType::deleteRecord);
    settle();
    EXPECT_EQ(log->notices, "1addRecord 2editRecord accepted 2 3deleteRecord ");
}

TEST_F(RecordChangesTest, DeleteRepeatsAnAddThatMayHaveBeenApplied) {
    EXPECT_TRUE(add(lead(newLead, {{"Company", "a"}})));
    fail(newLead, ErrorResponse::parsingFailed().code);
    EXPECT_TRUE(remove(newLead));
    auto queued = parts->stores.transactions()->getTransactions()->transactions;
    ASSERT_EQ(queued.size(), 2u);
    EXPECT_FALSE(queued[0].extras) << "it is ready";
}

TEST_F(RecordChangesTest, TemporaryIdsOfAcceptedRecordsStayGood) {
    records->storeRecord(dictionariesOf(R"([[["id","42"],["Company","a"]]])"), "Leads");
    ASSERT_TRUE(parts->stores.recordIdAliases()->store({newLead, "Leads", "42"}));
    EXPECT_TRUE(edit(lead(newLead, {{"Company", "b"}, {"Parent", newLead}})));
    EXPECT_EQ(cells("LeadsRecords", {"ID", "COMPANY", "PARENT"}), R"("42","b","42")");
    EXPECT_TRUE(edit(lead("42", {{"Parent", ValueList{"1", newLead}}})));
    EXPECT_EQ(cells("LeadsRecords", {"PARENT"}), R"("1,42")");
    auto rows = ValueList{Value(ValueMap{{"Product", newLead}})};
    EXPECT_TRUE(edit(lead("42", {{"Parent", rows}})));
    EXPECT_EQ(queue().find(newLead), std::string::npos) << queue();
    EXPECT_TRUE(remove(newLead));
    EXPECT_EQ(stored(), "");
    EXPECT_TRUE(add(lead(newLead, {{"Company", "a record of the same temporary id"}})));
    EXPECT_TRUE(edit(lead(newLead, {{"City", "Ulm"}})));
    EXPECT_EQ(parts->stores.transactions()->getTransactions(newLead)->transactions.size(), 2u);
    // A task is known by its former id among the activities too.
    adapter().createTable("CREATE TABLE ActivitiesRecords (ID)");
    ASSERT_TRUE(parts->stores.recordIdAliases()->store({newLead, "Tasks", "43"}));
    EXPECT_TRUE(DeleteRecordDataManager(*parts).deleteRecord(newLead, leads("Activities")));
    EXPECT_EQ(parts->stores.transactions()->getTransactions("43")->transactions.size(), 1u);
}

TEST_F(RecordChangesTest, OrderHoldsWhenTheClockIsSetBack) {
    platform::Clock::set(platform::Clock::WallTime(std::chrono::milliseconds(5'000'000)));
    EXPECT_TRUE(add(lead("1", {})));
    platform::Clock::set(platform::Clock::WallTime(std::chrono::milliseconds(1'000'000)));
    EXPECT_TRUE(add(lead("2", {})));
    auto queued = parts->stores.transactions()->getTransactions()->transactions;
    EXPECT_EQ(queued[0].transactionTime, 5'000'000);
    EXPECT_EQ(queued[1].transactionTime, 5'000'001);
    platform::Clock::release();
}

TEST_F(RecordChangesTest, DeleteTakesAttachmentsAndTheirFilesWithIt) {
    makeModule("Attachments", {field("Attachments", "Seid"), field("Attachments", "Name")});
    ASSERT_TRUE(records->saveRecordDictionary({{"ID", "f1"}, {"SEID", "7"}, {"NAME", "a file.txt"}},
                                              ModuleIdentifier::Case::attachments));
    auto inOne = folder() + "/Attachments/",
         ofModule = folder() + "/" + parts->stores.scope.account + "/Attachments/Leads/f1";
    for (auto& path : {inOne, ofModule, folder() + "/VoiceNotes"}) ASSERT_TRUE(files::createDirectories(path));
    for (auto& path : {inOne + "f1_a file.txt", ofModule + "/a file.txt", folder() + "/VoiceNotes/7.wav"})
        ASSERT_TRUE(files::writeAtomically(path, "x"));
    EXPECT_TRUE(remove("7"));
    EXPECT_EQ(cells("AttachmentsRecords", {"ID"}), "");
    EXPECT_FALSE(files::exists(inOne + "f1_a file.txt"));
    EXPECT_FALSE(files::exists(ofModule));
    EXPECT_TRUE(files::exists(folder() + "/VoiceNotes/7.wav"));  // that is a note's
}

}  // namespace tarvo
