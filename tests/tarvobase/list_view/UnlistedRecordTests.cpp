#include "tarvobase/metadata/Stores.h"
#include "tests/tarvobase/list_view/RecordListFixture.h"

namespace tarvo {
namespace {

/// Lists that show records which the server has not given for their view.
class UnlistedRecordTest : public RecordListTest {
protected:
    /// Stores a record and its add in the queue, as a user's add does.
    void addHere(const std::string& id, const std::string& company, const std::string& status = "Open") {
        adapter().insertInto("LeadsRecords", ValueMap{{"id", id}, {"Company", company}, {"Status", status}});
        Stores::current().transactions()->storeTransaction(
            {.transactionID = id, .recordID = id, .moduleName = "Leads", .transactionTime = 1});
    }
    void refuse(const std::string& id, const std::string& message) {
        auto changes = Stores::current().changeRegister();
        changes->noteRefusal(changes->enter(ChangeQueue::older, id)->number, {.code = "code", .message = message},
                             false);
    }
    void accept(const std::string& id, const std::string& realId) {
        auto stores = Stores::current();
        adapter().update("LeadsRecords", {{"id", realId}}, columnIs("id", id));
        EXPECT_TRUE(stores.transactions()->removeTransaction(id));
        EXPECT_TRUE(stores.recordIdAliases()->store({id, "Leads", realId}));
    }
    void restrictToOpen(const std::string& view) {
        adapter().update(
            "CUSTOM_VIEWS_METADATA",
            {{"offline_query", "({0} = '{1}')"}, {"offline_query_replace_info", "Status\xE0\xAE\x83\xE0\xAF\x80Open"}},
            columnIs("view_id", view));
    }
};

TEST_F(UnlistedRecordTest, RefusedDuplicatesBelongToTheViewAndFiltersNarrowIt) {
    settings->setListFilterHasMoreRecord(false, "Leads", "offline");
    restrictToOpen("offline");
    store("offline", 1, 3);
    addHere("NEW_000000001", "mine", "Lost");
    adapter().update("LeadsRecords", {{"Owner_LOOKUP", "Ann"}}, columnIs("id", "NEW_000000001"));
    EXPECT_EQ(ask(page("offline")), "database: 3 2 1");
    refuse("NEW_000000001", "No permission");
    EXPECT_EQ(ask(page("offline")), "database: 3 2 1");
    refuse("NEW_000000001", "Duplicate value");
    EXPECT_EQ(ask(page("offline")), "database: NEW_000000001 3 2 1");
    auto mine = ofCompany("mine", page("offline"));
    mine.columns = {{"Owner", "no such column"}};
    EXPECT_EQ(ask(mine), "database: NEW_000000001");
    std::optional<Record> shown;
    manager->getRecordList(std::make_shared<const GetListFilterRecordsParams>(mine),
                           {.callback = [&](auto list) { shown = list.records.front(); }},
                           std::vector{Criteria::isNotNull("Owner_LOOKUP")});
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->getString("Owner_LOOKUP"), "Ann");
    EXPECT_FALSE(shown->hasColumn("Company"));
}

TEST_F(UnlistedRecordTest, ARecordAddedHereIsInEachListWhoseOwnConditionAcceptsIt) {
    storeView("open", true, "Company", "asc");
    restrictToOpen("open");
    for (auto view : {"offline", "open", "online"}) {
        settings->setListFilterHasMoreRecord(false, "Leads", view);
        store(view, 1, 1);
    }
    adapter().update("LeadsRecords", {{"Company", "M"}}, columnIs("id", "1"));
    addHere("NEW_000000001", "A"), addHere("NEW_000000002", "Z"), addHere("NEW_000000003", "Z", "Lost");
    auto lists = [&] {
        std::vector<std::string> all;
        for (auto view : {"offline", "open", "online"}) all.push_back(ask(page(view, {}, {}, DataSource::database)));
        return text::join(all, "; ");
    };
    EXPECT_EQ(lists(),
              "database: NEW_000000003 NEW_000000002 NEW_000000001 1; database: NEW_000000001 1 NEW_000000002; "
              "database: 1");
    refuse("NEW_000000002", "No permission");
    adapter().insertInto("LeadsRecords", ValueMap{{"id", "NEW_000000004"}, {"Company", "B"}, {"Status", "Lost"}});
    EXPECT_TRUE(
        Stores::current().currentTransactions()->storeTransactions({{.id = 1, .recordId = "NEW_000000004"}}, {}));
    EXPECT_EQ(ask(page("offline", {}, 1, DataSource::database)), "database: NEW_000000004");
    EXPECT_TRUE(Stores::current().currentTransactions()->deleteTransactionWithId(1));
    accept("NEW_000000001", "41"), accept("NEW_000000003", "43");
    EXPECT_EQ(lists(), "database: NEW_000000002 43 41 1; database: 41 1 NEW_000000002; database: 1");
    // Another record takes the temporary id, and the view changes its mind about an accepted one.
    EXPECT_TRUE(Stores::current().recordIdAliases()->forget("Leads", "NEW_000000001"));
    adapter().update("LeadsRecords", {{"Status", "Open"}}, columnIs("id", "43"));
    EXPECT_EQ(lists(), "database: NEW_000000002 43 41 1; database: 41 1 NEW_000000002 43; database: 1");
    adapter().deleteObjects("LeadsRecords", columnIs("id", "43"));
    configuration().currentOrgID = "another";
    useNetwork();
    EXPECT_EQ(lists(), "database: 1; database: 1; database: 1");
}

TEST_F(UnlistedRecordTest, TheFirstAnswerAfterTheAcceptanceDecidesOnARecordAddedHere) {
    store("offline", 1, 2);
    addHere("NEW_000000001", "A");
    answer({"2", "1"}, R"("more_records":true)");
    network->beforeAnswer = [&] { accept("NEW_000000001", "40"); };
    auto anew = page("offline", {}, {}, DataSource::network);
    EXPECT_EQ(ask(anew), "network: 40 2 1+") << "the request was made before the acceptance";
    network->beforeAnswer = [] {};
    answer({"0"}, R"("more_records":true)");
    EXPECT_EQ(ask(page("offline")), "database: 40 2 1+ | network: 40 2 1 0+") << "the rest of the list";
    answer({"2"}, R"("more_records":true)");
    EXPECT_EQ(ask(anew), "network: 2+") << "the beginning of the list takes the place of what was stored";
    addHere("NEW_000000001", "A");
    accept("NEW_000000001", "50");
    answer({"50"}, R"("more_records":false)");
    EXPECT_EQ(ask(anew), "network: 50");
    EXPECT_EQ(mapped("offline"), 1);
}

TEST_F(UnlistedRecordTest, ARecordAddedHereNeverCountsAsHeld) {
    using enum DataSource;
    const std::tuple<int, GetListFilterRecordsParams, const char*, const char*> cases[] = {
        {3, page("offline", 0, 3), "not asked", "database: NEW_000000001 3 2+"},
        {2, page("offline", 0, 3), "2/1000", "database: NEW_000000001 2 1+ | network: NEW_000000001 9001 2"},
        {3, page("offline", 3, 3), "3/1000", "database: 1+ | network: 2 1"},
        {2, page("offline", 0, 9), "2/1000", "database: NEW_000000001 2 1+ | network: NEW_000000001 9001 2 1"},
        {1, page("offline", {}, {}, either), "not asked", "database: NEW_000000001 1+"},
        {0, page("offline", {}, {}, either), "0/200", "database: NEW_000000001+ | network: NEW_000000001 9001"},
        {3, ofCompany("mine", page("offline", 0, 1)), "3/1000", "database: NEW_000000001+ | network: NEW_000000001"}};
    addHere("NEW_000000001", "mine");
    for (auto& [held, page, asked, answers] : cases) {
        SCOPED_TRACE(std::to_string(held) + " held, " + answers);
        adapter().deleteObjects("LeadsRecords", Criteria::notEqualTo("id", "NEW_000000001"));
        map->delete_("offline", "Leads");
        store("offline", 1, held);
        settings->setListFilterHasMoreRecord(true, "Leads", "offline");
        useNetwork();
        answer({"9001"}, R"("more_records":false)");
        EXPECT_EQ(ask(page), answers);
        EXPECT_EQ(takeCounts(), asked);
    }
}

}  // namespace
}  // namespace tarvo
