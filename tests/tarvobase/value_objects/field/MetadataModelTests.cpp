#include "sandbox/data/DataSet.h"
#include "sandbox/data/Metadata.h"
#include "sandbox/data/Modules.h"
#include "tarvobase/storage/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/Layout.h"
#include "tarvobase/value_objects/layout/LayoutMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"
#include "tarvobase/value_objects/layout/SubformLayout.h"
#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/MetadataTables.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const FieldIdentifier& columnNaming() { return FieldIdentifier::crmColumnNameIdentifier(); }
const FieldIdentifier& apiNames() { return FieldIdentifier::fieldAPINameIdentifier(); }

class MetadataModelTest : public FoundationTest {
protected:
    void openTables() {
        adapter = openDatabase();
        for (auto& table : metadataTables()) adapter->createTable(table);
        adapter->createTable(
            "CREATE TABLE PERMISSIONS (module_name, module_api_name, permission_key, permission_value, "
            "UNIQUE (module_name, permission_key))");
        fields = std::make_shared<FieldMetadataInDatabase>("MODULE_SPECIFIC_METADATA", adapter);
    }
    static FieldMetadata named(const std::string& module, const std::string& column, const std::string& apiName,
                               FieldDataType type = FieldDataType::text) {
        return {.fieldID = module + column,
                .fieldAPIName = apiName,
                .moduleName = module,
                .columnCRMName = column,
                .fieldLabel = "label of " + apiName,
                .fieldType = type};
    }
    static std::vector<std::string> columnsOf(const std::vector<FieldMetadata>& list) {
        std::vector<std::string> names;
        for (auto& field : list) names.push_back(field.columnCRMName);
        return names;
    }
    long linesWith(std::string_view piece) const {
        auto lines = logged();
        return std::count_if(lines.begin(), lines.end(),
                             [&](auto& line) { return line.find(piece) != std::string::npos; });
    }

    std::shared_ptr<KelvaDatabasePersistance> adapter;
    std::shared_ptr<FieldMetadataInDatabase> fields;
};

TEST_F(MetadataModelTest, NamesMatchTheServersFields) {
    auto list = [](const auto&... names) { return std::vector{std::string_view(names)...}; };
    auto namesByModule = [&](const IdentifierConstants& n) {
        auto& checkIn = n.CheckIn;
        auto& contacts = n.Contacts;
        auto& deals = n.Deals;
        auto& events = n.Events;
        auto& leads = n.Leads;
        auto& notes = n.Notes;
        auto& products = n.Products;
        return std::map<std::string, std::vector<std::string_view>>{
            {"Leads",
             list(leads.firstName, leads.lastName, leads.fullName, leads.salutation, leads.email, leads.phone,
                  leads.fax, leads.skype, leads.twitter, leads.description, leads.company, leads.source, leads.status,
                  leads.street, leads.city, leads.state, leads.country, leads.zip, leads.emailOptOut,
                  leads.secondaryEmail, n.id, n.ownerID, n.tag, n.layout, n.creatorID, n.createdBy, n.createdTime,
                  n.modifiedBy, n.modifiedTime, n.seStatus, n.currencyISOCode, n.exchangeRate, n.website)},
            {"Contacts",
             list(contacts.firstName, contacts.accountId, contacts.birthday, contacts.department, contacts.title,
                  contacts.mailingZip, contacts.otherStreet, contacts.mailingCountry, contacts.reportingToContact)},
            {"Accounts", list(n.Accounts.accountName, n.Accounts.industry, n.accountName)},
            {"Deals",
             list(deals.potentialName, deals.closingDate, deals.stage, deals.amount, deals.probablity, deals.contactID,
                  deals.accountID, deals.expectedRevenue, deals.pipeline, n.potentialName, n.type)},
            {"Activities", list(n.Activities.recurring, n.Activities.contactID, n.Activities.activityType, n.seModule)},
            {"Events", list(events.checkInStatus, events.subject, events.startDateTime, events.endDateTime,
                            events.allDayEvent, events.location, events.eventType, events.checkInCreatedTime,
                            events.recurring, events.remindAt, events.sendNotification, events.participants,
                            checkIn.createdBy, checkIn.comment, checkIn.latitude, checkIn.longitude, checkIn.city,
                            checkIn.state, checkIn.country, checkIn.zipCode, checkIn.address, n.whatID)},
            {"EventInvitees",
             list(n.EventInvitees.participant, n.EventInvitees.type, n.EventInvitees.invited, n.EventInvitees.status,
                  n.EventInvitees.email, n.EventInvitees.company, n.EventInvitees.accountName, n.recordId)},
            {"Tasks", list(n.Tasks.subject, n.Tasks.status, n.Tasks.remindAt, n.remindAt, n.priority, n.dueDate)},
            {"Calls", list(n.Calls.subject, n.Calls.callType, n.Calls.callStartTime, n.Calls.callDuration,
                           n.Calls.status, n.callType)},
            {"Products",
             list(products.salesStartDate, products.supportExpiryDate, products.active, products.unitPrice,
                  products.productCode, products.name, n.productName, products.category, products.manufacturer)},
            {"Cases", list(n.Cases.subject, n.Cases.origin, n.Cases.priority, n.comments)},
            {"Attachments", list(n.attachmentSize, n.Attachments.fileName, n.recordTitle, n.seid, n.seModule)},
            {"Notes", list(notes.isCheckIn, notes.noteTitle, notes.noteContent, n.noteContents, notes.seid,
                           notes.seModule, notes.modifiedBy, notes.ownerId, notes.createdBy, notes.attachments,
                           notes.size, notes.id, notes.isVoiceNote)},
            {"Solutions", list(n.Solutions.title, n.Solutions.status, n.solutionTitle)},
            {"Quotes", list(n.Quotes.subject, n.Quotes.stage, n.productDetails)},
            {"PriceBooks",
             list(n.PriceBooks.name, n.PriceBooks.pricingModel, n.PriceBooks.active, n.PriceBooks.pricingDetails)},
            {"CustomerModuleComments", list(n.Comments.id, n.Comments.recordId, n.Comments.comment,
                                            n.Comments.commentBy, n.Comments.commentTime)},
        };
    };
    sandbox::IdSequence ids(1);
    auto metadata = sandbox::makeMetadata(sandbox::makeModules(ids), ids);
    auto apiNames = namesByModule(FieldAPIConstant);
    for (auto& [module, columns] : namesByModule(CRMColumnConstant)) {
        auto& known = metadata[module].fields;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            auto column = columns[i], api = apiNames[module][i];
            EXPECT_TRUE(std::any_of(known.begin(), known.end(),
                                    [&](auto& field) { return field.column == column && field.apiName == api; }))
                << module << " has no " << column << " / " << api;
        }
    }
}

TEST_F(MetadataModelTest, NamesFollowTheNamingAndTheSettingsInForce) {
    EXPECT_EQ(FieldIdentifierConstants().Leads.street, "LANE");
    configuration().fieldIdentifier = apiNames();
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

TEST_F(MetadataModelTest, PermissionsAreWrittenInBothForms) {
    ModulePermission permission{"Leads", "Leads_API", "Create", true};
    EXPECT_EQ(ModulePermissionConstants().getDictionary(permission),
              (ValueMap{{"Modulename", "Leads"}, {"ModuleAPPIName", "Leads_API"}, {"Key", "Create"}, {"Value", true}}));
    EXPECT_EQ(ModulePermissionDatabaseConstants().getDictionary(permission).valueOf("permission_value"), Value("true"));
}

TEST_F(MetadataModelTest, RelatedListsAreWrittenInBothForms) {
    RelatedList list{.moduleName = "Contacts", .relatedModuleName = "Invited", .relatedOrder = 3};
    EXPECT_EQ(ModuleRelatedListConstants().getValue(ModuleRelatedListConstants().getDictionary(list)), list);
    EXPECT_EQ(ModuleRelatedListDatabaseConstants().getDictionary(list).valueOf("related_order"), Value("3"));
}

TEST_F(MetadataModelTest, FieldsAreWrittenInBothForms) {
    auto field = named("Leads", "LANE", "Street");
    field.displayPrefs = {{"decimal_place", "2"}};
    auto plain = FieldMetadataConstants().getDictionary(field);
    EXPECT_EQ(plain.valueOf("FiledID"), Value("LeadsLANE"));
    EXPECT_EQ(FieldMetadataConstants().getValue(plain).value(), field);
    auto row = FieldMetadataDatabaseConstants().getDictionary(field);
    EXPECT_EQ(row.valueOf("additional_info"), Value(R"({"decimal_place":"2"})"));
    EXPECT_EQ(row.valueOf("max_length"), Value("0"));
    EXPECT_EQ(row.valueOf("visible"), Value("false"));
}

TEST_F(MetadataModelTest, PreferencesThatJsonCannotExpressAreLeftOut) {
    auto field = named("Leads", "LANE", "Street");
    field.displayPrefs = {{"decimal_place", std::nan("")}};
    EXPECT_FALSE(FieldMetadataDatabaseConstants().getDictionary(field).contains("additional_info"));
    EXPECT_TRUE(wasLogged("displayPrefs: "));
}

TEST_F(MetadataModelTest, AModeIsASetOfBitsAndDefaultsToDisplay) {
    struct {
        std::string mode;
        int number;
        bool display, edit, create;
    } cases[] = {{"5", 5, true, false, true},   {"", 1, true, false, false}, {"x", 1, true, false, false},
                 {"0", 0, false, false, false}, {"7", 7, true, true, true},  {"99999999999", 1, true, false, false}};
    for (auto& one : cases) {
        FieldMetadata field{.mode = one.mode};
        EXPECT_EQ(field.integerMode(), one.number) << one.mode;
        EXPECT_EQ(field.displayMode().contains(DisplayMode::display), one.display) << one.mode;
        EXPECT_EQ(field.displayMode().contains(DisplayMode::edit), one.edit) << one.mode;
        EXPECT_EQ(field.displayMode().contains(DisplayMode::create), one.create) << one.mode;
        EXPECT_TRUE(field.displayMode().contains(DisplayMode::none)) << one.mode;
    }
}

TEST_F(MetadataModelTest, ASubformsModuleIsAPairOfTexts) {
    using Info = FieldMetadata::SubformModuleInfo;
    struct {
        Value subform;
        std::optional<Info> info;
    } cases[] = {{ValueList{"7", "Milestones"}, Info{"7", "Milestones"}},
                 {ValueList{"7", "Milestones", "more"}, std::nullopt},
                 {ValueList{"7"}, std::nullopt},
                 {ValueList{7, "Milestones"}, std::nullopt},
                 {"Milestones", std::nullopt},
                 {Value(), std::nullopt}};
    for (auto& one : cases)
        EXPECT_EQ((FieldMetadata{.displayPrefs = {{"subform", one.subform}}}.getSubformModuleInfo()), one.info);
    EXPECT_EQ(FieldMetadata().getSubformModuleInfo(), std::nullopt);
}

TEST_F(MetadataModelTest, PeopleAreRecognisedByTypeTargetOrParent) {
    auto lookup = [](const std::string& module) {
        auto field = named("Tasks", "X", "x", FieldDataType::lookup);
        field.lookupModule = module;
        return field;
    };
    EXPECT_TRUE(lookup("Leads").isLookupNameField());
    EXPECT_FALSE(lookup("Accounts").isLookupNameField());
    EXPECT_TRUE(named("Tasks", "X", "x", FieldDataType::userLookup).isLookupNameField());
    EXPECT_TRUE(named("Notes", "SEID", "Parent_Id").isLookupNameField());
    configuration().fieldIdentifier = apiNames();
    EXPECT_TRUE(named("Notes", "SEID", "Parent_Id").isLookupNameField());
    EXPECT_FALSE(named("Notes", "SEID", "Other").isLookupNameField());
}

TEST_F(MetadataModelTest, FieldsAreFoundInBothNamings) {
    openTables();
    // Stored against the order of ids and names, which the indexes of the table follow.
    auto lane = named("Leads", "LANE", "Street"), code = named("Leads", "CODE", "Zip_Code");
    auto owner = named("Deals", "SMOWNERID", "Owner", FieldDataType::ownerlookup);
    lane.isMproxyMetadata = true;
    code.fieldLabel = "it's a label";
    code.displayPrefs = {{"subform", ValueList{"1", "x"}}};
    fields->storeFieldMetadata({lane, owner, code});

    EXPECT_EQ(fields->getFieldMetadata("Leads"), (std::vector{lane, code}));
    EXPECT_EQ(fields->getFieldMetadata(ModuleIdentifier::Case::deals)->size(), 1u);
    EXPECT_EQ(fields->getFieldMetadata(FieldDataType::ownerlookup), std::vector{owner});
    EXPECT_EQ(fields->getFieldMetadataByFieldAPIName("Leads", "Zip_Code"), code);
    EXPECT_EQ(fields->getFieldMetadataByCrmColumnName("Leads", "Zip_Code"), std::nullopt);
    EXPECT_EQ(columnsOf(*fields->getFieldMetadataByCrmColumnList("Leads", {"CODE", "LANE", "X"})),
              (std::vector<std::string>{"LANE", "CODE"}));
    EXPECT_EQ(columnsOf(*fields->getSortFieldList("Leads")), std::vector<std::string>{"CODE"});
    EXPECT_THAT(*fields->getFieldMetadata("Nobody"), IsEmpty());
    EXPECT_EQ(fields->getFieldMetadata("Nobody", std::nullopt, {}).error(), MetadataError::notFound);
    EXPECT_EQ(fields->getFieldMetadata("Leads", std::vector<std::string>{}, {}).error(), MetadataError::notFound);

    auto byModule = fields->getFieldMetadataByModuleNames({"Leads", "Deals", "Nobody"},
                                                          {{FieldColumnName::FieldAPIName, SortOrder::descending}});
    ASSERT_TRUE(byModule.ok());
    EXPECT_EQ(byModule->size(), 2u);
    EXPECT_EQ(byModule->at("Leads"), (std::vector{code, lane}));
    for (auto& [naming, identifier] : {std::pair(columnNaming(), "CODE"), std::pair(apiNames(), "Zip_Code")}) {
        configuration().fieldIdentifier = naming;
        EXPECT_EQ(fields->getFieldMetadata("Leads", std::vector<std::string>{identifier}, {}).value(),
                  std::vector{code});
    }
    adapter->dropTable("MODULE_SPECIFIC_METADATA");
    EXPECT_EQ(fields->getFieldMetadata("Leads"), std::nullopt);
    EXPECT_FALSE(fields->getFieldMetadata("Leads", std::nullopt, {}).ok());
}

TEST_F(MetadataModelTest, ALengthSortsAsANumberAndAModulesNameIsEscaped) {
    openTables();
    auto one = named("O'Brien", "A", "a"), two = named("O'Brien", "B", "b");
    one.maxLength = 1000, two.maxLength = 90;
    fields->storeFieldMetadata({one, two});
    EXPECT_EQ(fields->getFieldMetadata("O'Brien", std::nullopt, {{FieldColumnName::MaxLength}}).value(),
              (std::vector{two, one}));
    EXPECT_EQ(fields->getSortFieldList("O'Brien"), (std::vector{one, two}));
    EXPECT_THAT(*fields->getSortFieldList("' or '1'='1"), IsEmpty());
}

TEST_F(MetadataModelTest, ADamagedFieldIsLeftOutAndTheOthersAreRead) {
    openTables();
    fields->storeFieldMetadata({named("Leads", "A", "a"), named("Leads", "B", "b"), named("Leads", "C", "c")});
    adapter->execute("UPDATE MODULE_SPECIFIC_METADATA SET field_type = 'hologram' WHERE crm_col_name = 'A'", {});
    adapter->execute(
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
    EXPECT_EQ(FieldList().allFields().size(), 0u);
}

TEST_F(FieldListTest, FindsPicklistsInTheNamingThatItWasBuiltWith) {
    forBothLists([&](const FieldList& list) {
        EXPECT_EQ(list.getPicklist(stage), (std::vector{won, lost}));
        EXPECT_EQ(list.getPicklistByApiName("Stage").size(), 2u);
        EXPECT_THAT(list.getPicklist(closing), IsEmpty());
        EXPECT_THAT(list.getPicklistByApiName("Nothing"), IsEmpty());
        EXPECT_EQ(list.getPicklistByActualValue(stage, "Lost")->fieldOptionalValue, "");
        EXPECT_EQ(list.getPicklistByDisplayValue(stage, "Gewonnen")->fieldActualValue, "Won");
        EXPECT_EQ(list.getPicklistByDisplayValue(stage, "Nobody"), nullptr);
    });
}

TEST_F(FieldListTest, SelectsFieldsByApiNameTypeAndMode) {
    forBothLists([&](const FieldList& list) {
        EXPECT_EQ(list.getFieldByApiName("Closing_Date")->columnCRMName, "CLOSINGDATE");
        EXPECT_EQ(list.getFieldByApiName("CLOSINGDATE"), nullptr);
        EXPECT_EQ(list.getAllLookupFields().size(), 1u);
        EXPECT_EQ(list.getAllDateAndDateTimeFields().size(), 1u);
        EXPECT_EQ(list.getFields(FieldDataType::picklist).size(), 1u);
        EXPECT_EQ(list.getAllFields(DisplayMode::edit).size(), 2u);
        EXPECT_EQ(list.getAllFields(DisplayMode::edit | DisplayMode::create).size(), 1u);
    });
}

TEST_F(MetadataModelTest, PicklistsComeInTheOrderOfTheirPositions) {
    openTables();
    PicklistMetadataInDatabase picklists(configuration().databaseAdapter.get());
    auto value = [](const std::string& module, const std::string& layout, const std::string& actual, int position) {
        return PicklistMetadata{.fieldActualValue = actual,
                                .fieldID = "f",
                                .fieldAPIName = "Stage",
                                .crmColumnName = "STAGE",
                                .moduleName = module,
                                .layoutID = layout,
                                .position = position};
    };
    picklists.storePicklistMetadata({value("Deals", "1", "A", 10), value("Deals", "1", "B", 9),
                                     value("Deals", "2", "C", 1), value("Quotes", "3", "D", 1)});
    auto actual = [](const auto& rows) {
        std::vector<std::string> values;
        for (auto& row : *rows) values.push_back(row.fieldActualValue);
        return values;
    };
    EXPECT_THAT(actual(picklists.getPicklistMetadataForModuleWith("Deals")), ElementsAre("C", "B", "A"));
    EXPECT_THAT(actual(picklists.getPicklistMetadataForModuleWith("Deals", "1")), ElementsAre("B", "A"));
    EXPECT_THAT(actual(picklists.getPicklist("Deals", "1", {Criteria::equalTo("field_actual_value", "A")})),
                ElementsAre("A"));
    EXPECT_THAT(actual(picklists.getPicklistMetadataByCrmColumnList("Quotes", {"STAGE"})), ElementsAre("D"));
    EXPECT_EQ(picklists.getPicklistMetadataByFieldID("f")->size(), 4u);
    auto byModule = picklists.getPicklistMetadataByModuleNames({"Deals", "Quotes", "Leads"});
    EXPECT_EQ(byModule->size(), 2u);
    EXPECT_THAT(actual(std::optional(byModule->at("Deals"))), ElementsAre("C", "B", "A"));
    adapter->execute("UPDATE PICKLIST_METADATA SET field_actual_value = NULL WHERE layout_id = '1'", {});
    EXPECT_THAT(actual(picklists.getPicklistMetadataForModuleWith("Deals")), ElementsAre("C"));
    EXPECT_EQ(PicklistMetadataInDatabase(nullptr).getPicklistMetadataForModuleWith("Deals"), std::nullopt);
}

class LayoutModelTest : public MetadataModelTest {
protected:
    void SetUp() override {
        MetadataModelTest::SetUp();
        openTables();
        layouts.emplace(adapter);
        deals = FieldList("Deals", {named("Deals", "STAGE", "Stage"), named("Deals", "AMOUNT", "Amount")}, {});
    }
    static LayoutFieldData place(const std::string& layout, const std::string& column, const std::string& apiName,
                                 int position = 0) {
        return {.layoutID = layout,
                .fieldID = "Deals" + column,
                .fieldAPIName = apiName,
                .crmColumnName = column,
                .moduleName = "Deals",
                .sectionName = "deal",
                .sectionDV = "Geschäft",
                .isSubformSection = true,
                .sectionSequence = 1,
                .mandatory = true,
                .defaultValue = "x",
                .fieldPosition = position,
                .additionalInfo = ValueMap{{"maximum_rows", 3}}};
    }
    FieldList deals;
    /// Over the open database.
    std::optional<LayoutMetadataInDatabase> layouts;
};

TEST_F(LayoutModelTest, ARowIsJoinedWithItsFieldInBothNamings) {
    configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = true;
    layouts->storeLayoutMetadata(
        {place("1", "STAGE", "Stage", 10), place("1", "AMOUNT", "Amount", 9), place("1", "GONE", "Gone", 1)});
    for (auto& naming : {columnNaming(), apiNames()}) {
        FieldList list("Deals", {named("Deals", "STAGE", "Stage"), named("Deals", "AMOUNT", "Amount")}, {}, naming);
        auto rows = *layouts->getLayoutMetadata("Deals", list, {{LayoutFieldColumnName::fieldPosition}});
        ASSERT_THAT(columnsOf({rows.begin(), rows.end()}), ElementsAre("AMOUNT", "STAGE"));
        EXPECT_EQ(rows[1].fieldLabel, "label of Stage");
        EXPECT_EQ(rows[1].sectionDV, "Geschäft");
        EXPECT_EQ(rows[1].fieldPosition, 10);
        EXPECT_TRUE(rows[1].isSubformSection);
        EXPECT_EQ(rows[1].additionalInfo->valueOf("maximum_rows"), Value(3));
        layouts->storeLayoutMetadata(rows);
    }
    EXPECT_EQ(adapter->count("LAYOUT_SPECIFIC_METADATA", Criteria::equalTo("default_value", "x")), 3)
        << "stored again in their own rows";
}

TEST_F(LayoutModelTest, TwoColumnsFollowTheirSetting) {
    struct {
        bool isWritten, isRead;
    } cases[] = {{false, true}, {true, false}, {true, true}};
    for (auto& one : cases) {
        adapter->deleteAllObjects("LAYOUT_SPECIFIC_METADATA");
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = one.isWritten;
        layouts->storeLayoutMetadata(std::vector{place("1", "STAGE", "Stage")});
        configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = one.isRead;
        auto rows = *layouts->getLayoutMetadata("Deals", deals);
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_EQ(rows[0].isSubformSection, one.isWritten && one.isRead);
        EXPECT_EQ(rows[0].additionalInfo.has_value(), one.isWritten && one.isRead);
    }
}

TEST_F(LayoutModelTest, MandatoryIsReadLeniently) {
    struct {
        std::string sql;
        bool isMandatory;
    } cases[] = {{"1", true}, {"'true'", true}, {"0", false}, {"'false'", false}, {"'1'", false}, {"NULL", false}};
    layouts->storeLayoutMetadata(std::vector{place("1", "STAGE", "Stage")});
    for (auto& one : cases) {
        adapter->execute("UPDATE LAYOUT_SPECIFIC_METADATA SET mandatory = " + one.sql, std::nullopt);
        EXPECT_EQ(layouts->getLayoutMetadata("Deals", deals)->at(0).mandatory, one.isMandatory) << one.sql;
    }
}

TEST_F(LayoutModelTest, RowsAreGroupedByModuleAndByLayout) {
    auto quote = place("3", "STAGE", "Stage");
    quote.moduleName = "Quotes";
    layouts->storeLayoutMetadata({place("1", "STAGE", "Stage"), place("2", "AMOUNT", "Amount"), quote});
    FieldList quotes("Quotes", {named("Quotes", "STAGE", "Stage")}, {});
    auto byModule =
        *layouts->getLayoutMetadata(ModuleFieldsMap{{"Deals", deals}, {"Quotes", quotes}, {"Leads", {}}}, {});
    EXPECT_EQ(byModule.size(), 2u);
    EXPECT_EQ(byModule["Deals"].size(), 2u);
    EXPECT_EQ(byModule["Quotes"].at(0).moduleName, "Quotes");

    auto byLayout = *layouts->getLayoutMetadatas({"1", "2", "3", "9"}, {{"Deals", deals}});
    EXPECT_EQ(byLayout.size(), 2u);
    EXPECT_TRUE(wasLogged("moduleName or fields not found"));
    EXPECT_EQ(layouts->getLayoutMetadata({ModuleLayoutInfo{.layoutID = "2"}, ModuleLayoutInfo{.layoutID = "3"}}, deals)
                  ->size(),
              1u);
    EXPECT_EQ(*layouts->getModuleNames({"1", "3", "9"}),
              (std::unordered_map<std::string, std::string>{{"1", "Deals"}, {"3", "Quotes"}}));
    EXPECT_EQ(layouts->getModuleName("3"), "Quotes");
    EXPECT_EQ(layouts->getModuleName("9"), std::nullopt);
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

TEST_F(MetadataModelTest, LayoutInfosAreFoundByModuleNameAndId) {
    openTables();
    ModuleLayoutInfoInDatabase infos("MODULE_LAYOUT_INFO", adapter);
    ModuleLayoutInfo standard{"Leads", "1", "Standard", true, true}, closed{"Leads", "2", "Internal", false, false};
    infos.storeModuleLayoutInfo({standard, closed});
    EXPECT_EQ(infos.getModuleLayoutInfoByModuleName("Leads"), (std::vector{standard, closed}));
    EXPECT_EQ(infos.getModuleLayoutInfoForModuleName("Leads", "Internal"), closed);
    EXPECT_EQ(infos.getModuleLayoutInfoForModuleName("Deals", "Internal"), std::nullopt);
    EXPECT_EQ(infos.getModuleLayoutInfoByLayoutId("1"), standard);
    EXPECT_EQ(infos.getModuleLayoutInfoByModuleNames({"Leads", "Deals"})->size(), 1u);
}

TEST_F(MetadataModelTest, OnlyLayoutsThatTheProfileMayUseAreOffered) {
    ModuleLayoutInfo standard{"Leads", "1", "Standard", true, true}, closed{"Leads", "2", "Internal", false, true};
    LayoutInfo<int> layouts;
    layouts.orderedLayouts.set("2", Layout<int>(closed, 20));
    EXPECT_EQ(layouts.getDefaultLayout(), nullptr);
    layouts.orderedLayouts.set("1", Layout<int>(standard, 10));
    EXPECT_EQ(layouts.getDefaultLayout()->metadata, 10);
    ASSERT_EQ(layouts.getAllLayouts().size(), 1u);
    EXPECT_EQ(layouts.getAllLayouts().front().layoutName, "Standard");
    EXPECT_EQ(layouts.getLayout("2")->metadata, 20) << "a record may have it";
}

TEST_F(MetadataModelTest, ASubformFieldNamesItsLayoutAndModule) {
    FieldMetadata field{.fieldType = FieldDataType::subform,
                        .displayPrefs = {{"subform", ValueList{"77", "Lines_Api"}}}};
    LayoutFieldData place{.additionalInfo =
                              ValueMap{{"subform_layout_id", 55}, {"maximum_rows", "40"}, {"reorder_rows", true}}};
    EXPECT_EQ(SubformLayoutMetadata::of({place, field}), (SubformLayoutMetadata{"55", "Lines_Api", "77", 40, true}));
    EXPECT_EQ(SubformLayoutMetadata::of({LayoutFieldData(), field}), (SubformLayoutMetadata{"", "Lines_Api", "77"}));
    field.fieldType = FieldDataType::text;
    EXPECT_EQ(SubformLayoutMetadata::of({place, field}), std::nullopt);
}

TEST_F(MetadataModelTest, SubformLayoutsAreOfferedLikeOthers) {
    OrderedLayoutFieldList fields("Lines", "55", {}, {}, columnNaming());
    SubformLayoutInfo layouts;
    for (bool isAccessible : {false, true}) {
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
    EXPECT_NE(layouts.getLayout("56"), nullptr);
}

TEST_F(MetadataModelTest, RelatedListsAreSortedByTheirNumberAndTakeTheirColumn) {
    openTables();
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
    EXPECT_THAT(*lists.getModuleRelatedWith("Leads", "Nobody"), IsEmpty());
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
    EXPECT_EQ(RelatedList().defaultSortField(), (SortField{"MODIFIEDTIME", false}));
    EXPECT_EQ(RelatedList().defaultSortFieldApi(), (SortField{"Modified_Time", false}));
}

TEST_F(MetadataModelTest, InMemoryFiltersUseTheNamesOfMembers) {
    InMemoryObject<FieldMetadata> field(named("Leads", "LANE", "Street", FieldDataType::email));
    EXPECT_TRUE(field["fieldAPIName"].isEqual("Street"));
    EXPECT_TRUE(field["fieldType"].isEqual(FieldDataType::email));
    EXPECT_FALSE(field["fieldType"].isEqual("email"));
    EXPECT_TRUE(field["isUnique"].isEqual(false));
    EXPECT_TRUE(field["FieldAPIName"].isEqual(""));
    InMemoryObject<LayoutMetadata> place{LayoutMetadata({.layoutID = "1", .fieldPosition = 4}, field.value)};
    EXPECT_TRUE(place["fieldPosition"].isEqual(4));
    EXPECT_TRUE(place["columnCRMName"].isEqual("LANE"));
}

}  // namespace
}  // namespace tarvo
