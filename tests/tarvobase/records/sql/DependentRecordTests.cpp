#include "platform/Clock.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/records/sql/DependentRecords.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

namespace {

using namespace std::string_literals;
using T = FieldDataType;
using Names = std::vector<std::string>;

/// A module, the list of its records, and the module of the rows in it.
struct DependentCase {
    const char *module, *list, *dependent;
};
const DependentCase dependentCases[] = {{"Events", "Participants", "EventInvitees"},
                                        {"PriceBooks", "Pricing_Details", "PriceBookPricing"},
                                        {"Solutions", "Comments", "CustomerModuleComments"},
                                        {"Quotes", "Product_Details", "InventoryProducts"},
                                        {"Notes", "$attachments", "Attachments"}};

/// Records with lists that are full, empty and absent, one of them twice and one without an id. "L" is the list.
const char* const page = R"([[["id","1"],["L",[[["id","a"],["When","1970-01-02"]],[["id","b"]]]],
                              ["Tag",[[["id","t"],["name","hot"]],[["id","u"]]]],["Rows",[[["id","r"],["Text","it's"]]]]],
                             [["id","2"],["L",[]],["Tag",[]],["Rows",[]]], [["Tag",[[["id","lost"]]]]], 7,
                             [["id","3"],["L",[[["id","c"]]]],["Elsewhere",[[["id","x"]],[["id","y"]]]]],
                             [["id","1"],["Tag",[[["id","v"]]]],["L",[[["id","a"]]]]]])";

}  // namespace

/// The page above, stored in both namings, as a page and as dictionaries.
class DependentRecordTest : public RecordTableTest, public ::testing::WithParamInterface<DependentCase> {
protected:
    bool isNotes() const { return GetParam().module == "Notes"s; }
    std::string tableOf(const std::string& module) const { return module + "Records"; }
    std::string rowsModule() const { return GetParam().module + "Rows"s; }

    void makeModules() {
        auto& [module, listName, dependent] = GetParam();
        for (auto& each : {rowsModule(), std::string(dependent), std::string(module)})
            adapter().dropTable(tableOf(each));
        adapter().dropTable("Tags_Records");
        adapter().execute("DELETE FROM MODULE_SPECIFIC_METADATA", {});
        adapter().createTable("CREATE TABLE Tags_Records (tag_id, tag_name, module_name, record_id)");
        list = field(module, listName, T::subform);
        if (isNotes()) list.columnCRMName = "ATTACHMENTS";
        makeModule(rowsModule(), {field(rowsModule(), "Text")}, ", record_id");
        makeModule(dependent, {field(dependent, "participant"), field(dependent, "When", T::date)},
                   isNotes() ? "" : ", record_id");
        makeModule(module, {field(module, "Tag"), list, subform(module, "Rows", ValueList{"7", rowsModule() + "_Api"}),
                            subform(module, "Elsewhere", ValueList{"8", "Nowhere_Api"})});
    }
    std::string pageOfModule() const {
        std::string text = page;
        for (auto at = text.find("\"L\""); at != text.npos; at = text.find("\"L\""))
            text.replace(at + 1, 1, GetParam().list);
        return text;
    }

    /// Runs a check after each way of storing the page. `prepare` runs before it is stored.
    void storeEachWay(const std::function<void()>& prepare, const std::function<void()>& check) {
        platform::Clock::setTimeZone("UTC");
        for (auto naming : {Naming::column, Naming::api})
            for (bool asPage : {true, false}) {
                SCOPED_TRACE((naming == Naming::column ? "by columns, "s : "by API names, "s) +
                             (asPage ? "as a page" : "as dictionaries"));
                use(naming);
                makeModules();
                prepare();
                if (asPage)
                    EXPECT_EQ(records->storePage(wireOf(pageOfModule()), GetParam().module),
                              (Names{"1", "2", "3", "1"}));
                else
                    records->storeRecord(dictionariesOf(pageOfModule()), GetParam().module);
                check();
            }
    }
    void storeEachWay(const std::function<void()>& check) {
        storeEachWay([] {}, check);
    }
    std::string quoted(const FieldMetadata& field) const { return "\"" + field.fieldIdentifier() + "\""; }

    FieldMetadata list;
};
INSTANTIATE_TEST_SUITE_P(Modules, DependentRecordTest, ::testing::ValuesIn(dependentCases),
                         [](auto& one) { return one.param.module; });

TEST_P(DependentRecordTest, RecordsHoldTheNumbersOfTheirRows) {
    storeEachWay([&] {
        auto module = GetParam().module;
        EXPECT_EQ(cells(tableOf(module), {idColumn(), quoted(list), quoted(field(module, "Tag")),
                                          quoted(field(module, "Rows")), quoted(field(module, "Elsewhere"))}),
                  isNotes() ? R"("2","",0,0,null;"3","c",null,null,2;"1","a",1,null,null)"
                            : R"("2",0,0,0,null;"3",1,null,null,2;"1",1,1,null,null)");
    });
}

TEST_P(DependentRecordTest, DependentRowsNameTheirParentAndFormerOnesStay) {
    auto dependent = GetParam().dependent;
    auto prepare = [&] { adapter().insertInto(tableOf(dependent), {{idColumn(), "stays"}}); };
    storeEachWay(prepare, [&] {
        Names columns{idColumn(), quoted(field(dependent, "When"))};
        if (!isNotes()) columns.push_back("record_id");
        EXPECT_EQ(cells(tableOf(dependent), columns),
                  isNotes() ? R"("stays",null;"b",null;"c",null;"a",null)"
                            : R"("stays",null,null;"b",null,"1";"c",null,"3";"a",null,"1")");
    });
}

TEST_P(DependentRecordTest, RowsOfSubformsGoToTheirModule) {
    storeEachWay([&] { EXPECT_EQ(cells(tableOf(rowsModule()), {idColumn(), "record_id"}), R"("r","1")"); });
}

TEST_P(DependentRecordTest, TagsOfTheNamedRecordsAreReplaced) {
    auto prepare = [&] {
        adapter().execute("INSERT INTO Tags_Records VALUES ('old', 'old', '', '1'), ('kept', 'k', '', '3')", {});
    };
    storeEachWay(prepare, [&] {
        std::string module = GetParam().module;
        EXPECT_EQ(cells("Tags_Records", {"tag_id", "tag_name", "record_id"}),
                  R"("kept","k","3";"t","hot","1";"u",null,"1";"v",null,"1")");
        EXPECT_EQ(cells("Tags_Records", {"module_name"}),
                  R"("";")" + module + R"(";")" + module + R"(";")" + module + "\"");
    });
}

/// A page of one event with a participant and a tag.
class PageTransactionTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        use(Naming::api);
        adapter().createTable("CREATE TABLE Tags_Records (tag_id, tag_name, module_name, record_id)");
        adapter().createTable("CREATE TABLE Events_CUSTOM_VIEW_RECORDS (cv_id, record, module_name)");
        makeModule("EventInvitees", {field("EventInvitees", "participant")}, ", record_id");
        makeModule("Events", {field("Events", "Tag"), field("Events", "Participants", T::eventParticipant)});
    }
    std::optional<Names> storePage(RecordPersistanceDelegate::PageWork alongside) {
        return records->storePage(
            wireOf(R"([[["id","1"],["Tag",[[["id","t"],["name","hot"]]]],["Participants",[[["id","p"]]]]]])"), "Events",
            alongside);
    }
    std::string rowCounts() {
        Names counts;
        for (auto table : {"EventsRecords", "EventInviteesRecords", "Tags_Records", "Events_CUSTOM_VIEW_RECORDS"})
            counts.push_back(std::to_string(adapter().count(table, std::nullopt).value_or(-1)));
        return text::join(counts, " ");
    }
    bool addToView(const Names& ids) {
        CVRecordMapInDatabase map(configuration().databaseAdapter.get());
        return map.store(ids, "view", "Events");
    }
};

TEST_F(PageTransactionTest, RecordsRowsTagsAndTheViewAreOneCommit) {
    const std::pair<const char*, std::function<bool(const Names&)>> undone[] = {
        {"the caller gives up", [&](auto& ids) { return addToView(ids) && false; }},
        {"a write of the caller fails",
         [&](auto&) { return !adapter().execute("INSERT INTO Nowhere VALUES (1)", {}); }}};
    for (auto& [what, alongside] : undone) {
        EXPECT_EQ(storePage(alongside), std::nullopt) << what;
        EXPECT_EQ(rowCounts(), "0 0 0 0") << what;
    }
    EXPECT_EQ(storePage([&](auto& ids) { return addToView(ids); }), Names{"1"});
    EXPECT_EQ(rowCounts(), "1 1 1 1");
}

TEST_F(PageTransactionTest, FailedDependentRowsUndoThePage) {
    adapter().execute("CREATE TRIGGER refuse BEFORE INSERT ON Tags_Records BEGIN SELECT no_such_function(); END",
                      std::nullopt);
    EXPECT_EQ(storePage([](auto&) { return true; }), std::nullopt);
    EXPECT_EQ(rowCounts(), "0 0 0 0");
}

TEST_F(PageTransactionTest, TablesThatAreMissingDoNotCostThePage) {
    adapter().dropTable("Tags_Records");
    adapter().dropTable("EventInviteesRecords");
    EXPECT_EQ(storePage([](auto&) { return true; }), Names{"1"});
    EXPECT_TRUE(wasLogged("the database has no table EventInviteesRecords"));
}

TEST_F(PageTransactionTest, TagsOfRecordsHaveAnIndex) {
    auto& database = *configuration().databaseAdapter.get();
    EXPECT_TRUE(DependentRecords::createIndexes(database));
    EXPECT_TRUE(DependentRecords::createIndexes(database)) << "a second time";
    EXPECT_EQ(cells("sqlite_master WHERE type = 'index' AND tbl_name = 'Tags_Records'", {"name"}),
              "\"tarvo_tags_of_records\"");
    adapter().dropTable("Tags_Records");
    EXPECT_TRUE(DependentRecords::createIndexes(database)) << "without the table";
}

}  // namespace tarvo
