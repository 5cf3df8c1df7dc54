#include "tarvobase/record_changes/internal/RecordIdReplacement.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

/// A lead that was added here, with everything that names its temporary id.
class RecordIdReplacementTest : public RecordTableTest {
protected:
    static constexpr const char* temporaryId = "NEW_000000001";

    void SetUp() override {
        RecordTableTest::SetUp();
        stores = Stores::current();
        using T = FieldDataType;
        makeLeads({{"Company", T::text}, {"City", T::text}, {"Street", T::text}});
        makeModule("Deals", {field("Deals", "Lead", T::lookup), field("Deals", "Partners", T::multiselectlookup)});
        adapter().createTable(
            "CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id, record, module_name, "
            "UNIQUE (cv_id, record))");
        run("INSERT INTO LeadsRecords (ID, COMPANY, CITY) VALUES ('NEW_000000001', 'Local', 'Bonn')");
        run("INSERT INTO DealsRecords (ID, LEAD, PARTNERS) VALUES "
            "('d1', 'NEW_000000001', '7,NEW_000000001,8'), ('d2', 'NEW_000000001', 'NEW_0000000012')");
        run("INSERT INTO Leads_CUSTOM_VIEW_RECORDS VALUES ('v1', 'NEW_000000001', 'Leads'), "
            "('v2', 'NEW_000000001', 'Leads'), ('v2', '42', 'Leads')");
        stores.transactions()->storeTransactions(
            {change("t1", "Leads", temporaryId, R"({"data":[{"id":"NEW_000000001"}]})"),
             change("t2", "Deals", "d1", R"({"data":[{"Lead":{"id":"NEW_000000001"},"Note":"NEW_000000001!"}]})")});
        run("INSERT INTO DealsRecords (ID, LEAD) VALUES ('d3', 'NEW_000000001')");
        ASSERT_TRUE(stores.currentTransactions()->storeTransactions({{.id = 5,
                                                                      .recordId = "d3",
                                                                      .module = ModuleIdentifier::Case::deals,
                                                                      .kind = NTransaction::Kind::editRecord,
                                                                      .payload = {{"Lead", temporaryId}}}},
                                                                    {}));
        stores.transactionRecords()->storeTransactionRecordPersistance(
            {.recordID = "d1", .deviceData = {{"LEAD", temporaryId}}, .serverData = {{"LEAD", "x"}}});
        stores.transactionRecords()->storeTransactionRecordPersistance({.recordID = temporaryId});
    }
    static Transaction change(const std::string& id, const std::string& module, const std::string& record,
                              const std::string& body) {
        return {.transactionID = id,
                .recordID = record,
                .moduleName = module,
                .operationType = TransactionType::editRecord,
                .dataJSON = platform::Data(body),
                .uriData = platform::Data(R"({"module":"x"})")};
    }
    void run(const std::string& sql) { ASSERT_TRUE(adapter().execute(sql, std::nullopt)) << sql; }
    bool replace() {
        return configuration().databaseAdapter.get()->transaction(
            "test", [&] { return RecordIdReplacement(stores).replace("Leads", temporaryId, "42"); });
    }

    Stores stores = Stores::current();  // taken again once the database is open
};

TEST_F(RecordIdReplacementTest, ServersIdTakesThePlaceEverywhere) {
    ASSERT_TRUE(replace());
    EXPECT_EQ(cells("LeadsRecords", {"ID", "COMPANY"}), R"("42","Local")");
    EXPECT_EQ(cells("DealsRecords", {"ID", "LEAD", "PARTNERS"}),
              R"("d1","42","7,42,8";"d2","NEW_000000001","NEW_0000000012";"d3","42",null)");
    EXPECT_EQ(cells("Leads_CUSTOM_VIEW_RECORDS ORDER BY cv_id", {"cv_id", "record"}), R"("v1","42";"v2","42")");
    auto queue = stores.transactions()->getTransactions()->transactions;
    ASSERT_EQ(queue.size(), 2u);
    EXPECT_EQ(queue[0].recordID, "42");
    EXPECT_EQ(queue[0].dataJSON->text(), R"({"data":[{"id":"42"}]})");
    EXPECT_EQ(queue[1].dataJSON->text(), R"({"data":[{"Lead":{"id":"42"},"Note":"NEW_000000001!"}]})");
    auto sides = stores.transactionRecords();
    EXPECT_EQ(sides->getTransactionRecord("d1").value()->deviceData, (ValueMap{{"LEAD", "42"}}));
    EXPECT_TRUE(sides->getTransactionRecord("42").value());
    EXPECT_FALSE(sides->getTransactionRecord(temporaryId).value());
    EXPECT_EQ(stores.recordIdAliases()->realId("Leads", temporaryId).value(), "42");
}

TEST_F(RecordIdReplacementTest, ServersRowStaysAndTakesWhatItLacksOrAnEditHasSet) {
    run("INSERT INTO LeadsRecords (ID, COMPANY, CITY, STREET) VALUES ('42', 'Server', NULL, 'Server')");
    run("UPDATE LeadsRecords SET STREET = NULL WHERE ID = 'NEW_000000001'");
    ASSERT_TRUE(stores.transactions()->storeTransaction(
        change("t3", "Leads", temporaryId, R"({"data":[{"id":"NEW_000000001","Street":null}]})")));
    ASSERT_TRUE(replace());
    EXPECT_EQ(cells("LeadsRecords", {"ID", "COMPANY", "CITY", "STREET"}), R"("42","Server","Bonn",null)");
}

TEST_F(RecordIdReplacementTest, FailureUndoesAllOfIt) {
    run("CREATE TRIGGER refuse BEFORE UPDATE ON DealsRecords BEGIN SELECT RAISE(ABORT, 'no'); END");
    EXPECT_FALSE(replace());
    EXPECT_EQ(cells("LeadsRecords", {"ID"}), R"("NEW_000000001")");
    EXPECT_EQ(stores.recordIdAliases()->realId("Leads", temporaryId).value(), std::nullopt);
}

}  // namespace tarvo
