#include "platform/Text.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class MetadataTests : public RunningSandbox {
protected:
    Value ask(const std::string& modules, const std::string& path = "/crm/v5/getmetadatainfo") {
        return json(client->post(path, {{"profileid", "123"}, {"module", modules}}, token));
    }
    ValueList entries(const Value& answer) {
        auto result = at(at(answer, "response"), "result");
        return result.asList() ? *result.asList() : ValueList();
    }
    /// The names of all modules as the parameter of the call.
    std::string allModules() {
        ValueList names;
        for (const auto& row : block(json(init()), "activeModules")) names.push_back(row.asList()->at(0));
        return json::write(names).value_or("");
    }
    static std::string cell(const Value& row, std::size_t index) { return row.asList()->at(index).textOr("?"); }
    static const ValueList& section(const Value& entry, std::size_t index) {
        static const ValueList none;
        const auto* sections = at(entry, "data").asList();
        return sections && index < sections->size() && sections->at(index).asList() ? *sections->at(index).asList()
                                                                                    : none;
    }
};

TEST_F(MetadataTests, RowsOfEverySectionHaveTheirWidthAndBelongTogether) {
    auto all = entries(ask(allModules()));
    ASSERT_GE(all.size(), 19u);
    constexpr std::size_t widths[] = {7, 5, 13, 9, 0, 18, 18};
    std::set<std::string> types, fieldIds;
    for (const auto& entry : all) {
        auto module = at(at(entry, "info"), "module").textOr("");
        for (std::size_t i = 0; i < std::size(widths); ++i)
            for (const auto& row : section(entry, i))
                EXPECT_TRUE(widths[i] == 0 || row.asList()->size() == widths[i]) << module << " section " << i;
        std::set<std::string> own;
        for (const auto& row : section(entry, 5)) {
            EXPECT_EQ(cell(row, 2), module);
            EXPECT_TRUE(own.insert(cell(row, 0)).second);
            EXPECT_TRUE(fieldIds.insert(cell(row, 0)).second) << "ids are the server's";
            EXPECT_TRUE(row.asList()->at(17).asMap() || row.asList()->at(17).asList());
            types.insert(cell(row, 5));
        }
        std::set<std::string> layouts;
        for (const auto& row : section(entry, 1)) layouts.insert(cell(row, 1));
        EXPECT_FALSE(layouts.empty()) << module;
        for (const auto& row : section(entry, 2)) {
            EXPECT_TRUE(layouts.count(cell(row, 0)) && own.count(cell(row, 1))) << module;
            EXPECT_TRUE(row.asList()->at(12).asMap());
        }
        for (const auto& row : section(entry, 3))
            EXPECT_TRUE(layouts.count(cell(row, 6)) && own.count(cell(row, 2))) << module;
        EXPECT_EQ(section(entry, 4).size(), 2u);
        for (const auto& row : section(entry, 6)) EXPECT_NE(cell(row, 2), module);
    }
    constexpr std::string_view known =
        "autonumber,bigint,boolean,currency,date,datetime,decimal,double,email,fileupload,formula,"
        "event_reminder,integer,lookup,multiselectpicklist,multiselectlookup,ownerlookup,phone,picklist,"
        "text,textarea,userlookup,website,activityType,,RRULE,ALARM,consent_lookup,profileimage,subform,"
        "event_participant, - ";
    for (const auto& type : text::split(known, ",")) EXPECT_TRUE(types.count(type)) << type;
}

TEST_F(MetadataTests, LookupsKnowTheListThatTheyFill) {
    auto all = entries(ask(R"(["Contacts","Accounts"])"));
    ASSERT_EQ(all.size(), 2u);
    std::string list, field;
    for (const auto& row : section(all[1], 0))
        if (cell(row, 0) == "Contacts") list = cell(row, 2);
    for (const auto& row : section(all[0], 5))
        if (cell(row, 1) == "Account_Name") field = cell(row, 14);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(field, list);
}

TEST_F(MetadataTests, UnknownModulesFailAlone) {
    auto all = entries(ask(R"(["None","Calls"])"));
    ASSERT_EQ(all.size(), 2u);
    EXPECT_TRUE(at(all[0], "error").asList());
    EXPECT_FALSE(section(all[1], 5).empty());
    EXPECT_TRUE(entries(ask("")).empty());
}

}  // namespace
}  // namespace tarvo::sandbox::tests
