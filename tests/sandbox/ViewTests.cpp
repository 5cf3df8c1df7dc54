#include <algorithm>
#include <set>

#include "sandbox/data/ViewFilter.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class ViewTests : public RunningSandbox {
protected:
    Value ask(const std::string& call, const Client::Form& form = {}, const std::string& servlet = "crm") {
        return json(client->post("/" + servlet + "/v4/" + call, form, token));
    }
    static std::string text(const Value& row, std::size_t index) { return row.asList()->at(index).textOr("?"); }

    DataSet data{1, Accounts({{"42", token}, {"43", "other"}}), 60};

    /// Returns the records of the module for which the criteria hold.
    std::size_t count(const std::string& module, const Value& criteria, const std::string& account = "42") {
        ViewData view;
        view.module = module;
        view.criteria = criteria;
        ViewFilter filter(data, view, account, 1'767'225'600'000);
        std::size_t holds = 0;
        for (std::size_t i = 0; i < data.records->count(module); ++i)
            holds += filter.holds(data.records->at(module, i));
        return holds;
    }
    static Value leaf(const char* field, const char* comparator, Value value) {
        return ValueMap{{"field", field}, {"comparator", comparator}, {"value", std::move(value)}};
    }
};

TEST_F(ViewTests, EveryModuleHasOneDefaultAndEveryComparatorOccurs) {
    ValueList names;
    for (const auto& row : block(json(init()), "activeModules")) names.push_back(row.asList()->at(0));
    auto answer = ask("getcustomviewsinfo", {{"module", json::write(names).value_or("")}});
    std::set<std::string> comparators;
    auto collect = [&](auto&& self, const Value& node) -> void {
        if (node.asList())
            for (const auto& item : *node.asList()) self(self, item);
        comparators.insert(at(node, "comparator").textOr(""));
    };
    for (const auto& module : data.modules) {
        std::size_t defaults = 0;
        for (const auto& row : block(answer, module.name)) {
            auto shown = text(row, 2);
            bool isKind = module.name == "Tasks" || module.name == "Events" || module.name == "Calls";
            defaults +=
                isKind ? shown == "Open Tasks" || shown == "My Events" || shown == "My Calls" : text(row, 5) == "true";
            collect(collect, row.asList()->at(12));
        }
        EXPECT_EQ(defaults, module.hasOwnLists ? 1u : 0u) << module.name;
    }
    EXPECT_EQ(comparators.size(), 16u + 2 + 1) << "those of clients, those of the server, and none in a list";
    auto columns = [&](const char* servlet) {
        return *block(ask("getcustomviewsinfo", {{"moduleAPI", "Deals"}}, servlet), "Deals")
                    .at(0)
                    .asList()
                    ->at(9)
                    .asList();
    };
    EXPECT_EQ(columns("crm").at(0), Value("POTENTIALNAME"));
    EXPECT_EQ(columns("vestra").at(0), Value("Deal_Name"));
    EXPECT_TRUE(at(at(at(ask("getcustomviewsinfo", {{"module", "No"}}), "response"), "result").asList()->at(0), "error")
                    .asList());
}

TEST_F(ViewTests, TheServersOwnFormHasAPieceForEachHole) {
    auto rows = block(ask("getcustomviewsinfo", {{"module", "Leads"}}), "Leads");
    auto row = std::ranges::find_if(rows, [](const Value& each) { return text(each, 2) == "Commas in a List"; });
    ASSERT_NE(row, rows.end());
    EXPECT_EQ(text(*row, 7),
              "({0} = 'Cork, Ireland' or {2} = '{3}' or {4} = '\"Quoted\" ''Co'', Ltd.' or {6} = '{7}')");
    EXPECT_EQ(json::write(row->asList()->at(8)), R"(["City","","City","São Paulo","City","","City","Kraków"])");
}

}  // namespace
}  // namespace tarvo::sandbox::tests
