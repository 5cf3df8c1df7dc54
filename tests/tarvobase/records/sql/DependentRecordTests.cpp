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

/// The page above, stored in a naming, as a page or as dictionaries. A dependent row and tags were there before.
class DependentRecordTest : public RecordTableTest,
                            public ::testing::WithParamInterface<std::tuple<DependentCase, Naming, bool>> {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        auto& [names, naming, asPage] = GetParam();
        std::tie(module, list, dependent) = std::tuple(names.module, names.list, names.dependent);
        use(naming);
        platform::Clock::setTimeZone("UTC");
        adapter().createTable("CREATE TABLE Tags_Records (tag_id, tag_name, module_name, record_id)");
        adapter().execute("INSERT INTO Tags_Records VALUES ('old', 'old', '', '1'), ('kept', 'k', '', '3')", {});
        auto rows = module + "Rows", parent = isNotes() ? ""s : ", record_id"s;
        makeModule(rows, {field(rows, "Text")}, ", record_id");
        makeModule(dependent, {field(dependent, "participant"), field(dependent, "When", T::date)}, parent);
        adapter().insertInto(dependent + "Records", {{idColumn(), "stays"}});
        listField = field(module, list, T::subform);
        if (isNotes()) listField.columnCRMName = "ATTACHMENTS";
        makeModule(module, {field(module, "Tag"), listField, subform(module, "Rows", ValueList{"7", rows + "_Api"}),
                            subform(module, "Elsewhere", ValueList{"8", "Nowhere_Api"})});
        auto records = text::join(text::split(page, "\"L\""), "\"" + list + "\"");
        if (asPage)
            EXPECT_EQ(this->records->storePage(wireOf(records), module), (Names{"1", "2", "3", "1"}));
        else
            this->records->storeRecord(dictionariesOf(records), module);
    }
    bool isNotes() const { return module == "Notes"; }
    std::string quoted(const FieldMetadata& field) const { return "\"" + field.fieldIdentifier() + "\""; }
    std::string quoted(const std::string& name) const { return quoted(field(module, name)); }

    std::string module, list, dependent;
    FieldMetadata listField;
};
INSTANTIATE_TEST_SUITE_P(Modules, DependentRecordTest,
                         ::testing::Combine(::testing::ValuesIn(dependentCases),
                                            ::testing::Values(Naming::column, Naming::api), ::testing::Bool()),
                         [](auto& one) {
                             return std::get<0>(one.param).module +
                                    (std::get<1>(one.param) == Naming::column ? "ByColumns"s : "ByApiNames"s) +
                                    (std::get<2>(one.param) ? "AsPage" : "AsDictionaries");
                         });

TEST_P(DependentRecordTest, RecordsHoldTheNumbersOfTheirRows) {
    EXPECT_EQ(
        cells(module + "Records", {idColumn(), quoted(listField), quoted("Tag"), quoted("Rows"), quoted("Elsewhere")}),
        isNotes() ? R"("2","",0,0,null;"3","c",null,null,2;"1","a",1,null,null)"
                  : R"("2",0,0,0,null;"3",1,null,null,2;"1",1,1,null,null)");
}

TEST_P(DependentRecordTest, DependentRowsNameTheirParentAndFormerOnesStay) {
    Names columns{idColumn(), quoted("When")};
    if (!isNotes()) columns.push_back("record_id");
    EXPECT_EQ(cells(dependent + "Records", columns),
              isNotes() ? R"("stays",null;"b",null;"c",null;"a",null)"
                        : R"("stays",null,null;"b",null,"1";"c",null,"3";"a",null,"1")");
}

TEST_P(DependentRecordTest, RowsOfSubformsGoToTheirModule) {
    EXPECT_EQ(cells(module + "RowsRecords", {idColumn(), "record_id"}), R"("r","1")");
}

TEST_P(DependentRecordTest, TagsOfTheNamedRecordsAreReplaced) {
    EXPECT_EQ(cells("Tags_Records", {"tag_id", "tag_name", "record_id"}),
              R"("kept","k","3";"t","hot","1";"u",null,"1";"v",null,"1")");
    EXPECT_EQ(adapter().count("Tags_Records", Criteria::equalTo("module_name", module)), 3);
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
