#include "tarvobase/value_objects/layout/LayoutMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"
#include "tarvobase/value_objects/layout/SubformLayout.h"
#include "tests/tarvobase/value_objects/MetadataModelFixture.h"

namespace tarvo {
namespace {

class LayoutModelTest : public MetadataModelTest {
protected:
    void SetUp() override {
        MetadataModelTest::SetUp();
        layouts.emplace(database);
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = true;
    }
    static FieldList deals(const FieldIdentifier& naming = columnNaming()) {
        return {"Deals", {named("Deals", "STAGE", "Stage"), named("Deals", "AMOUNT", "Amount")}, {}, naming};
    }
    static LayoutFieldData place(const std::string& layout, const std::string& column, const std::string& apiName,
                                 int position = 0) {
        LayoutFieldData place{layout, "Deals" + column, apiName, column, "Deals", "deal", "Geschäft"};
        place.isSubformSection = place.mandatory = true;
        place.sectionSequence = 1, place.fieldPosition = position, place.defaultValue = "x";
        place.additionalInfo = ValueMap{{"maximum_rows", 3}};
        return place;
    }
    /// Over the open database.
    std::optional<LayoutMetadataInDatabase> layouts;
};

TEST_F(LayoutModelTest, ARowIsJoinedWithItsFieldInBothNamings) {
    layouts->storeLayoutMetadata(
        {place("1", "STAGE", "Stage", 10), place("1", "AMOUNT", "Amount", 9), place("1", "GONE", "Gone", 1)});
    for (auto& naming : {columnNaming(), apiNames()}) {
        auto rows = *layouts->getLayoutMetadata("Deals", deals(naming), {{LayoutFieldColumnName::fieldPosition}});
        ASSERT_THAT(columnsOf({rows.begin(), rows.end()}), ElementsAre("AMOUNT", "STAGE"));
        EXPECT_EQ(rows[1].fieldLabel, "label of Stage");
        EXPECT_EQ(rows[1].sectionDV, "Geschäft");
        EXPECT_EQ(rows[1].fieldPosition, 10);
        EXPECT_TRUE(rows[1].isSubformSection);
        EXPECT_EQ(rows[1].additionalInfo->valueOf("maximum_rows"), Value(3));
        layouts->storeLayoutMetadata(rows);
    }
    EXPECT_EQ(database->count("LAYOUT_SPECIFIC_METADATA", Criteria::equalTo("default_value", "x")), 3)
        << "stored again in their own rows";
}

TEST_F(LayoutModelTest, TwoColumnsFollowTheirSetting) {
    const std::pair<bool, bool> cases[] = {{false, true}, {true, false}, {true, true}};
    for (auto& [isWritten, isRead] : cases) {
        database->deleteAllObjects("LAYOUT_SPECIFIC_METADATA");
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = isWritten;
        layouts->storeLayoutMetadata(std::vector{place("1", "STAGE", "Stage")});
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = isRead;
        auto rows = *layouts->getLayoutMetadata("Deals", deals());
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_EQ(rows[0].isSubformSection, isWritten && isRead);
        EXPECT_EQ(rows[0].additionalInfo.has_value(), isWritten && isRead);
    }
}

TEST_F(LayoutModelTest, MandatoryIsReadLeniently) {
    const std::pair<std::string, bool> cases[] = {{"1", true},        {"'true'", true}, {"0", false},
                                                  {"'false'", false}, {"'1'", false},   {"NULL", false}};
    layouts->storeLayoutMetadata(std::vector{place("1", "STAGE", "Stage")});
    for (auto& [sql, isMandatory] : cases) {
        database->execute("UPDATE LAYOUT_SPECIFIC_METADATA SET mandatory = " + sql, std::nullopt);
        EXPECT_EQ(layouts->getLayoutMetadata("Deals", deals())->at(0).mandatory, isMandatory) << sql;
    }
}

TEST_F(LayoutModelTest, RowsAreGroupedByModuleAndByLayout) {
    auto quote = place("3", "STAGE", "Stage");
    quote.moduleName = "Quotes";
    layouts->storeLayoutMetadata({place("1", "STAGE", "Stage"), place("2", "AMOUNT", "Amount"), quote});
    FieldList quotes("Quotes", {named("Quotes", "STAGE", "Stage")}, {});
    auto byModule =
        *layouts->getLayoutMetadata(ModuleFieldsMap{{"Deals", deals()}, {"Quotes", quotes}, {"Leads", {}}}, {});
    EXPECT_EQ(byModule.size(), 2u);
    EXPECT_EQ(byModule["Deals"].size(), 2u);
    EXPECT_EQ(byModule["Quotes"].at(0).moduleName, "Quotes");

    auto byLayout = *layouts->getLayoutMetadatas({"1", "2", "3", "9"}, {{"Deals", deals()}});
    EXPECT_EQ(byLayout.size(), 2u);
    EXPECT_TRUE(wasLogged("moduleName or fields not found"));
    EXPECT_EQ(
        layouts->getLayoutMetadata({ModuleLayoutInfo{.layoutID = "2"}, ModuleLayoutInfo{.layoutID = "3"}}, deals())
            ->size(),
        1u);
    EXPECT_EQ(*layouts->getModuleNames({"1", "3", "9"}),
              (std::unordered_map<std::string, std::string>{{"1", "Deals"}, {"3", "Quotes"}}));
    EXPECT_EQ(layouts->getModuleName("3"), "Quotes");
    EXPECT_EQ(layouts->getModuleName("9"), std::nullopt);
}

TEST_F(MetadataModelTest, LayoutInfosAreFoundByModuleNameAndId) {
    ModuleLayoutInfoInDatabase infos("MODULE_LAYOUT_INFO", database);
    ModuleLayoutInfo standard{"Leads", "1", "Standard", true, true}, closed{"Leads", "2", "Internal", false, false};
    infos.storeModuleLayoutInfo({standard, closed});
    EXPECT_EQ(infos.getModuleLayoutInfoByModuleNames({"Leads", "Deals"})->at("Leads"), (std::vector{standard, closed}));
    EXPECT_EQ(infos.getModuleLayoutInfoForModuleName("Leads", "Internal"), closed);
    EXPECT_EQ(infos.getModuleLayoutInfoForModuleName("Deals", "Internal"), std::nullopt);
    EXPECT_EQ(infos.getModuleLayoutInfoByLayoutId("1"), standard);
}

TEST_F(MetadataModelTest, OnlyLayoutsThatTheProfileMayUseAreOffered) {
    OrderedLayoutFieldList fields("Lines", "55", {}, {}, columnNaming());
    SubformLayoutInfo layouts;
    for (bool isAccessible : {false, true}) {
        EXPECT_EQ(layouts.getDefaultLayout(), nullptr);
        ModuleLayoutInfo info{"Lines", isAccessible ? "55" : "56", "Rows", isAccessible, true};
        layouts.orderedLayouts.set(info.layoutID,
                                   SubformLayout(Layout<OrderedLayoutFieldList>(info, fields),
                                                 {.maximumRows = 40, .canReorderRows = true}, {LayoutMetadata()}));
    }
    ASSERT_EQ(layouts.getAllLayouts().size(), 1u);
    auto subform = layouts.getDefaultLayout();
    ASSERT_NE(subform, nullptr);
    EXPECT_EQ(subform->layoutID, "55");
    EXPECT_EQ(subform->maximumRows, 40);
    EXPECT_TRUE(subform->canReorderRows);
    EXPECT_EQ(subform->aggregateFields.size(), 1u);
    EXPECT_NE(layouts.getLayout("56"), nullptr) << "a record may have it";
}

}  // namespace
}  // namespace tarvo
