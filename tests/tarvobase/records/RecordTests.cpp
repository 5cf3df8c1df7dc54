#include "tarvobase/records/Record.h"

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/records/RecordFunctions.h"
#include "tarvobase/transaction/RecordIds.h"
#include "tarvobase/value_objects/account/User.h"
#include "tarvobase/value_objects/layout/LayoutFieldLists.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {

class RecordValueTest : public RecordTest {
protected:
    static Record::Names names(std::initializer_list<std::string> list) { return list; }
    /// Returns a fetch of two rows, the second without an id.
    static Rows fetched() {
        Rows::Builder builder({"NAME", "ID", "AMOUNT"});
        for (bool hasId : {true, false}) {
            builder.addText("first");
            hasId ? builder.addText("7") : builder.addNull();
            builder.addNull();
        }
        return builder.finish();
    }

    const FieldMetadata owner = recordField("OWNER", FieldDataType::ownerlookup);
    const FieldMetadata phone = recordField("PHONE", FieldDataType::phone);
};

TEST_F(RecordValueTest, IdentifierColumnAndTableFollowTheModuleAndTheNaming) {
    for (std::string module : {"Leads", "CustomerModuleComments", "EventInvitees", "no module"}) {
        bool isInvitee = module == "EventInvitees";
        use(Mode::column);
        EXPECT_EQ(Record("1", module).columnNames(), names({isInvitee ? "PARTICIPANT" : "ID"}));
        use(Mode::api);
        EXPECT_EQ(Record("1", module).identifierColumn(), isInvitee ? "participant" : "id");
    }
    EXPECT_EQ(RecordUtil::getTableName("Approvals"), "APPROVAL_PROCESS_RECORDS");
    EXPECT_EQ(RecordUtil::getTableName("Custom Module"), "Custom ModuleRecords");
}

TEST_F(RecordValueTest, ConstructorsPlaceTheIdentifier) {
    Record replaced(names({"NAME", "ID"}), ValueList{"x", "old"}, "new", "Leads");
    EXPECT_EQ(replaced.valueOf("ID"), Value("new"));
    EXPECT_EQ(replaced.identifierIndex(), 1u);
    Record added(names({"NAME", "PHONE"}), std::nullopt, "new", "Leads");
    EXPECT_EQ(added.identifierIndex(), 2u);
    EXPECT_TRUE(added.hasColumn("NAME") && added["NAME"].isNull());
    Record mapped(Record::ColumnMap{{"ID", 1}, {"NAME", 0}, {"FAR", 9}}, {"x", "1"}, "1", "Leads");
    EXPECT_EQ(mapped.getDictionary(), (ValueMap{{"NAME", "x"}, {"ID", "1"}}));
    EXPECT_TRUE(mapped.hasColumn("FAR"));
    Record twice(names({"A", "A"}), ValueList{"1", "2"}, "1", "Leads");
    EXPECT_EQ(twice.valueOf("A"), Value("2"));
    EXPECT_EQ(takeProgrammingErrors().size(), 1u) << "a name is given twice";
}

TEST_F(RecordValueTest, WithoutAnIdentifierThereIsNoRecord) {
    EXPECT_EQ(Record::fromColumns(names({"ID"}), ValueList{"1"}, "Leads")->recordId(), "1");
    for (auto& values : {ValueList{}, ValueList{1}, ValueList{nullptr}})
        EXPECT_FALSE(Record::fromColumns(names({"ID"}), values, "Leads"));
    EXPECT_FALSE(Record::fromColumns(names({"ID"}), std::nullopt, "Leads"));
    EXPECT_FALSE(Record::fromColumns(Record::ColumnMap{{"ID", 5}}, {"1"}, "Leads"));
    EXPECT_FALSE(Record::fromColumns(Record::ColumnMap{{"NAME", 0}}, {"1"}, "Leads"));
    EXPECT_TRUE(wasLogged("Record ID not found or column and values do not match"));
    EXPECT_EQ(Record::fromRows(fetched(), "Leads", FieldIdentifier::crmColumnNameIdentifier()).size(), 1u);
}

// A record over a fetch and one with storage of its own behave alike, before and after changes.
TEST_F(RecordValueTest, ReadsAndWritesAreTheSameOverAFetch) {
    auto overFetch = *Record::fromRow(fetched()[0], "Leads", FieldIdentifier::crmColumnNameIdentifier());
    Record own(names({"NAME", "ID", "AMOUNT"}), ValueList{"first", "7", nullptr}, "7", "Leads");
    for (auto record : {overFetch, own}) {
        EXPECT_EQ(record, own);
        EXPECT_EQ(record.columnCount(), 3u);
        EXPECT_TRUE(record.hasColumn("AMOUNT"));
        EXPECT_FALSE(record.getDictionary().contains("AMOUNT"));
        EXPECT_EQ(record.getString("NAME") + record.getString("AMOUNT") + record.getString("none"), "first");
        EXPECT_EQ(record.getDictionary(names({"NAME", "AMOUNT", "none"})), (ValueMap{{"NAME", "first"}}));
        auto before = record;
        record.set("ID", 8);
        EXPECT_TRUE(wasLogged("Invalid Record ID"));
        EXPECT_EQ(record, before);
        record.set("ID", "8");
        record.set(record.columnName(0), nullptr);
        record.set("PHONE", "1");
        EXPECT_EQ(record.recordId(), "8");
        EXPECT_EQ(record.getDictionary(), (ValueMap{{"ID", "8"}, {"PHONE", "1"}}));
        EXPECT_TRUE(record.hasColumn("NAME"));
        EXPECT_EQ(before, own) << "copies are independent";
    }
}

TEST_F(RecordValueTest, NewRecordsNeverShareAnId) {
    auto ids = [] { return std::make_shared<RecordIds>(Stores::current(), std::make_shared<BrenUserDefaults>()); };
    configuration().recordIDGenerator = ids();
    auto first = Record::getNewRecord("Leads");
    EXPECT_EQ(first.recordId(), "NEW_000000001");
    EXPECT_TRUE(first.isTempRecord());
    // As after a crash: another object reads the counter from the disk.
    auto later = ids();
    EXPECT_EQ(later->getNewRecordId(), "NEW_000000002");
    EXPECT_EQ(Record::getNewRecord(names({"NAME"}), std::nullopt, "Leads").recordId(), "NEW_000000003");
    later->resetRecordId();
    EXPECT_EQ(later->getNewRecordId(), "NEW_000000001");
    configuration().recordIDGenerator = nullptr;
    EXPECT_NE(Record::getNewRecord("Leads").recordId(), Record::getNewRecord("Leads").recordId());
    EXPECT_EQ(takeProgrammingErrors().size(), 2u) << "without a generator";
}

TEST_F(RecordValueTest, UserLookupsComeWithTheirNames) {
    Record record("1", "Leads");
    record.populateUserLookup({"O"}, User{.id = "5", .firstName = "F", .lastName = "L", .name = "F L"});
    EXPECT_EQ(record.getDictionary(),
              (ValueMap{{"ID", "1"}, {"O", "5"}, {"O_LOOKUP", "F L"}, {"O_FIRSTNAME", "F"}, {"O_LASTNAME", "L"}}));
}

TEST_F(RecordValueTest, EqualRecords) {
    auto of = [](ValueMap values) { return std::optional(Record(std::move(values), "1", "Leads")); };
    EXPECT_TRUE(areRecordsEqual(std::nullopt, std::nullopt));
    EXPECT_FALSE(areRecordsEqual(of({}), std::nullopt));
    const std::tuple<ValueMap, ValueMap, bool> cases[] = {
        {{{"A", "x"}, {"B", 1}}, {{"B", 1}, {"A", "x"}}, true},
        {{{"A", "x"}}, {{"B", "x"}}, false},
        {{{"A", "x"}}, {{"A", "x"}, {"B", nullptr}}, false},
        {{{"A", nullptr}}, {{"A", nullptr}}, true},
        {{{"A", nullptr}}, {{"A", ""}}, false},
        {{{"A", "1"}}, {{"A", 1}}, false},
        {{{"A", 1.5}}, {{"A", 1.5}}, true},
        {{{"A", ValueList{1}}}, {{"A", ValueList{2}}}, true},
    };
    for (auto& [a, b, isEqual] : cases) EXPECT_EQ(areRecordsEqual(of(a), of(b)), isEqual);
}

TEST_F(RecordValueTest, ReducedRecordsKeepRequiredColumnsAndTheirCompanions) {
    use(Mode::column);
    Record record({{"OWNER", "5"}, {"OWNER_LOOKUP", ""}, {"OWNER_LASTNAME", "L"}, {"PHONE", ""}, {"NOTE", "n"}}, "1",
                  "Leads");
    auto columns = record.columnNames();
    columns.push_back("PHONE_LOOKUP");
    auto small = reduceRecordSize(record, {owner, phone}, fieldsOf("Leads", {owner, phone}), columns);
    EXPECT_EQ(small.getDictionary(),
              (ValueMap{{"ID", "1"}, {"OWNER", "5"}, {"OWNER_LOOKUP", ""}, {"OWNER_LASTNAME", "L"}, {"PHONE", ""}}));
    EXPECT_TRUE(wasLogged("Invalid Record ID"));
}

TEST_F(RecordValueTest, LayoutsShowOnlyFieldsWithSomethingToShow) {
    use(Mode::column);
    auto entry = [](const FieldMetadata& field) { return LayoutMetadata(LayoutFieldData(), field); };
    Record record({{"OWNER", ""}, {"OWNER_LOOKUP", ""}, {"OWNER_LASTNAME", "L"}, {"PHONE", ""}}, "1", "Leads");
    auto shown = nonNullLayoutFields(record, {entry(owner), entry(phone)});
    ASSERT_EQ(shown.size(), 1u) << "a part of the owner's name is enough";
    EXPECT_EQ(shown[0].columnCRMName, "OWNER");
    using Line = LinearLayoutMetadataItemType;
    auto lines = nonNullLayoutFields(record, std::vector{Line::header(0, "empty"), Line::item(entry(phone)),
                                                         Line::header(1, "kept"), Line::item(entry(owner))});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].header()->name, "kept");
}

}  // namespace tarvo
