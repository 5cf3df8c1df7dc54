#include "platform/Text.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/list_view/GetCustomViewsUseCase.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CVObserver.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/sync/wire/CVSyncParser.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/records/sql/FilterFixture.h"

namespace tarvo {
namespace {

CustomView view(const std::string& module, const std::string& id, const std::string& name = "A view",
                bool isDefault = false) {
    CustomView view;
    view.moduleName = module, view.viewID = id, view.viewName = name, view.isDefault = isDefault;
    view.isOfflineSupported = true, view.offlineQuery = "({0} = '{1}')";
    view.sortBy = "null", view.sortOrder = "asc";
    return view;
}

std::string idsOf(const std::optional<std::vector<CustomView>>& views) {
    if (!views) return "absent";
    std::vector<std::string> ids;
    for (auto& view : *views) ids.push_back(view.viewID);
    std::sort(ids.begin(), ids.end());
    return text::join(ids, " ");
}
std::string idOf(const std::optional<CustomView>& view) { return view ? view->viewID : "none"; }

class Observer final : public CVObserver {
public:
    void customViewsChanged(const std::string& moduleName) override { changed = moduleName; }
    std::string changed;
};

class CustomViewTest : public FilterTest {
protected:
    void SetUp() override {
        FilterTest::SetUp();
        BrenNotificationCenter::shared().add<CVObserver>(observer);
        settings = std::make_shared<UserDefaultsUtil>(std::make_shared<BrenUserDefaults>());
        adapter->createTable(customViewTable());
        adapter->createTable(
            "CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id, record, module_name, UNIQUE (cv_id, record))");
    }
    std::shared_ptr<CustomViewInDatabase> table() { return std::make_shared<CustomViewInDatabase>(adapter); }

    const std::shared_ptr<Observer> observer = std::make_shared<Observer>();
    std::shared_ptr<UserDefaultsUtil> settings;
};

TEST_F(CustomViewTest, AViewComesBackFromItsTableInBothMappings) {
    auto full = view("Leads", "1", "All Open Leads", true);
    full.viewType = "public", full.viewDisplayName = "Offene Leads", full.isUserCustomView = true;
    full.offlineQueryReplaceInfo = "Company\xE0\xAE\x83\xE0\xAF\x80x", full.sortBy = "Company";
    full.lastModifiedTime = "17", full.listFields = "Company,Owner", full.mode = "m", full.viewOrder = "3";
    full.sectionID = "s", full.sectionDisplayName = "Mine";
    for (bool serverCriteria : {false, true}) {
        configuration().serverCVCriteria = serverCriteria;
        full.selectedColumnsQuery = serverCriteria ? "a query" : "";
        table()->storeCustomView(full);
        auto stored = table()->getCustomView("1", "Leads");
        ASSERT_TRUE(stored);
        EXPECT_EQ(*stored, full);
        auto row = *adapter->fetchAllObjects("CUSTOM_VIEWS_METADATA")->begin();
        EXPECT_EQ(row.find(serverCriteria ? "fields_in_criteria" : "offline_query_replace_info")->asText(),
                  full.offlineQueryReplaceInfo);
        EXPECT_EQ(row.find("is_default")->asText(), "true");
    }
    EXPECT_FALSE(wasLogged("has no column"));
}

TEST_F(CustomViewTest, ViewsComeInTheOrderInWhichTheyWereStored) {
    table()->storeCustomView({view("Leads", "7"), view("Leads", "3"), view("Leads", "5")});
    auto views = *table()->getCustomViews("Leads");
    EXPECT_EQ(views[0].viewID + views[1].viewID + views[2].viewID, "735");
    EXPECT_EQ(idOf(GetCustomViewsDataManager::current()->getDefaultCustomView("Leads")), "7")
        << "without a default the first view is used";
}

TEST_F(CustomViewTest, ViewsAreFoundByWhatTheyAre) {
    auto views = table();
    EXPECT_EQ(idsOf(views->getCustomViews("Leads")), "");
    auto all = view("Contacts", "7", "Every contact");
    all.offlineQuery.clear();
    views->storeCustomView({view("Leads", "1", "All Open Leads"), view("Leads", "2", "Unread Leads", true),
                            view("Leads", "3"), view("Contacts", "6"), all});
    EXPECT_EQ(idsOf(views->getCustomViews("Leads")), "1 2 3");
    EXPECT_EQ(views->getCustomViews("Leads", {CustomViewColumnName::ViewName})->front().viewID, "3");
    EXPECT_EQ(idsOf(views->getDefaultCustomViews()), "2");
    EXPECT_EQ(idOf(views->getCustomView("6", "Leads")), "none");
    EXPECT_EQ(idOf(views->getUnreadCustomView("Leads")), "2");
    EXPECT_EQ(idOf(views->getDefaultCustomView("Contacts")), "none");
    EXPECT_EQ(idOf(views->getAllViewCustomView("Leads")), "1");
    EXPECT_EQ(idOf(views->getAllViewCustomView("Contacts")), "7");
    EXPECT_EQ(idOf(views->getAllViewCustomView("Deals")), "none");
    views->removeCustomViews({"Leads", "Deals"});
    EXPECT_EQ(idsOf(views->getCustomViews("Leads")), "");
    EXPECT_EQ(idsOf(views->getCustomViews("Contacts")), "6 7");
    // Without a database reads return nullopt and writes do nothing.
    CustomViewInDatabase nowhere(nullptr);
    nowhere.storeCustomView(all);
    EXPECT_EQ(idsOf(nowhere.getCustomViews("Leads")), "absent");
}

TEST_F(CustomViewTest, AListKeepsTheLastOfEqualIds) {
    CustomViewList list({view("Leads", "1", "first"), view("Leads", "2", "b", true), view("Leads", "1", "last")});
    EXPECT_EQ(list["1"]->viewName, "last");
    EXPECT_EQ(list["3"], nullptr);
    EXPECT_EQ(list.default_()->viewID, "2");
    EXPECT_EQ(CustomViewList({view("Leads", "1")}).default_(), nullptr);
}

TEST_F(CustomViewTest, ANewDefaultReplacesTheOldOneAndNotifiesObservers) {
    table()->storeCustomView({view("Leads", "1", "All Open Leads"), view("Leads", "2")});
    auto useCase = std::make_shared<GetCustomViewsUseCase>();
    platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(1700000000)));
    for (auto id : {"2", "1"}) {
        useCase->setAsDefaultCustomView(id, "Leads");
        settle();
        EXPECT_EQ(std::exchange(observer->changed, ""), "Leads");
        EXPECT_EQ(idsOf(table()->getDefaultCustomViews()), id);
    }
    EXPECT_EQ(settings->getListFilterLastUpdatedTime("Leads"), 1700000000);
}

TEST_F(CustomViewTest, AMarkThatCannotMoveStays) {
    table()->storeCustomView({view("Leads", "1", "A", true), view("Leads", "2"), view("Contacts", "3")});
    EXPECT_FALSE(table()->setAsDefaultCustomView("9", "Leads"));
    EXPECT_FALSE(table()->setAsDefaultCustomView("3", "Leads"));
    EXPECT_EQ(idsOf(table()->getDefaultCustomViews()), "1");
    adapter->execute(
        "CREATE TRIGGER refuse BEFORE UPDATE ON CUSTOM_VIEWS_METADATA WHEN NEW.is_default = 'true' "
        "BEGIN SELECT RAISE(ABORT, 'refused'); END",
        std::nullopt);
    EXPECT_FALSE(table()->setAsDefaultCustomView("2", "Leads"));
    EXPECT_EQ(idsOf(table()->getDefaultCustomViews()), "1");
}

TEST_F(CustomViewTest, ANewOrderSendsTheNextListToTheServer) {
    CVRecordMapInDatabase map(adapter);
    std::vector<ValueMap> records{{{"id", "10"}}, {{"id", "11"}}, {{"name", "without an id"}}};
    map.store(records, "1", "Leads");
    map.store(records, "2", "Leads");
    map.delete_("2", {"10"}, "Leads");
    auto mapped = [&] { return adapter->count("Leads_CUSTOM_VIEW_RECORDS", std::nullopt).value(); };
    EXPECT_EQ(mapped(), 3);
    store("Company", ValueList(12, "x"));
    FetchQuery inView("LeadsRecords", map.getFilterMappingCriteria("1", "Leads"));
    EXPECT_EQ(adapter->fetchObjects(inView)->size(), 2u);

    table()->storeCustomView(view("Leads", "1"));
    settings->setListFilterHasMoreRecord(false, "Leads", "1");
    GetCustomViewsDataManager::current()->updateSortfield({"Company", false}, "1", "Leads");
    auto changed = table()->getCustomView("1", "Leads");
    EXPECT_EQ(changed->sortBy + " " + changed->sortOrder, "Company desc");
    EXPECT_EQ(mapped(), 1);
    EXPECT_TRUE(settings->getListFilterHasMoreRecord("Leads", "1"));
    // The view changes even without the map and the settings->
    GetCustomViewsDataManager(table(), nullptr, nullptr).updateSortfield({"Company", true}, "1", "Leads");
    EXPECT_EQ(table()->getCustomView("1", "Leads")->sortOrder, "asc");
}

TEST_F(CustomViewTest, AnOrderThatCannotBeStoredChangesNothing) {
    table()->storeCustomView(view("Leads", "1"));
    adapter->dropTable("Leads_CUSTOM_VIEW_RECORDS");
    GetCustomViewsDataManager::current()->updateSortfield({"Company", false}, "1", "Leads");
    settle();
    EXPECT_EQ(table()->getCustomView("1", "Leads")->sortBy, "null");
    EXPECT_EQ(observer->changed, "");
    EXPECT_TRUE(wasLogged("the order of view 1 could not be stored"));
}

/// Makes a row as the server sends it.
ValueList wireRow(const std::string& id, Value criteria) {
    ValueList columns{"A", "B"};
    return {id,        "View " + id, "Shown " + id,      "s1", "Mine", "true", "true", nullptr, nullptr, columns,
            "Company", "desc",       std::move(criteria)};
}
const ValueMap open{{"field", "Status"}, {"comparator", "equal"}, {"value", "Open"}};

class CVSyncParserTest : public FoundationTest {
protected:
    std::vector<CustomView> parse(const std::string& module, ValueList rows) {
        ParsedPermissionInfo info;
        info.moduleName = module;
        return CVSyncParser().parseResult(rows, info).value();
    }
};

TEST_F(CVSyncParserTest, RowsBecomeViews) {
    auto views = parse("Leads", {wireRow("1", open), wireRow("2", nullptr)});
    ASSERT_EQ(views.size(), 2u);
    auto& first = views[0];
    EXPECT_EQ(first.viewID + first.viewName + first.viewDisplayName + first.sectionID + first.sectionDisplayName,
              "1View 1Shown 1s1Mine");
    EXPECT_EQ(first.moduleName, "Leads");
    EXPECT_TRUE(first.isDefault && first.isOfflineSupported && !first.isUserCustomView);
    EXPECT_EQ(first.offlineQuery, "({0} = '{1}')");
    EXPECT_EQ(first.offlineQueryReplaceInfo, "Status\xE0\xAE\x83\xE0\xAF\x80Open");
    EXPECT_EQ(first.listFields + " " + first.sortBy + " " + first.sortOrder, "A,B Company desc");
    EXPECT_EQ(first.defaultSortBy, -1);
    EXPECT_EQ(views[1].offlineQuery + views[1].offlineQueryReplaceInfo, "");
}

TEST_F(CVSyncParserTest, ABadRowIsLeftOutAlone) {
    auto withoutValue = open, unknown = open;
    withoutValue.remove("value");
    unknown.set("comparator", "sounds_like");
    auto numberId = wireRow("5", open);
    numberId[0] = 5;
    auto views = parse("Leads", {wireRow("1", open), wireRow("2", withoutValue), ValueList{"3", "short"}, 4, numberId,
                                 wireRow("6", unknown), wireRow("7", open)});
    EXPECT_EQ(idsOf(views), "1 6 7");
    EXPECT_FALSE(views[1].isOfflineSupported);
    EXPECT_FALSE(views[1].offlineQuery.empty());
    EXPECT_TRUE(wasLogged("custom view \"View 2\" is left out"));
    EXPECT_TRUE(wasLogged("CustomViewOfflineQuery: CustomViewCriteria.value is nil"));
}

TEST_F(CVSyncParserTest, ViewsOfActivitiesAreStoredForEachModuleTheyName) {
    const ValueMap calls{
        {"field", "Activity_Type"}, {"comparator", "not_equal"}, {"value", "Calls"}, {"module", "Activities"}};
    auto row = wireRow("1", calls);
    row[2] = "Open Tasks";
    row[5] = "false";
    std::vector<std::string> found;
    for (auto& view : parse("Activities", {Value(row)})) found.push_back(view.moduleName + (view.isDefault ? "!" : ""));
    EXPECT_EQ(text::join(found, " "), "Events Tasks! Activities");
    EXPECT_EQ(parse("Activities", {Value(wireRow("2", open))}).size(), 1u);
}

TEST_F(CVSyncParserTest, TheServersOwnQueriesAreTaken) {
    configuration().serverCVCriteria = true;
    auto row = wireRow("1", open);
    row[7] = "({0} = '{1}')";
    row[8] = ValueList{"Status", "Open"};
    ValueList shortRow(row.begin(), row.begin() + 8), tooShort(row.begin(), row.begin() + 7);
    shortRow[0] = "2";
    auto views = parse("Leads", {row, shortRow, tooShort});
    ASSERT_EQ(views.size(), 2u);
    EXPECT_EQ(views[0].offlineQuery + views[0].offlineQueryReplaceInfo, "({0} = '{1}')Status,Open");
    EXPECT_EQ(views[1].offlineQueryReplaceInfo + views[1].listFields + views[1].sortBy, "");
}

}  // namespace
}  // namespace tarvo
