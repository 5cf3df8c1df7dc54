#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/get_metadata/GetRecordCount.h"
#include "tarvobase/get_metadata/ReduceMetadataForEdit.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/RecordFunctions.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordParser.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tests/tarvobase/MetadataFixture.h"

namespace tarvo {

namespace {

using namespace std::string_literals;
using T = FieldDataType;
using Names = std::vector<std::string>;

platform::Data pageOf(const std::string& records) {
    return platform::Data(R"({"response":{"result":[{"info":{"module":"Leads"},"data":)" + records + "}]}}");
}
std::vector<ValueMap> dictionariesOf(const std::string& records) {
    return RecordParser<>().parse(pageOf(records)).value().result[0].value().data.value();
}
WireRecords wireOf(const std::string& records) {
    return WireRecordsParser::parse(pageOf(records)).value().result[0].value().data.value();
}

std::string idsOf(const RecordPersistanceDelegate::Records& records) {
    if (!records) return "failed";
    Names ids;
    for (auto& record : *records) ids.push_back(record.recordId());
    return text::join(ids, " ");
}

}  // namespace

class RecordTableTest : public MetadataTest {
protected:
    /// Fields with the id in front, and the module's table with their columns but for a field "Gone". `rule` is what
    /// the table asks besides.
    void makeModule(const std::string& module, std::vector<FieldMetadata> fields, const std::string& rule = "",
                    const std::string& idType = "TEXT") {
        fields.insert(fields.begin(), field(module, "id"));
        storeModule(module, fields);
        Names columns;
        for (auto& each : fields) {
            auto name = each.fieldIdentifier();
            if (each.fieldAPIName == "Gone") continue;
            columns.push_back("\"" + name + "\"" + (columns.empty() ? " " + idType + " NOT NULL UNIQUE" : ""));
            if (each.isLookUpField()) columns.push_back("\"" + name + "_LOOKUP\"");
        }
        adapter().createTable("CREATE TABLE " + module + "Records (" + text::join(columns, ", ") + rule + ")");
        records = RecordInDatabase::make(configuration().databaseAdapter.get());
    }
    /// Leads with fields of these names; a type where it is no text.
    void makeLeads(const std::vector<std::pair<std::string, T>>& names, const std::string& rule = "",
                   const std::string& idType = "TEXT") {
        std::vector<FieldMetadata> fields;
        for (auto& [name, type] : names) fields.push_back(field("Leads", name, type));
        makeModule("Leads", fields, rule, idType);
    }
    /// The cells of some columns: rows by ";", cells by ",", in the order of the rows.
    std::string cells(const std::string& table, const Names& columns) {
        auto rows = adapter().fetchObjects("SELECT " + text::join(columns, ", ") + " FROM " + table, std::nullopt);
        if (!rows) return "failed";
        Names lines;
        for (auto row : *rows) {
            Names line;
            for (std::size_t i = 0; i < columns.size(); ++i)
                line.push_back(json::write(row.cell(i).copy()).value_or("?"));
            lines.push_back(text::join(line, ","));
        }
        return text::join(lines, ";");
    }
    std::string idColumn() const { return identifier("id"); }
    /// What a lead has values for.
    ValueMap row(const std::string& id) {
        auto record = records->fetchRecord("Leads", id);
        return record ? record->getDictionary() : ValueMap{{"no record", true}};
    }

    std::shared_ptr<RecordInDatabase> records;
};

TEST_F(RecordTableTest, PagesAndDictionariesAreStoredAlikeWithWhatHangsOnThem) {
    struct Case {
        const char *module, *list, *dependent;
    };
    const Case cases[] = {{"Events", "Participants", "EventInvitees"},
                          {"PriceBooks", "Pricing_Details", "PriceBookPricing"},
                          {"Solutions", "Comments", "CustomerModuleComments"},
                          {"Quotes", "Product_Details", "InventoryProducts"},
                          {"Notes", "$attachments", "Attachments"}};
    adapter().createTable("CREATE TABLE Tags_Records (tag_id, tag_name, module_name, record_id)");
    for (auto naming : {Naming::column, Naming::api})
        for (auto& c : cases) {
            SCOPED_TRACE(std::string(c.module) + (naming == Naming::column ? " by columns" : " by API names"));
            use(naming);
            bool isNotes = c.module == "Notes"s;
            auto list = field(c.module, c.list, T::subform);
            if (isNotes) list.columnCRMName = "ATTACHMENTS";
            auto target = Value(ValueList{"7", std::string(c.module) + "Rows_Api"});
            for (auto& table : {c.module + "Rows"s, std::string(c.dependent), std::string(c.module)})
                adapter().dropTable(table + "Records");
            makeModule(c.module + "Rows"s, {field(c.module + "Rows"s, "Text")}, ", record_id");
            makeModule(c.dependent, {field(c.dependent, "participant"), field(c.dependent, "When", T::date)},
                       isNotes ? "" : ", record_id");
            makeModule(c.module, {field(c.module, "Tag"), list, subform(c.module, "Rows", target),
                                  subform(c.module, "Elsewhere", ValueList{"8", "Nowhere_Api"})});
            auto page = R"([[["id","1"],["L",[[["id","a"],["When","1970-01-02"]],[["id","b"]]]],
                            ["Tag",[[["id","t"],["name","hot"]],[["id","u"]]]],["Rows",[[["id","r"],["Text","it's"]]]]],
                           [["id","2"],["L",[]],["Tag",[]],["Rows",[]]], [["Tag",[[["id","lost"]]]]], 7,
                           [["id","3"],["L",[[["id","c"]]]],["Elsewhere",[[["id","x"]],[["id","y"]]]]], [["id","1"],["Tag",[[["id","v"]]]],["L",[[["id","a"]]]]]])"s;
            for (auto at = page.find("\"L\""); at != page.npos; at = page.find("\"L\""))
                page.replace(at + 1, 1, c.list);

            auto names = [&](std::initializer_list<const FieldMetadata*> fields) {
                Names columns{idColumn()};
                for (auto each : fields) columns.push_back("\"" + each->fieldIdentifier() + "\"");
                return columns;
            };
            auto tag = field(c.module, "Tag"), rows = field(c.module, "Rows"), others = field(c.module, "Elsewhere");
            auto when = field(c.dependent, "When");
            auto everything = [&] {
                Names dependent{idColumn(), "\"" + when.fieldIdentifier() + "\""};
                if (!isNotes) dependent.push_back("record_id");
                return cells(c.module + "Records"s, names({&list, &tag, &rows, &others})) + "\n" +
                       cells(c.dependent + "Records"s, dependent) + "\n" +
                       cells(c.module + "RowsRecords"s, {idColumn(), "record_id"}) + "\n" +
                       cells("Tags_Records", {"tag_id", "tag_name", "module_name", "record_id"});
            };
            platform::Clock::setTimeZone("UTC");
            adapter().execute("INSERT INTO Tags_Records VALUES ('old', 'old', '', '1'), ('kept', 'k', '', '3')", {});
            adapter().insertInto(c.dependent + "Records"s, {{idColumn(), "stays"}});
            auto quotedModule = "\"" + std::string(c.module) + "\"";
            auto expected = (isNotes ? R"("2","",0,0,null;"3","c",null,null,2;"1","a",1,null,null)"
                                     : R"("2",0,0,0,null;"3",1,null,null,2;"1",1,1,null,null)") +
                            "\n"s +
                            (isNotes ? R"("stays",null;"b",null;"c",null;"a",null)"
                                     : R"("stays",null,null;"b",null,"1";"c",null,"3";"a",null,"1")") +
                            "\n" + R"("r","1")" + "\n" +
                            R"("kept","k","","3";"t","hot",M,"1";"u",null,M,"1";"v",null,M,"1")";
            for (auto at = expected.find(",M,"); at != expected.npos; at = expected.find(",M,"))
                expected.replace(at + 1, 1, quotedModule);

            EXPECT_EQ(records->storeRecord(wireOf(page), c.module), (Names{"1", "2", "3", "1"}));
            EXPECT_EQ(everything(), expected);
            for (auto table : {c.module + "Records"s, c.module + "RowsRecords"s, c.dependent + "Records"s})
                adapter().deleteAllObjects(table);
            adapter().insertInto(c.dependent + "Records"s, {{idColumn(), "stays"}});
            records->storeRecord(dictionariesOf(page), c.module);
            EXPECT_EQ(everything(), expected);
            adapter().deleteAllObjects("Tags_Records");
            adapter().execute("DELETE FROM MODULE_SPECIFIC_METADATA", {});
        }
}

TEST_F(RecordTableTest, OneRecordNeverCostsItsPage) {
    makeLeads({{"Amount", T::text}, {"Gone", T::text}}, ", CHECK (AMOUNT != 'refuse me')");
    Names expected;
    std::string page = "[";
    for (int i = 0; i < 40; ++i) {
        bool isBad = i % 9 == 4;
        page += (i ? "," : "") + R"([["id","r)"s + std::to_string(i) + R"("],["Gone","x"],["Amount",")" +
                (isBad ? "refuse me" : "1") + "\"]]";
        if (!isBad) expected.push_back("r" + std::to_string(i));
    }
    page += "]";
    EXPECT_EQ(records->storeRecord(wireOf(page), "Leads"), expected);
    EXPECT_EQ(idsOf(records->fetchRecords({.module = {.moduleName = "Leads"}})), text::join(expected, " "));
    EXPECT_TRUE(wasLogged("refuses the records r4, r13, r22, r31"));
    EXPECT_TRUE(wasLogged("no column GONE"));
    EXPECT_FALSE(wasLogged("refuse me"));
    adapter().deleteAllObjects("LeadsRecords");
    records->storeRecord(dictionariesOf(page), "Leads");
    EXPECT_EQ(adapter().count("LeadsRecords", std::nullopt), 36);
    EXPECT_TRUE(records->storeRecord(wireOf(page), "Strangers").empty());
    EXPECT_EQ(records->fetchRecords({.module = {.moduleName = "Strangers"}}), std::nullopt);
}

TEST_F(RecordTableTest, ConditionsMeanWhatTheySay) {
    auto status = field("Leads", "$status");
    makeModule("Leads", {field("Leads", "Company"), field("Leads", "Other"), status});
    const Value values[] = {"it's",
                            "\"x\"",
                            "100%",
                            "1000",
                            "_",
                            "a\0b"s,
                            "\xF0\x9F\x98\x80",
                            "COMPANY",
                            "",
                            "\\",
                            "{2}",
                            "'); DROP TABLE LeadsRecords; --",
                            std::string(100'000, 'x'),
                            7,
                            2.5,
                            nullptr};
    auto where = [&](const std::string& column, const Value& value) {
        return idsOf(records->fetchRecords("Leads", ValueMap{{column, value}}, std::nullopt));
    };
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
    EXPECT_EQ(where("COMPANY", ValueList{"it's", "nobody", 7}), "0 13");
    EXPECT_EQ(where("COMPANY", ValueList()), "");
    records->saveRecordDictionary({{"ID", "t"}, {"COMPANY", "true"}, {"OTHER", "true"}}, ModuleIdentifier::Case::leads);
    EXPECT_EQ(where("COMPANY", true), "t");
    EXPECT_EQ(where("NOBODY", "x"), "failed");

    // All conditions must hold, each as a whole.
    RecordQuery query{.module = {.moduleName = "Leads"}};
    query.equalColumnNames = std::map<std::string, std::string>{{"COMPANY", "OTHER"}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "t");
    EXPECT_EQ(records->countRecords(query), 1);
    query = {.module = {.moduleName = "Leads"}, .customQuery = "ID = '0' OR ID = '1'"};
    query.columnNamesAndValues = ValueMap{{"$STATUS", ValueList{"\"x\"", "100%"}}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "1");
    query.filters = {
        ColumnFilter{.column = "COMPANY", .filterInputValues = {{"%"}}, .filterType = StringFilterTypes::contains}};
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "");
    EXPECT_EQ(records->countRecords(query), 0);
}

TEST_F(RecordTableTest, StoringReplacesModifyingMerges) {
    for (auto naming : {Naming::column, Naming::api}) {
        use(naming);
        adapter().dropTable("LeadsRecords");
        adapter().execute("DELETE FROM MODULE_SPECIFIC_METADATA", {});
        makeLeads({{"Name", T::text}, {"Phone", T::text}, {"Tag", T::text}, {"Born", T::date}});
        auto id = idColumn(), name = identifier("Name"), phone = identifier("Phone"), tag = identifier("Tag");
        auto wire = [](const std::string& record) { return dictionariesOf("[" + record + "]"); };
        records->storeRecord(wire(R"([["id","1"],["Name","A"],["Phone","5"],["Born","1970-01-02"]])"), "Leads");
        records->modifyRecord("Leads", wire(R"([["id","1"],["Name","B"],["Tag",[[["id","7"],["name","n"]]]]])"));
        EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "B"}, {phone, "5"}, {tag, 1}, {identifier("Born"), 86400}}));
        records->storeRecord(wire(R"([["id","1"],["Name","C"]])"), "Leads");
        EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "C"}}));
        records->modifyRecord("Leads", ValueMap{{"Name", "lost"}});
        EXPECT_TRUE(wasLogged("INVALID RECORD. NO ID"));

        // A record with tags as dictionaries of the wire become them; none is ever bound.
        auto record = RecordInDatabase::recordsOf(*adapter().fetchAllObjects("LeadsRecords"),
                                                  FieldList("Leads", {field("Leads", "id")}, {}))[0];
        record.set(phone, "6");
        record.set(tag, ValueList{ValueMap{{"id", "7"}}, ValueMap()});
        records->modifyRecord("Leads", record);
        EXPECT_EQ(row("1"), (ValueMap{{id, "1"}, {name, "C"}, {phone, "6"}, {tag, 2}}));
        records->storeRecord(Record(ValueMap{{phone, "9"}}, "NEW_000000001", "Leads"), "Leads");
        records->updateRecord(Record(ValueMap{{name, "D"}}, "2", "Leads"), "NEW_000000001", "Leads");
        EXPECT_EQ(row("2"), (ValueMap{{id, "2"}, {name, "D"}, {phone, "9"}}));
        EXPECT_EQ(records->fetchRecord("Leads", "NEW_000000001"), std::nullopt);
        // The record came under its new id before its temporary one was given up.
        records->storeRecord(Record("NEW_000000002", "Leads"), "Leads");
        records->updateRecord(Record(ValueMap{{name, "E"}}, "2", "Leads"), "NEW_000000002", "Leads");
        EXPECT_EQ(row("2"), (ValueMap{{id, "2"}, {name, "E"}}));
        records->updateRecord(Record(ValueMap{{name, "F"}}, "2", "Leads"), "nobody", "Leads");
        EXPECT_EQ(row("2").valueOf(name), Value("E"));
        EXPECT_EQ(idsOf(records->fetchRecords("Leads", Names{"2", "1", "nobody"})), "1 2");
        records->deleteRecords(Names{"1", "nobody"}, "Leads");
        records->deleteRecord("'2'", "Leads");
        EXPECT_EQ(records->countRecords({.module = {.moduleName = "Leads"}}), 1);
    }
}

TEST_F(RecordTableTest, ReadsNameTheirColumnsOrderAndPlace) {
    makeLeads({{"Status", T::picklist},
               {"Amount", T::currency},
               {"Owner", T::ownerlookup},
               {"Layout", T::text},
               {"Name", T::text},
               {"Empty", T::picklist},
               {"Gone", T::text}});
    storePicklist(field("Leads", "Status"), "1", {"New", "100%", "Lost"});
    auto fill = [&](const char* id, const char* status, const char* amount, const char* owner, const char* layout) {
        records->saveRecordDictionary({{"ID", id},
                                       {"STATUS", status},
                                       {"AMOUNT", amount},
                                       {"OWNER_LOOKUP", owner},
                                       {"OWNER", "9"},
                                       {"LAYOUT", layout}},
                                      ModuleIdentifier::Case::leads);
    };
    fill("1", "lost", "10", "b", "y");
    fill("2", "100%", "9", "C", "z");
    fill("3", "NEW", "100", "a", "x");
    fill("4", "1000", "-1", "d", "w");
    struct Case {
        std::vector<Sort<std::string>> sorts;
        const char* ids;
    };
    const Case cases[] = {{{{"AMOUNT"}}, "4 2 1 3"},
                          {{{"AMOUNT", SortOrder::descending}}, "3 1 2 4"},
                          {{{"OWNER"}}, "3 1 2 4"},
                          {{{"STATUS"}}, "4 3 2 1"},
                          {{{"STATUS", SortOrder::descending}}, "4 3 2 1"},
                          {{{"EMPTY"}, {"NOBODY"}, {"LAYOUT"}}, "4 3 1 2"}};
    for (auto& c : cases)
        for (auto columns : {std::optional<Names>(), std::optional(Names{"NAME"})}) {
            RecordQuery query{
                .module = {.moduleName = "Leads"}, .columnsToFetch = columns, .columnsToSortWith = c.sorts};
            EXPECT_EQ(idsOf(records->fetchRecords(query)), c.ids) << c.sorts[0].column;
        }
    RecordQuery query{.module = {.moduleName = "Leads"}, .columnsToFetch = Names{"OWNER", "NOBODY", "GONE"}};
    query.columnsToSortWith = std::vector<Sort<std::string>>{{"AMOUNT"}};
    query.from = 1;
    auto read = records->fetchRecords(query).value();
    EXPECT_EQ(idsOf(read), "2 1 3");
    EXPECT_EQ(read[0].getDictionary(), (ValueMap{{"OWNER", "9"}, {"OWNER_LOOKUP", "C"}, {"ID", "2"}}));
    for (auto name : {"_id", "GONE"}) EXPECT_TRUE(read[0].hasColumn(name)) << name;
    EXPECT_FALSE(read[0].hasColumn("NOBODY"));
    query.limit = 1;
    EXPECT_EQ(idsOf(records->fetchRecords(query)), "2");
    EXPECT_EQ(records->fetchRecordsFor("Leads", "2", {"AMOUNT"})->getDictionary(),
              (ValueMap{{"ID", "2"}, {"AMOUNT", "9"}}));

    auto fields = records->fetchRecord("Leads", "nobody");
    EXPECT_EQ(fields, std::nullopt);
    ModuleInfo info;
    info.module.moduleName = "Leads";
    info.metadata =
        FieldList("Leads", {field("Leads", "Owner", T::ownerlookup), field("Leads", "Amount", T::currency)}, {});
    CustomView view;
    view.offlineQuery = "";
    ViewRecordQuery ofView{
        .customView = view, .moduleInfo = info, .sortBy = std::vector<SortField>{{"AMOUNT", false}}, .from = 2};
    EXPECT_EQ(idsOf(records->getRecords(ofView)), "2 4");
    EXPECT_EQ(records->countRecords(ofView), 4);
    EXPECT_EQ(RecordInDatabase::getColumnNameList(Names{"OWNER", "odd"}, info),
              (Names{"OWNER", "OWNER_LOOKUP", "odd", "ID"}));
}

TEST_F(RecordTableTest, TheServersColumnTypesMakeNoOtherRecords) {
    makeLeads({{"Attachments", T::text}}, "", "INTEGER");
    makeModule("Notes", {field("Notes", "Attachments")});
    const Bytes list{R"(["8","9"])"}, broken{"{"};
    for (auto& [id, stored, read] : std::vector<std::tuple<std::string, Value, Value>>{
             {"70", list, ValueList{"8", "9"}}, {"71", broken, broken}, {"72", "8,9", "8,9"}}) {
        records->saveRecordDictionary({{"ID", id}, {"ATTACHMENTS", stored}}, ModuleIdentifier::Case::leads);
        EXPECT_EQ(row(id), (ValueMap{{"ID", id}, {"ATTACHMENTS", read}}));
    }
    for (auto& stored : {Value("8,9"), Value(list)}) {
        records->saveRecordDictionary({{"ID", "1"}, {"ATTACHMENTS", stored}}, ModuleIdentifier::Case::notes);
        auto note = records->fetchRecord("Notes", "1").value();
        EXPECT_EQ(note.valueOf("ATTACHMENTS"), Value(ValueList{"8", "9"}));
        records->storeRecord(note, "Notes");
        EXPECT_EQ(cells("NotesRecords", {"ATTACHMENTS"}), "\"8,9\"");
    }
}

TEST_F(RecordTableTest, SmallerRecordsCountsAndParents) {
    makeLeads({{"Owner", T::ownerlookup}});
    Record lead(ValueMap{{"OWNER", "9"}, {"OWNER_LOOKUP", "shown"}, {"PHONE", "5"}}, "1", "Leads");
    auto reduced = ReduceMetadataForEdit::reduce({lead}, {"OWNER", "FAX"}, ModuleIdentifier::Case::leads);
    ASSERT_EQ(reduced.size(), 1u);
    EXPECT_EQ(reduced[0].getDictionary(), (ValueMap{{"ID", "1"}, {"OWNER", "9"}, {"OWNER_LOOKUP", "shown"}}));
    EXPECT_TRUE(reduced[0].hasColumn("FAX"));

    records->storeRecord(lead, "Leads");
    auto defaults = std::make_shared<BrenUserDefaults>();
    auto count = GetRecordCount::make("Leads", configuration().databaseAdapter.get(), defaults);
    EXPECT_EQ(count->getCount(), 1);
    EXPECT_EQ(count->getLastSyncTime(), std::nullopt);
    RecordSyncSettingsPersistance(defaults).storeLastModifiedTime("2024-02-29T10:00:00Z", "Leads");
    EXPECT_EQ(count->getLastSyncTime(), "2024-02-29T10:00:00Z");

    auto parent = field("Notes", "Parent_Id");
    parent.columnCRMName = "SEID";
    for (auto [module, isName] : {std::pair("Leads", true), {"Contacts", true}, {"Deals", false}}) {
        Record note(ValueMap{{"SE_MODULE", module}}, "1", "Notes");
        EXPECT_EQ(isSeidAndNameField(parent, note), isName) << module;
        EXPECT_FALSE(isSeidAndNameField(field("Notes", "Owner"), note));
    }
}

}  // namespace tarvo
