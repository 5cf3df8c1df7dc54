#include "tarvobase/storage/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/value_objects/MetadataModelFixture.h"

namespace tarvo {
namespace {

TEST_F(MetadataModelTest, AModeIsASetOfBitsAndDefaultsToDisplay) {
    const std::pair<std::string, int> cases[] = {{"5", 5}, {"", 1}, {"x", 1}, {"0", 0}, {"99999999999", 1}};
    for (auto& [mode, bits] : cases) EXPECT_EQ(FieldMetadata{.mode = mode}.displayMode(), DisplayMode{bits}) << mode;
    EXPECT_TRUE(DisplayMode{5}.contains(DisplayMode::create));
    EXPECT_FALSE(DisplayMode{5}.contains(DisplayMode::create | DisplayMode::edit));
}

TEST_F(MetadataModelTest, PeopleAreRecognisedByTypeTargetOrParent) {
    auto lookup = named("Tasks", "X", "x", FieldDataType::lookup);
    for (std::string target : {"Leads", "Accounts"}) {
        lookup.lookupModule = target;
        EXPECT_EQ(lookup.isLookupNameField(), target == "Leads");
    }
    EXPECT_TRUE(named("Tasks", "X", "x", FieldDataType::userLookup).isLookupNameField());
    for (auto& naming : {columnNaming(), apiNames()}) {
        configuration().fieldIdentifier = naming;
        EXPECT_TRUE(named("Notes", "SEID", "Parent_Id").isLookupNameField());
        EXPECT_FALSE(named("Notes", "OTHER", "Other").isLookupNameField());
    }
}

TEST_F(MetadataModelTest, FieldsAreFoundInBothNamings) {
    // Stored against the order of ids and names, which the indexes of the table follow.
    auto lane = named("Leads", "LANE", "Street"), code = named("Leads", "CODE", "Zip_Code");
    auto owner = named("Deals", "SMOWNERID", "Owner", FieldDataType::ownerlookup);
    lane.isMproxyMetadata = true;
    code.fieldLabel = "it's a label";
    code.displayPrefs = {{"subform", ValueList{"1", "x"}}};
    fields->storeFieldMetadata({lane, owner, code});

    EXPECT_EQ(fields->getFieldMetadata("Leads"), (std::vector{lane, code}));
    EXPECT_EQ(fields->getFieldMetadata(FieldDataType::ownerlookup), std::vector{owner});
    EXPECT_EQ(fields->getFieldMetadataByFieldAPIName("Leads", "Zip_Code"), code);
    EXPECT_EQ(fields->getFieldMetadataByCrmColumnName("Leads", "Zip_Code"), std::nullopt);
    EXPECT_EQ(columnsOf(*fields->getFieldMetadataByCrmColumnList("Leads", {"CODE", "LANE", "X"})),
              (std::vector<std::string>{"LANE", "CODE"}));
    EXPECT_EQ(columnsOf(*fields->getSortFieldList("Leads")), std::vector<std::string>{"CODE"});
    EXPECT_EQ(fields->getFieldMetadata("Nobody", std::nullopt, {}).error(), MetadataError::notFound);

    auto byModule = fields->getFieldMetadataByModuleNames({"Leads", "Deals", "Nobody"},
                                                          {{FieldColumnName::FieldAPIName, SortOrder::descending}});
    EXPECT_EQ(byModule->size(), 2u);
    EXPECT_EQ(byModule->at("Leads"), (std::vector{code, lane}));
    for (auto& [naming, identifier] : {std::pair(columnNaming(), "CODE"), std::pair(apiNames(), "Zip_Code")}) {
        configuration().fieldIdentifier = naming;
        EXPECT_EQ(fields->getFieldMetadata("Leads", std::vector<std::string>{identifier}, {}).value(),
                  std::vector{code});
    }
}

TEST_F(MetadataModelTest, ALengthSortsAsANumberAndAModulesNameIsEscaped) {
    auto one = named("O'Brien", "A", "a"), two = named("O'Brien", "B", "b");
    one.maxLength = 1000, two.maxLength = 90;
    fields->storeFieldMetadata({one, two});
    EXPECT_EQ(fields->getFieldMetadata("O'Brien", std::nullopt, {{FieldColumnName::MaxLength}}).value(),
              (std::vector{two, one}));
    EXPECT_EQ(fields->getSortFieldList("O'Brien"), (std::vector{one, two}));
    EXPECT_THAT(*fields->getSortFieldList("' or '1'='1"), IsEmpty());
}

TEST_F(MetadataModelTest, ADamagedFieldIsLeftOutAndTheOthersAreRead) {
    fields->storeFieldMetadata({named("Leads", "A", "a"), named("Leads", "B", "b"), named("Leads", "C", "c")});
    database->execute("UPDATE MODULE_SPECIFIC_METADATA SET field_type = 'hologram' WHERE crm_col_name = 'A'", {});
    database->execute(
        "UPDATE MODULE_SPECIFIC_METADATA SET additional_info = '{no json', max_length = 'long', "
        "is_unique = 1, field_label = NULL WHERE crm_col_name = 'B'",
        {});
    for (int round = 0; round < 2; ++round) {
        auto left = *fields->getFieldMetadata("Leads");
        ASSERT_EQ(columnsOf(left), (std::vector<std::string>{"B", "C"}));
        EXPECT_EQ(left[0].displayPrefs, ValueMap());
        EXPECT_EQ(left[0].maxLength, 0);
        EXPECT_FALSE(left[0].isUnique) << "only the text true counts";
        EXPECT_EQ(left[0].fieldLabel, "");
    }
    EXPECT_EQ(linesWith("cannot be read for their column field_type"), 1);
    EXPECT_EQ(linesWith("displayPrefs: "), 1);
    EXPECT_FALSE(wasLogged("hologram"));
}

/// A list of fields of deals in both namings. `copy` has the column of `stage`, and `text` the API name of `account`.
class FieldListTest : public MetadataModelTest {
protected:
    void SetUp() override {
        MetadataModelTest::SetUp();
        auto account = named("Deals", "ACCOUNTID", "Account_Name", FieldDataType::lookup);
        auto text = named("Deals", "ACCOUNTNAME", "Account_Name");
        auto copy = named("Deals", "STAGE", "Stage_Copy");
        stage = named("Deals", "STAGE", "Stage", FieldDataType::picklist);
        closing = named("Deals", "CLOSINGDATE", "Closing_Date", FieldDataType::date);
        stage.mode = "3", closing.mode = "1", account.mode = "7", text.mode = "0";
        std::vector fields{account, text, stage, copy, closing};
        byColumn = FieldList("Deals", fields, {won, lost}, columnNaming());
        byApi = FieldList("Deals", fields, {won, lost}, apiNames());
    }
    /// Runs the check for both lists, each while the other naming is in force.
    template <class Check>
    void forBothLists(Check&& check) {
        for (auto& list : {byColumn, byApi}) {
            configuration().fieldIdentifier = list.naming() == columnNaming() ? apiNames() : columnNaming();
            check(list);
        }
    }
    const PicklistMetadata won{
        .fieldActualValue = "Won", .fieldOptionalValue = "Gewonnen", .fieldAPIName = "Stage", .crmColumnName = "STAGE"};
    const PicklistMetadata lost{.fieldActualValue = "Lost", .fieldAPIName = "Stage", .crmColumnName = "STAGE"};
    FieldMetadata stage, closing;
    FieldList byColumn, byApi;
};

TEST_F(FieldListTest, KeepsTheFirstOfTwoFieldsWithOneIdentifier) {
    EXPECT_EQ(byColumn.orderedFields().keys(),
              (std::vector<std::string>{"ACCOUNTID", "ACCOUNTNAME", "STAGE", "CLOSINGDATE"}));
    EXPECT_EQ(byColumn.getField("STAGE")->fieldAPIName, "Stage");
    EXPECT_EQ(byApi.orderedFields().keys(),
              (std::vector<std::string>{"Account_Name", "Stage", "Stage_Copy", "Closing_Date"}));
    EXPECT_TRUE(byColumn.hasFields({"STAGE", "ACCOUNTID"}));
    EXPECT_FALSE(byColumn.hasFields({"STAGE", "Stage"}));
}

TEST_F(FieldListTest, SelectsFieldsAndPicklistsInTheNamingThatItWasBuiltWith) {
    forBothLists([&](const FieldList& list) {
        EXPECT_EQ(list.getFieldByApiName("Closing_Date")->columnCRMName, "CLOSINGDATE");
        EXPECT_EQ(list.getFieldByApiName("CLOSINGDATE"), nullptr);
        EXPECT_EQ(list.getAllLookupFields().size(), 1u);
        EXPECT_EQ(list.getAllDateAndDateTimeFields().size(), 1u);
        EXPECT_EQ(list.getAllFields(DisplayMode::edit).size(), 2u);
        EXPECT_EQ(list.getPicklist(stage), (std::vector{won, lost}));
        EXPECT_EQ(list.getPicklistByApiName("Stage").size(), 2u);
        EXPECT_THAT(list.getPicklist(closing), IsEmpty());
        EXPECT_EQ(list.getPicklistByActualValue(stage, "Lost")->fieldOptionalValue, "");
        EXPECT_EQ(list.getPicklistByDisplayValue(stage, "Gewonnen")->fieldActualValue, "Won");
        EXPECT_EQ(list.getPicklistByDisplayValue(stage, "Nobody"), nullptr);
    });
}

TEST_F(MetadataModelTest, PicklistsComeInTheOrderOfTheirPositions) {
    PicklistMetadataInDatabase picklists(configuration().databaseAdapter.get());
    auto value = [](const std::string& module, const std::string& layout, const std::string& actual, int position) {
        return PicklistMetadata{actual, "", "f", "Stage", "STAGE", module, layout, "", position};
    };
    picklists.storePicklistMetadata({value("Deals", "1", "A", 10), value("Deals", "1", "B", 9),
                                     value("Deals", "2", "C", 1), value("Quotes", "3", "D", 1)});
    auto actual = [](const auto& rows) {
        std::string values;
        for (auto& row : *rows) values += row.fieldActualValue;
        return values;
    };
    EXPECT_EQ(actual(picklists.getPicklistMetadataForModuleWith("Deals")), "CBA");
    EXPECT_EQ(actual(picklists.getPicklistMetadataForModuleWith("Deals", "1")), "BA");
    EXPECT_EQ(actual(picklists.getPicklist("Deals", "1", {Criteria::equalTo("field_actual_value", "A")})), "A");
    EXPECT_EQ(actual(picklists.getPicklistMetadataByCrmColumnList("Quotes", {"STAGE"})), "D");
    EXPECT_EQ(picklists.getPicklistMetadataByFieldID("f")->size(), 4u);
    auto byModule = picklists.getPicklistMetadataByModuleNames({"Deals", "Quotes", "Leads"});
    EXPECT_EQ(byModule->size(), 2u);
    EXPECT_EQ(actual(std::optional(byModule->at("Deals"))), "CBA");
    database->execute("UPDATE PICKLIST_METADATA SET field_actual_value = NULL WHERE layout_id = '1'", {});
    EXPECT_EQ(actual(picklists.getPicklistMetadataForModuleWith("Deals")), "C");
}

TEST_F(MetadataModelTest, InMemoryFiltersUseTheNamesOfMembers) {
    InMemoryObject<FieldMetadata> field(named("Leads", "LANE", "Street", FieldDataType::email));
    EXPECT_TRUE(field["fieldAPIName"].isEqual("Street"));
    EXPECT_TRUE(field["fieldType"].isEqual(FieldDataType::email));
    EXPECT_FALSE(field["fieldType"].isEqual("email"));
    EXPECT_TRUE(field["FieldAPIName"].isEqual(""));
    InMemoryObject<LayoutMetadata> place{LayoutMetadata({.layoutID = "1", .fieldPosition = 4}, field.value)};
    EXPECT_TRUE(place["columnCRMName"].isEqual("LANE"));
}

}  // namespace
}  // namespace tarvo
