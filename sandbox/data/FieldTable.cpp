#include "sandbox/data/FieldTable.h"

#include <algorithm>

namespace tarvo::sandbox {
namespace {

// Every record has these fields.
constexpr FieldRow recordFields[] = {
    {"id", "text", "", "rskh", "", "ID"},
    {"Owner", "ownerlookup", "System", "", "", "SMOWNERID"},
    {"Created_By", "ownerlookup", "System", "r", "", "SMCREATORID"},
    {"Modified_By", "ownerlookup", "System", "r"},
    {"Created_Time", "datetime", "System", "r"},
    {"Modified_Time", "datetime", "System", "r"},
    {"Layout", "text", "", "sh", "", "LAYOUTID"},
    {"Tag", "text", "System", "s"},
    {"$status", "text", "", "rsh", "", "SE_STATUS"},
    {"Description", "textarea", "Description"},
};

// Rows that lie under a record of another module have these fields.
constexpr FieldRow dependentFields[] = {
    {"id", "text", "", "rskh", "", "ID"},
    {"record_id", "text", "", "rsh", "", "RECORD_ID"},
};

constexpr FieldRow leads[] = {
    {"Salutation", "picklist", "Lead", "", "Salutation"},
    {"First_Name", "text", "Lead", "q"},
    {"Last_Name", "text", "Lead", "!q"},
    {"Full_Name", "text", "Lead", "r"},
    {"Company", "text", "Lead", "!q"},
    {"Email", "email", "Lead", "uq"},
    {"Secondary_Email", "email", "Lead"},
    {"Phone", "phone", "Lead", "q"},
    {"Fax", "phone", "Lead"},
    {"Website", "website", "Lead"},
    {"Skype", "text", "Lead"},
    {"Twitter", "text", "Lead"},
    {"Lead_Source", "picklist", "Lead", "", "Lead Source"},
    {"Status", "picklist", "Lead", "", "Lead Status"},
    {"Email_Opt_Out", "boolean", "Lead"},
    {"Currency", "picklist", "Money", "", "Currency", "CURRENCYISOCODE"},
    {"Exchange_Rate", "double", "Money", "r"},
    {"Annual_Revenue", "currency", "Money"},
    {"No_of_Employees", "integer", "Money"},
    {"Discount", "decimal", "Money", "c"},
    {"Score", "double", "Money", "c"},
    {"Margin", "formula", "Money", "rc"},
    {"External_Number", "bigint", "Money", "cu"},
    {"Lead_Number", "autonumber", "Money", "r"},
    {"Street", "text", "Address", "", "", "LANE"},
    {"City", "text", "Address"},
    {"State", "text", "Address"},
    {"Country", "text", "Address"},
    {"Zip_Code", "text", "Address", "", "", "CODE"},
    {"Birthday", "date", "More", "c"},
    {"Last_Contact", "datetime", "More", "c"},
    {"Languages", "multiselectpicklist", "More", "c", "Languages"},
    {"Campaigns_Joined", "multiselectlookup", "More", "c", "Campaigns"},
    {"Referred_By", "lookup", "More", "c", "Contacts"},
    {"Second_Owner", "userlookup", "More", "c"},
    {"Brochure", "fileupload", "More", "c"},
    {"Record_Image", "profileimage", "", "s"},
    {"Consent", "consent_lookup", "More", "s"},
    {"Legacy_Code", "", "", "h"},
    {"Signature", " - ", "More", "cm"},
    {"Milestones", "subform", "Milestones", "cs", "Milestones"},
};

constexpr FieldRow contacts[] = {
    {"Salutation", "picklist", "Contact", "", "Salutation"},
    {"First_Name", "text", "Contact", "q"},
    {"Last_Name", "text", "Contact", "!q"},
    {"Full_Name", "text", "Contact", "r"},
    {"Account_Name", "lookup", "Contact", "q", "Accounts", "ACCOUNTID"},
    {"Reporting_To_Contact", "lookup", "Contact", "", "Contacts"},
    {"Email", "email", "Contact", "uq"},
    {"Secondary_Email", "email", "Contact"},
    {"Phone", "phone", "Contact", "q"},
    {"Fax", "phone", "Contact"},
    {"Skype", "text", "Contact"},
    {"Twitter", "text", "Contact"},
    {"Department", "text", "Contact"},
    {"Title", "text", "Contact"},
    {"Date_of_Birth", "date", "Contact", "", "", "BIRTHDAY"},
    {"Email_Opt_Out", "boolean", "Contact"},
    {"Mailing_Street", "text", "Address"},
    {"Mailing_City", "text", "Address"},
    {"Mailing_State", "text", "Address"},
    {"Mailing_Country", "text", "Address"},
    {"Mailing_Zip", "text", "Address"},
    {"Other_Street", "text", "Address"},
    {"Other_City", "text", "Address"},
    {"Other_State", "text", "Address"},
    {"Other_Country", "text", "Address"},
    {"Other_Zip", "text", "Address"},
};

constexpr FieldRow accounts[] = {
    {"Account_Name", "text", "Account", "!uq"},
    {"Parent_Account", "lookup", "Account", "", "Accounts"},
    {"Phone", "phone", "Account", "q"},
    {"Website", "website", "Account"},
    {"Industry", "picklist", "Account", "", "Industry"},
    {"Currency", "picklist", "Account", "", "Currency", "CURRENCYISOCODE"},
    {"Exchange_Rate", "double", "Account", "r"},
    {"Annual_Revenue", "currency", "Account"},
    {"Employees", "integer", "Account"},
};

constexpr FieldRow deals[] = {
    {"Deal_Name", "text", "Deal", "!q", "", "POTENTIALNAME"},
    {"Account_Name", "lookup", "Deal", "q", "Accounts", "ACCOUNTID"},
    {"Contact_Name", "lookup", "Deal", "", "Contacts", "CONTACTID"},
    {"Campaign_Source", "lookup", "Deal", "", "Campaigns"},
    {"Pipeline", "picklist", "Deal", "!", "Pipeline", "pipeline"},
    {"Stage", "picklist", "Deal", "!q", "Stage"},
    {"Type", "picklist", "Deal", "", "Deal Type"},
    {"Closing_Date", "date", "Deal", "!q"},
    {"Currency", "picklist", "Deal", "", "Currency", "CURRENCYISOCODE"},
    {"Exchange_Rate", "double", "Deal", "r"},
    {"Amount", "currency", "Deal", "q"},
    {"Probablity", "integer", "Deal"},
    {"Expected_Revenue", "currency", "Deal", "r"},
};

// The three activity modules keep their rows in one module as well, which has the fields of all three.
constexpr FieldRow tasks[] = {
    {"Subject", "text", "Task", "!q"},
    {"Due_Date", "date", "Task", "q"},
    {"Status", "picklist", "Task", "", "Task Status"},
    {"Priority", "picklist", "Task", "", "Priority"},
    {"Who_Id", "lookup", "Task", "", "Contacts", "CONTACTID"},
    {"What_Id", "lookup", "Task", "", "se_module"},
    {"$se_module", "text", "", "rsh", "", "SE_MODULE"},
    {"Reminder", "ALARM", "Task", "s", "", "REMINDAT"},
    {"Recurring_Activity", "RRULE", "Task", "s", "", "RECURRING"},
};

constexpr FieldRow events[] = {
    {"Event_Title", "text", "Meeting", "!q", "", "SUBJECT"},
    {"Venue", "text", "Meeting", "", "", "LOCATION"},
    {"All_day", "boolean", "Meeting", "", "", "ALLDAYEVENT"},
    {"Start_Date_Time", "datetime", "Meeting", "!q"},
    {"End_Date_Time", "datetime", "Meeting", "!q"},
    {"Who_Id", "lookup", "Meeting", "", "Contacts", "CONTACTID"},
    {"What_Id", "lookup", "Meeting", "", "se_module"},
    {"$se_module", "text", "", "rsh", "", "SE_MODULE"},
    {"Participants", "event_participant", "Meeting", "s", "", "PARTICIPANTID"},
    {"Reminder", "event_reminder", "Meeting", "s", "", "REMINDAT"},
    {"Recurring_Activity", "RRULE", "Meeting", "s", "", "RECURRING"},
    {"$send_notification", "boolean", "", "sh", "", "SEND_NOTIFICATION"},
    {"EVENTTYPE", "text", "", "rsh", "", "$EVENTTYPE"},
    {"Latitude", "double", "Check-In", "r", "", "CHECKINLATITUDE"},
    {"Longitude", "double", "Check-In", "r", "", "CHECKINLONGITUDE"},
    {"Check_In_City", "text", "Check-In", "r"},
    {"Check_In_State", "text", "Check-In", "r"},
    {"Check_In_Country", "text", "Check-In", "r"},
    {"ZIP_Code", "text", "Check-In", "r", "", "CHECKINZIPCODE"},
    {"Check_In_Address", "text", "Check-In", "r"},
    {"Check_In_Comment", "textarea", "Check-In", "r"},
    {"Check_In_By", "ownerlookup", "Check-In", "r", "", "CHECKINOWNERID"},
    {"Check_In_Time", "datetime", "Check-In", "r", "", "CHECKINCREATEDTIME"},
    {"Check_In_Status", "picklist", "Check-In", "r", "Check-In Status"},
};

constexpr FieldRow calls[] = {
    {"Subject", "text", "Call", "!q"},
    {"Call_Type", "picklist", "Call", "!", "Call Type"},
    {"Call_Start_Time", "datetime", "Call", "!q"},
    {"Call_Duration", "text", "Call"},
    {"Call_Status", "picklist", "Call", "", "Call Status"},
    {"Who_Id", "lookup", "Call", "", "Contacts", "CONTACTID"},
    {"What_Id", "lookup", "Call", "", "se_module"},
    {"$se_module", "text", "", "rsh", "", "SE_MODULE"},
};

constexpr FieldRow activityColumns[] = {
    {"Activity_Type", "activityType", "", "rs"},
};

constexpr FieldRow products[] = {
    {"Product_Name", "text", "Product", "!uq"},
    {"Product_Code", "text", "Product", "q"},
    {"Category", "picklist", "Product", "", "Product Category"},
    {"Manufacturer", "picklist", "Product", "", "Manufacturer"},
    {"Unit_Price", "currency", "Product"},
    {"Active", "boolean", "Product"},
    {"Sales_Start_Date", "date", "Product"},
    {"Sales_End_Date", "date", "Product"},
    {"Support_Start_Date", "date", "Product"},
    {"Support_Expiry_Date", "date", "Product"},
};

constexpr FieldRow priceBooks[] = {
    {"Price_Book_Name", "text", "Price Book", "!uq"},
    {"Active", "boolean", "Price Book"},
    {"Pricing_Model", "picklist", "Price Book", "!", "Pricing Model"},
    {"Pricing_Details", "subform", "Price Ranges", "s", "Pricing_Details"},
};

constexpr FieldRow quotes[] = {
    {"Subject", "text", "Quote", "!q", "", "QUOTESUBJECT"},
    {"Stage", "picklist", "Quote", "", "Quote Stage"},
    {"Deal_Name", "lookup", "Quote", "", "Deals", "POTENTIALID"},
    {"Account_Name", "lookup", "Quote", "!", "Accounts", "ACCOUNTID"},
    {"Contact_Name", "lookup", "Quote", "", "Contacts", "CONTACTID"},
    {"Valid_Till", "date", "Quote"},
    {"Currency", "picklist", "Quote", "", "Currency", "CURRENCYISOCODE"},
    {"Exchange_Rate", "double", "Quote", "r"},
    {"Grand_Total", "currency", "Quote", "r"},
    {"Product_Details", "subform", "Line Items", "!s", "Product_Details"},
};

constexpr FieldRow cases[] = {
    {"Subject", "text", "Case", "!q"},
    {"Status", "picklist", "Case", "!", "Case Status"},
    {"Priority", "picklist", "Case", "", "Priority"},
    {"Origin", "picklist", "Case", "!", "Case Origin"},
    {"Account_Name", "lookup", "Case", "", "Accounts", "ACCOUNTID"},
    {"Related_To", "lookup", "Case", "", "Contacts", "CONTACTID"},
    {"Product_Name", "lookup", "Case", "", "Products", "PRODUCTID"},
    {"Email", "email", "Case"},
    {"Comments", "subform", "Comments", "s", "Comments"},
};

constexpr FieldRow solutions[] = {
    {"Solution_Title", "text", "Solution", "!q"},
    {"Status", "picklist", "Solution", "", "Solution Status"},
    {"Product_Name", "lookup", "Solution", "", "Products", "PRODUCTID"},
    {"Question", "textarea", "Solution"},
    {"Answer", "textarea", "Solution"},
    {"Comments", "subform", "Comments", "s", "Comments"},
};

constexpr FieldRow campaigns[] = {
    {"Campaign_Name", "text", "Campaign", "!uq"}, {"Type", "picklist", "Campaign", "", "Campaign Type"},
    {"Start_Date", "date", "Campaign"},           {"End_Date", "date", "Campaign"},
    {"Budgeted_Cost", "currency", "Campaign"},    {"Expected_Response", "integer", "Campaign"},
};

constexpr FieldRow notes[] = {
    {"Note_Title", "text", "Note", "", "", "TITLE"},           {"Note_Content", "textarea", "Note", "!"},
    {"Parent_Id", "lookup", "Note", "!", "se_module", "SEID"}, {"se_module", "text", "", "rsh", "", "SE_MODULE"},
    {"$attachments", "text", "", "rsh", "", "ATTACHMENTS"},    {"$isCheckIn", "boolean", "", "rsh", "", "IS_CHECK_IN"},
    {"voice_note", "boolean", "", "rsh", "", "IS_VOICE_DATA"}, {"Attachment_Size", "integer", "", "rsh"},
};

constexpr FieldRow attachments[] = {
    {"File_Name", "text", "Attachment", "!", "", "NAME"},
    {"Attachment_Size", "integer", "Attachment", "r"},
    {"Parent_Id", "lookup", "Attachment", "!", "se_module", "SEID"},
    {"$se_module", "text", "", "rsh", "", "SE_MODULE"},
};

constexpr FieldRow projects[] = {
    {"Name", "text", "Project", "!uq"},          {"Account", "lookup", "Project", "c", "Accounts"},
    {"Lead", "lookup", "Project", "c", "Leads"}, {"Budget", "currency", "Project", "c"},
    {"Start", "date", "Project", "c"},           {"Milestones", "subform", "Milestones", "cs", "Milestones"},
};

constexpr FieldRow visits[] = {
    {"Name", "text", "Visit", "!q"},
    {"Project", "lookup", "Visit", "c", "Projects"},
    {"Visited_At", "datetime", "Visit", "c"},
    {"Rating", "picklist", "Visit", "c", "Rating"},
};

constexpr FieldRow milestones[] = {
    {"Milestone", "text", "Milestone", "!c"},
    {"Due", "date", "Milestone", "c"},
    {"Share", "decimal", "Milestone", "c"},
    {"Done", "boolean", "Milestone", "c"},
};

constexpr FieldRow invitees[] = {
    {"participant", "text", "Participant", "s", "", "PARTICIPANT"},
    {"Type", "text", "Participant"},
    {"Invited", "boolean", "Participant"},
    {"Status", "text", "Participant"},
    {"Email", "email", "Participant"},
    {"name", "text", "Participant"},
    {"Company", "text", "Participant"},
    {"Account_Name", "text", "Participant"},
};

constexpr FieldRow lineItems[] = {
    {"product", "lookup", "Line Item", "!", "Products", "PRODUCTID"},
    {"quantity", "double", "Line Item", "!"},
    {"list_price", "currency", "Line Item"},
    {"Discount", "currency", "Line Item"},
    {"total", "currency", "Line Item", "r"},
    {"product_description", "textarea", "Line Item"},
};

constexpr FieldRow priceRanges[] = {
    {"from_range", "double", "Price Range", "!"},
    {"to_range", "double", "Price Range", "!"},
    {"discount", "double", "Price Range", "!"},
};

constexpr FieldRow comments[] = {
    {"Comment", "textarea", "Comment", "!"},
    {"Comment_By", "text", "Comment", "r"},
    {"Comment_Time", "datetime", "Comment", "r"},
};

enum class Common { record, dependent };

struct ModuleFields {
    std::string_view module;
    std::span<const FieldRow> fields;
    Common common = Common::record;
};

constexpr ModuleFields all[] = {
    {"Leads", leads},
    {"Contacts", contacts},
    {"Accounts", accounts},
    {"Deals", deals},
    {"Tasks", tasks},
    {"Events", events},
    {"Calls", calls},
    {"Activities", activityColumns},
    {"Products", products},
    {"PriceBooks", priceBooks},
    {"Quotes", quotes},
    {"Cases", cases},
    {"Solutions", solutions},
    {"Campaigns", campaigns},
    {"Notes", notes},
    {"Attachments", attachments},
    {"CustomModule1", projects},
    {"CustomModule2", visits},
    {"CustomModule3", milestones, Common::dependent},
    {"EventInvitees", invitees, Common::dependent},
    {"InventoryProducts", lineItems, Common::dependent},
    {"PriceBookPricing", priceRanges, Common::dependent},
    {"CustomerModuleComments", comments, Common::dependent},
};

constexpr PicklistRow picklists[] = {
    {"Salutation", "Mr.", "Mr."},
    {"Salutation", "Ms.", "Ms."},
    {"Salutation", "Dr.", "Dr."},
    {"Lead Source", "Cold Call", "Cold Call"},
    {"Lead Source", "Trade Show", "Messe"},
    {"Lead Source", "Web Form", "Web Form"},
    {"Lead Source", "Partner's Tip", "Partner's Tip"},
    {"Lead Status", "New", "New", R"({"Rating":["Cold"]})"},
    {"Lead Status", "Contacted", "Contacted", R"({"Rating":["Cold","Warm"]})"},
    {"Lead Status", "Qualified", "Qualified", R"({"Rating":["Warm","Hot"]})"},
    {"Lead Status", "Lost", "Lost"},
    {"Languages", "de", "Deutsch"},
    {"Languages", "fr", "Français"},
    {"Languages", "ja", "日本語"},
    {"Currency", "USD", "USD"},
    {"Currency", "EUR", "EUR"},
    {"Currency", "JPY", "JPY"},
    {"Industry", "Retail", "Retail"},
    {"Industry", "Energy", "Energy"},
    {"Industry", "Health", "Health"},
    {"Pipeline", "Standard", "Standard"},
    {"Pipeline", "Renewal", "Renewal"},
    {"Stage", "Qualification", "Qualification", "Open"},
    {"Stage", "Proposal", "Proposal", "Open"},
    {"Stage", "Negotiation", "Negotiation", "Open"},
    {"Stage", "Closed Won", "Won", "Closed Won"},
    {"Stage", "Closed Lost", "Lost", "Closed Lost"},
    {"Deal Type", "New Business", "New Business"},
    {"Deal Type", "Existing Business", "Existing Business"},
    {"Task Status", "Not Started", "Not Started"},
    {"Task Status", "In Progress", "In Progress"},
    {"Task Status", "Completed", "Completed"},
    {"Task Status", "Deferred", "Deferred"},
    {"Priority", "High", "High"},
    {"Priority", "Normal", "Normal"},
    {"Priority", "Low", "Low"},
    {"Check-In Status", "PLANNED", "Planned"},
    {"Check-In Status", "VISITED", "Visited"},
    {"Call Type", "Outbound", "Outbound"},
    {"Call Type", "Inbound", "Inbound"},
    {"Call Type", "Missed", "Missed"},
    {"Call Status", "Scheduled", "Scheduled"},
    {"Call Status", "Completed", "Completed"},
    {"Product Category", "Hardware", "Hardware"},
    {"Product Category", "Software", "Software"},
    {"Manufacturer", "Own", "Own"},
    {"Manufacturer", "Imported", "Imported"},
    {"Pricing Model", "Flat", "Flat"},
    {"Pricing Model", "Differential", "Differential"},
    {"Quote Stage", "Draft", "Draft"},
    {"Quote Stage", "Delivered", "Delivered"},
    {"Case Status", "New", "New"},
    {"Case Status", "On Hold", "On Hold"},
    {"Case Status", "Closed", "Closed"},
    {"Case Origin", "Email", "Email"},
    {"Case Origin", "Phone", "Phone"},
    {"Solution Status", "Draft", "Draft"},
    {"Solution Status", "Published", "Published"},
    {"Campaign Type", "Conference", "Conference"},
    {"Campaign Type", "Advertisement", "Advertisement"},
    {"Rating", "Cold", "Cold"},
    {"Rating", "Warm", "Warm"},
    {"Rating", "Hot", "Hot"},
};

constexpr RelatedListRow relatedLists[] = {
    {"Leads", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Leads", "Attachments", "Attachments", "Attachments", "Attachments", "Parent_Id"},
    {"Leads", "Activities", "Open Activities", "Open Activities", "Activities"},
    {"Leads", "Activities", "Closed Activities", "Closed Activities", "Activities_History"},
    {"Leads", "Events", "Invited Meetings", "Invited Events", "Invited_Events"},
    {"Leads", "CustomModule1", "Projects", "Projects", "Projects", "Lead"},
    {"Contacts", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Contacts", "Attachments", "Attachments", "Attachments", "Attachments", "Parent_Id"},
    {"Contacts", "Deals", "Deals", "Deals", "Deals", "Contact_Name"},
    {"Contacts", "Activities", "Open Activities", "Open Activities", "Activities"},
    {"Contacts", "Events", "Invited Meetings", "Invited Events", "Invited_Events"},
    {"Contacts", "Cases", "Cases", "Cases", "Cases", "Related_To"},
    {"Accounts", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Accounts", "Attachments", "Attachments", "Attachments", "Attachments", "Parent_Id"},
    {"Accounts", "Contacts", "Contacts", "Contacts", "Contacts", "Account_Name"},
    {"Accounts", "Deals", "Deals", "Deals", "Deals", "Account_Name"},
    {"Accounts", "Quotes", "Quotes", "Quotes", "Quotes", "Account_Name"},
    {"Accounts", "CustomModule1", "Projects", "Projects", "Projects", "Account"},
    {"Deals", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Deals", "Attachments", "Attachments", "Attachments", "Attachments", "Parent_Id"},
    {"Deals", "Contacts", "Contact Roles", "Contact Roles", "Contact_Roles"},
    {"Deals", "Quotes", "Quotes", "Quotes", "Quotes", "Deal_Name"},
    {"Deals", "Activities", "Open Activities", "Open Activities", "Activities"},
    {"Events", "EventInvitees", "Participants", "Invitees", "Invitees"},
    {"Tasks", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Events", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Calls", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Products", "Cases", "Cases", "Cases", "Cases", "Product_Name"},
    {"Cases", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"Cases", "Attachments", "Attachments", "Attachments", "Attachments", "Parent_Id"},
    {"CustomModule1", "Notes", "Notes", "Notes", "Notes", "Parent_Id"},
    {"CustomModule1", "CustomModule2", "Café Visits", "Cafe Visits", "Cafe_Visits", "Project"},
};

constexpr std::string_view milestonesBelow[] = {"CustomModule3"};
constexpr std::string_view inviteesBelow[] = {"EventInvitees"};
constexpr std::string_view lineItemsBelow[] = {"InventoryProducts"};
constexpr std::string_view priceRangesBelow[] = {"PriceBookPricing"};
constexpr std::string_view commentsBelow[] = {"CustomerModuleComments"};

struct Dependents {
    std::string_view module;
    std::span<const std::string_view> below;
};

constexpr Dependents dependents[] = {
    {"Leads", milestonesBelow},   {"CustomModule1", milestonesBelow}, {"Events", inviteesBelow},
    {"Quotes", lineItemsBelow},   {"PriceBooks", priceRangesBelow},   {"Cases", commentsBelow},
    {"Solutions", commentsBelow},
};

}  // namespace

std::vector<FieldRow> fieldRows(std::string_view module) {
    std::vector<FieldRow> rows;
    // Fields that several activity modules have under one API name stand once; those that share a column alone stay.
    auto add = [&](std::span<const FieldRow> more) {
        for (const auto& row : more)
            if (std::none_of(rows.begin(), rows.end(),
                             [&](const FieldRow& known) { return known.apiName == row.apiName; }))
                rows.push_back(row);
    };
    for (const auto& entry : all) {
        if (entry.module != module) continue;
        add(entry.fields);
        // Views of all activities name the kind of activity, and are applied to each kind by itself too.
        if (module == "Tasks" || module == "Events" || module == "Calls") add(activityColumns);
        if (module == "Activities")
            for (auto fields : {std::span<const FieldRow>(tasks), std::span<const FieldRow>(events),
                                std::span<const FieldRow>(calls)})
                add(fields);
        if (entry.common == Common::dependent)
            add(dependentFields);
        else
            add(recordFields);
    }
    return rows;
}

std::span<const PicklistRow> picklistRows() { return picklists; }

std::span<const RelatedListRow> relatedListRows() { return relatedLists; }

std::span<const std::string_view> dependentModules(std::string_view module) {
    for (const auto& entry : dependents)
        if (entry.module == module) return entry.below;
    return {};
}

}  // namespace tarvo::sandbox
