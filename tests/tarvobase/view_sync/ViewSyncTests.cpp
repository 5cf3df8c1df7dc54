#include "platform/Clock.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CVObserver.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"
#include "tarvobase/view_sync/CVSync.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

/// Writes down how syncs end and what the bus reports.
class ViewSyncLog final : public CVSyncDelegate, public CVObserver {
public:
    void CVSyncDidComplete(const ModuleIdentifier& module) override {
        lines.push_back("complete " + module.rawValue());
    }
    void CVSyncFailed(const ModuleIdentifier& module) override { lines.push_back("failed " + module.rawValue()); }
    void customViewsChanged(const std::string& moduleName) override {
        EXPECT_TRUE(MainQueue::shared()->isCurrent());
        lines.push_back("changed " + moduleName);
    }
    std::string take() { return text::join(std::exchange(lines, {}), ", "); }
    std::vector<std::string> lines;
};

/// Returns a view as the server sends it.
std::string wireView(const std::string& id, bool isDefault = false, const std::string& sortBy = "null",
                     const std::string& status = "Open") {
    auto criteria = R"({"field":"Status","comparator":"equal","value":")" + status + R"("})";
    return R"([")" + id + R"(","View )" + id + R"(","View )" + id + R"(","s","Mine",")" +
           (isDefault ? "true" : "false") + R"(","true",null,null,["Company"],")" + sortBy + R"(","asc",)" + criteria +
           "]";
}
std::string entryOf(const std::vector<std::string>& views, const std::string& module = "Leads",
                    const std::string& more = "") {
    return R"({"info":{"module":")" + module + R"(","servertime":1)" + more + R"(},"data":[)" + text::join(views, ",") +
           "]}";
}
std::string viewsBody(const std::vector<std::string>& entries) {
    return R"({"response":{"result":[)" + text::join(entries, ",") + "]}}";
}

class ViewSyncTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        for (auto module : {"Leads", "Activities", "Tasks", "Calls"}) makeModule(module, {field(module, "Company")});
        adapter().createTable(customViewTable());
        adapter().createTable(
            "CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id, record, module_name, UNIQUE (cv_id, record))");
        network = std::make_shared<ScriptedNetworkAdapter>();
        auto service = std::make_shared<InitCustomViewNS>();
        service->setNetworkAdapter(network);
        sync = CVSync::make(CVSyncDatamanager::make(Stores::current(), service));
        sync->delegate = log;
        BrenNotificationCenter::shared().add<CVObserver>(log);
    }
    std::string run(const std::string& body, const std::string& module = "Leads") {
        network->answer(body);
        sync->sync(ModuleIdentifier::fromModuleName(module));
        settle();
        return log->take();
    }
    /// Syncs to a state that a test begins with.
    void begin(const std::vector<std::string>& views) {
        ASSERT_EQ(run(viewsBody({entryOf(views)})), "changed Leads, complete Leads");
    }
    /// Lists a record in a view, as a page that ends the list does.
    void list(const std::string& viewId) {
        ASSERT_TRUE(map().store(std::vector<std::string>{"10"}, viewId, "Leads"));
        settings().setListFilterHasMoreRecord(false, "Leads", viewId);
        settings().setListFilterRecordSyncTime(500, "Leads", viewId);
    }
    std::string stateOf(const std::string& viewId) {
        auto time = settings().getListFilterRecordSyncTime("Leads", viewId);
        return std::to_string(map().count(viewId, "Leads").value_or(-1)) +
               (settings().getListFilterHasMoreRecord("Leads", viewId) ? " more " : " all ") +
               (time ? std::to_string(*time) : "never");
    }
    /// Returns the views of a module in the server's order, with the default mark and the order of each.
    std::string views(const std::string& module = "Leads") {
        std::vector<std::string> all;
        auto stored = Stores::current().customViews()->getCustomViews(module);
        for (auto& view : stored.value_or(std::vector<CustomView>()))
            all.push_back(view.viewID + (view.isDefault ? "*" : "") +
                          (view.sortBy == "null" ? "" : " by " + view.sortBy + " " + view.sortOrder));
        return text::join(all, ", ");
    }
    CVRecordMapInDatabase map() { return CVRecordMapInDatabase(Stores::current().databaseAdapter()); }
    UserDefaultsUtil settings() { return Stores::current().userDefaultsUtil(); }

    std::shared_ptr<ScriptedNetworkAdapter> network;
    std::shared_ptr<CVSync> sync;
    std::shared_ptr<ViewSyncLog> log = std::make_shared<ViewSyncLog>();
};

TEST_F(ViewSyncTest, TheServersViewsReplaceTheStoredOnesBeneathTheUsersChoices) {
    begin({wireView("1", true), wireView("2"), wireView("3")});
    auto stored = Stores::current().customViews();
    ASSERT_TRUE(stored->setAsDefaultCustomView("2", "Leads"));
    ASSERT_TRUE(stored->updateSortfield({"Company", false}, "1", "Leads"));
    platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(1700000000)));
    begin({wireView("4"), wireView("1", true, "City"), wireView("2")});
    EXPECT_EQ(views(), "4, 1 by Company desc, 2*");
    EXPECT_EQ(settings().getListFilterLastUpdatedTime("Leads"), 1700000000);
    begin({wireView("1", true, "City")});
    EXPECT_EQ(views(), "1* by Company desc") << "the user's default view is gone";
    begin({wireView("1", true), wireView("2")});
    EXPECT_EQ(views(), "1 by Company desc, 2*") << "and has come back";
}

TEST_F(ViewSyncTest, OnlyListsOfTheSameViewsStay) {
    begin({wireView("1"), wireView("2"), wireView("3"), wireView("4"), wireView("5")});
    ASSERT_TRUE(Stores::current().customViews()->updateSortfield({"Company", false}, "5", "Leads"));
    for (auto id : {"1", "2", "3", "4", "5"}) list(id);
    begin({wireView("1"), wireView("2", false, "Company"), wireView("3", false, "null", "Won"),
           wireView("5", false, "City")});
    EXPECT_EQ(stateOf("1"), "1 all 500");
    EXPECT_EQ(stateOf("2"), "0 more 500") << "another order";
    EXPECT_EQ(stateOf("3"), "0 more 500") << "another condition";
    EXPECT_EQ(stateOf("4"), "0 more never") << "gone";
    EXPECT_EQ(stateOf("5"), "1 all 500") << "the user's order counts";
}

TEST_F(ViewSyncTest, WhatIsNoListOfViewsRemovesNothing) {
    begin({wireView("1"), wireView("2")});
    const std::pair<const char*, std::string> answers[] = {
        {"no JSON", "<html>"},
        {"no entry", viewsBody({})},
        {"a refusal", viewsBody({R"({"info":{"module":"Leads","servertime":1},"error":[{"code":"X"}]})"})},
        {"no rows", viewsBody({entryOf({})})},
        {"no row that reads", viewsBody({entryOf({R"(["9"])", "7"})})},
        {"another module", viewsBody({entryOf({wireView("9")}, "Deals")})},
        {"no data", viewsBody({R"({"info":{"module":"Leads","servertime":1}})"})},
    };
    for (auto& [what, body] : answers) {
        EXPECT_EQ(run(body), "failed Leads") << what;
        EXPECT_EQ(views(), "1, 2") << what;
    }
    network->fail(NetworkError::Kind::timeout);
    sync->sync(ModuleIdentifier::Case::leads);
    sync->sync(ModuleIdentifier::Case::deals);
    settle();
    EXPECT_THAT(log->lines, ::testing::UnorderedElementsAre("failed Leads", "failed Deals")) << "Deals is not stored";
    log->take();
    EXPECT_EQ(run(viewsBody({entryOf({}, "Leads", R"(,"nodata":true)")})), "changed Leads, complete Leads");
    EXPECT_EQ(views(), "");
}

TEST_F(ViewSyncTest, AnAnswerThatCannotBeStoredChangesNothing) {
    begin({wireView("1"), wireView("2")});
    for (auto id : {"1", "2"}) list(id);
    adapter().execute(
        "CREATE TRIGGER refuse BEFORE INSERT ON CUSTOM_VIEWS_METADATA WHEN NEW.view_id = '9' "
        "BEGIN SELECT RAISE(ABORT, 'refused'); END",
        std::nullopt);
    EXPECT_EQ(run(viewsBody({entryOf({wireView("1", true), wireView("9")})})), "failed Leads");
    EXPECT_EQ(views(), "1, 2");
    EXPECT_EQ(stateOf("2"), "1 all 500");
}

TEST_F(ViewSyncTest, OfTheActivitiesOnlyThoseWithViewsAreExchanged) {
    const auto ofKind = [](const std::string& id, const std::string& kind) {
        return R"([")" + id + R"(","V","V","s","Mine","false","true",null,null,[],"null","asc",)" +
               R"({"field":"Activity_Type","comparator":"equal","value":")" + kind + R"(","module":"Activities"}])";
    };
    EXPECT_EQ(run(viewsBody({entryOf({ofKind("1", "Calls"), ofKind("2", "Tasks")}, "Activities")}), "Activities"),
              "changed Activities, changed Calls, changed Tasks, complete Activities");
    EXPECT_EQ(views("Calls") + "; " + views("Tasks") + "; " + views("Activities"), "1; 2; 1, 2");
    EXPECT_EQ(run(viewsBody({entryOf({ofKind("3", "Calls")}, "Calls")}), "Calls"), "changed Calls, complete Calls");
    EXPECT_EQ(views("Calls") + "; " + views("Tasks"), "3; 2");
}

TEST_F(ViewSyncTest, CallsDuringASyncShareOneMoreAfterIt) {
    network->beforeAnswer = [&] {
        if (network->calls().size() > 1) return;
        for (int i = 0; i < 3; ++i) sync->dm->syncCV(ModuleIdentifier::Case::leads);
    };
    network->answer(viewsBody({entryOf({wireView("1")})}));
    EXPECT_EQ(run(viewsBody({entryOf({wireView("2")})})),
              "changed Leads, complete Leads, changed Leads, complete Leads, complete Leads, complete Leads");
    EXPECT_EQ(network->calls().size(), 2u);
    EXPECT_EQ(views(), "2");
}

}  // namespace
}  // namespace tarvo
