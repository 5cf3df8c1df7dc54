#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"
#include "tests/tarvobase/value_objects/MetadataModelFixture.h"

namespace tarvo {
namespace {

TEST_F(MetadataModelTest, RelatedListsAreSortedByTheirNumberAndTakeTheirColumn) {
    ModuleRelatedListInDatabase lists(configuration().databaseAdapter.get());
    RelatedList notes{.moduleName = "Leads", .relatedModuleName = "Notes", .listID = "1", .relatedOrder = 10};
    RelatedList tasks{.moduleName = "Leads", .relatedModuleName = "Tasks", .listID = "2", .relatedOrder = 9};
    RelatedList dealNotes{.moduleName = "Deals", .relatedModuleName = "Notes", .listID = "3"};
    lists.storeModuleRelatedList({notes, tasks, dealNotes});
    EXPECT_EQ(lists.getModulesRelatedToModule("Leads"), (std::vector{tasks, notes}));
    EXPECT_EQ(lists.getModulesRelatedToModule("Cases"), std::nullopt);
    lists.setLookupColumnByRelatedModuleName("Notes", "SEID");
    lists.setLookupColumnByRealtedListID("2", "WHATID");
    EXPECT_EQ(lists.getModuleRelatedWith("Leads", "Notes")->at(0).lookupColumn, "SEID");
    EXPECT_EQ(lists.getModuleRelatedWith("Deals", "Notes")->at(0).lookupColumn, "SEID");
    EXPECT_EQ(lists.getModuleRelatedWith("Leads", "Tasks")->at(0).lookupColumn, "WHATID");
}

TEST_F(MetadataModelTest, SpecialRelatedListsAreRecognisedByNameAndParent) {
    struct {
        std::string listName, moduleName, related;
        bool invitedEvents, invitees, contactRole;
    } cases[] = {{"Invited Events", "Contacts", "Events", true, false, false},
                 {"Invited Events", "Deals", "stored", false, false, false},
                 {"Invitees", "Events", "stored", false, true, false},
                 {"Contact Roles", "Deals", "stored", false, false, true},
                 {"Contact Roles", "Leads", "stored", false, false, false}};
    for (auto& one : cases) {
        RelatedList list{.moduleName = one.moduleName, .relatedModuleName = "stored", .listName = one.listName};
        EXPECT_EQ(list._relatedModuleName(), one.related) << one.listName;
        EXPECT_EQ(list.isInvitedEvents(), one.invitedEvents);
        EXPECT_EQ(list.isInvitees(), one.invitees);
        EXPECT_EQ(list.isContactRole(), one.contactRole);
    }
}

}  // namespace
}  // namespace tarvo
