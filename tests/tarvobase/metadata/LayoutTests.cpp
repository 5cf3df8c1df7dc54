#include <gmock/gmock.h>

#include "tarvobase/get_metadata/GetLayoutMetadataUC.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/GetLayoutInfoDM.h"
#include "tarvobase/value_objects/account/UserInDatabase.h"
#include "tests/tarvobase/MetadataFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

/// Returns "[section]" for a header and the API name for a field.
Strings linesOf(const LinearLayoutFieldList& list) {
    Strings lines;
    for (auto& item : list.fields)
        lines.push_back(item.section() ? "[" + item.section()->name + "]" : item.metadata()->fieldAPIName);
    return lines;
}
Strings linesOf(const GroupedLayoutFieldList& list) {
    Strings lines;
    for (auto& section : list.sections) {
        lines.push_back("[" + section.name + "]");
        for (auto& row : section.fields) lines.push_back(row.fieldAPIName);
    }
    return lines;
}
/// Every test runs in both namings.
class LayoutTest : public MetadataTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        MetadataTest::SetUp();
        use(GetParam());
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = true;
    }

    /// Stores Leads with two sections. Their rows are stored out of order, and one row lacks its field.
    void storeLeads() {
        Strings names{"Zip_Code", "Last_Name", "City", "Company"};
        std::vector<FieldMetadata> fields;
        for (auto& name : names) fields.push_back(field("Leads", name));
        fields[2].mode = "1";  // shown only
        storeModule("Leads", fields);
        auto absent = field("Leads", "Not_Known");
        store(std::vector{place(fields[0], "1", "Address", 10, 2), place(fields[2], "1", "Address", 10, 2),
                          place(fields[3], "1", "Person", 2, 10), place(fields[1], "1", "Person", 2, 9),
                          place(absent, "1", "Person", 2, 1)});
    }

    FieldList fieldsOf(const std::string& module) {
        auto list =
            FieldListAssembler::getFieldListDM(configuration().databaseAdapter)->getFields(module, std::nullopt);
        EXPECT_TRUE(list.ok());
        return list ? *list : FieldList();
    }
    template <class T>
    T layout(const std::string& module, const std::string& id, std::optional<DisplayMode> mode = std::nullopt) {
        GetLayoutFieldListDM<T> manager(LayoutStores::over(configuration().databaseAdapter));
        return manager.getLayoutList(module, fieldsOf(module), mode).value().at(id);
    }
};

TEST_P(LayoutTest, EveryShapeHasTheRowsInOneOrderAndFindsThem) {
    storeLeads();
    Strings lines{"[Person]", "Last_Name", "Company", "[Address]", "City", "Zip_Code"};
    auto check = [&](const auto& list) {
        EXPECT_EQ(linesOf(list), lines);
        EXPECT_EQ(list.getField(identifier("City"))->fieldPosition, 2);
        EXPECT_EQ(list.getField("City of another naming"), nullptr);
        EXPECT_EQ(list.getSection("Address")->displayLabel, "Address label");
        EXPECT_EQ(list.getSection("Nowhere"), nullptr);
        EXPECT_EQ(list.getFieldsInSection("Address").size(), 2u);
    };
    check(layout<LinearLayoutFieldList>("Leads", "1"));
    check(layout<GroupedLayoutFieldList>("Leads", "1"));
    EXPECT_THAT(
        layout<OrderedLayoutFieldList>("Leads", "1").orderedFields.keys(),
        ElementsAre(identifier("Last_Name"), identifier("Company"), identifier("City"), identifier("Zip_Code")));
}

TEST_P(LayoutTest, AModeLeavesOutFieldsAndEmptySections) {
    storeLeads();
    auto fields = fieldsOf("Leads");
    store(std::vector{place(*fields.getField(identifier("City")), "2", "Address", 1, 1)});
    EXPECT_THAT(linesOf(layout<LinearLayoutFieldList>("Leads", "1", DisplayMode::edit)),
                ElementsAre("[Person]", "Last_Name", "Company", "[Address]", "Zip_Code"));
    EXPECT_EQ(layout<OrderedLayoutFieldList>("Leads", "2").orderedFields.count(), 1u);

    GetOrderedLayoutFieldListDM manager(LayoutStores::over(configuration().databaseAdapter));
    auto editable = manager.getLayoutList("Leads", fields, DisplayMode::edit | DisplayMode::create);
    EXPECT_FALSE(editable->contains("2"));
    EXPECT_TRUE(wasLogged("layout-metadata not found for `2"));
}

TEST_P(LayoutTest, TheFirstOfTwoRowsWithOneIdentifierIsFound) {
    auto first = field("Leads", "Name"), second = first;
    second.fieldID = "another";
    storeModule("Leads", {first, second});
    store(std::vector{place(second, "1", "B", 2, 1), place(first, "1", "A", 1, 1)});
    auto linear = layout<LinearLayoutFieldList>("Leads", "1");
    EXPECT_EQ(linear.fields.size(), 4u);
    EXPECT_EQ(linear.getField(identifier("Name"))->sectionName, "A");
}

TEST_P(LayoutTest, LookupsBringTheirModuleAndUsersTheirChoice) {
    auto account = field("Deals", "Account", FieldDataType::lookup),
         lost = field("Deals", "Lost", FieldDataType::lookup),
         owner = field("Deals", "Owner", FieldDataType::ownerlookup);
    account.lookupModule = "CustomModule7_Api";
    lost.lookupModule = "Nowhere";
    storeModule("Deals", {account, lost, owner});
    storeModule("CustomModule7", {field("CustomModule7", "Name")});
    store(std::vector{place(account, "1", "A", 1, 1), place(lost, "1", "A", 1, 2), place(owner, "1", "A", 1, 3)});
    User active, invited;
    active.id = "7", active.confirm = true;
    invited.id = "8";
    UserInDatabase("ACTIVE_USERS", configuration().databaseAdapter).storeUsers({active, invited});

    auto answer = run<GetLayoutMetadataUC>({"Deals", fieldsOf("Deals"), LayoutRequestType::sectioned});
    auto& rows = answer.response->layoutMetadata.sectioned()->at("1").at(1);
    auto found = rows[0].addData->lookup();
    EXPECT_EQ(found->modules.front()->moduleName, "CustomModule7");
    EXPECT_TRUE(found->fields.front()->hasField(identifier("Name")));
    auto missing = rows[1].addData->lookup();
    EXPECT_EQ(missing->modules.front(), std::nullopt);
    EXPECT_FALSE(missing->fields.front().has_value());
    EXPECT_TRUE(wasLogged("Un supported or new module found: Nowhere"));
    ASSERT_NE(rows[2].addData->ownerLookup()->users, nullptr);
    EXPECT_EQ(rows[2].addData->ownerLookup()->users->size(), 1u);
    EXPECT_FALSE(layout<OrderedLayoutFieldList>("Deals", "1").getField(identifier("Owner"))->addData.has_value());
}

TEST_P(LayoutTest, SubformsAndPicklistsComeWithTheLayout) {
    auto lines = subform("Quotes", "Lines", ValueList{"77", "QuotedLines_Api"}),
         broken = subform("Quotes", "Broken", ValueList{"77", "x", "y"}),
         stage = field("Quotes", "Stage", FieldDataType::picklist);
    storeModule("Quotes", {lines, broken, stage});
    storeModule("QuotedLines", {field("QuotedLines", "Amount")});
    storePicklist(stage, "1", {"Draft", "Sent"});
    storePicklist(stage, "2", {"Elsewhere"});
    auto lineRow = place(lines, "1", "Rows", 1, 1);
    lineRow.additionalInfo = ValueMap{{"subform_layout_id", "55"}, {"maximum_rows", "40"}, {"reorder_rows", true}};
    store(std::vector{lineRow, place(broken, "1", "Rows", 1, 2), place(stage, "1", "Rows", 1, 3)});

    auto list = layout<OrderedLayoutFieldList>("Quotes", "1");
    auto subform = list.getSubformMetadata(*list.getField(identifier("Lines")));
    ASSERT_NE(subform, nullptr);
    EXPECT_EQ(*subform, (SubformMetadata{"55", "QuotedLines", 40, true}));
    EXPECT_EQ(list.getSubformMetadata(*list.getField(identifier("Broken"))), nullptr);
    auto& values = list.getPicklist(*list.getField(identifier("Stage")));
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[1].fieldActualValue, "Sent");
}

TEST_P(LayoutTest, LayoutInfoLeavesOutLayoutsWithoutFields) {
    storeLeads();
    store(std::vector{place(field("Leads", "City"), "0", "Only", 1, 1)});
    for (auto id : {"1", "9", "0"}) storeLayout("Leads", id, false);
    auto manager = GetLayoutInfoDMA::getOrderedLayoutInfoDM(configuration().databaseAdapter);
    auto info = manager->getLayoutInfo("Leads", fieldsOf("Leads"), std::nullopt);
    EXPECT_THAT(info->orderedLayouts.keys(), ::testing::UnorderedElementsAre("1", "0"));
    EXPECT_EQ(info->getDefaultLayout(), nullptr);
    EXPECT_TRUE(wasLogged("metadadata not found for layout with id `9"));
}

INSTANTIATE_TEST_SUITE_P(Namings, LayoutTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& info) { return info.param == Naming::column ? "Column" : "Api"; });

}  // namespace
}  // namespace tarvo
