#include "tarvobase/transaction/AddEditRecordTransactionHandler.h"
#include "tarvobase/transaction/TransactionManager.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {
namespace {

using Kind = NTransaction::Kind;
using Dependencies = std::vector<TransactionDependency>;
constexpr auto lookup = TransactionDependency::Kind::lookupRecord;

class IdleScheduler final : public TransactionSchedulerContract {
public:
    void startSync() override {}
    void run() override {}
    void stopSync() override {}
    void whenResting(std::function<void()>) override {}
};

class AddEditHandlerTest : public RecordTest {
protected:
    void SetUp() override {
        RecordTest::SetUp();
        stores.emplace(Stores::over(openDatabase()));
        manager = std::make_shared<TransactionManager>(*stores, stores->userDefaults);
        manager->normalScheduler = manager->attachmentScheduler = std::make_shared<IdleScheduler>();
        handler = std::make_shared<AddEditRecordTransactionHandler>(*manager, *stores, 3);
    }
    std::string payloadOf(const FieldMetadata& field, Value value, bool ignoreNullAndEmpty = false) {
        auto fields = fieldsOf("Leads", {field});
        Record record("NEW_000000001", "Leads");
        record.set(fields.identifierOf(field), std::move(value));
        return *json::write(Value(handler->getPayload(record, fields, ignoreNullAndEmpty)));
    }
    /// Lists the queue, one transaction as "id/kind/merges/attempts payload".
    std::string queue() {
        std::string text;
        auto queued = stores->currentTransactions()->getTransactions();
        for (auto& one : queued->transactions)
            text += std::to_string(one.id) + "/" + std::string(caseName(one.kind)) + "/" +
                    std::to_string(one.mergeCount) + "/" + std::to_string(one.syncAttempt) +
                    (one.errorResponse ? "/refused " : " ") + *json::write(Value(one.payload)) + " ";
        return text;
    }
    bool store(const std::vector<NTransaction>& transactions, const Dependencies& dependencies = {}) {
        return stores->currentTransactions()->storeTransactions(transactions, dependencies);
    }
    void empty() { EXPECT_TRUE(stores->currentTransactions()->deleteTransactionWithIds({1, 2, 3, 4})); }

    std::optional<Stores> stores;
    std::shared_ptr<TransactionManager> manager;
    std::shared_ptr<AddEditRecordTransactionHandler> handler;
    const FieldList fields = fieldsOf("Notes", {recordField("SEID", FieldDataType::lookup, "Parent_Id")});
};

NTransaction refusedTransaction(std::int64_t id, Kind kind, std::int64_t attempts) {
    NTransaction transaction{.id = id, .recordId = "r", .kind = kind, .payload = {{"a", id}}};
    transaction.errorResponse = ErrorResponse{"crmINVALID_DATA", "no", std::nullopt};
    transaction.syncAttempt = attempts;
    return transaction;
}
NTransaction queuedTransaction(std::int64_t id, Kind kind = Kind::editNote, const std::string& record = "r") {
    return {.id = id, .recordId = record, .kind = kind, .payload = {{"a", id}, {"b" + std::to_string(id), true}}};
}

TEST_F(AddEditHandlerTest, ValuesGoIntoThePayloadByTheTypeOfTheirField) {
    using T = FieldDataType;
    struct {
        T type;
        Value stored;
        std::string sent, sentIfFilled;
    } cases[] = {
        {T::bigInt, "9007199254740993", "9007199254740993", "9007199254740993"},
        {T::bigInt, "", "null", ""},
        {T::bigInt, "12x", "null", ""},
        {T::bigInt, 5, "5", "5"},
        {T::boolean, "True", "false", "false"},
        {T::date, 86'400, R"("1970-01-02")", R"("1970-01-02")"},
        {T::date, "tomorrow", R"("tomorrow")", R"("tomorrow")"},
        {T::alarm, "5 minutes", R"({"ALARM":"5 minutes"})", R"({"ALARM":"5 minutes"})"},
        {T::text, Value(), "null", ""},
        {T::text, "", R"("")", ""},
        {T::subform, ValueList{}, "[]", "[]"},
    };
    for (auto mode : {Mode::column, Mode::api}) {
        use(mode);
        for (auto& one : cases) {
            auto field = recordField("COL", one.type, "Api");
            EXPECT_EQ(payloadOf(field, one.stored), "{\"Api\":" + one.sent + "}");
            EXPECT_EQ(payloadOf(field, one.stored, true),
                      one.sentIfFilled.empty() ? "{}" : "{\"Api\":" + one.sentIfFilled + "}");
        }
        auto naming = Scope::current().naming;
        for (auto name : {naming.constant->modifiedBy, naming.constant->modifiedTime})
            EXPECT_EQ(payloadOf(recordField(std::string(name), T::text, std::string(name)), "x"), "{}") << name;
    }
    EXPECT_EQ(handler->getPayload(Record("7", "Leads"), fieldsOf("Leads", {})), (ValueMap{{"id", "7"}}));
}

TEST_F(AddEditHandlerTest, TheNewerValueWinsAndTheNewerListIsTheList) {
    auto withRows = fieldsOf("Leads", {recordField("ROWS", FieldDataType::subform, "Rows")});
    struct {
        std::string payloads, merged;
    } cases[] = {
        {"[]", "{}"},
        {R"([{"a":1,"b":2},{"b":null,"c":3},{"c":4}])", R"({"a":1,"b":null,"c":4})"},
        {R"([{"Rows":[{"id":"1","x":1,"y":1},{"id":"2"}]},{"Rows":[{"id":"3"},{"id":"1","y":2},{"z":1}]}])",
         R"({"Rows":[{"id":"3"},{"id":"1","x":1,"y":2},{"z":1}]})"},
        {R"([{"Rows":[{"x":1},{"id":7,"x":1}]},{"Rows":[{"id":7}]}])", R"({"Rows":[{"id":7}]})"},
        {R"([{"Rows":[{"id":"1","x":1}]},{"Rows":[]}])", R"({"Rows":[]})"},
        {R"([{"Rows":2},{"Rows":[{"id":"1"}]},{"Rows":null}])", R"({"Rows":null})"},
        {R"([{"Other":[{"id":"1","x":1}]},{"Other":[{"id":"1"}]}])", R"({"Other":[{"id":"1"}]})"},
    };
    for (auto& one : cases) {
        std::vector<ValueMap> payloads;
        auto list = fromJson(one.payloads);
        for (auto& payload : *list.asList()) payloads.push_back(*payload.asMap());
        EXPECT_EQ(*json::write(Value(handler->merge(payloads, withRows))), one.merged);
    }
}

TEST_F(AddEditHandlerTest, OnlyTextsOfPlainLookupsAreWaitedFor) {
    auto some = fieldsOf(
        "Leads", {recordField("A", FieldDataType::lookup, "A"), recordField("B", FieldDataType::lookup, "B"),
                  recordField("C", FieldDataType::ownerlookup, "C"), recordField("D", FieldDataType::lookup, "D")});
    EXPECT_EQ(handler->getLookupRecords({{"A", "1"}, {"B", ValueMap{{"id", "2"}}}, {"C", "3"}, {"D", Value()}}, some),
              (std::vector<std::string>{"1"}));
}

TEST_F(AddEditHandlerTest, ThePairOrAllThatIsQueuedIsMerged) {
    auto onItsWay = queuedTransaction(2);
    onItsWay.status = NTransaction::Status::syncing();
    const auto one = queuedTransaction(1), two = queuedTransaction(2), three = queuedTransaction(3);
    const auto others = queuedTransaction(4, Kind::editNote, "another record");
    struct {
        std::string name;
        std::vector<NTransaction> queued;
        Dependencies dependencies;
        std::int64_t mergeCount;
        std::string queue;
    } cases[] = {
        {"a pair",
         {one, two, three},
         {},
         0,
         R"(2/editNote/1/0 {"a":2,"b1":true,"b2":true} 3/editNote/0/0 {"a":3,"b3":true} )"},
        {"all", {one, two, three}, {}, 3, R"(3/editNote/5/0 {"a":3,"b1":true,"b2":true,"b3":true} )"},
        {"one alone", {one}, {}, 0, R"(1/editNote/0/0 {"a":1,"b1":true} )"},
        {"other kinds stay",
         {one, queuedTransaction(2, Kind::link)},
         {},
         0,
         R"(1/editNote/0/0 {"a":1,"b1":true} 2/link/0/0 {"a":2,"b2":true} )"},
        {"on its way",
         {one, onItsWay, three},
         {},
         3,
         R"(1/editNote/3/0 {"a":1,"b1":true} 2/editNote/0/0 {"a":2,"b2":true} 3/editNote/0/0 {"a":3,"b3":true} )"},
        {"each waits for the one before",
         {one, two},
         {{2, 1, lookup}},
         0,
         R"(2/editNote/1/0 {"a":2,"b1":true,"b2":true} )"},
        {"the later waits through another record",
         {one, two, others},
         {{2, 4, lookup}, {4, 1, lookup}},
         0,
         R"(1/editNote/0/0 {"a":1,"b1":true} 2/editNote/0/0 {"a":2,"b2":true} 4/editNote/0/0 {"a":4,"b4":true} )"},
        {"a cycle elsewhere",
         {one, two, others},
         {{2, 4, lookup}, {4, 9, lookup}, {9, 4, lookup}},
         0,
         R"(2/editNote/1/0 {"a":2,"b1":true,"b2":true} 4/editNote/0/0 {"a":4,"b4":true} )"},
    };
    for (auto& test : cases) {
        SCOPED_TRACE(test.name);
        ASSERT_TRUE(store(test.queued, test.dependencies));
        auto asking = one;
        asking.mergeCount = test.mergeCount;
        EXPECT_TRUE(handler->mergeTransaction(asking, fields));
        EXPECT_EQ(queue(), test.queue);
        empty();
    }
    // The kind is the caller's, and the merged payload decides what the survivor waits for.
    auto noted = queuedTransaction(2);
    noted.payload = {{"Parent_Id", "NEW_000000007"}};
    ASSERT_TRUE(store(
        {queuedTransaction(1, Kind::addTextNote), noted, queuedTransaction(4, Kind::addRecord, "NEW_000000007")}));
    EXPECT_TRUE(handler->mergeTransaction(queuedTransaction(1, Kind::addTextNote), fields));
    EXPECT_TRUE(queue().starts_with(R"(2/addTextNote/1/0 {"a":1,"b1":true,"Parent_Id":"NEW_000000007"} )")) << queue();
    EXPECT_EQ(stores->transactionDependencies()->getTransactionDependencies(), (Dependencies{{2, 4, lookup}}));
}

TEST_F(AddEditHandlerTest, ARefusedChangeIsTriedAgainWithWhatCameAfterIt) {
    struct {
        std::string name;
        std::vector<NTransaction> queued;
        std::string queue;
    } cases[] = {
        {"it keeps its attempts", {refusedTransaction(1, Kind::editNote, 2)}, R"(1/editNote/0/2 {"a":1} )"},
        {"a later edit",
         {refusedTransaction(1, Kind::editNote, 2), queuedTransaction(2)},
         R"(2/editNote/1/0 {"a":2,"b2":true} )"},
        {"an add stays an add",
         {queuedTransaction(1, Kind::addTextNote), refusedTransaction(2, Kind::editNote, 1)},
         R"(2/addTextNote/1/1 {"a":2,"b1":true} )"},
        {"an add that was deleted",
         {refusedTransaction(1, Kind::addRecord, 1), queuedTransaction(2, Kind::deleteRecord)},
         ""},
    };
    for (auto& test : cases) {
        SCOPED_TRACE(test.name);
        ASSERT_TRUE(store(test.queued));
        auto& refused = test.queued.front().errorResponse ? test.queued.front() : test.queued.back();
        EXPECT_TRUE(handler->handleError(*refused.errorResponse, refused, fields));
        EXPECT_EQ(queue(), test.queue);
        empty();
    }
    // What was taken out meanwhile stays out.
    EXPECT_TRUE(handler->handleError(ErrorResponse::parsingFailed(), refusedTransaction(1, Kind::editNote, 1), fields));
    EXPECT_EQ(queue(), "");
}

}  // namespace
}  // namespace tarvo
