#include <algorithm>

#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

Value member(const Value& json, std::string_view name) { return json.asMap() ? json.asMap()->valueOf(name) : Value(); }

/// Makes a call and gives its first line, which must be of this event.
Value answerTo(Process& host, const std::string& call, ValueMap request, std::string_view event = "done") {
    host.send(*json::write(ValueMap{{"id", 1}, {"call", call}, {"request", std::move(request)}}));
    auto line = host.line().value_or("");
    auto answer = json::parse(line).value_or(Value());
    EXPECT_EQ(member(answer, "event"), Value(event)) << call << " " << line;
    return answer;
}

}  // namespace

TEST(Views, EveryViewOfEveryModuleRunsOnTheLocalTables) {
    for (std::string servlet : {"crm", "lumet"}) {
        EndToEnd world;
        auto host = world.host({"serve", "--servlet", servlet});
        answerTo(*host, "host.openDatabase", {});
        answerTo(*host, "host.appInit", {}, "delegate");
        host->line();
        answerTo(*host, "host.metadata", {});
        auto modules = member(member(answerTo(*host, "host.views", {}), "response"), "moduleNames");
        ASSERT_TRUE(modules.asList() && modules.asList()->size() > 20) << host->errors();
        std::size_t views = 0, onlineViews = 0;
        for (auto& module : *modules.asList()) {
            auto list = answerTo(*host, "GetCustomViewsUseCase.getCustomViews", {{"moduleName", module}}, "delegate");
            auto stored = member(member(list, "arguments"), "customViews");
            ASSERT_TRUE(stored.asList()) << module.textOr("");
            for (auto& view : *stored.asList()) {
                bool isOffline = member(view, "isOfflineSupported") == Value(true);
                ++(isOffline ? views : onlineViews);
                if (!isOffline) continue;
                auto counted =
                    answerTo(*host, "host.record.count", {{"moduleName", module}, {"cvId", member(view, "viewID")}});
                EXPECT_EQ(member(member(counted, "response"), "count"), Value(0))
                    << servlet << " " << module.textOr("") << " " << member(view, "viewName").textOr("");
            }
        }
        EXPECT_GT(views, 100u);
        EXPECT_GT(onlineViews, 5u);
        host->closeInput();
        EXPECT_EQ(host->finish(), 0);
        EXPECT_FALSE(contains(host->errors(), "no local condition")) << "a view was not compiled";
    }
}

TEST(Views, CommandsListViewsAndFiltersAlsoWithoutTheServer) {
    EndToEnd world;
    auto views = endOf(world.host({"views", "Leads"}));
    ASSERT_EQ(views.status, 0) << views.errors;
    EXPECT_TRUE(views.output.starts_with("NAME ")) << views.output;
    EXPECT_TRUE(contains(views.output, "\nAll Open Leads ")) << views.output;
    auto filters = endOf(world.host({"filters", "Leads", "Created_Time"}));
    ASSERT_EQ(filters.status, 0) << filters.errors;
    EXPECT_TRUE(contains(filters.output, "number days|weeks|months\n")) << filters.output;

    world.stopServer();
    EXPECT_EQ(endOf(world.host({"views", "Leads"})).output, views.output);
    EXPECT_EQ(endOf(world.host({"filters", "Leads", "CREATEDTIME"})).output, filters.output);
    auto listed = json::parse(endOf(world.host({"views", "Leads", "--json"})).output).value_or(Value());
    auto list = member(listed, "views");
    ASSERT_TRUE(list.asList());
    auto isDefault = [](const Value& view) { return member(view, "isDefault") == Value(true); };
    EXPECT_EQ(std::count_if(list.asList()->begin(), list.asList()->end(), isDefault), 1);
    for (auto& arguments : std::vector<std::vector<std::string>>{
             {"views", "Deals"}, {"filters", "Leads", "Nothing"}, {"filters", "Deals", "Stage"}, {"views", "None"}}) {
        auto failed = endOf(world.host(arguments));
        EXPECT_EQ(failed.status, 1);
        EXPECT_TRUE(isOneLine(failed.errors)) << failed.errors;
    }
}

}  // namespace tarvo::tests
