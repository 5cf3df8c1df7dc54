#include <algorithm>
#include <set>

#include "platform/Text.h"
#include "sandbox/data/DataSet.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class RecordTests : public RunningSandbox {
protected:
    Value ask(const std::string& call, const Client::Form& form) {
        return json(client->post("/crm/v4/products/" + call, form, token));
    }
    static Value entryOf(const Value& answer, std::size_t index = 0) {
        auto result = at(at(answer, "response"), "result");
        return result.asList() && index < result.asList()->size() ? result.asList()->at(index) : Value();
    }
    static Value info(const Value& answer, std::string_view name) { return at(at(entryOf(answer), "info"), name); }
    static Value valueOf(const Value& record, std::string_view name) {
        for (const auto& entry : *record.asList())
            if (entry.asList()->at(0) == Value(name)) return entry.asList()->at(1);
        return {};
    }
    static std::string textOf(const Value& record, std::string_view name) { return valueOf(record, name).textOr(""); }

    const Accounts accounts{std::vector<Account>{{"42", token}}};
    DataSet data{1, accounts, 250};
    std::set<std::string> rowIds;

    std::string viewId(const std::string& module) {
        for (const auto& view : data.views)
            if (view.module == module && view.isDefault) return view.id;
        return "";
    }
    /// Returns what is wrong with a value of the wire; empty when it is right.
    std::string fault(const FieldData& field, const Value& entry) {
        const auto& items = *entry.asList();
        const auto& value = items.at(1);
        if (value == Value("")) return items.size() == 2 ? "" : "shows something for nothing";
        auto text = value.textOr("");
        if (field.isLookup()) return items.size() == 3 ? pointsNowhere(field, text) : "a lookup without what is shown";
        if (field.type == "multiselectlookup") {
            for (const auto& id : *value.asList())
                if (auto wrong = pointsNowhere(field, id.textOr("")); !wrong.empty()) return wrong;
            return "";
        }
        if (field.type == "picklist" && std::none_of(field.picklist.begin(), field.picklist.end(),
                                                     [&](const PicklistValue& known) { return known.label == text; }))
            return "no value of the picklist";
        bool mayBeList = field.type.starts_with("multi") || field.type == "subform" || field.apiName == "Tag" ||
                         field.type == "event_participant" || field.apiName == "$attachments";
        return value.asText() || (value.asList() && mayBeList) ? "" : "another kind of value";
    }
    std::string pointsNowhere(const FieldData& field, const std::string& id) {
        if (field.type != "lookup" && field.type != "multiselectlookup") {
            for (const auto& user : data.users)
                if (user.id == id) return "";
            return "no user";
        }
        const auto* target = data.module(field.target);
        for (const auto& module : data.modules)
            if ((!target || target == &module) && data.records->find(module.name, id)) return "";
        return "no record";
    }
    /// A row has an id that no other row has, whatever module it lies below.
    void checkRowIds(const std::string& module, const ValueList& rows) {
        for (const auto& row : rows) {
            auto id = textOf(row, "id");
            EXPECT_TRUE(id.empty() || rowIds.insert(id).second) << "rows below " << module << " share the id " << id;
        }
    }
    void checkRecord(const std::string& module, const Value& record, std::set<std::string>& below) {
        std::set<std::string> names;
        const auto& metadata = data.metadata.find(module)->second;
        for (const auto& entry : *record.asList()) {
            auto name = entry.asList()->at(0).textOr("");
            EXPECT_TRUE(names.insert(name).second) << module << " " << name << " twice";
            auto field = std::find_if(metadata.fields.begin(), metadata.fields.end(),
                                      [&](const FieldData& each) { return each.apiName == name; });
            ASSERT_NE(field, metadata.fields.end()) << module << " has no " << name;
            EXPECT_EQ(fault(*field, entry), "") << module << " " << name;
            const auto* rows = entry.asList()->at(1).asList();
            if (!rows || rows->empty() || !rows->front().asList()) continue;
            below.insert(name);
            if (field->type == "subform" || field->type == "event_participant") checkRowIds(module, *rows);
        }
        EXPECT_TRUE(names.count("id")) << module;
    }
};

TEST_F(RecordTests, EveryValueFitsItsFieldAndPointsToWhatExists) {
    std::set<std::string> below;
    for (const auto& module : data.modules) {
        if (!module.hasOwnLists) continue;
        auto answer = ask("getrecords", {{"module", module.name}, {"mcount", "10000"}});
        auto records = at(entryOf(answer), "data");
        ASSERT_EQ(records.asList()->size(), module.name == "Activities" ? 750u : 250u) << module.name;
        std::set<std::string> ids;
        for (const auto& record : *records.asList()) {
            if (module.name != "Activities") checkRecord(module.name, record, below);
            EXPECT_TRUE(ids.insert(textOf(record, "id")).second);
        }
    }
    EXPECT_EQ(below, (std::set<std::string>{"Participants", "Product_Details", "Pricing_Details", "Comments",
                                            "Milestones", "Tag", "$attachments"}));
}

TEST_F(RecordTests, RecordsFollowFromSeedAndNumber) {
    auto written = [](const DataSet& set, std::size_t number) {
        std::string json;
        RecordValue scratch;
        set.records->at("Leads", number).write(json, scratch);
        return json;
    };
    DataSet again(1, accounts, 250), other(2, accounts, 250), none(1, accounts, 0);
    EXPECT_EQ(written(data, 200), written(again, 200));
    EXPECT_NE(written(data, 200), written(other, 200));
    EXPECT_GT(data.records->at("Leads", 7).value("Description").text.size(), 99'000u);
    EXPECT_EQ(none.records->count("Activities"), 0u);
    EXPECT_FALSE(none.records->find("Leads", data.records->at("Leads", 0).id()));
}

TEST_F(RecordTests, PagesOfAViewJoinToItsSortedList) {
    struct {
        const char *module, *sort, *order, *shownAs;
    } rows[] = {{"Leads", "COMPANY", "asc", "Company"},
                {"Leads", "Created_Time", "desc", "id"},
                {"Activities", "null", "desc", "id"},
                {"Deals", "", "", "id"}};
    for (const auto& row : rows) {
        ValueList joined;
        bool isAscending = std::string_view(row.order) == "asc", more = true;
        while (more) {
            auto answer = ask("getcvrecords", {{"cvid", viewId(row.module)},
                                               {"module", row.module},
                                               {"count", std::to_string(joined.size())},
                                               {"mcount", joined.empty() ? "" : "100"},
                                               {"sort_by", row.sort},
                                               {"sort_order", row.order}});
            auto page = at(entryOf(answer), "data");
            ASSERT_TRUE(page.asList() && !page.asList()->empty()) << row.module;
            EXPECT_EQ(page.asList()->size(), joined.empty() ? 200u : std::min<std::size_t>(100, page.asList()->size()));
            EXPECT_EQ(info(answer, "count").asInteger(), static_cast<std::int64_t>(page.asList()->size()));
            joined.insert(joined.end(), page.asList()->begin(), page.asList()->end());
            more = info(answer, "more_records") == Value(true);
        }
        EXPECT_EQ(joined.size(), data.records->count(row.module));
        for (std::size_t i = 1; i < joined.size(); ++i) {
            auto before = textOf(joined[i - 1], row.shownAs), after = textOf(joined[i], row.shownAs);
            before = text::asciiLowercase(before), after = text::asciiLowercase(after);
            EXPECT_TRUE(isAscending ? before <= after : before >= after) << row.sort << " " << before << " " << after;
        }
    }
}

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

    auto id = data.records->at("Cases", 3).id();
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
