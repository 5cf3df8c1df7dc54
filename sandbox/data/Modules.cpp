#include "sandbox/data/Modules.h"

namespace tarvo::sandbox {
namespace {

struct Row {
    const char *name, *singular, *plural, *apiName, *type;
    bool hasOwnLists = true;
};

constexpr Row moduleRows[] = {
    {"Leads", "Lead", "Leads", "Leads", "default"},
    {"Contacts", "Contact", "Contacts", "Contacts", "default"},
    {"Accounts", "Account", "Accounts", "Accounts", "default"},
    {"Deals", "Deal", "Deals", "Deals", "default"},
    {"Tasks", "Task", "Tasks", "Tasks", "default"},
    {"Events", "Meeting", "Meetings", "Events", "default"},
    {"Calls", "Call", "Calls", "Calls", "default"},
    {"Activities", "Activity", "Activities", "Activities", "default"},
    {"Products", "Product", "Products", "Products", "default"},
    {"PriceBooks", "Price Book", "Price Books", "Price_Books", "default"},
    {"Quotes", "Quote", "Quotes", "Quotes", "default"},
    {"Cases", "Case", "Cases", "Cases", "default"},
    {"Solutions", "Solution", "Solutions", "Solutions", "default"},
    {"Campaigns", "Campaign", "Campaigns", "Campaigns", "default"},
    {"Notes", "Note", "Notes", "Notes", "default"},
    {"Attachments", "Attachment", "Attachments", "Attachments", "default"},
    {"CustomModule1", "Project", "Projects", "Projects", "custom"},
    {"CustomModule2", "Café Visit", "Café Visits", "Cafe_Visits", "custom"},
    // The rows of these modules lie under a record of another module.
    {"CustomModule3", "Milestone", "Milestones", "Milestones", "subform", false},
    {"EventInvitees", "Participant", "Participants", "Participants", "default", false},
    {"InventoryProducts", "Line Item", "Line Items", "Product_Details", "default", false},
    {"PriceBookPricing", "Price Range", "Price Ranges", "Pricing_Details", "default", false},
    {"CustomerModuleComments", "Comment", "Comments", "Comments", "default", false},
};

}  // namespace

std::vector<ModuleData> makeModules(IdSequence& ids) {
    std::vector<ModuleData> modules;
    for (const auto& row : moduleRows)
        modules.push_back({ids.next(), row.name, row.singular, row.plural, row.apiName, row.type,
                           static_cast<int>(modules.size()) + 1, row.hasOwnLists});
    return modules;
}

}  // namespace tarvo::sandbox
