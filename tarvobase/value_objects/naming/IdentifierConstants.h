#pragma once

#include <string_view>

#include "tarvobase/configuration/Variant.h"

namespace tarvo {

/// The two namings of fields.
enum class Naming { column, api };

/// A name that is either fixed or follows a setting of the host. The latter is looked up at each use.
class ConstantName {
public:
    constexpr ConstantName(std::string_view fixed) : fixed_(fixed) {}                         // NOLINT: implicit
    constexpr ConstantName(std::string_view (*followed)()) : followed_(followed) {}           // NOLINT
    constexpr operator std::string_view() const { return followed_ ? followed_() : fixed_; }  // NOLINT

    friend constexpr bool operator==(const ConstantName& name, std::string_view text) {
        return std::string_view(name) == text;
    }

private:
    std::string_view fixed_;
    std::string_view (*followed_)() = nullptr;
};

/// The base of every list of names. Each member has its two names on one line, and the naming chooses between them. A
/// column is the field's name in capitals without separators, and an API name is its capitalised words joined by "_".
/// Where a field breaks the rule, both names are the server's.
struct NamesOf {
    Naming naming;
    constexpr std::string_view of(std::string_view column, std::string_view api) const {
        return naming == Naming::column ? column : api;
    }
    constexpr std::string_view of(std::string_view both) const { return both; }
    constexpr ConstantName of(std::string_view column, std::string_view (*api)()) const {
        return naming == Naming::column ? ConstantName(column) : ConstantName(api);
    }
};

struct LeadsConstants : NamesOf {
    std::string_view firstName = of("FIRSTNAME", "First_Name");
    std::string_view lastName = of("LASTNAME", "Last_Name");
    std::string_view fullName = of("FULLNAME", "Full_Name");
    std::string_view salutation = of("SALUTATION", "Salutation");
    std::string_view email = of("EMAIL", "Email");
    std::string_view phone = of("PHONE", "Phone");
    std::string_view fax = of("FAX", "Fax");
    std::string_view skype = of("SKYPE", "Skype");
    std::string_view twitter = of("TWITTER", "Twitter");
    std::string_view description = of("DESCRIPTION", "Description");
    std::string_view company = of("COMPANY", "Company");
    std::string_view source = of("LEADSOURCE", "Lead_Source");
    std::string_view status = of("STATUS", "Status");
    std::string_view street = of("LANE", "Street");
    std::string_view city = of("CITY", "City");
    std::string_view state = of("STATE", "State");
    std::string_view country = of("COUNTRY", "Country");
    std::string_view zip = of("CODE", "Zip_Code");
    std::string_view emailOptOut = of("EMAILOPTOUT", "Email_Opt_Out");
    std::string_view secondaryEmail = of("SECONDARYEMAIL", "Secondary_Email");
};

struct ContactsConstants : NamesOf {
    std::string_view firstName = of("FIRSTNAME", "First_Name");
    std::string_view lastName = of("LASTNAME", "Last_Name");
    std::string_view fullName = of("FULLNAME", "Full_Name");
    std::string_view salutation = of("SALUTATION", "Salutation");
    std::string_view email = of("EMAIL", "Email");
    std::string_view phone = of("PHONE", "Phone");
    std::string_view fax = of("FAX", "Fax");
    std::string_view skype = of("SKYPE", "Skype");
    std::string_view twitter = of("TWITTER", "Twitter");
    std::string_view description = of("DESCRIPTION", "Description");
    std::string_view accountId = of("ACCOUNTID", "Account_Name");
    std::string_view birthday = of("BIRTHDAY", "Date_of_Birth");
    std::string_view department = of("DEPARTMENT", "Department");
    std::string_view title = of("TITLE", "Title");
    std::string_view mailingStreet = of("MAILINGSTREET", "Mailing_Street");
    std::string_view mailingCity = of("MAILINGCITY", "Mailing_City");
    std::string_view mailingState = of("MAILINGSTATE", "Mailing_State");
    std::string_view mailingCountry = of("MAILINGCOUNTRY", "Mailing_Country");
    std::string_view mailingZip = of("MAILINGZIP", "Mailing_Zip");
    std::string_view otherStreet = of("OTHERSTREET", "Other_Street");
    std::string_view otherCity = of("OTHERCITY", "Other_City");
    std::string_view otherState = of("OTHERSTATE", "Other_State");
    std::string_view otherCountry = of("OTHERCOUNTRY", "Other_Country");
    std::string_view otherZip = of("OTHERZIP", "Other_Zip");
    std::string_view approved = of("se_approved");
    std::string_view followed = of("FOLLOWED", "Followed");
    std::string_view stopProcessing = of("STOPPROCESSING", "Stop_Processing");
    std::string_view reportingToContact = of("REPORTINGTOCONTACT", "Reporting_To_Contact");
    std::string_view emailOptOut = of("EMAILOPTOUT", "Email_Opt_Out");
    std::string_view secondaryEmail = of("SECONDARYEMAIL", "Secondary_Email");
};

struct AccountsConstants : NamesOf {
    std::string_view accountName = of("ACCOUNTNAME", "Account_Name");
    std::string_view website = of("WEBSITE", "Website");
    std::string_view phone = of("PHONE", "Phone");
    std::string_view industry = of("INDUSTRY", "Industry");
};

/// A deal's contact is one field with the API name "Contact_Name". Its id and its text are two columns, like those of
/// an account.
struct DealsConstants : NamesOf {
    std::string_view potentialName = of("POTENTIALNAME", "Deal_Name");
    std::string_view closingDate = of("CLOSINGDATE", "Closing_Date");
    std::string_view ownerID = of("SMOWNERID", "Owner");
    std::string_view stage = of("STAGE", "Stage");
    std::string_view amount = of("AMOUNT", "Amount");
    std::string_view probablity = of("PROBABLITY", "Probablity");
    std::string_view contactID = of("CONTACTID", "Contact_Name");
    std::string_view accountID = of("ACCOUNTID", "Account_Name");
    std::string_view expectedRevenue = of("EXPECTEDREVENUE", "Expected_Revenue");
    std::string_view contactName = of("CONTACTNAME", "Contact_Name");
    std::string_view pipeline = of("pipeline", "Pipeline");
};

struct ActivitiesConstants : NamesOf {
    std::string_view recurring = of("RECURRING", "Recurring_Activity");
    std::string_view contactID = of("CONTACTID", "Who_Id");
    std::string_view activityType = of("ACTIVITYTYPE", "Activity_Type");
};

struct EventsConstants : NamesOf {
    std::string_view checkInStatus = of("CHECKINSTATUS", "Check_In_Status");
    std::string_view subject = of("SUBJECT", "Event_Title");
    std::string_view startDateTime = of("STARTDATETIME", "Start_Date_Time");
    std::string_view endDateTime = of("ENDDATETIME", "End_Date_Time");
    std::string_view allDayEvent = of("ALLDAYEVENT", "All_day");
    std::string_view location = of("LOCATION", "Venue");
    std::string_view eventType = of("$EVENTTYPE", "EVENTTYPE");
    std::string_view checkInCreatedTime = of("CHECKINCREATEDTIME", "Check_In_Time");
    std::string_view recurring = of("RECURRING", "Recurring_Activity");
    std::string_view remindAt = of("REMINDAT", "Reminder");
    std::string_view sendNotification = of("SEND_NOTIFICATION", "$send_notification");
    std::string_view participants = of("PARTICIPANTID", "Participants");
};

struct EventInviteesConstants : NamesOf {
    std::string_view participant = of("PARTICIPANT", "participant");
    std::string_view type = of("TYPE", "Type");
    std::string_view invited = of("INVITED", "Invited");
    std::string_view status = of("STATUS", "Status");
    std::string_view email = of("EMAIL", "Email");
    std::string_view company = of("COMPANY", "Company");
    std::string_view accountName = of("ACCOUNTNAME", "Account_Name");
};

struct TasksConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view status = of("STATUS", "Status");
    std::string_view remindAt = of("REMINDAT", "Reminder");
    std::string_view priority = of("PRIORITY", "Priority");
    std::string_view dueDate = of("DUEDATE", "Due_Date");
};

struct CallsConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view callType = of("CALLTYPE", "Call_Type");
    std::string_view callStartTime = of("CALLSTARTTIME", "Call_Start_Time");
    std::string_view callDuration = of("CALLDURATION", "Call_Duration");
    std::string_view status = of("CALLSTATUS", "Call_Status");
};

struct ProductsConstants : NamesOf {
    std::string_view salesStartDate = of("SALESSTARTDATE", "Sales_Start_Date");
    std::string_view salesEndDate = of("SALESENDDATE", "Sales_End_Date");
    std::string_view supportStartDate = of("SUPPORTSTARTDATE", "Support_Start_Date");
    std::string_view supportExpiryDate = of("SUPPORTEXPIRYDATE", "Support_Expiry_Date");
    std::string_view active = of("ACTIVE", "Active");
    std::string_view unitPrice = of("UNITPRICE", "Unit_Price");
    std::string_view productCode = of("PRODUCTCODE", "Product_Code");
    std::string_view name = of("PRODUCTNAME", "Product_Name");
    std::string_view category = of("CATEGORY", "Category");
    std::string_view manufacturer = of("MANUFACTURER", "Manufacturer");
};

struct CasesConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view status = of("STATUS", "Status");
    std::string_view priority = of("PRIORITY", "Priority");
    std::string_view origin = of("ORIGIN", "Origin");
};

struct AttachmentsConstants : NamesOf {
    std::string_view attachmentSize = of("ATTACHMENTSIZE", "Attachment_Size");
    std::string_view fileName = of("NAME", "File_Name");
};

struct NotesConstants : NamesOf {
    std::string_view isCheckIn = of("IS_CHECK_IN", "$isCheckIn");
    std::string_view noteTitle = of("TITLE", "Note_Title");
    std::string_view noteContent = of("NOTECONTENT", "Note_Content");
    std::string_view seid = of("SEID", "Parent_Id");
    std::string_view seModule = of("SE_MODULE", "se_module");
    std::string_view modifiedBy = of("MODIFIEDBY", "Modified_By");
    std::string_view ownerId = of("SMOWNERID", "Owner");
    std::string_view createdBy = of("SMCREATORID", "Created_By");
    ConstantName attachments = of("ATTACHMENTS", &variant::attachments);
    std::string_view size = of("ATTACHMENTSIZE", "Attachment_Size");
    std::string_view id = of("ID", "id");
    std::string_view isVoiceNote = of("IS_VOICE_DATA", "voice_note");
};

struct SolutionsConstants : NamesOf {
    std::string_view title = of("SOLUTIONTITLE", "Solution_Title");
    std::string_view status = of("STATUS", "Status");
};

struct InvoicesConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view status = of("STATUS", "Status");
};

struct QuotesConstants : NamesOf {
    std::string_view subject = of("QUOTESUBJECT", "Subject");
    std::string_view stage = of("STAGE", "Stage");
};

struct SalesOrdersConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view status = of("STATUS", "Status");
};

struct PurchaseOrdersConstants : NamesOf {
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view status = of("STATUS", "Status");
};

struct PriceBooksConstants : NamesOf {
    std::string_view name = of("PRICEBOOKNAME", "Price_Book_Name");
    std::string_view pricingModel = of("PRICINGMODEL", "Pricing_Model");
    std::string_view active = of("ACTIVE", "Active");
    std::string_view pricingDetails = of("PRICINGDETAILS", "Pricing_Details");
};

struct VendorsConstants : NamesOf {
    std::string_view name = of("VENDORNAME", "Vendor_Name");
    std::string_view website = of("WEBSITE", "Website");
};

/// Says where and when a user checked in at the place of a meeting. These are columns of the meeting.
struct CheckInConstants : NamesOf {
    std::string_view createdBy = of("CHECKINOWNERID", "Check_In_By");
    std::string_view createdTime = of("CHECKINCREATEDTIME", "Check_In_Time");
    std::string_view comment = of("CHECKINCOMMENT", "Check_In_Comment");
    std::string_view latitude = of("CHECKINLATITUDE", "Latitude");
    std::string_view longitude = of("CHECKINLONGITUDE", "Longitude");
    std::string_view locality = of("CHECKINSTREET", "Venue");
    std::string_view city = of("CHECKINCITY", "Check_In_City");
    std::string_view state = of("CHECKINSTATE", "Check_In_State");
    std::string_view country = of("CHECKINCOUNTRY", "Check_In_Country");
    std::string_view zipCode = of("CHECKINZIPCODE", "ZIP_Code");
    std::string_view address = of("CHECKINADDRESS", "Check_In_Address");
};

struct CommentsConstants : NamesOf {
    std::string_view id = of("ID", "id");
    std::string_view recordId = of("RECORD_ID", "record_id");
    std::string_view comment = of("COMMENT", "Comment");
    std::string_view commentBy = of("COMMENTBY", "Comment_By");
    std::string_view commentTime = of("COMMENTTIME", "Comment_Time");
};

/// Columns of the list of jobs. They follow the table of the server, not the rule of record fields.
struct MyJobsConstants : NamesOf {
    std::string_view ruleName = of("approvalprocessname", "recordRuleName");
    std::string_view transitionOrApprovalID = of("approvalprocessid", "recordApprovalOrTransitionID");
    std::string_view recordID = of("record_id", "recordId");
    std::string_view moduleName = of("module_name", "moduleName");
    std::string_view recordName = of("record_name", "recordName");
    std::string_view initiatedTime = of("initiated_time", "initiatedTime");
    std::string_view ruleType = of("type", "ruleType");
    std::string_view moduleDisplayName = of("display_name", "moduleDisplayName");
    std::string_view module = of("MODULE", "module");
    std::string_view moduleAPI = of("module_api_name", "moduleAPI");
    std::string_view recordOwnerEmailID = of("record_owner_email", "recordOwnerEmailId");
    std::string_view recordOwnerID = of("record_owner_id", "recordOwnerId");
    std::string_view recordOwnerName = of("record_owner", "recordOwnerName");
    std::string_view isApproved = of("ISAPPROVED", "$approved");
    std::string_view approvalAction = of("APPROVAL_ACTIONS", "$approval");
    std::string_view isInProcess = of("IN_PROCESS", "$process_flow");
    std::string_view action = of("ACTION", "action");
    std::string_view comments = of("COMMENTS", "comments");
    std::string_view user = of("USER", "user");
};

/// A tag inside a record.
struct TagsConstants : NamesOf {
    std::string_view id = of("ID", "id");
    std::string_view name = of("NAME", "name");
};

/// The names of the fields that the library's own logic uses, in one of the two namings.
struct IdentifierConstants : NamesOf {
    std::string_view rowID = of("_id");
    std::string_view id = of("ID", "id");
    std::string_view recordId = of("RECORD_ID", "record_id");
    std::string_view fullName = of("FULLNAME", "Full_Name");
    std::string_view firstName = of("FIRSTNAME", "First_Name");
    std::string_view lastName = of("LASTNAME", "Last_Name");
    std::string_view salutation = of("SALUTATION", "Salutation");
    std::string_view seid = of("SEID", "Parent_Id");
    ConstantName seModule = of("SE_MODULE", &variant::seModule);
    std::string_view phone = of("PHONE", "Phone");
    std::string_view email = of("EMAIL", "Email");
    std::string_view fax = of("FAX", "Fax");
    std::string_view modifiedBy = of("MODIFIEDBY", "Modified_By");
    std::string_view modifiedTime = of("MODIFIEDTIME", "Modified_Time");
    std::string_view recordTitle = of("NAME", "File_Name");
    std::string_view creatorID = of("SMCREATORID", "Created_By");
    ConstantName attachments = of("ATTACHMENTS", &variant::attachments);
    std::string_view whoID = of("WHO_ID", "Who_Id");
    std::string_view seStatus = of("SE_STATUS", "$status");
    std::string_view searchField = of("SEARCH_TEXT_FIELDS");
    std::string_view layout = of("LAYOUTID", "Layout");
    std::string_view company = of("COMPANY", "Company");
    std::string_view accountName = of("ACCOUNTNAME", "Account_Name");
    std::string_view potentialName = of("POTENTIALNAME", "Deal_Name");
    std::string_view productName = of("PRODUCTNAME", "Product_Name");
    std::string_view amount = of("AMOUNT", "Amount");
    std::string_view subject = of("SUBJECT", "Subject");
    std::string_view solutionTitle = of("SOLUTIONTITLE", "Solution_Title");
    std::string_view noteContents = of("NOTECONTENT", "Note_Content");
    std::string_view title = of("TITLE", "Title");
    std::string_view currencyISOCode = of("CURRENCYISOCODE", "Currency");
    std::string_view exchangeRate = of("EXCHANGERATE", "Exchange_Rate");
    std::string_view tag = of("TAG", "Tag");
    std::string_view productDetails = of("PRODUCTDETAILS", "Product_Details");
    std::string_view probablity = of("PROBABLITY", "Probablity");
    std::string_view accountID = of("ACCOUNTID", "Account_Name");
    std::string_view recurring = of("RECURRING", "Recurring_Activity");
    std::string_view contactID = of("CONTACTID", "Who_Id");
    std::string_view whatID = of("WHATID", "What_Id");
    std::string_view activityType = of("ACTIVITYTYPE", "Activity_Type");
    std::string_view callType = of("CALLTYPE", "Call_Type");
    std::string_view callStartTime = of("CALLSTARTTIME", "Call_Start_Time");
    std::string_view callDuration = of("CALLDURATION", "Call_Duration");
    std::string_view eventType = of("$EVENTTYPE", "EVENTTYPE");
    std::string_view startDateTime = of("STARTDATETIME", "Start_Date_Time");
    std::string_view endDateTime = of("ENDDATETIME", "End_Date_Time");
    std::string_view allDayEvent = of("ALLDAYEVENT", "All_day");
    std::string_view status = of("STATUS", "Status");
    std::string_view remindAt = of("REMINDAT", "Reminder");
    std::string_view priority = of("PRIORITY", "Priority");
    std::string_view dueDate = of("DUEDATE", "Due_Date");
    std::string_view salesStartDate = of("SALESSTARTDATE", "Sales_Start_Date");
    std::string_view salesEndDate = of("SALESENDDATE", "Sales_End_Date");
    std::string_view supportStartDate = of("SUPPORTSTARTDATE", "Support_Start_Date");
    std::string_view supportExpiryDate = of("SUPPORTEXPIRYDATE", "Support_Expiry_Date");
    std::string_view active = of("ACTIVE", "Active");
    std::string_view attachmentSize = of("ATTACHMENTSIZE", "Attachment_Size");
    std::string_view ownerID = of("SMOWNERID", "Owner");
    std::string_view createdTime = of("CREATEDTIME", "Created_Time");
    std::string_view createdBy = of("SMCREATORID", "Created_By");
    std::string_view description = of("DESCRIPTION", "Description");
    std::string_view allDay = of("ALLDAY", "All_Day");
    std::string_view stage = of("STAGE", "Stage");
    std::string_view twitter = of("TWITTER", "Twitter");
    std::string_view skype = of("SKYPE", "Skype");
    std::string_view website = of("WEBSITE", "Website");
    std::string_view type = of("TYPE", "Type");
    std::string_view page = of("PAGE", "Page");
    std::string_view comments = of("COMMENTS", "Comments");
    std::string_view addComment = of("ADDCOMMENT", "Add_Comment");
    std::string_view emailOptOut = of("EMAILOPTOUT", "Email_Opt_Out");
    std::string_view secondaryEmail = of("SECONDARYEMAIL", "Secondary_Email");

    LeadsConstants Leads{naming};
    ContactsConstants Contacts{naming};
    AccountsConstants Accounts{naming};
    DealsConstants Deals{naming};
    ActivitiesConstants Activities{naming};
    EventsConstants Events{naming};
    EventInviteesConstants EventInvitees{naming};
    TasksConstants Tasks{naming};
    CallsConstants Calls{naming};
    ProductsConstants Products{naming};
    CasesConstants Cases{naming};
    AttachmentsConstants Attachments{naming};
    NotesConstants Notes{naming};
    SolutionsConstants Solutions{naming};
    InvoicesConstants Invoices{naming};
    QuotesConstants Quotes{naming};
    SalesOrdersConstants SalesOrders{naming};
    PurchaseOrdersConstants PurchaseOrders{naming};
    PriceBooksConstants PriceBooks{naming};
    VendorsConstants Vendors{naming};
    CheckInConstants CheckIn{naming};
    CommentsConstants Comments{naming};
    MyJobsConstants MyJobs{naming};
    TagsConstants Tags{naming};
};

/// The names of columns of record tables, and the API names, which are the keys on the wire.
inline constexpr IdentifierConstants CRMColumnConstant{Naming::column};
inline constexpr IdentifierConstants FieldAPIConstant{Naming::api};

/// Returns the names of the naming in force. An operation calls this once, at its start.
const IdentifierConstants& FieldIdentifierConstants();

}  // namespace tarvo
