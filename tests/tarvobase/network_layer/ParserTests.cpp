#include "tarvobase/network_layer/AnswerBody.h"
#include "tarvobase/network_layer/OldResponse.h"
#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/network_layer/PositionalRow.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using Error = ParserError;
using ErrorCase = ParserError::Case;

Data body(std::string text) { return Data(std::move(text)); }

TEST(ParserTest, ReadsThePlainEnvelope) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "absent"},
        {"null", "absent"},
        {R"({"response":[]})", "absent"},
        {R"({"response":{"result":[1]}})", "absent"},
        {R"({"response":{"result":[{}, {}]}})", "2 entries, times 0 0"},
        {R"({"response":{"result":[],"responseInfo":{"servertime":5,"responsetime":7}}})", "0 entries, times 5 7"},
        {R"({"response":{"result":[],"responseInfo":{"servertime":"5","responsetime":7}}})", "0 entries, times 0 7"},
        {R"({"response":{"result":[],"responseInfo":{"servertime":-5,"responsetime":7}}})", "0 entries, times 0 7"},
        {R"({"error":[{"code":"x"}],"response":{"result":[]}})", "1 errors"},
        {R"({"error":{},"response":{"result":[]}})", "0 entries, times 0 0"},
    };
    for (auto& [text, expected] : cases) {
        auto parsed = Parser::getJSONData(body(text));
        std::string seen = "absent";
        if (parsed && parsed->error) seen = std::to_string(parsed->error->size()) + " errors";
        if (parsed && parsed->result)
            seen = std::to_string(parsed->result->size()) + " entries, times " + std::to_string(parsed->serverTime) +
                   " " + std::to_string(parsed->responseTime);
        EXPECT_EQ(seen, expected) << text;
    }
}

/// Returns the number of rows. Refuses a list that begins with "refuse", and has no memory for one with "huge".
class CountingParser final : public ParserProtocol<std::size_t, RecordListInfo> {
public:
    Result<std::size_t, Error> parseResult(const ValueList& rows, const RecordListInfo&) override {
        if (!rows.empty() && rows.front() == Value("refuse")) return Error(ErrorCase::inValidInput);
        if (!rows.empty() && rows.front() == Value("huge")) throw std::bad_alloc();
        return rows.size();
    }
};

std::string described(const Error& error) {
    return std::string(caseName(error.which())) + (error.key().empty() ? "" : "(" + error.key() + ")");
}

std::string described(const Data& data) {
    CountingParser parser;
    auto response = parser.parse(data);
    if (!response) return described(response.error());
    std::string text;
    for (auto& item : response->result) {
        if (!item)
            text += described(item.error()) + ";";
        else
            text += item->info.moduleName.value_or("?") + ":" +
                    (item->data ? std::to_string(*item->data) : described(item->data.error())) + ";";
    }
    return text + std::to_string(response->responseInfo.serverTime) + "," +
           std::to_string(response->responseInfo.responseTime);
}

std::string result(const std::string& entries, const std::string& info = R"({"servertime":5,"responsetime":7})") {
    return R"({"response":{"result":)" + entries + R"(,"responseInfo":)" + info + "}}";
}

TEST(ParserProtocolTest, OneEntrysFailureLeavesTheOthers) {
    const std::pair<std::string, std::string> cases[] = {
        {"null", "jsonSerializationFailed"},
        {R"({"a")", "jsonSerializationFailed"},
        {R"({"error":[]})", "responseError"},
        {R"({"error":{}})", "keyNotFound(response)"},
        {R"({"response":3})", "typeConversionFailedForKey(response)"},
        {R"({"response":{"error":{"code":"x"},"result":[]}})", "responseError"},
        {R"({"response":{}})", "keyNotFound(result)"},
        {R"({"response":{"result":[3]}})", "typeConversionFailedForKey(result)"},
        {result("[]"), "5,7"},
        {result("[]", "null"), "0,0"},
        {result("[]", R"({"servertime":5,"responsetime":"7"})"), "0,0"},
        {result(R"([{"info":{"module":"A"},"data":[1],"error":[{}]},{"info":{"module":"B"},"data":[]}])"),
         "A:responseError;B:0;5,7"},
        {result(R"([{"info":{"module":"A"},"error":"text","data":[1]}])"), "A:1;5,7"},
        {result(R"([{"data":[]},{"info":3},{"info":{"module":7},"data":[]},{"info":{}},{"info":{},"data":{}}])"),
         "keyNotFound(info);typeConversionFailedForKey(info);typeConversionFailedForKey(info);keyNotFound(data);"
         "typeConversionFailedForKey(data);5,7"},
        {result(R"([{"info":{"module":"A"},"data":["refuse"]},{"info":{"module":null},"data":[0]}])"),
         "A:inValidInput;?:1;5,7"},
        {result("[{\"info\":{\"module\":\"A\"},\"data\":[\"huge\"]}]"), "jsonSerializationFailed"},
    };
    for (auto& [text, expected] : cases) EXPECT_EQ(described(body(text)), expected) << text;
}

TEST(ResultInfoTest, AMapIsReadLenientlyAndJSONStrictly) {
    ValueMap map{{"module", "M"}, {"responsetime", "7"}, {"resetLocal", true}, {"more_records", 1}, {"count", 3}};
    auto lenient = infoFromMap<SyncLFRecordsInfo>(map);
    EXPECT_EQ(lenient.moduleName, "M");
    EXPECT_EQ(lenient.responseTime, std::nullopt);
    EXPECT_EQ(lenient.hasMore, std::nullopt);
    EXPECT_EQ(lenient.count, 3);
    EXPECT_EQ(lenient.resetLocal, true);
    EXPECT_EQ(decodeInfo<SyncLFRecordsInfo>(map).error(), Error::typeConversionFailedForKey("info"));
}

TEST(TypedReadTest, NamesTheKeyThatIsMissingOrHasAnotherType) {
    ValueMap map{{"a", 1}};
    ValueList list{1, "x"};
    EXPECT_EQ(parseAs<std::string>(ValueMap(), "a").error(), Error::keyNotFound("a"));
    EXPECT_EQ(parseAs<std::string>(map, "a").error(), Error::typeConversionFailedForKey("a"));
    EXPECT_EQ(parseAs<std::int64_t>(list, 2).error(), Error::keyNotFound("2"));
    EXPECT_EQ(parseAs<std::int64_t>(list, 1).error(), Error::typeConversionFailedForIndex(1));
    EXPECT_EQ(parseAs<std::int64_t>(list, 0).value(), 1);
    EXPECT_FALSE(parseAs<bool>(list, 0).ok());
}

TEST(OldResponseTest, ReadsPartsApart) {
    auto parts = parseOldResponse(
        body("{\"response\":[[{\"servertime\":9,\"error\":0},[1,2]],[{\"error\":1},{\"code\":4,\"message\":\"no\"}],"
             "[{\"error\":2},[]],[{\"error\":0},{}],7]}"));
    ASSERT_EQ(parts->size(), 5u);
    EXPECT_EQ((*parts)[0].result.value().size(), 2u);
    EXPECT_EQ((*parts)[0].responseInfo.servertime, 9u);
    EXPECT_EQ((*parts)[1].result.error(), (OldResultError{OldResultError::Case::serverError, 4, "no"}));
    for (int i : {2, 3, 4}) EXPECT_EQ((*parts)[i].result.error(), OldResultError{}) << i;
    EXPECT_EQ(parseOldResponse(body("{\"response\":{}}")).error(), Error::typeConversionFailedForKey("response"));
}

TEST(PositionalRowTest, TheModeDecidesWhatAnotherTypeCosts) {
    Value entry = ValueList{"Leads", nullptr, 7, "12", true, "1.5"};
    for (auto mode : {PositionalRow::Mode::lenient, PositionalRow::Mode::strict}) {
        PositionalRow row = PositionalRow::open(entry, 6, mode).value();
        EXPECT_EQ(row.text(0) + row.text(1) + row.text(6), "Leads");
        EXPECT_EQ(row.number(3), 12);
        EXPECT_EQ(row.number(0), 0);
        EXPECT_FALSE(row.error()) << "neither a null nor a column beyond the end fails a row";
        EXPECT_EQ(row.text(2), "");
        EXPECT_FALSE(row.flag(4));
        EXPECT_EQ(row.error().has_value(), mode == PositionalRow::Mode::strict);
    }
}

TEST(PositionalRowTest, AStrictRowKeepsItsLeftmostFailureAndReadsNumbersAlsoFromTexts) {
    Value entry = ValueList{"Leads", nullptr, 7, "12", true, "1.5"};
    PositionalRow row = PositionalRow::open(entry, 0, PositionalRow::Mode::strict).value();
    EXPECT_EQ(row.leadingTexts(1), std::vector<std::string>{"Leads"});
    EXPECT_FALSE(row.leadingTexts(2)) << "a null is not a text";
    EXPECT_EQ(row.integer(2), 7);
    EXPECT_EQ(row.integer(3), 12);
    EXPECT_EQ(row.real(5), 1.5);
    EXPECT_EQ(row.integer(5), std::nullopt);
    row.text(4), row.text(2);
    EXPECT_EQ(row.error(), Error::typeConversionFailedForIndex(2));
}

TEST(AnswerBodyTest, BytesThatAreNotUtf8CostThemselves) {
    const std::pair<std::string, std::optional<Value>> cases[] = {
        {"\"a\xFFz\"", Value("a\uFFFDz")},
        {"\"\xC3\"", Value("\uFFFD")},  // cut within a character
        {"\"\xE2\x82\"", Value("\uFFFD\uFFFD")},
        {"\"\xED\xA0\x80é\"", Value("\uFFFD\uFFFD\uFFFDé")},  // half of a surrogate pair
        {"\"é😀\"", Value("é😀")},
        {"\xFF\"a\"", std::nullopt},  // outside a text
        {"\"a", std::nullopt},
        {"", std::nullopt},
    };
    for (auto& [text, expected] : cases) EXPECT_EQ(AnswerBody::value(body(text)), expected) << text;
}

}  // namespace
}  // namespace tarvo
