#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tests/tarvobase/value_objects/MetadataModelFixture.h"

namespace tarvo {
namespace {

TEST_F(MetadataModelTest, PermissionsAreWrittenInBothForms) {
    ModulePermission permission{"Leads", "Leads_API", "Create", true};
    EXPECT_EQ(ModulePermissionConstants().getDictionary(permission),
              (ValueMap{{"Modulename", "Leads"}, {"ModuleAPPIName", "Leads_API"}, {"Key", "Create"}, {"Value", true}}));
    EXPECT_EQ(ModulePermissionDatabaseConstants().getDictionary(permission).valueOf("permission_value"), Value("true"));
}

TEST_F(MetadataModelTest, AnUnknownPermissionIsFalse) {
    openTables();
    ModulePermissionsInDatabase permissions(configuration().databaseAdapter.get());
    permissions.storeModulePermissions({{"Leads", "Leads_API", "Create", true},
                                        {"Leads", "Leads_API", "Edit", false},
                                        {"Deals", "Deals_API", "Create", false}});
    auto leads = ModuleIdentifier(ModuleIdentifier::Case::leads);
    EXPECT_TRUE(permissions.hasPermission(leads, PermissionKeys::create));
    EXPECT_FALSE(permissions.hasPermission(leads, PermissionKeys::edit));
    EXPECT_FALSE(permissions.hasPermission(leads, PermissionKeys::delete_));
    EXPECT_EQ(permissions.getModulePermissionWith("Leads", "View"), std::nullopt);
    EXPECT_EQ(permissions.getModulePermissionWith("Leads")->size(), 2u);
    auto byName = permissions.getModulePermissionsByModuleNames({"Leads", "Deals", "Nobody"});
    EXPECT_EQ(byName->size(), 2u);
    EXPECT_EQ(permissions.getModulePermissionsByModuleAPINames({"Deals_API"})->at("Deals").size(), 1u);
    EXPECT_EQ(permissions.getModulePermissionsByModuleNames({"Nobody"})->size(), 0u);
    adapter->dropTable("PERMISSIONS");
    EXPECT_FALSE(permissions.getModulePermissionsByModuleNames({"Leads"}).ok());
}

TEST_F(MetadataModelTest, OfTwoPermissionsTheFirstCounts) {
    PermissionList list{{{"Leads", "", "Edit", true}, {"Leads", "", "Edit", false}}};
    EXPECT_TRUE(list.hasPermission(PermissionKeys::edit));
    EXPECT_FALSE(list.hasPermission(PermissionKeys::view));
}

}  // namespace
}  // namespace tarvo
