#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/RecordFunctions.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

namespace {

using namespace std::string_literals;
using T = FieldDataType;
using Names = std::vector<std::string>;

}  // namespace

TEST_F(RecordTableTest, RefusedRecordDoesNotCostItsPage) {
    makeLeads({{"Amount", T::text}, {"Gone", T::text}}, ", CHECK (AMOUNT != 'refuse me')");
    Names expected, all;
    for (int i = 0; i < 40; ++i) {
        bool isBad = i % 9 == 4;
        auto id = "r" + std::to_string(i), amount = isBad ? "refuse me"s : "1"s;
        all.push_back(R"([["id",")" + id + R"("],["Gone","x"],["Amount",")" + amount + R"("]])");
        if (!isBad) expected.push_back(id);
    }
    auto page = "[" + text::join(all, ",") + "]";
    EXPECT_EQ(records->storePage(wireOf(page), "Leads"), expected);
    EXPECT_EQ(idsOf(records->fetchRecords({.module = {.moduleName = "Leads"}})), text::join(expected, " "));
    EXPECT_TRUE(wasLogged("refuses the records r4, r13, r22, r31"));
    EXPECT_TRUE(wasLogged("no column GONE"));
    EXPECT_FALSE(wasLogged("refuse me"));
    adapter().deleteAllObjects("LeadsRecords");
    records->storeRecord(dictionariesOf(page), "Leads");
    EXPECT_EQ(adapter().count("LeadsRecords", std::nullopt), 36);
}

TEST_F(RecordTableTest, ModuleWithoutFieldsStoresAndReadsNothing) {
    makeLeads({});
    EXPECT_EQ(records->storePage(wireOf(R"([[["id","1"]]])"), "Strangers"), std::nullopt);
    EXPECT_FALSE(records->storeRecord(dictionariesOf(R"([[["id","1"]]])"), "Strangers"));
    EXPECT_EQ(records->fetchRecords({.module = {.moduleName = "Strangers"}}), std::nullopt);
}

TEST_F(RecordTableTest, ValuesWithoutAColumnInTheTableGiveNoRows) {
    makeLeads({{"Name", T::text}}, "", "TEXT DEFAULT 'none'");
    EXPECT_FALSE(records->saveRecordDictionary({{"NOBODY", "x"}, {"OTHERS", "y"}}, ModuleIdentifier::Case::leads));
    EXPECT_FALSE(records->saveRecordDictionary(std::vector<ValueMap>{{{"ID", "1"}, {"NOBODY", "x"}}, {{"NOBODY", "y"}}},
                                               ModuleIdentifier::Case::leads));
    EXPECT_EQ(cells("LeadsRecords", {"ID", "NAME"}), R"("1",null)");
}

TEST_F(RecordTableTest, NamesOfModulesMayNeedQuotes) {
    std::string module = "Odd-Module 1";
    makeModule(module, {});
    adapter().createTable("CREATE TABLE \"" + module + "_CUSTOM_VIEW_RECORDS\" (cv_id, record, module_name)");
    CVRecordMapInDatabase map(configuration().databaseAdapter.get());
    for (auto id : {"1", "2", "3"}) {
        EXPECT_TRUE(records->storeRecord(Record(id, module), module));
        EXPECT_TRUE(map.store(Names{id}, "view", module));
    }
    EXPECT_TRUE(map.hasMoreThan(2, "view", module));
    EXPECT_TRUE(map.delete_("view", {"1"}, module));
    EXPECT_FALSE(map.hasMoreThan(2, "view", module));
    EXPECT_TRUE(records->deleteRecord("1", module));
    EXPECT_TRUE(records->modifyRecord(module, Record("2", module)));
    EXPECT_EQ(idsOf(records->fetchRecords({.module = {.moduleName = module}})), "2 3");
}

TEST_F(RecordTableTest, AnyStoredValueIsFoundByItself) {
    makeLeads({{"Company", T::text}, {"$status", T::text}});
    ValueList values{"\"x\"", "_", "", 7, 2.5, nullptr};
    for (auto& text : difficultTexts()) values.push_back(text);
    int id = 0;
    for (auto& value : values)
        records->saveRecordDictionary({{"ID", std::to_string(id++)}, {"COMPANY", value}, {"$STATUS", value}},
                                      ModuleIdentifier::Case::leads);
    id = 0;
    for (auto& value : values) {
        EXPECT_EQ(where("COMPANY", value), std::to_string(id)) << id;
        EXPECT_EQ(where("$STATUS", value), std::to_string(id)) << id;
        EXPECT_EQ(row(std::to_string(id++)).valueOf("$STATUS"), value);
    }
    EXPECT_EQ(where("NOBODY", "x"), "failed");
}

TEST_F(RecordTableTest, ConditionsCompareWithListsBooleansAndColumns) {
    makeLeads({{"Company", T::text}, {"Other", T::text}});
    fillLeads({{{"ID", "1"}, {"COMPANY", "it's"}, {"OTHER", "it's"}},
               {{"ID", "2"}, {"COMPANY", 7}, {"OTHER", "a"}},
               {{"ID", "3"}, {"COMPANY", "true"}},
               {{"ID", "4"}, {"COMPANY", "false"}}});
    EXPECT_EQ(where("COMPANY", ValueList{"it's", "nobody", 7}), "1 2");
    EXPECT_EQ(where("COMPANY", ValueList()), "");
    EXPECT_EQ(where("COMPANY", true), "3") << "as the server's text";
    RecordQuery query{.module = {.moduleName = "Leads"}};
    query.equalColumnNames = std::map<std::string, std::string>{{"COMPANY", "OTHER"}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "1");
    EXPECT_EQ(records->countRecords(query), 1);
}

TEST_F(RecordTableTest, AllConditionsMustHoldEachAsAWhole) {
    makeLeads({{"Company", T::text}, {"$status", T::text}});
    for (auto& [id, text] : {std::pair("0", "it's"), {"1", "\"x\""}, {"2", "100%"}})
        fillLeads({{{"ID", id}, {"COMPANY", text}, {"$STATUS", text}}});
    RecordQuery query{.module = {.moduleName = "Leads"}, .customQuery = "ID = '0' OR ID = '1'"};
    query.columnNamesAndValues = ValueMap{{"$STATUS", ValueList{"\"x\"", "100%"}}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "1");
    query.filters = {
        ColumnFilter{.column = "COMPANY", .filterInputValues = {{"%"}}, .filterType = StringFilterTypes::contains}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "");
    EXPECT_EQ(records->countRecords(query), 0);
}

/// Leads with a name, a phone, tags and a date, in each naming.
class RecordWriteTest : public RecordTableTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        use(GetParam());
        makeLeads({{"Name", T::text}, {"Phone", T::text}, {"Tag", T::text}, {"Born", T::date}});
        id = idColumn(), name = identifier("Name"), phone = identifier("Phone"), tag = identifier("Tag");
    }
    void storeWire(const std::string& record) { records->storeRecord(dictionariesOf("[" + record + "]"), "Leads"); }

    std::string id, name, phone, tag;
};
INSTANTIATE_TEST_SUITE_P(Namings, RecordWriteTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& one) { return one.param == Naming::column ? "columns" : "apiNames"; });

TEST_P(RecordWriteTest, StoringReplacesARecordAndModifyingMergesIntoIt) {
    storeWire(R"([["id","1"],["Name","A"],["Phone","5"],["Born","1970-01-02"]])");
    records->modifyRecord("Leads",
                          dictionariesOf(R"([[["id","1"],["Name","B"],["Tag",[[["id","7"],["name","n"]]]]]])"));
    EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "B"}, {phone, "5"}, {tag, 1}, {identifier("Born"), 86400}}));
    storeWire(R"([["id","1"],["Name","C"]])");
    EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "C"}}));
    records->modifyRecord("Leads", ValueMap{{"Name", "lost"}});
    EXPECT_TRUE(wasLogged("INVALID RECORD. NO ID"));
    EXPECT_EQ(records->countRecords({.module = {.moduleName = "Leads"}}), 1);
}

TEST_P(RecordWriteTest, TagsOfARecordAreStoredAsTheirNumber) {
    storeWire(R"([["id","1"],["Name","C"]])");
    auto record = RecordInDatabase::recordsOf(*adapter().fetchAllObjects("LeadsRecords"),
                                              FieldList("Leads", {field("Leads", "id")}, {}))[0];
    record.set(phone, "6");
    record.set(tag, ValueList{ValueMap{{"id", "7"}}, ValueMap()});
    records->modifyRecord("Leads", record);
    EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "C"}, {phone, "6"}, {tag, 2}}));
}

TEST_P(RecordWriteTest, ServerIdReplacesTheTemporaryOneAndARowThatCameUnderIt) {
    storeWire(R"([["id","2"],["Name","old"],["Born","1970-01-02"]])");
    records->storeRecord(Record(ValueMap{{phone, "9"}}, "NEW_000000001", "Leads"), "Leads");
    records->updateRecord(Record(ValueMap{{name, "D"}}, "2", "Leads"), "NEW_000000001", "Leads");
    EXPECT_EQ(row("2"), (ValueMap{{id, "2"}, {name, "D"}, {phone, "9"}}));
    EXPECT_EQ(records->fetchRecord("Leads", "NEW_000000001"), std::nullopt);
    records->updateRecord(Record(ValueMap{{name, "F"}}, "2", "Leads"), "nobody", "Leads");
    EXPECT_EQ(row("2").valueOf(name), Value("D")) << "without a row to replace, the stored one stays";
}

TEST_P(RecordWriteTest, DeletesNamedRecordsOnly) {
    for (auto each : {"1", "2", "3"}) records->storeRecord(Record(each, "Leads"), "Leads");
    EXPECT_EQ(idsOf(records->fetchRecords("Leads", Names{"2", "1", "nobody"})), "1 2");
    records->deleteRecords(Names{"1", "nobody"}, "Leads");
    records->deleteRecord("'2'", "Leads");
    EXPECT_EQ(idsOf(records->fetchRecords("Leads", ValueMap(), std::nullopt)), "2 3");
}

/// Participants of two events, in each naming. A participant's record id is not the key of its rows.
class ParticipantTest : public RecordTableTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        use(GetParam());
        makeModule(module, {field(module, "participant"), field(module, "Status")});
        for (auto& [key, person] : {std::pair("k1", "ada"), {"k2", "bob"}, {"k3", "ada"}})
            records->storeRecord(ValueMap{{"id", key}, {"participant", person}, {"Status", "invited"}}, module);
    }
    std::string rows() {
        return cells("EventInviteesRecords ORDER BY 1",
                     {identifier("id"), identifier("participant"), identifier("Status")});
    }
    const std::string module = "EventInvitees";
};
INSTANTIATE_TEST_SUITE_P(Namings, ParticipantTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& one) { return one.param == Naming::column ? "columns" : "apiNames"; });

TEST_P(ParticipantTest, IsFoundByItsRecordId) {
    EXPECT_EQ(records->fetchRecord(module, "bob")->recordId(), "bob");
    EXPECT_EQ(idsOf(records->fetchRecords(module, Names{"bob", "ada"})), "ada bob ada");
    EXPECT_EQ(records->fetchRecord(module, "k1"), std::nullopt);
}

TEST_P(ParticipantTest, IsChangedInTheEventThatItWasReadFrom) {
    auto record = records->fetchRecords(module, Names{"ada"})->at(1);
    record.set(identifier("Status"), "yes");
    EXPECT_TRUE(records->modifyRecord(module, record));
    EXPECT_EQ(rows(), R"("k1","ada","invited";"k2","bob","invited";"k3","ada","yes")");
    EXPECT_TRUE(records->modifyRecord(module, Record(ValueMap{{identifier("Status"), "no"}}, "bob", module)));
    EXPECT_EQ(rows(), R"("k1","ada","invited";"k2","bob","no";"k3","ada","yes")");
}

TEST_P(ParticipantTest, TakesANewRecordIdInEveryEvent) {
    EXPECT_TRUE(records->updateRecord(Record(ValueMap(), "bob", module), "ada", module));
    EXPECT_EQ(rows(), R"("k1","bob","invited";"k2","bob","invited";"k3","bob","invited")");
}

TEST_P(ParticipantTest, IsDeletedByItsRecordId) {
    EXPECT_TRUE(records->deleteRecord("bob", module));
    EXPECT_EQ(rows(), R"("k1","ada","invited";"k3","ada","invited")");
    EXPECT_TRUE(records->deleteRecords(Names{"ada"}, module));
    EXPECT_EQ(rows(), "");
}

/// Four leads whose columns each sort in another order.
class RecordReadTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        makeLeads({{"Status", T::picklist},
                   {"Amount", T::currency},
                   {"Owner", T::ownerlookup},
                   {"Layout", T::text},
                   {"Name", T::text},
                   {"Empty", T::picklist},
                   {"Gone", T::text}});
        storePicklist(field("Leads", "Status"), "1", {"New", "100%", "Lost"});
        fillLeads({{{"ID", "1"}, {"STATUS", "lost"}, {"AMOUNT", "10"}, {"OWNER_LOOKUP", "b"}, {"LAYOUT", "y"}},
                   {{"ID", "2"}, {"STATUS", "100%"}, {"AMOUNT", "9"}, {"OWNER_LOOKUP", "C"}, {"LAYOUT", "z"}},
                   {{"ID", "3"}, {"STATUS", "NEW"}, {"AMOUNT", "100"}, {"OWNER_LOOKUP", "a"}, {"LAYOUT", "x"}},
                   {{"ID", "4"}, {"STATUS", "1000"}, {"AMOUNT", "-1"}, {"OWNER_LOOKUP", "d"}, {"LAYOUT", "w"}}});
        adapter().execute("UPDATE LeadsRecords SET OWNER = '9'", std::nullopt);
    }
    static RecordQuery sortedByAmount(std::optional<Names> columns) {
        return {.module = {.moduleName = "Leads"},
                .columnsToFetch = std::move(columns),
                .columnsToSortWith = std::vector<Sort<std::string>>{{"AMOUNT"}}};
    }
};

TEST_F(RecordReadTest, SortsByWhatAFieldShows) {
    const std::pair<std::vector<Sort<std::string>>, const char*> cases[] = {
        {{{"AMOUNT"}}, "4 2 1 3"},
        {{{"AMOUNT", SortOrder::descending}}, "3 1 2 4"},
        {{{"OWNER"}}, "3 1 2 4"},
        {{{"STATUS"}}, "4 3 2 1"},
        {{{"STATUS", SortOrder::descending}}, "4 3 2 1"},
        {{{"EMPTY"}, {"NOBODY"}, {"LAYOUT"}}, "4 3 1 2"}};
    for (auto& [sorts, ids] : cases)
        for (auto columns : {std::optional<Names>(), std::optional(Names{"NAME"})}) {
            RecordQuery query{.module = {.moduleName = "Leads"}, .columnsToFetch = columns, .columnsToSortWith = sorts};
            EXPECT_EQ(idsOf(records->fetchRecords(query)), ids) << sorts[0].column;
        }
}

TEST_F(RecordReadTest, NamedColumnsComeWithTheirCompanions) {
    auto read = records->fetchRecords(sortedByAmount(Names{"OWNER", "NOBODY", "GONE"})).value();
    EXPECT_EQ(read[1].getDictionary(), (ValueMap{{"OWNER", "9"}, {"OWNER_LOOKUP", "C"}, {"ID", "2"}}));
    for (auto name : {"_id", "GONE"}) EXPECT_TRUE(read[1].hasColumn(name)) << name;
    EXPECT_FALSE(read[1].hasColumn("NOBODY"));
    EXPECT_EQ(records->fetchRecordsFor("Leads", "2", {"AMOUNT"})->getDictionary(),
              (ValueMap{{"ID", "2"}, {"AMOUNT", "9"}}));
}

TEST_F(RecordReadTest, RangesSkipAndLimitRows) {
    auto query = sortedByAmount(std::nullopt);
    query.from = 1;
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "2 1 3");
    query.limit = 1;
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "2");
    EXPECT_EQ(records->fetchRecord("Leads", "nobody"), std::nullopt);
}

TEST_F(RecordReadTest, ViewsReadByTheMetadataOfTheirCaller) {
    ModuleInfo info;
    info.module.moduleName = "Leads";
    info.metadata =
        FieldList("Leads", {field("Leads", "Owner", T::ownerlookup), field("Leads", "Amount", T::currency)}, {});
    CustomView view;
    view.offlineQuery = "";
    ViewRecordQuery query{
        .customView = view, .moduleInfo = info, .sortBy = std::vector<SortField>{{"AMOUNT", false}}, .from = 2};
    EXPECT_EQ(idsOf(records->getRecords(query)), "2 4");
    EXPECT_EQ(records->countRecords(query), 4);
    EXPECT_EQ(RecordInDatabase::getColumnNameList(Names{"OWNER", "odd"}, info),
              (Names{"OWNER", "OWNER_LOOKUP", "odd", "ID"}));
}

TEST_F(RecordTableTest, NumericIdsAndStoredAttachmentsAreReadAsTexts) {
    makeLeads({{"Attachments", T::text}}, "", "INTEGER");
    const Bytes list{R"(["8","9"])"}, broken{"{"};
    for (auto& [id, stored, read] : std::vector<std::tuple<std::string, Value, Value>>{
             {"70", list, ValueList{"8", "9"}}, {"71", broken, broken}, {"72", "8,9", "8,9"}}) {
        records->saveRecordDictionary({{"ID", id}, {"ATTACHMENTS", stored}}, ModuleIdentifier::Case::leads);
        EXPECT_EQ(row(id), (ValueMap{{"ID", id}, {"ATTACHMENTS", read}}));
    }
}

TEST_F(RecordTableTest, AttachmentsOfNotesAreStoredJoined) {
    makeModule("Notes", {field("Notes", "Attachments")});
    for (auto& stored : {Value("8,9"), Value(Bytes{R"(["8","9"])"})}) {
        records->saveRecordDictionary({{"ID", "1"}, {"ATTACHMENTS", stored}}, ModuleIdentifier::Case::notes);
        auto note = records->fetchRecord("Notes", "1").value();
        EXPECT_EQ(note.valueOf("ATTACHMENTS"), Value(ValueList{"8", "9"}));
        records->storeRecord(note, "Notes");
        EXPECT_EQ(cells("NotesRecords", {"ATTACHMENTS"}), "\"8,9\"");
    }
}

TEST_F(RecordTableTest, ParentsThatAreShownByAPersonsName) {
    auto parent = field("Notes", "Parent_Id");
    parent.columnCRMName = "SEID";
    for (auto [module, isName] : {std::pair("Leads", true), {"Contacts", true}, {"Deals", false}}) {
        Record note(ValueMap{{"SE_MODULE", module}}, "1", "Notes");
        EXPECT_EQ(isSeidAndNameField(parent, note), isName) << module;
        EXPECT_FALSE(isSeidAndNameField(field("Notes", "Owner"), note));
    }
}

}  // namespace tarvo
