#include "platform/JsonDocument.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/RecordPage.h"
#include "tarvobase/records/wire/RecordParser.h"
#include "tarvobase/value_objects/tag/TagList.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {

namespace {

using namespace std::string_literals;
using T = FieldDataType;

struct Zone {
    const char* name;
    std::int64_t leapDay, lastDayOf1969;          // the first moments of 2024-02-29 and 1969-12-31 in the zone
    const char *leapDayAtTen, *lastMomentOf1969;  // 2024-02-29 10:00 and 1969-12-31 23:59:59 UTC, written in the zone
};
const Zone zones[] = {
    {"UTC", 1709164800, -86400, "2024-02-29T10:00:00Z", "1969-12-31T23:59:59Z"},
    {"Asia/Kolkata", 1709145000, -106200, "2024-02-29T15:30:00+05:30", "1970-01-01T05:29:59+05:30"},
    {"America/New_York", 1709182800, -68400, "2024-02-29T05:00:00-05:00", "1969-12-31T18:59:59-05:00"}};

/// The stored form of a wire value, and the form that is sent back, which is null if it is not sent.
struct Outcome {
    T type;
    const char* wire;
    Value stored, sent;
};

std::vector<Outcome> outcomes(const Zone& zone) {
    std::vector<Outcome> list = {
        {T::boolean, "true", "true", true},
        {T::boolean, "false", "false", false},
        {T::boolean, "yes", "yes", false},
        {T::date, "2024-02-29", zone.leapDay, "2024-02-29"},
        {T::date, "1969-12-31", zone.lastDayOf1969, "1969-12-31"},
        {T::date, "2023-02-29", "2023-02-29", nullptr},
        {T::dateTime, "2024-02-29T10:00:00Z", 1709200800, zone.leapDayAtTen},
        {T::dateTime, "1969-12-31T23:59:59Z", -1, zone.lastMomentOf1969},
        {T::dateTime, "soon", "soon", nullptr},
        {T::file, "FREQ=DAILY", "FREQ=DAILY", ValueMap{{"RRULE", "FREQ=DAILY"}}},
        {T::alarm, "ACTION=EMAIL", "ACTION=EMAIL", ValueMap{{"ALARM", "ACTION=EMAIL"}}},
    };
    auto hasRule = [](T type) { return type == T::boolean || isDate(type) || type == T::file || type == T::alarm; };
    for (auto& known : EnumCases<T>::cases)
        if (!hasRule(known.value)) list.push_back({known.value, "12.50", "12.50", "12.50"});
    list.push_back({T::text, "", "", ""});
    auto odd = "\0 'it''s' \"x\" %_ \xF0\x9F\x98\x80"s;
    list.push_back({T::textArea, "\\u0000 'it''s' \\\"x\\\" %_ \\uD83D\\uDE00", odd, odd});
    return list;
}

/// Makes a page of records of a module.
RecordPage pageOf(const std::string& records, const FieldList& fields) {
    auto document = json::Document::parse(platform::Data(records));
    EXPECT_TRUE(document) << records;
    auto root = document->root();
    return RecordPage(*std::move(document), root, fields);
}

/// Returns a row of a page as a dictionary.
ValueMap rowOf(const RowSource& page, std::size_t row) {
    ValueMap map;
    for (std::size_t i = 0; i < page.columns().size(); ++i)
        if (auto cell = page.cell(row, i); !cell.isNull()) map.set(page.columns()[i], cell.copy());
    return map;
}

}  // namespace

class RecordWireTest : public RecordTest {};

TEST_F(RecordWireTest, EveryTypeIsStoredAlikeAndSentBackInBothNamingsAndThreeZones) {
    for (auto mode : {Mode::column, Mode::api})
        for (auto& zone : zones) {
            use(mode);
            platform::Clock::setTimeZone(zone.name);
            for (auto& outcome : outcomes(zone)) {
                SCOPED_TRACE(std::string(zone.name) + " " + std::string(caseName(outcome.type)) + " " + outcome.wire);
                auto fields = fieldsOf("Leads", {recordField("F", outcome.type)});
                std::string key = mode == Mode::column ? "F" : "Api_F", id = mode == Mode::column ? "ID" : "id";
                auto record = R"([["id","7"],["Api_F",")" + std::string(outcome.wire) + "\"]]";
                ValueMap stored{{id, "7"}, {key, outcome.stored}};
                EXPECT_EQ(convertRecordFromNetworkToDBDictionary(parsed(record), fields), stored);
                EXPECT_EQ(rowOf(pageOf("[" + record + "]", fields), 0), stored);
                EXPECT_EQ(RecordConversion(fields).toRow(parsed(record)), stored);
                auto read = recordFromNetworkDictionary(parsed(record), fields).value();
                EXPECT_EQ(read.getDictionary(), stored);
                EXPECT_EQ(convertRecordToNetworkDictionary(read, fields).valueOf("Api_F"), outcome.sent);
            }
        }
}

TEST_F(RecordWireTest, EntriesBecomeKeysOrAreLeftOut) {
    struct Case {
        const char* record;
        ValueMap wire;
    };
    const Case cases[] = {
        {"[]", {}},
        {R"([["a"],[],"x",7,null,{"a":1},["b","1"]])", {{"b", "1"}}},
        {R"([[7,"x"],[null,"x"],[["a"],"x"]])", {}},
        {R"([["a","1"],["a","2"]])", {{"a", "2"}}},
        // A value that cannot be read removes the key, and the third item is ignored.
        {R"([["a","1"],["a",7,"shown"]])", {}},
        {R"([["a",true,"s"],["b",null,"s"],["c",1.5],["d",{}],["e",["x",1]],["f",[[],"x"]]])", {}},
        {R"([["a",["x","y"]],["b",[]],["Tag",[]],["Participants",[]]])",
         {{"a", "x,y"}, {"b", ""}, {"Tag", ValueList()}, {"Participants", ValueList()}}},
        {R"([["a",[[["id","1"]],[],["no entry"]]]])",
         {{"a", ValueList{ValueMap{{"id", "1"}}, ValueMap(), ValueMap()}}}},
        {R"([["a","1","shown"],["b","2",7],["c","3",["x",1]]])",
         {{"a", "1"}, {"a_LOOKUP", "shown"}, {"b", "2"}, {"c", "3"}}},
        {R"([["a","1",["x","y"]],["b","2",[]]])",
         {{"a", "1"}, {"a_LOOKUP", ValueList{"x", "y"}}, {"b", "2"}, {"b_LOOKUP", ValueList()}}},
        {R"([["a","1",["Last","First","First Last"]]])",
         {{"a", "1"}, {"a_LOOKUP", "First Last"}, {"a_FIRSTNAME", "First"}, {"a_LASTNAME", "Last"}}},
        {R"([["$status","x"],["$se_module","y"],["$sex","z"],["$","q"],["a$","r"]])",
         {{"se_status", "x"}, {"se_module", "y"}, {"sex", "z"}, {"se_", "q"}, {"a$", "r"}}},
    };
    for (auto& c : cases) EXPECT_EQ(parsed(c.record), c.wire) << c.record;
}

TEST_F(RecordWireTest, HostSettingsDecideOnPersonNamesAndSystemProperties) {
    configuration().getMetadataApiVersion = GetMetadataApiVersion::crm;
    EXPECT_EQ(parsed(R"([["a","1",["L","F","F L"]]])"), (ValueMap{{"a", "1"}, {"a_LOOKUP", "F L"}}));
    configuration().modifySystemProperties = false;
    EXPECT_EQ(parsed(R"([["$status","x"]])"), (ValueMap{{"$status", "x"}}));
}

TEST_F(RecordWireTest, ListsOfRecordsAreReadAsFarAsTheyAreRecords) {
    const Value text("data"), mixed = fromJson(R"([7, null, "x", {"a": 1}, [["a","1"]]])");
    for (auto broken : {static_cast<const Value*>(nullptr), &text})
        EXPECT_FALSE(ModuleParser::parseRecord(broken, "Leads"));
    auto records = ModuleParser::parseRecord(&mixed, "CustomLeadX");
    ASSERT_TRUE(records);
    EXPECT_EQ(records->records, (std::vector<ValueMap>{{{"a", "1"}}}));
    EXPECT_EQ(records->moduleName, "Leads");
    EXPECT_EQ(ModuleParser::parseRecord(ValueList(), "Accounts").moduleName, "Accounts");
    EXPECT_EQ(ModuleParser::parseRecord(ValueList(), "Deals").moduleName, std::nullopt);
}

TEST_F(RecordWireTest, LookupsKeepTheirDisplayTextAndOtherFieldsDoNot) {
    use(Mode::column);
    auto fields = fieldsOf("Leads", {recordField("OWNER", T::ownerlookup), recordField("USER", T::userLookup),
                                     recordField("ACCOUNT", T::lookup), recordField("LAYOUTID", T::text, "Layout"),
                                     recordField("TEXT", T::text)});
    auto wire = parsed(R"([["id","1"],["Api_OWNER","2",["L","F","F L"]],["Api_USER","3",["a","b"]],
                           ["Api_ACCOUNT",null],["Layout","5","Standard"],["Api_TEXT","x","y"],["stranger","z"]])");
    wire.set("Api_ACCOUNT_LOOKUP", "shown");
    EXPECT_EQ(json::write(convertRecordFromNetworkToDBDictionary(wire, fields)),
              R"({"ID":"1","OWNER":"2","OWNER_LOOKUP":"F L","USER":"3","ACCOUNT_LOOKUP":"shown",)"
              R"("LAYOUTID":"5","LAYOUTID_LOOKUP":"Standard","TEXT":"x"})");
}

/// A check-in note with tags, attachments and an empty subform.
class NoteWireTest : public RecordWireTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        RecordWireTest::SetUp();
        configuration().modifySystemProperties = GetParam();
        use(Mode::column);
        fields =
            fieldsOf("Notes", {recordField("TAG", T::text, "Tag"), recordField("ATTACHMENTS", T::text, "$attachments"),
                               recordField("TITLE", T::text, "Note_Title"), recordField("SUB", T::subform)});
    }
    const std::string record =
        R"([["id","1"],["Tag",[[["id","5"],["name","hot"]],[["id","6"]]]],
            ["$attachments",[[["id","8"]],[["x","y"]],[["id","9"]]]],
            ["Note_Title","plain"],["$isCheckIn","true"],["Parent_Id","3",["Deals","Big one"]],["Api_SUB",[]]])";
    FieldList fields;
};

INSTANTIATE_TEST_SUITE_P(SystemProperties, NoteWireTest, ::testing::Bool(),
                         [](auto& one) { return one.param ? "rewritten" : "asSent"; });

TEST_P(NoteWireTest, DictionaryHoldsTagsAttachmentsAndTheTitle) {
    auto stored = convertRecordFromNetworkToDBDictionary(parsed(record, "Notes"), fields);
    auto tags = stored.find("TAG")->asObjectOf<TagList>();
    ASSERT_TRUE(tags);
    EXPECT_EQ(tags->tags(), (std::vector<Tag>{{"5", "hot", "Notes"}}));
    EXPECT_EQ(stored.valueOf("ATTACHMENTS"), Value(Bytes{R"(["8","9"])"}));
    EXPECT_EQ(stored.valueOf("TITLE"), Value(R"(["Deals","Big one"])"));
    EXPECT_EQ(stored.valueOf("SUB"), Value(ValueList()));
}

TEST_P(NoteWireTest, RowHoldsNumbersOfListsAndJoinedAttachments) {
    EXPECT_EQ(
        rowOf(pageOf("[" + record + "]", fields), 0),
        (ValueMap{{"ID", "1"}, {"TAG", 2}, {"ATTACHMENTS", "8,9"}, {"TITLE", R"(["Deals","Big one"])"}, {"SUB", 0}}));
}

TEST_P(NoteWireTest, RecordHoldsAttachmentsAsTextsAndTagsAsMaps) {
    auto read = recordFromNetworkDictionary(parsed(record, "Notes"), fields);
    EXPECT_EQ(read->valueOf("ATTACHMENTS"), Value(ValueList{"8", "9"}));
    EXPECT_EQ(read->getDictionary().valueOf("TAG"),
              Value(ValueList{ValueMap{{"id", "5"}, {"name", "hot"}, {"moduleName", "Notes"}}}));
}

TEST_P(NoteWireTest, ThreeTextsAreAPersonsNameAndNotTheParentOfACheckIn) {
    auto named = parsed(R"([["id","1"],["Note_Title","t"],["$isCheckIn","true"],["Parent_Id","3",["L","F","D"]]])");
    EXPECT_EQ(convertRecordFromNetworkToDBDictionary(named, fields).valueOf("TITLE"), Value("t"));
}

TEST_F(RecordWireTest, FieldsThatShareAColumnAreBothStored) {
    use(Mode::column);
    auto fields = fieldsOf(
        "Activities", {recordField("SUBJECT", T::text, "Subject"), recordField("SUBJECT", T::text, "Event_Title")});
    for (auto name : {"Subject", "Event_Title"}) {
        auto record = R"([["id","1"],[")" + std::string(name) + R"(","x"]])";
        ValueMap stored{{"ID", "1"}, {"SUBJECT", "x"}};
        EXPECT_EQ(convertRecordFromNetworkToDBDictionary(parsed(record), fields), stored);
        EXPECT_EQ(rowOf(pageOf("[" + record + "]", fields), 0), stored);
    }
}

TEST_F(RecordWireTest, ValuesThatAreNeverSent) {
    for (auto mode : {Mode::column, Mode::api}) {
        use(mode);
        auto fields =
            fieldsOf("Leads", {recordField("MODIFIEDTIME", T::dateTime, "Modified_Time"),
                               recordField("MODIFIEDBY", T::ownerlookup, "Modified_By"), recordField("W", T::lookup),
                               recordField("B", T::boolean), recordField("D", T::date), recordField("N", T::integer)});
        auto key = [&](auto* field) { return fields.identifierOf(*field); };
        Record record("9", "Leads");
        for (auto field : fields.allFields()) record.set(key(field), 5);
        record.setRecordId("9");
        record.set(getLookupColumn(fields.identifierOf(*fields.allFields()[3])), "shown");
        record.set(key(fields.allFields()[5]), "no date");
        EXPECT_EQ(convertRecordToNetworkDictionary(record, fields),
                  (ValueMap{{"id", "9"}, {"Api_W", 5}, {"Api_N", 5}}));
        EXPECT_TRUE(wasLogged("invalid bool"));
    }
}

TEST_F(RecordWireTest, AnswersWithoutData) {
    auto answer = [](const std::string& entry) {
        return RecordParser<>().parse(platform::Data(R"({"response":{"result":[)" + entry + "]}}")).value();
    };
    auto records = answer(R"({"info":{"module":"Leads","more_records":true},"data":[[["id","1"]]]})").result[0].value();
    EXPECT_EQ(records.data.value(), (std::vector<ValueMap>{{{"id", "1"}}}));
    EXPECT_EQ(records.info.hasMore, true);
    EXPECT_TRUE(answer(R"({"info":{"nodata":true}})").result[0].value().data.value().empty());
    for (auto bad : {R"({"info":{"nodata":false}})", R"({"info":{"nodata":true},"data":7})"})
        EXPECT_FALSE(answer(bad).result[0].ok()) << bad;
    EXPECT_FALSE(answer(R"({"info":{"nodata":true},"error":["A","b"]})").result[0].value().data.ok());
}

TEST_F(RecordWireTest, RefusalsAreACodeAndAMessage) {
    RecordListInfo info;
    info.details = ValueMap{{"id", "7"}};
    auto refused = GetRecordsParser::parse({{"error", ValueList{"CODE", "message"}}}, info);
    EXPECT_EQ(refused.getErrorResponse(), (ErrorResponse{"CODE", "message", info.details}));
    EXPECT_FALSE(refused.records);
    for (auto errors : {ValueList{"CODE"}, ValueList{"a", "b", "c"}, ValueList{"a", 1}})
        EXPECT_FALSE(GetRecordsParser::parse({{"error", errors}}, {}).getErrorResponse());
}

}  // namespace tarvo
