#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tests/tarvobase/value_objects/MetadataModelFixture.h"

namespace tarvo {
namespace {

TEST_F(MetadataModelTest, AnUnknownPermissionIsFalse) {
    ModulePermissionsInDatabase permissions(configuration().databaseAdapter.get());
    permissions.storeModulePermissions({{"Leads", "Leads_API", "Create", true},
                                        {"Leads", "Leads_API", "Edit", false},
                                        {"Deals", "Deals_API", "Create", false}});
    auto leads = ModuleIdentifier(ModuleIdentifier::Case::leads);
    EXPECT_TRUE(permissions.hasPermission(leads, PermissionKeys::create));
    EXPECT_FALSE(permissions.hasPermission(leads, PermissionKeys::edit));
    EXPECT_FALSE(permissions.hasPermission(leads, PermissionKeys::delete_));
    EXPECT_EQ(permissions.getModulePermissionWith("Leads", "View"), std::nullopt);
    EXPECT_EQ(permissions.getModulePermissionsByModuleNames({"Leads", "Deals", "Nobody"})->size(), 2u);
    EXPECT_EQ(permissions.getModulePermissionsByModuleAPINames({"Deals_API"})->at("Deals").size(), 1u);
    database->dropTable("PERMISSIONS");
    EXPECT_FALSE(permissions.getModulePermissionsByModuleNames({"Leads"}).ok());
}

}  // namespace
}  // namespace tarvo
