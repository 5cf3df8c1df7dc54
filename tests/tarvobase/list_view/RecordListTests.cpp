#include <random>

#include "tests/tarvobase/list_view/RecordListFixture.h"

namespace tarvo {
namespace {

TEST_F(RecordListTest, TheServerIsAskedForWhatAPageLacks) {
    using enum DataSource;
    const std::tuple<int, GetListFilterRecordsParams, bool, const char*, const char*> cases[] = {
        {0, page("offline"), true, "0/200", "network: 9001"},
        {150, page("offline"), true, "150/1000", "database: 150 records+ | network: 151 records"},
        {250, page("offline", 0, 200), true, "not asked", "database: 200 records+"},
        {250, page("offline"), true, "not asked", "database: 250 records+"},
        {250, page("offline", 200, 200), true, "250/1000", "database: 50 records+ | network: 51 records"},
        {3, page("offline"), false, "not asked", "database: 3 2 1"},
        {0, page("offline"), false, "not asked", "database: "},
        {3, page("offline", 1, 1), false, "not asked", "database: 2"},
        {3, page("offline", 1), false, "not asked", "database: 2 1"},
        {3, page("offline", 20001), true, "not asked", "database: "},
        {3, page("offline", 20000), true, "3/1000", "network: "},
        {3, page("offline", -1, 9'223'372'036'854'775'807), true, "3/1000", "database: 3 2 1+ | network: 9001 3 2 1"},
        {3, page("offline", {}, {}, database), true, "not asked", "database: 3 2 1+"},
        {3, page("offline", {}, {}, either), true, "not asked", "database: 3 2 1+"},
        {0, page("offline", {}, {}, either), true, "0/200", "network: 9001"},
        {3, page("offline", {}, {}, DataSource::network), true, "0/200", "network: 9001"},
        {3, page("offline", {}, {}, DataSource::network), false, "not asked", "database: 3 2 1"},
        {3, page("offline", {}, {}, none), true, "not asked", ""}};
    for (auto& [held, page, hasMore, asked, answers] : cases) {
        SCOPED_TRACE(std::to_string(held) + " held, " + answers);
        adapter().deleteAllObjects("LeadsRecords");
        map->delete_("offline", "Leads");
        store("offline", 1, held);
        settings->setListFilterHasMoreRecord(hasMore, "Leads", "offline");
        useNetwork();
        answer({"9001"}, R"("more_records":false)");
        EXPECT_EQ(ask(page), answers);
        EXPECT_EQ(takeCounts(), asked);
    }
}

TEST_F(RecordListTest, TheServerIsAskedInTheOrderOfTheView) {
    storeView("sorted", true, "Company", "desc");
    answer({"7", "8"}, R"("more_records":true,"servertime":1700000000123)");
    EXPECT_EQ(ask(page("sorted")), "network: 8 7+");
    EXPECT_EQ(settings->getListFilterRecordSyncTime("Leads", "sorted"), 1700000000123);
    EXPECT_FALSE(settings->getListFilterRecordSyncTime("Accounts", "sorted"));
    EXPECT_EQ(json::write(*network->calls().back().params),
              R"({"cvid":"sorted","module":"Leads","moduleAPI":"Leads_Api","cvName":"Name of sorted","count":0,)"
              R"("sort_by":"Company","sort_order":"desc","mcount":200})");
    // A view without a sort of its own is sorted newest first.
    answer({}, R"("nodata":true)");
    EXPECT_EQ(ask(page("offline")), "database: 8 7+ | network: ");
    EXPECT_FALSE(settings->getListFilterHasMoreRecord("Leads", "offline")) << "an answer without data ends the list";
    auto sent = *json::write(*network->calls().back().params);
    EXPECT_THAT(sent, ::testing::HasSubstr(R"("sort_by":"id","sort_order":"desc")"));
}

TEST_F(RecordListTest, TheFirstAnswerOfARunReplacesAnOnlineView) {
    store("online", 1, 3);
    settings->setListFilterHasMoreRecord(false, "Leads", "online");
    settings->setListFilterRecordSyncTime(5, "Leads", "online");
    // If the server does not answer, no rows are shown, but none of the former run is lost.
    network->fail(NetworkError::Kind::cannotConnect);
    EXPECT_EQ(ask(page("online")), "failure noNetwork");
    EXPECT_FALSE(settings->getListFilterRecordSyncTime("Leads", "online"));
    // The second request reads the stored rows and asks for the whole list anew.
    answer({"2", "7"}, R"("more_records":true)");
    EXPECT_EQ(ask(page("online")), "database: 3 2 1+ | network: 7 2+");
    EXPECT_EQ(takeCounts(), "0/200 0/200");
    // From then on the view is handled like any other, by every use case of the run.
    manager = std::make_shared<GetFilterRecordListDM>(manager->parts);
    answer({"9"}, R"("more_records":false)");
    EXPECT_EQ(ask(page("online")), "database: 7 2+ | network: 9 7 2");
    EXPECT_EQ(takeCounts(), "2/1000");
}

TEST_F(RecordListTest, AnUnusableAnswerFailsAndChangesNoRow) {
    store("offline", 1, 2);
    const std::pair<const char*, const char*> cases[] = {
        {"", "unusableAnswer"},
        {"{}", "unusableAnswer"},
        {R"({"error":[{"code":"X","message":"m"}]})", "refused"},
        {R"({"response":{"result":[]}})", "unusableAnswer"},
        {R"({"response":{"result":[{"info":{"more_records":false},"error":[{"code":"X"}]}]}})", "refused"},
        {R"({"response":{"result":[{"info":{"more_records":false},"data":{}}]}})", "unusableAnswer"}};
    for (auto& [body, reason] : cases) {
        network->answer(body);
        EXPECT_EQ(ask(page("offline")), "database: 2 1+ | failure " + std::string(reason)) << body;
    }
    EXPECT_FALSE(settings->getListFilterRecordSyncTime("Leads", "offline"));
}

TEST_F(RecordListTest, ARequestWithoutAnAnswerSaysWhy) {
    using enum NetworkError::Kind;
    for (auto& [kind, reason] : {std::pair(cannotConnect, "noNetwork"),
                                 {timeout, "noNetwork"},
                                 {notSent, "notSignedIn"},
                                 {outdated, "outdated"}}) {
        network->fail(kind);
        EXPECT_EQ(ask(page("offline")), "failure " + std::string(reason));
    }
}

TEST_F(RecordListTest, APageBeyondTheMapIsReachedWithoutAGap) {
    answer(ids(90300, 200), R"("more_records":true)");
    answer(ids(90100, 100), R"("more_records":true)");
    answer(ids(90000, 100), R"("more_records":false)");
    EXPECT_EQ(ask(page("offline", 298, 4)), "network: 90002 90001 90000 89999");
    EXPECT_EQ(takeCounts(), "0/200 200/1000 300/1000");
    EXPECT_EQ(ask(page("offline", 0, 2)), "database: 90300 90299");
    EXPECT_EQ(mapped("offline"), 400);
}

TEST_F(RecordListTest, ADroppedFirstPageLeavesNoGap) {
    network->fail(NetworkError::Kind::connectionLost);
    EXPECT_EQ(ask(page("offline", 0, 50)), "failure noNetwork");
    answer(ids(90000, 52), R"("more_records":false)");
    EXPECT_EQ(ask(page("offline", 50, 50)), "network: 89950 89949");
    EXPECT_EQ(takeCounts(), "0/200 0/200");
    EXPECT_EQ(ask(page("offline", 0, 1)), "database: 90000");
}

TEST_F(RecordListTest, AFilteredPageAsksForTheRestOfTheList) {
    store("offline", 1, 30);
    answer(ids(90000, 2), R"("more_records":false)");
    EXPECT_EQ(ask(ofCompany("of the server", page("offline"))), "network: 90000 89999");
    EXPECT_EQ(takeCounts(), "30/1000");
}

TEST_F(RecordListTest, AnAnswerForAListThatWasEmptiedIsNotMapped) {
    store("offline", 1, 3);
    answer({"9"}, R"("more_records":false)");
    network->beforeAnswer = [] {
        GetCustomViewsDataManager::current()->updateSortfield({"Company", true}, "offline", "Leads");
    };
    EXPECT_EQ(ask(page("offline")), "database: 3 2 1+ | network: 9 3 2 1+");
    EXPECT_EQ(mapped("offline"), 0);
    EXPECT_TRUE(settings->getListFilterHasMoreRecord("Leads", "offline"));
}

TEST_F(RecordListTest, APageThatCannotBeStoredLeavesTheListAsItWas) {
    adapter().dropTable("Leads_CUSTOM_VIEW_RECORDS");
    answer({"7", "8"}, R"("more_records":false,"servertime":1700000000123)");
    EXPECT_EQ(ask(page("offline")), "failure notStored");
    EXPECT_EQ(stored(), 0);
    EXPECT_TRUE(settings->getListFilterHasMoreRecord("Leads", "offline"));
    EXPECT_FALSE(settings->getListFilterRecordSyncTime("Leads", "offline"));
}

TEST_F(RecordListTest, ALocalReadDoesNotUseUpTheFirstRequestOfAnOnlineView) {
    store("online", 1, 3);
    settings->setListFilterHasMoreRecord(false, "Leads", "online");
    EXPECT_EQ(ask(page("online", {}, {}, DataSource::database)), "database: 3 2 1");
    answer({"7"}, R"("more_records":false)");
    EXPECT_EQ(ask(page("online")), "network: 7");
    EXPECT_EQ(mapped("online"), 1);
}

TEST_F(RecordListTest, AnOnlineViewThatAwaitsItsReplacementIsAskedForWhateverThePositionSays) {
    store("online", 1, 3);
    network->fail(NetworkError::Kind::cannotConnect);
    EXPECT_EQ(ask(page("online")), "failure noNetwork");
    settings->setListFilterHasMoreRecord(false, "Leads", "online");
    answer({"7"}, R"("more_records":false)");
    EXPECT_EQ(ask(page("online", 0, 2)), "database: 3 2 | network: 7");
    EXPECT_EQ(takeCounts(), "0/200 0/200");
}

TEST_F(RecordListTest, AReleasedDataManagerAnswersNoMore) {
    store("offline", 1, 2);
    network->beforeAnswer = [&] { manager.reset(); };
    std::string answers;
    manager->getRecordList(
        std::make_shared<const GetListFilterRecordsParams>(page("offline")),
        {[&](auto) { answers += "rows"; }, [&](auto) { answers += " more"; }, [&](auto) { answers += " failure"; }});
    settle();
    EXPECT_EQ(network->calls().size(), 1u);
    EXPECT_EQ(answers, "rows");
}

TEST_F(RecordListTest, PagesInAnyOrderAtOnceWithDroppedAnswersLeaveNoGap) {
    constexpr std::int64_t size = 1500;
    // The server's list has the ids from `size` down to 1. It drops every third request.
    network->respond = [&, requests = 0](const NetworkCall& call) mutable -> ScriptedNetworkAdapter::Answer {
        if (++requests % 3 == 0) return {"", NetworkError{NetworkError::Kind::connectionLost, "dropped"}};
        auto from = numberOf(call, "count"), count = std::clamp<std::int64_t>(size - from, 0, numberOf(call, "mcount"));
        bool isLast = from + count == size;
        return {bodyWith(ids(static_cast<int>(size - from), static_cast<int>(count)),
                         isLast ? R"("more_records":false)" : R"("more_records":true)")};
    };
    auto views = GetCustomViewsDataManager::current();
    std::mt19937 random(7);
    auto below = [&](std::int64_t limit) { return static_cast<std::int64_t>(random() % limit); };
    for (int round = 0; round < 25; ++round) {
        auto pages = 1 + below(3);
        for (std::int64_t i = 0; i < pages; ++i)
            UsecaseQueue::queue()->async([&, request = page("offline", below(size), 1 + below(250))] {
                manager->getRecordList(std::make_shared<const GetListFilterRecordsParams>(request),
                                       {[](auto) {}, [](auto) {}, [](auto) {}});
            });
        if (round % 10 == 9) views->updateSortfield({"id", false}, "offline", "Leads");
        settle();
        auto held = mapped("offline");
        auto gaps = adapter().count("Leads_CUSTOM_VIEW_RECORDS",
                                    Criteria::custom("CAST(record AS INTEGER) <= " + std::to_string(size - held)));
        ASSERT_EQ(gaps, 0) << "round " << round << ", " << held << " held";
        bool isWhole = !settings->getListFilterHasMoreRecord("Leads", "offline");
        ASSERT_TRUE(!isWhole || held == size) << held << " of " << size;
    }
}

TEST_F(RecordListTest, LongListsHaveTheRowsAndTheOrderOfShortOnes) {
    std::vector<ValueMap> rows;
    std::vector<std::string> ids;
    for (int i = 0; i < 3000; ++i) {
        auto number = i * 7919 % 3000;
        rows.push_back(
            {{"id", std::to_string(10000 + number)},
             {"Company", i % 5 ? Value((i % 2 ? "company " : "COMPANY ") + std::to_string(number % 40)) : Value()},
             {"Status", "Status " + std::to_string(i % 3)},
             {"Owner_LOOKUP", i % 7 ? Value("Owner " + std::to_string(number % 11)) : Value()},
             {"Amount", std::to_string(number % 50) + ".5"},
             {"Size", std::to_string(number % 100)}});
        if (i % 10) ids.push_back(std::to_string(10000 + number));
    }
    adapter().insertInto("LeadsRecords", rows);
    settings->setListFilterHasMoreRecord(false, "Leads", "offline");
    map->store(ids, "offline", "Leads");
    ASSERT_TRUE(map->hasMoreThan(2000, "offline", "Leads"));
    std::vector<std::string> unsynced{"10000", *rows.front().find("id")->asText()};
    auto info = *manager->parts.moduleInfoDatamanager->getModuleInfo("Leads");
    GetCVRecordsDBS orders(configuration().databaseAdapter.get(), map);
    for (std::string column : {"null", "Company", "Status", "Owner", "Amount", "Size", "id"})
        for (std::string order : {"asc", "desc"}) {
            SCOPED_TRACE(column + " " + order);
            adapter().deleteAllObjects("CUSTOM_VIEWS_METADATA");
            storeView("offline", true, column, order);
            auto view = *manager->parts.filterPersistence->getCustomView("offline", "Leads");
            auto expected = [&](std::vector<Criteria> conditions, std::optional<std::int64_t> from,
                                std::int64_t limit) {
                auto sort = orders.getCVSortDescriptor(view, info);
                FetchQuery query("LeadsRecords", Criteria::or_(std::move(conditions)));
                for (auto& column : sort.columns) query.columns.push_back(column.sql());
                query.columns.push_back("id");
                query.sortBy = sort.descriptors;
                query.offset = from;
                query.limit = limit;
                return idsOf(Record::fromRows(*adapter().fetchObjects(query), "Leads", info.metadata.naming()));
            };
            auto inMap = map->getFilterMappingCriteria("offline", "Leads");
            std::vector both{inMap, columnIn("id", unsynced)};
            // The first round runs without an index in this order, the second one with it.
            for (int round = 0; round < 2; ++round)
                for (std::int64_t from : {0, 1500, 2690}) {
                    auto request = page("offline", from, 20);
                    auto found = manager->parts.filterRecordDBS->getRecords(
                        {.filter = view, .moduleInfo = info, .request = request, .unsyncedCriteria = both.back()});
                    ASSERT_TRUE(found);
                    EXPECT_EQ(idsOf(*found), expected(both, from, 20));
                    settle();
                }
            auto last = manager->parts.filterRecordDBS->getLastRecord(view, info);
            ASSERT_TRUE(last);
            EXPECT_EQ(last->recordId(), expected({inMap}, 2699, 1));
            EXPECT_TRUE(last->hasColumn("Size"));
            auto indexes = adapter().fetchObjects(
                "SELECT name FROM sqlite_master WHERE type = 'index' AND name LIKE 'tarvo_order_%'", std::nullopt);
            EXPECT_EQ(indexes->size(), 1u);
        }
}

/// Leads that no map names, in both namings.
class EmptyMapTest : public RecordListTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        RecordListTest::SetUp();
        use(GetParam());
        makeTable();
        auto id = identifier("id"), company = identifier("Company"), status = identifier("Status");
        for (auto& [record, name, state] :
             {std::tuple("1", "Beta", "Open"), {"2", "Alpha", "Open"}, {"3", "Gamma", "Lost"}})
            adapter().insertInto("LeadsRecords", ValueMap{{id, record}, {company, name}, {status, state}});
        adapter().update("CUSTOM_VIEWS_METADATA",
                         {{"offline_query", "({0} = '{1}')"},
                          {"offline_query_replace_info", "Status\xE0\xAE\x83\xE0\xAF\x80Open"},
                          {"default_sort_by", "Company"}},
                         Criteria::notEqualTo("view_id", "all"));
        useNetwork();
    }
};

TEST_P(EmptyMapTest, TheViewsOwnConditionFindsStoredRecordsInItsOrder) {
    EXPECT_EQ(ask(page("offline", {}, {}, DataSource::database)), "database: 2 1+");
    EXPECT_EQ(ask(page("offline", 1, 1, DataSource::database)), "database: 1+");
    storeView("all", true);
    EXPECT_EQ(ask(page("all", {}, {}, DataSource::database)), "database: 3 2 1+");
}

TEST_P(EmptyMapTest, FoundRecordsDoNotCountAsHeld) {
    network->fail(NetworkError::Kind::cannotConnect);
    EXPECT_EQ(ask(page("offline", 0, 2)), "database: 2 1+ | failure noNetwork");
    EXPECT_EQ(takeCounts(), "0/200");
}

TEST_P(EmptyMapTest, AListThatTheServerCallsEmptyIsEmpty) {
    settings->setListFilterHasMoreRecord(false, "Leads", "offline");
    EXPECT_EQ(ask(page("offline")), "database: ");
}

TEST_P(EmptyMapTest, AMapWithARecordDecidesAlone) {
    map->store(std::vector<std::string>{"3"}, "offline", "Leads");
    EXPECT_EQ(ask(page("offline", {}, {}, DataSource::database)), "database: 3+");
}

TEST_P(EmptyMapTest, OnlyTheServerKnowsTheRecordsOfAnOnlineView) {
    EXPECT_EQ(ask(page("online", {}, {}, DataSource::database)), "database: ");
}

INSTANTIATE_TEST_SUITE_P(Namings, EmptyMapTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& info) { return info.param == Naming::column ? "Column" : "Api"; });

}  // namespace
}  // namespace tarvo
