#include <cctype>
#include <map>
#include <set>

#include "platform/Text.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/Metadata.h"
#include "sandbox/data/Modules.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

struct NamePair {
    std::string column, api;
    friend bool operator==(const NamePair&, const NamePair&) = default;
    friend void PrintTo(const NamePair& names, std::ostream* out) { *out << names.column << " / " << names.api; }
};

/// Returns the names that the rule gives a member: capitals without separators, and capitalised words joined by "_".
/// Several capitals in a row are one word: "whatID" is "What_Id".
NamePair namesByRule(const std::string& member) {
    NamePair names;
    auto isCapital = [&](std::size_t i) { return i < member.size() && std::isupper(member[i]); };
    for (std::size_t i = 0; i < member.size(); ++i) {
        bool followsSmall = i > 0 && !isCapital(i - 1), precedesSmall = i + 1 < member.size() && !isCapital(i + 1);
        bool beginsWord = i == 0 || (isCapital(i) && (followsSmall || precedesSmall));
        if (beginsWord && i > 0) names.api += '_';
        names.column += static_cast<char>(std::toupper(member[i]));
        names.api += static_cast<char>(beginsWord ? std::toupper(member[i]) : std::tolower(member[i]));
    }
    return names;
}

/// The fields whose names break the rule on the server. A row with a group is for that group's member only; a row
/// without one is for the member of this name everywhere.
const std::map<std::string, NamePair> exceptions = {
    {"rowID", {"_id", "_id"}},
    {"id", {"ID", "id"}},
    {"recordId", {"RECORD_ID", "record_id"}},
    {"seid", {"SEID", "Parent_Id"}},
    {"seModule", {"SE_MODULE", "$se_module"}},
    {"seStatus", {"SE_STATUS", "$status"}},
    {"attachments", {"ATTACHMENTS", "$attachments"}},
    {"recordTitle", {"NAME", "File_Name"}},
    {"creatorID", {"SMCREATORID", "Created_By"}},
    {"ownerID", {"SMOWNERID", "Owner"}},
    {"whoID", {"WHO_ID", "Who_Id"}},
    {"searchField", {"SEARCH_TEXT_FIELDS", "SEARCH_TEXT_FIELDS"}},
    {"layout", {"LAYOUTID", "Layout"}},
    {"accountID", {"ACCOUNTID", "Account_Name"}},
    {"contactID", {"CONTACTID", "Who_Id"}},
    {"potentialName", {"POTENTIALNAME", "Deal_Name"}},
    {"currencyISOCode", {"CURRENCYISOCODE", "Currency"}},
    {"eventType", {"$EVENTTYPE", "EVENTTYPE"}},
    {"allDayEvent", {"ALLDAYEVENT", "All_day"}},
    {"remindAt", {"REMINDAT", "Reminder"}},
    {"recurring", {"RECURRING", "Recurring_Activity"}},
    {"Leads.street", {"LANE", "Street"}},
    {"Leads.zip", {"CODE", "Zip_Code"}},
    {"Leads.source", {"LEADSOURCE", "Lead_Source"}},
    {"Contacts.approved", {"se_approved", "se_approved"}},
    {"Contacts.birthday", {"BIRTHDAY", "Date_of_Birth"}},
    {"Deals.pipeline", {"pipeline", "Pipeline"}},
    {"Events.subject", {"SUBJECT", "Event_Title"}},
    {"Events.location", {"LOCATION", "Venue"}},
    {"Events.participants", {"PARTICIPANTID", "Participants"}},
    {"Events.sendNotification", {"SEND_NOTIFICATION", "$send_notification"}},
    {"EventInvitees.participant", {"PARTICIPANT", "participant"}},
    {"Notes.isCheckIn", {"IS_CHECK_IN", "$isCheckIn"}},
    {"Notes.isVoiceNote", {"IS_VOICE_DATA", "voice_note"}},
    {"Notes.noteTitle", {"TITLE", "Note_Title"}},
    {"Notes.seModule", {"SE_MODULE", "se_module"}},
    {"Notes.ownerId", {"SMOWNERID", "Owner"}},
    {"Notes.createdBy", {"SMCREATORID", "Created_By"}},
    {"Notes.size", {"ATTACHMENTSIZE", "Attachment_Size"}},
    {"Calls.status", {"CALLSTATUS", "Call_Status"}},
    {"Quotes.subject", {"QUOTESUBJECT", "Subject"}},
    {"CheckIn.latitude", {"CHECKINLATITUDE", "Latitude"}},
    {"CheckIn.longitude", {"CHECKINLONGITUDE", "Longitude"}},
    {"CheckIn.locality", {"CHECKINSTREET", "Venue"}},
    {"CheckIn.city", {"CHECKINCITY", "Check_In_City"}},
    {"CheckIn.state", {"CHECKINSTATE", "Check_In_State"}},
    {"CheckIn.country", {"CHECKINCOUNTRY", "Check_In_Country"}},
    {"CheckIn.zipCode", {"CHECKINZIPCODE", "ZIP_Code"}},
    {"CheckIn.address", {"CHECKINADDRESS", "Check_In_Address"}},
    {"CheckIn.comment", {"CHECKINCOMMENT", "Check_In_Comment"}},
    {"CheckIn.createdBy", {"CHECKINOWNERID", "Check_In_By"}},
    {"CheckIn.createdTime", {"CHECKINCREATEDTIME", "Check_In_Time"}},
    {"MyJobs.ruleName", {"approvalprocessname", "recordRuleName"}},
    {"MyJobs.transitionOrApprovalID", {"approvalprocessid", "recordApprovalOrTransitionID"}},
    {"MyJobs.recordID", {"record_id", "recordId"}},
    {"MyJobs.moduleName", {"module_name", "moduleName"}},
    {"MyJobs.recordName", {"record_name", "recordName"}},
    {"MyJobs.initiatedTime", {"initiated_time", "initiatedTime"}},
    {"MyJobs.ruleType", {"type", "ruleType"}},
    {"MyJobs.moduleDisplayName", {"display_name", "moduleDisplayName"}},
    {"MyJobs.module", {"MODULE", "module"}},
    {"MyJobs.moduleAPI", {"module_api_name", "moduleAPI"}},
    {"MyJobs.recordOwnerEmailID", {"record_owner_email", "recordOwnerEmailId"}},
    {"MyJobs.recordOwnerID", {"record_owner_id", "recordOwnerId"}},
    {"MyJobs.recordOwnerName", {"record_owner", "recordOwnerName"}},
    {"MyJobs.isApproved", {"ISAPPROVED", "$approved"}},
    {"MyJobs.approvalAction", {"APPROVAL_ACTIONS", "$approval"}},
    {"MyJobs.isInProcess", {"IN_PROCESS", "$process_flow"}},
    {"MyJobs.action", {"ACTION", "action"}},
    {"MyJobs.comments", {"COMMENTS", "comments"}},
    {"MyJobs.user", {"USER", "user"}},
    {"Tags.name", {"NAME", "name"}},
    // These name a field that has its names from another row, or from the subject of its module.
    {"createdBy", {"SMCREATORID", "Created_By"}},
    {"noteContents", {"NOTECONTENT", "Note_Content"}},
    {"Attachments.fileName", {"NAME", "File_Name"}},
    {"Contacts.accountId", {"ACCOUNTID", "Account_Name"}},
    {"Deals.contactID", {"CONTACTID", "Contact_Name"}},
    {"Events.checkInCreatedTime", {"CHECKINCREATEDTIME", "Check_In_Time"}},
    {"Products.name", {"PRODUCTNAME", "Product_Name"}},
    {"PriceBooks.name", {"PRICEBOOKNAME", "Price_Book_Name"}},
    {"Solutions.title", {"SOLUTIONTITLE", "Solution_Title"}},
    {"Vendors.name", {"VENDORNAME", "Vendor_Name"}},
};

NamePair expectedNames(const std::string& group, const std::string& member) {
    for (auto& key : {group + "." + member, member})
        if (auto found = exceptions.find(key); found != exceptions.end()) return found->second;
    return namesByRule(member);
}

/// One list of names with the texts of its members, in the order of `members`.
struct ListedNames {
    std::string group, members;
    std::vector<std::string_view> columns, apiNames;
    std::size_t listedBytes, groupBytes;  ///< a member that is missing in `members` makes the second larger
};

template <class... Names>
std::size_t bytesOf(const Names&... names) {
    return (sizeof(names) + ...);
}

std::vector<ListedNames> allNames() {
    std::vector<ListedNames> lists;
    std::size_t groupBytes = 0;
    constexpr std::size_t namingBytes = 8;
#define GROUP(NAME, ...)                                                                   \
    {                                                                                      \
        struct Reader : NAME##Constants {                                                  \
            std::vector<std::string_view> texts() const { return {__VA_ARGS__}; }          \
            std::size_t bytes() const { return bytesOf(__VA_ARGS__); }                     \
        };                                                                                 \
        Reader column{CRMColumnConstant.NAME}, api{FieldAPIConstant.NAME};                 \
        lists.push_back({#NAME, #__VA_ARGS__, column.texts(), api.texts(), column.bytes(), \
                         sizeof(NAME##Constants) - namingBytes});                          \
        groupBytes += sizeof(NAME##Constants);                                             \
    }
    // clang-format off
    GROUP(Leads, firstName, lastName, fullName, salutation, email, phone, fax, skype, twitter, description,
          company, source, status, street, city, state, country, zip, emailOptOut, secondaryEmail)
    GROUP(Contacts, firstName, lastName, fullName, salutation, email, phone, fax, skype, twitter, description,
          accountId, birthday, department, title, mailingStreet, mailingCity, mailingState, mailingCountry,
          mailingZip, otherStreet, otherCity, otherState, otherCountry, otherZip, approved, followed,
          stopProcessing, reportingToContact, emailOptOut, secondaryEmail)
    GROUP(Accounts, accountName, website, phone, industry)
    GROUP(Deals, potentialName, closingDate, ownerID, stage, amount, probablity, contactID, accountID,
          expectedRevenue, contactName, pipeline)
    GROUP(Activities, recurring, contactID, activityType)
    GROUP(Events, checkInStatus, subject, startDateTime, endDateTime, allDayEvent, location, eventType,
          checkInCreatedTime, recurring, remindAt, sendNotification, participants)
    GROUP(EventInvitees, participant, type, invited, status, email, company, accountName)
    GROUP(Tasks, subject, status, remindAt, priority, dueDate)
    GROUP(Calls, subject, callType, callStartTime, callDuration, status)
    GROUP(Products, salesStartDate, salesEndDate, supportStartDate, supportExpiryDate, active, unitPrice,
          productCode, name, category, manufacturer)
    GROUP(Cases, subject, status, priority, origin)
    GROUP(Attachments, attachmentSize, fileName)
    GROUP(Notes, isCheckIn, noteTitle, noteContent, seid, seModule, modifiedBy, ownerId, createdBy, attachments,
          size, id, isVoiceNote)
    GROUP(Solutions, title, status)
    GROUP(Invoices, subject, status)
    GROUP(Quotes, subject, stage)
    GROUP(SalesOrders, subject, status)
    GROUP(PurchaseOrders, subject, status)
    GROUP(PriceBooks, name, pricingModel, active, pricingDetails)
    GROUP(Vendors, name, website)
    GROUP(CheckIn, createdBy, createdTime, comment, latitude, longitude, locality, city, state, country,
          zipCode, address)
    GROUP(Comments, id, recordId, comment, commentBy, commentTime)
    GROUP(MyJobs, ruleName, transitionOrApprovalID, recordID, moduleName, recordName, initiatedTime, ruleType,
          moduleDisplayName, module, moduleAPI, recordOwnerEmailID, recordOwnerID, recordOwnerName, isApproved,
          approvalAction, isInProcess, action, comments, user)
    GROUP(Tags, id, name)
#define GENERAL_MEMBERS \
    rowID, id, recordId, fullName, firstName, lastName, salutation, seid, seModule, phone, email, fax, \
    modifiedBy, modifiedTime, recordTitle, creatorID, attachments, whoID, seStatus, searchField, layout, \
    company, accountName, potentialName, productName, amount, subject, solutionTitle, noteContents, \
    title, currencyISOCode, exchangeRate, tag, productDetails, probablity, accountID, recurring, \
    contactID, whatID, activityType, callType, callStartTime, callDuration, eventType, startDateTime, \
    endDateTime, allDayEvent, status, remindAt, priority, dueDate, salesStartDate, salesEndDate, \
    supportStartDate, supportExpiryDate, active, attachmentSize, ownerID, createdTime, createdBy, \
    description, allDay, stage, twitter, skype, website, type, page, comments, addComment, emailOptOut, \
    secondaryEmail
#define TEXT_OF(...) QUOTED(__VA_ARGS__)
#define QUOTED(...) #__VA_ARGS__
    struct General : IdentifierConstants {
        std::vector<std::string_view> texts() const { return {GENERAL_MEMBERS}; }
        std::size_t bytes() const { return bytesOf(GENERAL_MEMBERS); }
    };
    General column{CRMColumnConstant}, api{FieldAPIConstant};
    lists.push_back({"", TEXT_OF(GENERAL_MEMBERS), column.texts(), api.texts(), column.bytes(),
                     sizeof(IdentifierConstants) - namingBytes - groupBytes});
    // clang-format on
#undef GROUP
#undef GENERAL_MEMBERS
#undef TEXT_OF
#undef QUOTED
    return lists;
}

class IdentifierConstantsTest : public FoundationTest {};

TEST_F(IdentifierConstantsTest, NamesFollowTheRuleOrAreListedExceptions) {
    std::set<std::string> usedExceptions;
    for (auto& list : allNames()) {
        EXPECT_EQ(list.listedBytes, list.groupBytes) << "the list of " << list.group << " lacks a member";
        auto members = text::split(list.members, ", ");
        ASSERT_EQ(members.size(), list.columns.size());
        for (std::size_t i = 0; i < members.size(); ++i) {
            NamePair names{std::string(list.columns[i]), std::string(list.apiNames[i])};
            EXPECT_EQ(names, expectedNames(list.group, members[i])) << list.group << "." << members[i];
            usedExceptions.insert(list.group + "." + members[i]);
            usedExceptions.insert(members[i]);
        }
    }
    for (auto& [key, names] : exceptions) {
        EXPECT_TRUE(usedExceptions.contains(key)) << key << " is not a member";
        EXPECT_NE(names, namesByRule(key.substr(key.find('.') + 1))) << key << " follows the rule";
    }
}

/// A group may list names that its module lacks. A field that the module has goes by the same two names.
TEST_F(IdentifierConstantsTest, NamesMatchTheServersFields) {
    sandbox::IdSequence ids(1);
    auto metadata = sandbox::makeMetadata(sandbox::makeModules(ids), ids);
    std::size_t matches = 0;
    for (auto& list : allNames()) {
        auto module = list.group == "Comments" ? "CustomerModuleComments" : list.group;
        for (auto& field : metadata[module].fields) {
            bool isKnownByOneName = false, isKnownByBoth = false;
            for (std::size_t i = 0; i < list.columns.size(); ++i) {
                bool isColumn = list.columns[i] == field.column, isApiName = list.apiNames[i] == field.apiName;
                isKnownByOneName |= isColumn || isApiName;
                isKnownByBoth |= isColumn && isApiName;
            }
            EXPECT_EQ(isKnownByOneName, isKnownByBoth) << module << ": " << field.column << " / " << field.apiName;
            matches += isKnownByBoth;
        }
    }
    EXPECT_GT(matches, 130u);
}

TEST_F(IdentifierConstantsTest, NamesFollowTheNamingAndTheSettingsInForce) {
    EXPECT_EQ(FieldIdentifierConstants().Leads.street, "LANE");
    configuration().fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier();
    auto& names = FieldIdentifierConstants();
    EXPECT_EQ(names.Leads.street, "Street");
    EXPECT_EQ(names.seModule, "$se_module");
    EXPECT_EQ(names.Notes.attachments, "$attachments");
    configuration().seModule = SeModule::lumet;
    configuration().attachments = Attachments::lumet;
    EXPECT_EQ(names.seModule, "se_module");
    EXPECT_EQ(names.Notes.attachments, "attachments");
    EXPECT_EQ(CRMColumnConstant.seModule, "SE_MODULE");
}

}  // namespace
}  // namespace tarvo
