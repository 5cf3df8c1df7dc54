#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/sql/SortDescriptorUtil.h"
#include "tarvobase/records/sql/SortFieldToSortDescriptor.h"
#include "tarvobase/value_objects/view/CustomView.h"
#include "tests/tarvobase/records/sql/FilterFixture.h"

namespace tarvo {
namespace {

class FilterSortTest : public FilterTest {
protected:
    void SetUp() override {
        FilterTest::SetUp();
        picklists = picklistOf({"Open", "O'Brien's", "Won"});
        use(FieldIdentifier::fieldAPINameIdentifier());
    }
    std::string sorted(const std::string& column, bool isAscending) {
        return idsWhere("", SortFieldToSortDescriptor::sortDescriptor({{column, isAscending}}, fields));
    }
    /// Returns the ids in the order of a list with sections.
    std::string sectioned(const std::string& column, bool isAscending) {
        ModuleInfo module;
        module.module.moduleName = "Leads";
        module.metadata = fields;
        module.settings = settings;
        auto [columns, order] = SortDescriptorUtil::getSortList(module, {{column, isAscending}}, adapter);
        if (order.empty()) return "no order";
        std::vector<std::string> selected;
        for (auto& column : columns) selected.push_back(column.sql());
        return idsWhere("", order, selected);
    }
    void storeRows(std::vector<ValueMap> rows) {
        adapter->deleteAllObjects("LeadsRecords");
        for (std::size_t i = 0; i < rows.size(); ++i) rows[i].set("id", std::to_string(i + 1));
        adapter->insertInto("LeadsRecords", rows);
    }

    SettingsList settings;
};

TEST_F(FilterSortTest, PicklistsSortByTheOrderOfTheirValuesAndNullsComeLast) {
    store("Status", {nullptr, "Won", "unknown b", "O'Brien's", "open", "unknown a"});
    EXPECT_EQ(sorted("Status", true), "5 4 2 6 3 1");
    EXPECT_EQ(sorted("Status", false), "2 4 5 3 6 1");
    picklists.clear();
    use(FieldIdentifier::fieldAPINameIdentifier());
    store("Status", {"b", "a", "C"});
    EXPECT_EQ(sorted("Status", true), "2 1 3") << "without values they sort as texts";
}

TEST_F(FilterSortTest, ColumnsSortByTheirTypes) {
    storeRows({{{"Account_Name", "1"}, {"Account_Name_LOOKUP", "b"}, {"Amount", "9"}, {"$status", "b"}},
               {{"Account_Name", "2"}, {"Account_Name_LOOKUP", "A"}, {"Amount", "10"}, {"$status", "C"}},
               {{"Account_Name", "0"}, {"Account_Name_LOOKUP", "c"}, {"Amount", "2"}, {"$status", "a"}}});
    EXPECT_EQ(sorted("Account_Name", true), "2 1 3");
    EXPECT_EQ(sorted("Amount", true), "3 1 2");
    EXPECT_EQ(sorted("Amount", false), "2 1 3");
    EXPECT_EQ(sorted("$status", false), "2 1 3");
}

TEST_F(FilterSortTest, ColumnsWithoutAFieldAreLoggedAndSkipped) {
    EXPECT_TRUE(SortFieldToSortDescriptor::sortDescriptor({{"Missing", true}}, fields).empty());
    EXPECT_TRUE(wasLogged("no field for the sort column Missing of Leads"));
    EXPECT_EQ(sectioned("Missing", true), "no order");
}

TEST_F(FilterSortTest, AmountsCompareInTheBaseCurrency) {
    storeRows({{{"Amount", "100"}, {"Exchange_Rate", "1"}},
               {{"Amount", "150"}, {"Exchange_Rate", "2"}},
               {{"Amount", "90"}, {"Exchange_Rate", nullptr}},
               {{"Amount", "33.5"}, {"Exchange_Rate", "0.25"}},
               {{"Amount", "20"}, {"Exchange_Rate", "0"}}});
    EXPECT_EQ(sectioned("Amount", true), "5 2 3 1 4");
    EXPECT_EQ(sectioned("Amount", false), "4 1 3 2 5");
}

TEST_F(FilterSortTest, SectionsOfFullNamesFollowTheOrderOfTheirParts) {
    storeRows({{{"First_Name", "Zoe"}, {"Last_Name", "Adams"}},
               {{"First_Name", "Ann"}, {"Last_Name", "Young"}},
               {{"First_Name", "ann"}, {"Last_Name", "adams"}}});
    EXPECT_EQ(sectioned("Full_Name", true), "3 1 2");
    settings.settingsList = {{.moduleName = "Leads",
                              .settingsKey = SettingName::sortOrderPreference,
                              .customSettings = "First Name,Last Name"}};
    EXPECT_EQ(sectioned("Full_Name", true), "3 2 1");
    EXPECT_EQ(sectioned("Full_Name", false), "1 2 3");
}

TEST_F(FilterSortTest, SectionsOfLookupsTimesAndNames) {
    storeRows({{{"Last_Name", "Adams"}, {"Owner_LOOKUP", "b"}, {"Created_Time", 3}},
               {{"Last_Name", "Young"}, {"Owner_LOOKUP", "C"}, {"Created_Time", 20}},
               {{"Last_Name", "adams"}, {"Owner_LOOKUP", "a"}, {"Created_Time", 100}}});
    EXPECT_EQ(sectioned("Owner", true), "3 1 2");
    EXPECT_EQ(sectioned("Created_Time", false), "3 2 1");
    EXPECT_EQ(sectioned("Last_Name", false), "2 1 3");
}

TEST_F(FilterSortTest, SectionNamesOfPeopleComeFromTheirPartsWhereTheTableHasThem) {
    adapter->dropTable("LeadsRecords");
    adapter->createTable(
        "CREATE TABLE LeadsRecords (id TEXT, Owner TEXT, Owner_LOOKUP, Owner_FIRSTNAME, Owner_LASTNAME)");
    storeRows(
        {{{"Owner_LOOKUP", "a"}, {"Owner_FIRSTNAME", "Zoe"}}, {{"Owner_LOOKUP", "b"}, {"Owner_LASTNAME", "Ann"}}});
    EXPECT_EQ(sectioned("Owner", true), "2 1");
}

TEST_F(FilterSortTest, ParentsSortByTheirDisplayTextAndNotByTheirId) {
    for (auto naming : {FieldIdentifier::fieldAPINameIdentifier(), FieldIdentifier::crmColumnNameIdentifier()})
        for (bool hasText : {true, false}) {
            configuration().fieldIdentifier = naming;
            FieldMetadata parent;
            parent.fieldAPIName = "Parent_Id", parent.columnCRMName = "SEID", parent.fieldType = FieldDataType::text;
            fields = FieldList("Leads", {parent}, {}, naming);
            auto column = fields.identifierOf(parent), id = std::string(naming.constant->id);
            auto text = hasText ? column + "_LOOKUP" : "unused";
            adapter->dropTable("LeadsRecords");
            adapter->createTable("CREATE TABLE LeadsRecords (" + id + ", " + column + ", " + text + ")");
            for (auto& [recordId, parentId, shown] : {std::tuple("1", "30", "a"), {"2", "10", "c"}, {"3", "20", "b"}})
                adapter->insertInto("LeadsRecords", {{id, recordId}, {column, parentId}, {text, shown}});
            EXPECT_EQ(sectioned(column, true), hasText ? "1 3 2" : "2 3 1");
        }
}

TEST_F(FilterSortTest, ViewsSortByTheSecondFieldOfASharedColumn) {
    for (auto naming : {FieldIdentifier::fieldAPINameIdentifier(), FieldIdentifier::crmColumnNameIdentifier()}) {
        FieldMetadata task, event;
        task.fieldAPIName = "Subject", event.fieldAPIName = "Event_Title";
        task.columnCRMName = event.columnCRMName = "SUBJECT";
        FieldList shared("Activities", {task, event}, {}, naming);
        CustomView view;
        view.sortBy = "Event_Title", view.sortOrder = "asc";
        EXPECT_EQ(view.sortFieldList(shared).front(), (SortField{shared.identifierOf(event), true}));
    }
}

TEST_F(FilterSortTest, ViewsSortByTheirFieldAndThenByTheDefault) {
    const SortField newest{"ID", false};
    const std::tuple<const char*, const char*, std::vector<SortField>> cases[] = {
        {"Company", "asc", {{"COMPANY", true}, newest}},
        {"Company", "desc", {{"COMPANY", false}, newest}},
        {"Company", "null", {{"COMPANY", false}, newest}},
        {"COMPANY", "asc", {{"COMPANY", true}, newest}},
        {"id", "asc", {{"ID", true}}},
        {"null", "asc", {newest}},
        {"", "", {newest}},
        {"Missing", "asc", {newest}}};
    use(FieldIdentifier::crmColumnNameIdentifier());
    for (auto& [sortBy, sortOrder, list] : cases) {
        CustomView view;
        view.sortBy = sortBy, view.sortOrder = sortOrder;
        EXPECT_EQ(view.sortFieldList(fields), list) << sortBy << " " << sortOrder;
        EXPECT_EQ(view.sortField(fields).has_value(), list.size() == 2 || view.sortBy == "id");
        EXPECT_EQ(view.sortColumnMetadata(fields, true)->columnCRMName, list.front().column);
    }
    CustomView unsorted;
    unsorted.sortOrder = "null";
    EXPECT_EQ(unsorted.getSortOrder(false), std::nullopt);
    EXPECT_EQ(unsorted.getSortOrder(true), SortOrder::descending);
    EXPECT_EQ(unsorted.sortColumnMetadata(fields, false), nullptr);
}

}  // namespace
}  // namespace tarvo
