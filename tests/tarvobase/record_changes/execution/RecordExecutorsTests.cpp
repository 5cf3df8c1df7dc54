#include "tests/tarvobase/record_changes/execution/ExecutorFixture.h"

namespace tarvo {
namespace {

using Kind = NTransaction::Kind;
const std::string newLeadId = "NEW_000000001";

/// Transactions of leads.
class RecordExecutorsTest : public ExecutorTest {
protected:
    void prepare() {
        adapter().dropTable("LeadsRecords");
        makeLeads({{"Company", FieldDataType::text}, {"City", FieldDataType::text}});
        begin();
        auto parts = ExecutionParts::of(*stores, manager, 3);
        auto add = std::make_shared<AddRecordExecutor>(parts);
        auto edit = std::make_shared<EditRecordExecutor>(parts);
        auto remove = std::make_shared<DeleteRecordExecutor>(parts);
        auto import = std::make_shared<ImportRecordExecutor>(parts);
        add->addRecordNS = scripted<AddEditRecordNetworkService>();
        edit->editRecordNS = scripted<AddEditRecordNetworkService>();
        remove->deleteRecordNS = scripted<DeleteRecordNetworkService>();
        import->importRecordNS = scripted<ImportRecordNS>();
        executors->executors = {
            {Kind::addRecord, add}, {Kind::editRecord, edit}, {Kind::deleteRecord, remove}, {Kind::import, import}};
    }
    void storeLead(const std::string& id) { fillLeads({{{"ID", id}, {"COMPANY", "mine"}, {"CITY", "Bonn"}}}); }
    void send(Kind kind, const std::string& recordId, const std::string& payload,
              ModuleIdentifier module = ModuleIdentifier::Case::leads) {
        ASSERT_TRUE(manager->addTransaction({.id = manager->getNewTransactionId(),
                                             .recordId = recordId,
                                             .module = module,
                                             .kind = kind,
                                             .payload = *json::parse(payload)->asMap()},
                                            {}, {}));
        manager->startSync();
        settle();
    }
    std::string leads() { return cells("LeadsRecords ORDER BY ID", {"ID", "COMPANY", "CITY"}); }
};

}  // namespace

TEST_F(RecordExecutorsTest, AnAcceptedTransactionLeavesTheQueueWithItsRows) {
    struct {
        Kind kind;
        std::string recordId, payload, members, body, leads;
    } cases[] = {
        {Kind::addRecord, newLeadId, R"({"Company":"mine"})", R"("info":{"recordId":"42"})",
         R"({"data":[{"Company":"mine"}]})", R"("42","mine","Bonn")"},
        {Kind::editRecord, "7", R"({"City":"Ulm"})", R"("data":[[["id","7"],["City","Ulm"]]])",
         R"({"data":[{"City":"Ulm","id":"7"}]})", R"("7","mine","Ulm")"},
        {Kind::editRecord, "8", R"({"City":"Ulm"})", R"("info":{"recordId":"8"})",
         R"({"data":[{"City":"Ulm","id":"8"}]})", R"("8","mine","Bonn")"},
        {Kind::deleteRecord, "7", "{}", R"("info":{})", "", ""},
        {Kind::import, "NEW_000000002", R"({"data":[{"Company":"a"}]})", R"("record":["43"])",
         R"({"data":[{"Company":"a"}]})", R"("43","mine","Bonn")"},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.members);
        prepare();
        storeLead(one.recordId);
        network->answer(entry(one.members));
        send(one.kind, one.recordId, one.payload);
        EXPECT_EQ(rows(), "");
        EXPECT_EQ(leads(), one.leads);
        auto call = network->calls().back();
        EXPECT_EQ(call.request.body ? call.request.body->text() : "", one.body);
    }
    EXPECT_EQ(stores->recordIdAliases()->realId("Leads", newLeadId).value(), "42");
}

TEST_F(RecordExecutorsTest, AFailureStaysWithItsReason) {
    const std::string refusal = R"("info":{},"error":["crmNO","no"])";
    struct {
        Kind kind;
        std::string members, row;
        std::size_t requests;
    } cases[] = {
        // What was refused is tried again until its attempts are used up.
        {Kind::addRecord, refusal, R"({"Company":"a"} txnMAX_SYNC_ATTEMPT_REACHED)", 3},
        {Kind::editRecord, refusal, R"({"Company":"a"} txnMAX_SYNC_ATTEMPT_REACHED)", 3},
        {Kind::deleteRecord, refusal, R"({"Company":"a"} crmNO)", 1},
        {Kind::addRecord, R"("info":{})", R"({"Company":"a"} txnPARSING_FAILED)", 1},
        {Kind::editRecord, R"("info":{"recordId":"8"})", R"({"Company":"a"} txnPARSING_FAILED)", 1},
        {Kind::import, R"("info":{})", R"({"Company":"a"} txnPARSING_FAILED)", 0},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(std::string(caseName(one.kind)) + " " + one.members);
        prepare();
        storeLead("7");
        auto before = network->calls().size();
        for (std::size_t i = 0; i < one.requests; ++i) network->answer(entry(one.members));
        send(one.kind, "7", R"({"Company":"a"})");
        EXPECT_TRUE(rows().ends_with(one.row)) << rows();
        EXPECT_EQ(leads(), R"("7","mine","Bonn")");
        EXPECT_EQ(network->calls().size() - before, one.requests);
        EXPECT_TRUE(manager->deleteTransactionWithRecordId("7"));
    }
    send(Kind::addRecord, newLeadId, "{}", ModuleIdentifier::Case::vendors);
    EXPECT_TRUE(rows().ends_with("txnMODULE_NOT_FOUND"));
}

TEST_F(RecordExecutorsTest, WithoutAnAnswerTheSameRequestGoesAgain) {
    prepare();
    storeLead("7");
    network->fail(NetworkError::Kind::cannotConnect);
    network->answer(entry(R"("info":{"recordId":"7"})"));
    send(Kind::editRecord, "7", R"({"Company":"a"})");
    EXPECT_TRUE(rows().ends_with("txnPARSING_FAILED"));
    EXPECT_EQ(manager->status().state, ChangeQueueStatus::State::waiting);
    manager->wake();
    settle();
    EXPECT_EQ(rows(), "");
    EXPECT_EQ(network->calls().size(), 2u);
    EXPECT_EQ(keysSent(), 1u);
}

TEST_F(RecordExecutorsTest, AnImportKeepsWhatWasRefused) {
    prepare();
    const std::string body = R"({"data":[{"Company":"a"},{"Company":"b"},{"Company":"c"}]})";
    network->answer(
        R"({"response":{"result":[{"error":["C1","x"]},{"record":["43"]},{"error":["C2","x"],"info":{}}]}})");
    send(Kind::import, newLeadId, body);
    EXPECT_EQ(rows(), R"(1 import NEW_000000001 1 {"data":[{"Company":"a"},{"Company":"c"}]} C1)");
    // An entry that cannot be read may have been added: all is kept, under the same key.
    for (auto end : {R"({"info":{}}]}})", R"({"record":["44"]},{}]}})"}) {
        EXPECT_TRUE(manager->resetTransaction(1) && stores->currentTransactions()->clearError({1}));
        network->answer(R"({"response":{"result":[{"record":["45"]},)" + std::string(end));
        manager->wake();
        settle();
        EXPECT_TRUE(rows().ends_with(R"({"data":[{"Company":"a"},{"Company":"c"}]} txnPARSING_FAILED)")) << rows();
    }
    EXPECT_EQ(network->calls().size(), 3u);
    EXPECT_EQ(keysSent(), 2u);
}

TEST_F(RecordExecutorsTest, EveryTransactionCompletesOnce) {
    prepare();
    std::string outcomes;
    auto noting = [&](const TransactionResult& result) {
        outcomes += result.outcome ? "success " : result.outcome.error().code + " ";
    };
    executors->executors.at(Kind::addRecord)->execute({.id = 1, .kind = Kind::editRecord}, noting);
    EXPECT_EQ(outcomes, "txnINVALID_TRANSACTION ");
    // The executor is released before the answer, then its service before it has sent anything.
    network->beforeAnswer = [&] { executors->executors.clear(); };
    network->answer(entry(R"("info":{"recordId":"42"})"));
    executors->executors.at(Kind::addRecord)->execute({.id = 1, .recordId = newLeadId}, noting);
    settle();
    EXPECT_EQ(outcomes, "txnINVALID_TRANSACTION txnPARSING_FAILED ");
    class Dropping final : public AddEditRecordNetworkServiceProtocol {
        void addRecord(AddEditRecordRequest, ChangeCompletion) override {}
    };
    auto add = std::make_shared<AddRecordExecutor>(ExecutionParts::of(*stores, manager, 3));
    add->addRecordNS = std::make_shared<Dropping>();
    add->execute({.id = 1, .recordId = newLeadId}, noting);
    settle();
    EXPECT_EQ(outcomes, "txnINVALID_TRANSACTION txnPARSING_FAILED txnPARSING_FAILED ");
}

}  // namespace tarvo
