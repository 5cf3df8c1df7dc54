#include <algorithm>
#include <set>

#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

/// Makes a call, waits for its end and returns its first line, which must be of this event.
Value answerTo(Process& host, const std::string& call, ValueMap request, std::string_view event = "done") {
    host.send(*json::write(ValueMap{{"id", 1}, {"call", call}, {"request", std::move(request)}}));
    auto first = host.line().value_or("");
    auto answer = json::parse(first).value_or(Value());
    EXPECT_EQ(member(answer, "event"), Value(event)) << call << " " << first;
    for (auto line = std::optional(first); line && !contains(*line, R"("event":"done")"); line = host.line()) {
    }
    return answer;
}

/// Returns the server's answer to a call about one module: records in the server's form, an empty list if there are
/// none.
Value recordsOf(EndToEnd& world, const std::string& path, const sandbox::tests::Client::Form& form) {
    auto answer = world.control->post(path, form, "Nimbra-oauthtoken token-of-42");
    auto body = json::parse(answer ? answer->body : "").value_or(Value());
    auto entries = member(member(body, "response"), "result");
    auto data = entries.asList() && !entries.asList()->empty() ? member(entries.asList()->front(), "data") : Value();
    return data.asList() ? data : Value(ValueList());
}

/// Returns the ids of records in the server's form or in the host's.
std::set<std::string> idsOf(const Value& records) {
    std::set<std::string> ids;
    if (!records.asList()) return {"absent"};
    for (auto& record : *records.asList()) {
        if (record.asMap()) ids.insert(member(record, "recordId").textOr(""));
        if (!record.asList()) continue;
        for (auto& entry : *record.asList())
            if (entry.asList()->front() == Value("id")) ids.insert((*entry.asList())[1].textOr(""));
    }
    return ids;
}

}  // namespace

TEST(Views, EveryViewFindsLocallyWhatTheServerFinds) {
    const std::pair<std::string, std::string> editions[] = {{"crm", "/crm/v4/products/"},
                                                            {"lumet", "/vestra/v4/products/"}};
    for (auto& [servlet, path] : editions) {
        EndToEnd world({"--records", "40"});
        auto host = world.host({"serve", "--servlet", servlet});
        answerTo(*host, "host.openDatabase", {});
        answerTo(*host, "host.appInit", {}, "delegate");
        answerTo(*host, "host.metadata", {});
        auto modules = member(member(answerTo(*host, "host.views", {}), "response"), "moduleNames");
        ASSERT_TRUE(modules.asList() && modules.asList()->size() > 20) << host->errors();
        std::size_t views = 0, onlineViews = 0;
        for (auto& name : *modules.asList()) {
            auto module = name.textOr("");
            auto all = recordsOf(world, path + "getrecords", {{"module", module}, {"moduleAPI", module}});
            answerTo(*host, "host.record.store", {{"moduleName", module}, {"data", all}});
            auto list = answerTo(*host, "GetCustomViewsUseCase.getCustomViews", {{"moduleName", module}}, "delegate");
            auto stored = member(member(list, "arguments"), "customViews");
            ASSERT_TRUE(stored.asList()) << module;
            for (auto& view : *stored.asList()) {
                bool isOffline = member(view, "isOfflineSupported") == Value(true);
                ++(isOffline ? views : onlineViews);
                if (!isOffline) continue;
                auto id = member(view, "viewID").textOr("");
                ValueMap query{{"moduleName", module}, {"cvId", id}, {"columnsToFetch", ValueList()}};
                auto local = answerTo(*host, "host.record.fetchList", std::move(query));
                auto served =
                    recordsOf(world, path + "getcvrecords", {{"module", module}, {"moduleAPI", module}, {"cvid", id}});
                EXPECT_EQ(idsOf(member(member(local, "response"), "records")), idsOf(served))
                    << servlet << " " << module << " " << member(view, "viewName").textOr("");
            }
        }
        EXPECT_GT(views, 100u);
        EXPECT_GT(onlineViews, 5u);
        host->closeInput();
        EXPECT_EQ(host->finish(), 0);
        for (auto complaint : {"no local condition", "left out", "not known to this version", "could not be read"})
            EXPECT_FALSE(contains(host->errors(), complaint)) << complaint;
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
             {"views", "Deals"}, {"filters", "Leads", "Nothing"}, {"filters", "Deals", "Stage"}, {"views", "None"}})
        expectRefusal(endOf(world.host(arguments)), 1, "");
}

}  // namespace tarvo::tests
