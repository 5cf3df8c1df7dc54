#include "tests/sandbox/RunningSandbox.h"
#include "tests/sandbox/Sql.h"

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
    static std::string text(const Value& row, std::size_t index) { return row.asList()->at(index).textOr("?"); }
    /// What clients do with the tag columns that the activities bring along.
    static std::string withOneTagColumn(std::string statement) {
        const std::string tag = " , Tag TEXT COLLATE NOCASE";
        auto first = statement.find(tag);
        if (first == std::string::npos) return statement;
        for (auto next = statement.find(tag, first + 1); next != std::string::npos;
             next = statement.find(tag, first + 1))
            statement.erase(next, tag.size());
        return statement;
    }
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
            EXPECT_EQ(text(row, 2), module);
            EXPECT_TRUE(own.insert(text(row, 0)).second);
            EXPECT_TRUE(fieldIds.insert(text(row, 0)).second) << "ids are the server's";
            EXPECT_TRUE(row.asList()->at(17).asMap() || row.asList()->at(17).asList());
            types.insert(text(row, 5));
        }
        std::set<std::string> layouts;
        for (const auto& row : section(entry, 1)) layouts.insert(text(row, 1));
        EXPECT_FALSE(layouts.empty()) << module;
        for (const auto& row : section(entry, 2)) {
            EXPECT_TRUE(layouts.count(text(row, 0)) && own.count(text(row, 1))) << module;
            EXPECT_TRUE(row.asList()->at(12).asMap());
        }
        for (const auto& row : section(entry, 3))
            EXPECT_TRUE(layouts.count(text(row, 6)) && own.count(text(row, 2))) << module;
        EXPECT_EQ(section(entry, 4).size(), 2u);
        for (const auto& row : section(entry, 6)) EXPECT_NE(text(row, 2), module);
    }
    for (auto type : {"autonumber",
                      "bigint",
                      "boolean",
                      "currency",
                      "date",
                      "datetime",
                      "decimal",
                      "double",
                      "email",
                      "fileupload",
                      "formula",
                      "event_reminder",
                      "integer",
                      "lookup",
                      "multiselectpicklist",
                      "multiselectlookup",
                      "ownerlookup",
                      "phone",
                      "picklist",
                      "text",
                      "textarea",
                      "userlookup",
                      "website",
                      "activityType",
                      "",
                      "RRULE",
                      "ALARM",
                      "consent_lookup",
                      "profileimage",
                      "subform",
                      "event_participant",
                      " - "})
        EXPECT_TRUE(types.count(type)) << type;
}

TEST_F(MetadataTests, LookupsKnowTheListThatTheyFill) {
    auto all = entries(ask(R"(["Contacts","Accounts"])"));
    ASSERT_EQ(all.size(), 2u);
    std::string list, field;
    for (const auto& row : section(all[1], 0))
        if (text(row, 0) == "Contacts") list = text(row, 2);
    for (const auto& row : section(all[0], 5))
        if (text(row, 1) == "Account_Name") field = text(row, 14);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(field, list);
}

TEST_F(MetadataTests, LeadsHaveLayoutsThatDiffer) {
    auto leads = entries(ask("Leads")).at(0);
    std::map<std::string, std::vector<std::string>> sections;
    for (const auto& row : section(leads, 2)) {
        auto& names = sections[text(row, 0)];
        if (names.empty() || names.back() != text(row, 5)) names.push_back(text(row, 5));
    }
    ASSERT_EQ(section(leads, 1).size(), 3u);
    auto standard = sections[text(section(leads, 1)[0], 1)], partner = sections[text(section(leads, 1)[1], 1)];
    EXPECT_GT(standard.size(), partner.size());
    EXPECT_NE(std::vector(standard.begin(), standard.begin() + static_cast<std::ptrdiff_t>(partner.size())), partner);
    EXPECT_EQ(text(section(leads, 1)[2], 3), "false") << "one layout is closed to the profile";
}

TEST_F(MetadataTests, TableStatementsRunTwiceInBothNamings) {
    auto names = allModules();
    for (std::string path : {"/crm/v5/getmetadatainfo", "/vestra/v4/getmetadatainfo"}) {
        Sql sql;
        for (int round = 0; round < 2; ++round)
            for (const auto& entry : entries(ask(names, path)))
                for (const auto& table : *at(at(entry, "info"), "tables").asList())
                    for (auto key : {"query", "customViewTable", "relatedListTable", "lookupRecordsTable"}) {
                        auto statement = at(table, key).textOr("");
                        EXPECT_EQ(statement.find('|'), std::string::npos);
                        if (at(table, "module") == Value("Activities")) statement = withOneTagColumn(statement);
                        EXPECT_EQ(sql.run(statement), "") << statement;
                    }
        bool isColumn = path.starts_with("/crm");
        EXPECT_EQ(sql.number(std::string("SELECT COUNT(*) FROM LeadsRecords WHERE ") +
                             (isColumn ? "SMOWNERID_LOOKUP" : "Owner_LOOKUP") + " IS NULL"),
                  0);
        EXPECT_EQ(sql.number("SELECT COUNT(*) FROM Leads_CUSTOM_VIEW_RECORDS"), 0);
        EXPECT_EQ(sql.number("SELECT COUNT(*) FROM Events_RELATED_RECORDS"), 0);
        EXPECT_EQ(sql.run("INSERT INTO LeadsRecords (id) VALUES ('1')"), "");
        EXPECT_EQ(sql.run("CREATE TABLE s (id TEXT PRIMARY KEY REFERENCES LeadsRecords(ID) ON DELETE CASCADE)"), "");
        EXPECT_EQ(sql.run("PRAGMA foreign_keys = ON"), "");
        EXPECT_EQ(sql.run("INSERT INTO s VALUES ('1')"), "") << "search tables point at the key of the record table";
    }
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
