#include <limits>

#include "tarvobase/configuration/Scope.h"
#include "tarvobase/record_changes/internal/ChangePayload.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {
namespace {

class ChangePayloadTest : public RecordTest {
protected:
    /// Returns the payload of a record with one more column than its id, in one line.
    std::string payloadOf(const FieldMetadata& field, Value value, TransactionType type,
                          const std::string& module = "Leads") {
        auto fields = fieldsOf(module, {field});
        Record record("7", module);
        record.set(fields.identifierOf(field), std::move(value));
        return *json::write(Value(ChangePayload::of(record, fields, type)));
    }
};

TEST_F(ChangePayloadTest, ValuesGoOutByTheTypeOfTheirField) {
    using T = FieldDataType;
    const Value rows = ValueList{Value(ValueMap{{"id", "1"}, {"Qty", 2}})};
    struct {
        T type;
        Value stored;
        std::string sent;  ///< empty if the field does not go out
    } cases[] = {
        {T::text, "a", R"("a")"},
        {T::text, "", R"("")"},
        {T::integer, 5, "5"},
        {T::currency, "5.20", R"("5.20")"},
        {T::boolean, "true", "true"},
        {T::boolean, "True", "false"},
        {T::boolean, false, "false"},
        {T::date, 86'400, R"("1970-01-02")"},
        {T::date, "86400", R"("1970-01-02")"},
        {T::date, "tomorrow", R"("tomorrow")"},
        {T::dateTime, 86'400, R"("1970-01-02T00:00:00Z")"},
        {T::dateTime, "soon", R"("soon")"},
        {T::alarm, "5 minutes", R"({"ALARM":"5 minutes"})"},
        {T::file, "FREQ=DAILY", R"({"RRULE":"FREQ=DAILY"})"},
        {T::lookup, "NEW_123456789", R"("NEW_123456789")"},
        {T::multiselectlookup, ValueList{"1", "2"}, R"(["1","2"])"},
        {T::multiselectlookup, "1,2", R"("1,2")"},
        {T::multiselectlookup, "1,NEW_123456789", R"(["1","NEW_123456789"])"},
        {T::subform, rows, R"([{"id":"1","Qty":2}])"},
        {T::subform, ValueList{}, "[]"},
        {T::subform, 1, ""},
        {T::subform, "1", ""},
        {T::eventParticipant, 3, ""},
    };
    platform::Clock::setTimeZone("UTC");
    for (auto mode : {Mode::column, Mode::api}) {
        use(mode);
        for (auto& one : cases) {
            auto field = recordField("COL", one.type, "Api");
            auto member = one.sent.empty() ? "" : "\"Api\":" + one.sent;
            EXPECT_EQ(payloadOf(field, one.stored, TransactionType::addRecord), "{" + member + "}");
            EXPECT_EQ(payloadOf(field, one.stored, TransactionType::editRecord),
                      R"({"id":"7")" + (member.empty() ? "" : "," + member) + "}");
        }
    }
    platform::Clock::setTimeZone(std::nullopt);
}

TEST_F(ChangePayloadTest, AnEditClearsWhatHasNoValueAndAnAddLeavesItOut) {
    for (auto mode : {Mode::column, Mode::api}) {
        use(mode);
        auto text = recordField("COL", FieldDataType::date, "Api"), form = recordField("SUB", FieldDataType::subform);
        EXPECT_EQ(payloadOf(text, Value(), TransactionType::editRecord), R"({"id":"7","Api":null})");
        EXPECT_EQ(payloadOf(text, Value(), TransactionType::addRecord), "{}");
        EXPECT_EQ(payloadOf(form, Value(), TransactionType::editRecord), R"({"id":"7"})");
    }
}

TEST_F(ChangePayloadTest, WhatTheServerSetsOrHasACallOfItsOwnStaysAtHome) {
    for (auto mode : {Mode::column, Mode::api}) {
        use(mode);
        auto naming = Scope::current().naming;
        auto& names = *naming.constant;
        std::vector<FieldMetadata> fields;
        for (auto name : {names.modifiedTime, names.modifiedBy, names.tag, std::string_view(names.attachments)}) {
            auto field = recordField(std::string(name), FieldDataType::text, std::string(name));
            EXPECT_EQ(payloadOf(field, "x", TransactionType::editRecord), R"({"id":"7"})") << name;
        }
        // A column without a field, such as the display text of a lookup.
        Record record("7", "Leads");
        record.set("OWNER_LOOKUP", "Ann");
        EXPECT_EQ(ChangePayload::of(record, fieldsOf("Leads", {}), TransactionType::editRecord),
                  (ValueMap{{"id", "7"}}));
    }
}

TEST_F(ChangePayloadTest, TheRowsOfAModuleAreKnownByTheirName) {
    use(Mode::api);
    auto lines = recordField("PRODUCTDETAILS", FieldDataType::text, "Product_Details");
    EXPECT_EQ(payloadOf(lines, "2", TransactionType::editRecord, "Quotes"), R"({"id":"7"})");
    EXPECT_EQ(payloadOf(lines, "2", TransactionType::editRecord, "Leads"), R"({"id":"7","Product_Details":"2"})");
}

TEST_F(ChangePayloadTest, ABodyIsAListOfOnePayloadOrNothing) {
    EXPECT_EQ(ChangePayload::body({{"a", 1}})->text(), R"({"data":[{"a":1}]})");
    EXPECT_FALSE(ChangePayload::body({{"a", std::numeric_limits<double>::quiet_NaN()}}));
    EXPECT_FALSE(ChangePayload::body({{"a", "\xff"}}));
}

}  // namespace
}  // namespace tarvo
