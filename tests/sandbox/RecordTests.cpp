#include "sandbox/data/DataSet.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class RecordTests : public RunningSandbox {
protected:
    Value ask(const std::string& call, const Client::Form& form) {
        return json(client->post("/crm/v4/products/" + call, form, token));
    }
    static Value info(const Value& answer, std::string_view name) { return at(at(entryOf(answer), "info"), name); }

    const Accounts accounts{std::vector<Account>{{"42", token}}};
    DataSet data{1, accounts, 250};

    std::string viewId(const std::string& module) {
        for (const auto& view : data.views)
            if (view.module == module && view.isDefault) return view.id;
        return "";
    }
};

TEST_F(RecordTests, UnknownThingsFailAlone) {
    auto leads = viewId("Leads"), deals = viewId("Deals");
    auto answer = ask("getcvrecords", {{"cvid", R"([")" + leads + R"(","1",")" + leads + R"(",")" + deals + R"("])"},
                                       {"module", R"(["Leads","None","Contacts","Deals"])"}});
    for (auto [index, works] : {std::pair(0u, true), {1u, false}, {2u, false}, {3u, true}}) {
        EXPECT_EQ(at(entryOf(answer, index), "error").asList() == nullptr, works) << index;
        EXPECT_EQ(at(entryOf(answer, index), "data").asList() != nullptr, works) << index;
    }
    EXPECT_TRUE(at(entryOf(ask("getrecords", {{"module", "Leads"}, {"count", "-1"}})), "error").asList());
    EXPECT_TRUE(at(entryOf(ask("getrecords", {{"module", "EventInvitees"}})), "error").asList());

    auto id = data.records->now().list("Cases").at(3)->id();
    for (auto [module, given, found] :
         {std::tuple("Cases", id, true), {"Cases", std::string("x"), false}, {"Leads", id, false}}) {
        answer = ask("getrecord", {{"module", module}, {"id", given}});
        EXPECT_EQ(info(answer, "nodata"), Value(!found));
        EXPECT_EQ(info(answer, "recordId"), Value(given));
        EXPECT_EQ(at(entryOf(answer), "data").asList()->size(), found ? 1u : 0u);
    }
}

TEST_F(RecordTests, AFaultMayTouchOneRecordOfAPage) {
    setFault(R"({"call":"products/getrecords","fault":"wrongTypes","blocks":["Leads"],"row":1,"level":3,"times":1})");
    auto records = at(entryOf(ask("getrecords", {{"module", "Leads"}})), "data");
    ASSERT_EQ(records.asList()->size(), 200u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(records.asList()->at(i).asList()->at(0).asList()->at(0).asText() == nullptr, i == 1) << i;
}

}  // namespace
}  // namespace tarvo::sandbox::tests
