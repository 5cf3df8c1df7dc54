#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/record_changes/internal/ChangeSettlement.h"
#include "tarvobase/record_changes/internal/RecordRefetch.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/sync/wire/RecordsSyncParser.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

/// Keeps requests until the test answers them.
class HeldFetches final : public FetchRecordNetworkServiceProtocol {
public:
    void fetchRecord(RecordFetch fetch) override { fetches.push_back(std::move(fetch)); }
    void answer(const std::vector<ValueMap>& records) {
        auto fetch = fetches.back();
        fetches.pop_back();
        recordDelegate.lock()->parsedRecords(records, fetch);
    }
    std::vector<RecordFetch> fetches;
};

/// A server that does not answer.
class UnansweredPages final : public RecordsSyncNetworkServiceProtocol {
public:
    void syncRecordsForModule(const Module&, const std::string&, std::int64_t, std::int64_t) override {}
};

/// Keeps the names of the modules that are to be synced.
class AskedSyncs final : public RecordsSyncDataManagerProtocol {
public:
    bool syncRecords(const std::string& moduleName) override {
        modules.push_back(moduleName);
        return true;
    }
    bool syncRecords(const Module& module) override { return syncRecords(module.moduleName); }
    std::string take() { return text::join(std::exchange(modules, {}), " "); }
    std::vector<std::string> modules;
};

using Reason = RecordRefetch::Reason;

/// Records that are fetched after the server's decision, over real tables.
class RecordRefetchTest : public RecordTableTest {
protected:
    void make(const std::string& module) {
        moduleName = module;
        makeModule(module, {field(module, "Subject")});
        if (SharedActivities::isActivity(module))
            makeModule("Activities", {field("Activities", "Subject"), field("Activities", "Activity_Type")});
        stores = Stores::current();
        refetch = RecordRefetch::make(*stores, records, syncs, service);
        parts.emplace(RecordChangeParts{
            .stores = *stores,
            .recordPersistance = records,
            .editRecordTransactionManager = std::make_shared<RecordTransactionManager>(*stores, [] {})});
    }
    Module module() const { return {.moduleName = moduleName, .apiName = moduleName}; }
    ValueMap wire(const std::string& id, const std::string& subject) {
        return {{"id", id}, {field(moduleName, "Subject").fieldAPIName, subject}};
    }
    Record record(const std::string& id, const std::string& subject) {
        Record made(id, moduleName);
        made.set(identifier("Subject"), subject);
        return made;
    }
    void remove(const std::string& id) { ASSERT_TRUE(DeleteRecordDataManager(*parts).deleteRecord(id, module())); }
    /// Settles the oldest change in the queue as the drain does after an answer.
    void settle(const ChangeAnswer& answer) {
        auto fetch = [this](auto& name, auto& id, auto reason) {
            // A round may end between the commit and a later look at it.
            if (reason == Reason::acceptance) {
                EXPECT_GT(queued(), 0u);
            }
            refetch->fetch(name, id, reason);
        };
        auto sent = stores->transactions()->getTransactions()->transactions.front();
        auto entry = stores->changeRegister()->entriesOf(ChangeQueue::older, {sent.transactionID})->front();
        ASSERT_TRUE(ChangeSettlement(*stores, records, fetch).settle({{sent, entry, answer}}));
    }
    static ChangeAnswer refusal() { return ChangeAnswer::refused({.code = "crmNO_PERMISSION", .message = "no"}); }
    std::string rows(const std::string& module) {
        auto columns = std::vector{idColumn(), identifier("Subject")};
        if (module == "Activities") columns.push_back(identifier("Activity_Type"));
        return cells(module + "Records ORDER BY 1", columns);
    }
    std::size_t queued() { return stores->changeRegister()->entries()->size(); }

    std::string moduleName;
    std::optional<Stores> stores;
    std::optional<RecordChangeParts> parts;
    std::shared_ptr<HeldFetches> service = std::make_shared<HeldFetches>();
    std::shared_ptr<AskedSyncs> syncs = std::make_shared<AskedSyncs>();
    std::shared_ptr<RecordRefetch> refetch;
};

}  // namespace

TEST_F(RecordRefetchTest, ARoundBringsWhatAnAnswerLacksOrAnOlderPageUndoes) {
    make("Tasks");
    auto edit = [&] { ASSERT_TRUE(EditRecordDataManager(*parts).editRecord(record("7", "edited"), module())); };
    auto full = ChangeAnswer::accepted("7", wire("7", "decided"));
    ASSERT_TRUE(records->storeRecord(wire("7", "stored"), "Tasks"));
    edit(), settle(ChangeAnswer::accepted("7"));
    EXPECT_EQ(syncs->take(), "Tasks Activities") << "the answer has the id alone";
    edit(), settle(full);
    EXPECT_EQ(syncs->take(), "");
    auto runner = RecordsSyncDataManager::make(*stores, std::make_shared<UnansweredPages>());
    runner->syncRecords(module());
    edit(), settle(full);
    EXPECT_EQ(syncs->take(), "Tasks") << "a page of a round is on its way";
    remove("7"), settle(ChangeAnswer::accepted("7"));
    EXPECT_EQ(syncs->take(), "Tasks");
    EXPECT_TRUE(service->fetches.empty());
    FoundationTest::settle();
    runner->syncCompleted(FailureDetails(), 0, module());
}

TEST_F(RecordRefetchTest, RefusedDeleteBringsBackWhatTheServerHasAndElseItIsDone) {
    make("Leads");
    for (auto id : {"7", "8"}) ASSERT_TRUE(records->storeRecord(wire(id, "stored"), "Leads"));
    remove("7");
    settle(refusal());
    service->answer({wire("9", "another")});
    EXPECT_EQ(rows("Leads"), R"("8","stored")");
    refetch->fetch("Leads", "7", Reason::refusedDelete);
    service->answer({wire("7", "server")});
    EXPECT_EQ(rows("Leads"), R"("7","server";"8","stored")");
    EXPECT_EQ(queued(), 1u);

    // Sent again, it is refused once more, but now somebody else has deleted the record.
    ASSERT_TRUE(stores->transactions()->makeReady(
        {stores->transactions()->getTransactions()->transactions.front().transactionID}));
    settle(refusal());
    service->answer({});
    EXPECT_EQ(rows("Leads"), R"("8","stored")");
    EXPECT_EQ(queued(), 0u);
    EXPECT_TRUE(stores->transactions()->getTransactions()->transactions.empty());
    EXPECT_TRUE(service->fetches.empty());
}

TEST_F(RecordRefetchTest, TheTableOfActivitiesFollowsATask) {
    for (auto naming : {Naming::column, Naming::api}) {
        SCOPED_TRACE(static_cast<int>(naming));
        use(naming);
        for (auto table : {"TasksRecords", "ActivitiesRecords"}) adapter().dropTable(table);
        make("Tasks");
        const std::string temporaryId = "NEW_000000001";
        auto expectBoth = [&](const std::string& row, const char* after) {
            EXPECT_EQ(rows("Tasks"), row) << after;
            EXPECT_EQ(rows("Activities"), row.empty() ? row : row + R"(,"Tasks")") << after;
        };
        ASSERT_TRUE(AddRecordDataManager(*parts).addRecord(record(temporaryId, "added"), module()));
        expectBoth(R"("NEW_000000001","added")", "add");
        ASSERT_TRUE(EditRecordDataManager(*parts).editRecord(record(temporaryId, "edited"), module()));
        expectBoth(R"("NEW_000000001","edited")", "edit");
        settle(ChangeAnswer::accepted("42", wire("42", "server")));
        expectBoth(R"("42","edited")", "the answer to the add, beneath the edit that waits");
        for (auto module : {"Tasks", "Activities"}) EXPECT_TRUE(records->fetchRecord(module, temporaryId)) << module;
        settle(ChangeAnswer::accepted("42", wire("42", "decided")));
        expectBoth(R"("42","decided")", "the answer to the edit");
        remove("42");
        expectBoth("", "delete");
        ASSERT_TRUE(records->storeRecord(wire("42", "page"), "Activities"));
        expectBoth("", "a page while the delete waits");
        settle(refusal());
        service->answer({wire("42", "kept")});
        expectBoth(R"("42","kept")", "the refusal of the delete");
        ASSERT_TRUE(stores->transactions()->removeTransactions("42"));
    }
}

}  // namespace tarvo
