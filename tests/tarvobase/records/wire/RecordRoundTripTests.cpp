#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/tag/TagList.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {

namespace {

using T = FieldDataType;
using M = ModuleIdentifier::Case;

/// What a screen sets, how a TEXT column holds it, what is sent of the stored record, and how the server answers.
struct ScreenValue {
    T type;
    Value screen;
    const char* stored;
    Value sent;
    const char* answer;
};

std::vector<ScreenValue> screenValues() {
    std::vector<ScreenValue> values = {
        {T::boolean, true, "true", true, "true"},
        {T::boolean, false, "false", false, "false"},
        {T::boolean, 1, "1", true, "true"},
        {T::boolean, "1", "1", true, "true"},
        {T::boolean, 0, "0", false, "false"},
        {T::date, 1709164800, "1709164800", "2024-02-29", "2024-02-29"},
        {T::date, -86400, "-86400", "1969-12-31", "1969-12-31"},
        {T::dateTime, 1709200800, "1709200800", "2024-02-29T10:00:00Z", "2024-02-29T10:00:00Z"},
        {T::multiSelectPicklist, ValueList{"a", "b c"}, "a,b c", "a,b c", "a,b c"},
        {T::multiSelectPicklist, ValueList(), "", "", ""},
        {T::multiselectlookup, ValueList{"11", "12"}, "11,12", "11,12", "11,12"},
        {T::integer, 7, "7", "7", "7"},
        {T::decimal, 2.5, "2.5", "2.5", "2.5"},
        {T::file, "FREQ=DAILY", "FREQ=DAILY", ValueMap{{"RRULE", "FREQ=DAILY"}}, "FREQ=DAILY"},
        {T::alarm, "ACTION=EMAIL", "ACTION=EMAIL", ValueMap{{"ALARM", "ACTION=EMAIL"}}, "ACTION=EMAIL"},
    };
    for (auto& known : EnumCases<T>::cases)
        if (!isDate(known.value) && known.value != T::boolean && known.value != T::file && known.value != T::alarm)
            values.push_back({known.value, "it's 50%", "it's 50%", "it's 50%", "it's 50%"});
    return values;
}

}  // namespace

/// One field "F" (API name "Api_F") and a table whose columns are of type TEXT.
class RoundTripTest : public RecordTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        RecordTest::SetUp();
        use(GetParam() ? Mode::column : Mode::api);
        platform::Clock::setTimeZone("UTC");
        database = openDatabase();
        database->createTable(
            "CREATE TABLE LeadsRecords (id TEXT NOT NULL UNIQUE, F TEXT, Api_F TEXT, F_LOOKUP TEXT, Api_F_LOOKUP TEXT, "
            "\"F#TarvoSeparator#Data#TarvoSeparator#\" TEXT, \"Api_F#TarvoSeparator#Data#TarvoSeparator#\" TEXT)");
        table = std::make_unique<RecordInDatabase>(database, nullptr);
        key = GetParam() ? "F" : "Api_F";
    }
    void useType(T type) { fields = fieldsOf("Leads", {recordField("F", type)}); }
    Record screenRecord(Value value) const { return Record(ValueMap{{key, std::move(value)}}, "7", "Leads"); }
    Record stored() const {
        auto rows = database->fetchObjects("SELECT id AS " + std::string(FieldIdentifierConstants().id) +
                                               ", F, Api_F, F_LOOKUP, Api_F_LOOKUP FROM LeadsRecords WHERE id = '7'",
                                           {});
        return RecordInDatabase::recordsOf(rows.value(), fields).at(0);
    }
    Value sentOf(const Record& record) const {
        return convertRecordToNetworkDictionary(record, fields).valueOf("Api_F");
    }

    std::shared_ptr<KelvaDatabasePersistance> database;
    std::unique_ptr<RecordInDatabase> table;
    FieldList fields;
    std::string key;
};
INSTANTIATE_TEST_SUITE_P(Namings, RoundTripTest, ::testing::Bool(),
                         [](auto& one) { return one.param ? "columns" : "apiNames"; });

TEST_P(RoundTripTest, ScreenValuesReachTheServerAndComeBack) {
    for (bool isNew : {true, false})
        for (auto& one : screenValues()) {
            SCOPED_TRACE(std::string(caseName(one.type)) + " " + one.stored + (isNew ? " in a new row" : ""));
            useType(one.type);
            EXPECT_TRUE(table->saveRecord(isNew ? screenRecord(one.screen) : Record("7", "Leads"), M::leads, fields));
            EXPECT_TRUE(isNew || table->modifyRecord(screenRecord(one.screen), M::leads, fields));
            EXPECT_EQ(stored().valueOf(key), Value(one.stored));
            EXPECT_EQ(sentOf(stored()), one.sent);
            auto answer = parsed(R"([["id","7"],["Api_F",")" + std::string(one.answer) + "\"]]");
            // What is sent may be stored as it was sent, while the server is out of reach.
            if (!isNew && !one.sent.asMap()) answer = convertRecordToNetworkDictionary(stored(), fields);
            EXPECT_TRUE(table->saveRecordDictionary(RecordConversion(fields).toRow(answer), M::leads));
            EXPECT_EQ(sentOf(stored()), one.sent) << "after the answer";
        }
}

TEST_P(RoundTripTest, FiltersFindBooleansOfScreens) {
    useType(T::boolean);
    table->saveRecord(screenRecord(true), M::leads, fields);
    ColumnFilter filter{.column = key, .filterInputValues = {{"true"}}, .filterType = StringFilterTypes::isExactly};
    auto where = FilterToWhereConverter::getWhereStatement(filter);
    EXPECT_EQ(database->count("LeadsRecords", Criteria::custom(*where)), 1);
}

TEST_P(RoundTripTest, EmptyListsOfRecordsAreStoredAsTheirNumber) {
    for (auto type : {T::subform, T::eventParticipant}) {
        useType(type);
        table->saveRecord(screenRecord(ValueList()), M::leads, fields);
        EXPECT_EQ(stored().valueOf(key), Value("0"));
        table->saveRecord(screenRecord(ValueList{ValueMap(), ValueMap()}), M::leads, fields);
        EXPECT_EQ(stored().valueOf(key), Value("2"));
    }
}

TEST_P(RoundTripTest, NetworkRecordsAreStoredUnderTheirColumns) {
    useType(T::lookup);
    auto lookup = parsed(R"([["id","7"],["Api_F","11","shown"],["stranger","x"]])");
    EXPECT_TRUE(table->saveNetworkRecord(lookup, M::leads, fields));
    auto id = std::string(FieldIdentifierConstants().id);
    EXPECT_EQ(stored().getDictionary(), (ValueMap{{id, "7"}, {key, "11"}, {getLookupColumn(key), "shown"}}));
    for (auto [type, wire, cell] :
         {std::tuple(T::date, "2024-02-29", "1709164800"), {T::date, "never", "0"}, {T::boolean, "true", "true"}}) {
        useType(type);
        EXPECT_TRUE(table->saveNetworkRecord({{"id", "7"}, {"Api_F", wire}}, M::leads, fields));
        EXPECT_EQ(stored().valueOf(key), Value(cell));
    }
}

TEST_P(RoundTripTest, MultiSelectLookupsGetTheirCompanion) {
    useType(T::multiselectlookup);
    EXPECT_TRUE(table->saveNetworkRecord({{"id", "7"}, {"Api_F", ValueList{"11", "12"}}}, M::leads, fields));
    EXPECT_EQ(stored().valueOf(key), Value("11,12"));
    auto companion = "\"" + key + std::string(lookupDataSuffix) + "\"";
    EXPECT_EQ(database->count("LeadsRecords", Criteria::custom(companion + " = '11,12'")), 1);
}

TEST_P(RoundTripTest, TagsOfARecordAreJson) {
    fields = fieldsOf("Leads", {recordField("TAG", T::text, "Tag")});
    auto wire = parsed(R"([["id","7"],["Tag",[[["id","5"],["name","hot"]]]]])");
    auto record = recordFromNetworkDictionary(wire, fields).value();
    EXPECT_EQ(json::write(convertRecordToNetworkDictionary(record, fields)),
              R"({"id":"7","Tag":[{"id":"5","name":"hot"}]})");
    auto tag = GetParam() ? "TAG" : "Tag", id = GetParam() ? "ID" : "id";
    // The naming of the host may change while a screen holds the record.
    use(GetParam() ? Mode::api : Mode::column);
    EXPECT_EQ(json::write(record.getDictionary()),
              std::string("{\"") + id + R"(":"7",")" + tag + R"(":[{"id":"5","name":"hot","moduleName":"Leads"}]})");
}

}  // namespace tarvo
