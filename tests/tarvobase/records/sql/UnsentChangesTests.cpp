#include "tarvobase/metadata/Stores.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

/// Leads whose server values arrive while changes wait in the queue.
class UnsentChangesTest : public RecordTableTest {
protected:
    using T = FieldDataType;

    void prepare(Naming naming) {
        use(naming);
        makeLeads({{"Company", T::text}, {"City", T::text}, {"Account", T::lookup}});
        for (auto id : {"1", "2", "3"}) store(id, "at the server", "Bonn");
    }
    void store(const std::string& id, const std::string& company, const std::string& city) {
        EXPECT_TRUE(records->storeRecord(dictionariesOf(wire(id, company, city)), "Leads"));
    }
    static std::string wire(const std::string& id, const std::string& company, const std::string& city) {
        return R"([[["id",")" + id + R"("],["Company",")" + company + R"("],["City",")" + city +
               R"("],["Account","9","From the server"]]])";
    }
    void queue(const std::string& id, TransactionType type, const std::string& payload,
               const std::optional<std::string>& extras = std::nullopt) {
        EXPECT_TRUE(Stores::current().transactions()->storeTransaction(
            {.transactionID = id + payload,
             .recordID = id,
             .moduleName = "Leads",
             .operationType = type,
             .dataJSON = platform::Data(R"({"data":[{)" + payload + "}]}"),
             .uriData = platform::Data(R"({"module":"Leads"})"),
             .extras = extras}));
    }
    void queueInCurrent(const std::string& id, NTransaction::Kind kind, ValueMap payload = {},
                        const std::optional<ErrorResponse>& error = std::nullopt) {
        EXPECT_TRUE(Stores::current().currentTransactions()->storeTransactions({{.id = ++lastTransaction,
                                                                                 .recordId = id,
                                                                                 .kind = kind,
                                                                                 .payload = std::move(payload),
                                                                                 .errorResponse = error}},
                                                                               {}));
    }
    void setLocally(const std::string& id, const ValueMap& values) {
        EXPECT_TRUE(adapter().update("LeadsRecords", values, columnIs(idColumn(), id)));
    }
    std::string stored() {
        auto account = identifier("Account");
        return cells("LeadsRecords ORDER BY " + idColumn(),
                     {idColumn(), identifier("Company"), identifier("City"), account, account + "_LOOKUP"});
    }

    std::int64_t lastTransaction = 0;
};

TEST_F(UnsentChangesTest, ServersValuesGoBeneathWhatWaits) {
    for (auto naming : {Naming::column, Naming::api}) {
        SCOPED_TRACE(static_cast<int>(naming));
        prepare(naming);
        setLocally("1", {{identifier("Company"), "mine"}, {identifier("Account"), Value()}});
        setLocally("1", {{identifier("Account") + "_LOOKUP", Value()}});
        setLocally("2", {{identifier("City"), "Ulm"}});
        adapter().deleteObjects("LeadsRecords", columnIs(idColumn(), "3"));
        queue("1", TransactionType::editRecord, R"("Company":"mine")");
        queue("1", TransactionType::editRecord, R"("Account":null)", std::string(Transaction::State::inProgress));
        queue("2", TransactionType::editRecord, R"("City":"Ulm")", std::string(Transaction::State::error));
        queue("3", TransactionType::deleteRecord, "");
        queue("4", TransactionType::editRecord, R"("City":"Ulm")");
        const std::string expected = R"("1","mine","Kiel",null,null;"2","new","Ulm","9","From the server";)"
                                     R"("4","new","Kiel","9","From the server")";
        for (auto id : {"1", "2", "3", "4"}) store(id, "new", "Kiel");
        EXPECT_EQ(stored(), expected);
        EXPECT_EQ(records->storePage(wireOf(wire("3", "newer", "Kiel")), "Leads"), std::vector<std::string>{"3"});
        EXPECT_TRUE(records->modifyRecord("Leads", dictionariesOf(wire("1", "newer", "Kiel"))));
        EXPECT_EQ(stored(), expected);
        EXPECT_TRUE(Stores::current().transactions()->removeTransactions("1"));
        store("1", "newest", "Kiel");
        EXPECT_EQ(where(identifier("Company"), "newest"), "1");
        queue("3", TransactionType::deleteRecord, "", std::string(Transaction::State::error));
        store("3", "kept by the server", "Kiel");
        EXPECT_EQ(where(identifier("Company"), "kept by the server"), "3");
        for (auto id : {"2", "3", "4"}) EXPECT_TRUE(Stores::current().transactions()->removeTransactions(id));
        adapter().dropTable("LeadsRecords");
    }
}

TEST_F(UnsentChangesTest, ChangesOfTheCurrentQueueCountAsWell) {
    using K = NTransaction::Kind;
    for (auto naming : {Naming::column, Naming::api}) {
        SCOPED_TRACE(static_cast<int>(naming));
        prepare(naming);
        for (auto id : {"1", "2"}) setLocally(id, {{identifier("Company"), "mine"}, {identifier("City"), "Ulm"}});
        ErrorResponse refusal{.code = "crmINVALID_DATA"};
        queue("1", TransactionType::editRecord, R"("City":"Ulm")");
        queueInCurrent("1", K::editRecord, {{"Company", "mine"}});
        queueInCurrent("2", K::editNote, {{"Company", "mine"}}, refusal);
        queueInCurrent("3", K::deleteRecord, {}, ErrorResponse::parsingFailed());
        queueInCurrent("4", K::deleteRecord, {}, refusal);
        queueInCurrent("5", K::addRecord, {{"Company", "mine"}});
        adapter().execute("UPDATE TRANSACTIONS_NEW SET payload = '{' WHERE txn_type = 0", std::nullopt);
        for (auto id : {"1", "2", "3", "4", "5"}) store(id, "new", "Kiel");
        EXPECT_EQ(stored(), R"("1","mine","Ulm","9","From the server";"2","mine","Kiel","9","From the server";)"
                            R"("4","new","Kiel","9","From the server";"5","new","Kiel","9","From the server")");
        for (auto table : {"TRANSACTIONS", "TRANSACTIONS_NEW", "LeadsRecords"}) adapter().dropTable(table);
    }
}

}  // namespace tarvo
