#include "platform/Json.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tests/support/OpaqueValue.h"

namespace tarvo::platform::testing {

TEST(Json, Reads) {
    const std::pair<std::string_view, Value> cases[] = {
        {"1.0", 1.0},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
        {"9223372036854775808", 9223372036854775808.0},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775809", -9223372036854775809.0},
        {"[123456789012345678901234567890, \"123456789012345678901234567890\"]",
         ValueList{123456789012345678901234567890.0, "123456789012345678901234567890"}},
        {"{\"a\\\"1\":[\"18446744073709551616\\\\\",18446744073709551616]}",
         ValueMap{{"a\"1", ValueList{"18446744073709551616\\", 18446744073709551616.0}}}},
        {R"({"a":1,"b":2,"a":{"c":[null]}})", ValueMap{{"a", ValueMap{{"c", ValueList{nullptr}}}}, {"b", 2}}},
        {R"("\u00e9\ud83d\ude00\n")", "\xC3\xA9\xF0\x9F\x98\x80\n"},
    };
    for (auto& [text, value] : cases) {
        EXPECT_EQ(json::parse(text), std::optional(value)) << text;
    }
}

TEST(Json, HalfOfASurrogatePairCostsOnlyItself) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {R"(["a\ud83d","b"])", R"(["a�","b"])"},
        {R"(["\ude00b", 18446744073709551616])", R"(["�b",18446744073709551616.0])"},
        {R"(["\ud83d\ud83d\ude00","\\\ud83d","\\ud83d"])", R"(["�😀","\\�","\\ud83d"])"},
        {R"({"\uD83D":"\uDE00\uD83D"})", R"({"�":"��"})"},
    };
    for (auto& [text, expected] : cases) {
        EXPECT_EQ(json::write(json::parse(text).value_or("refused")), expected) << text;
    }
    for (auto text : {R"(["\ud83d")", R"("\ud83)", R"("\ud83d\)"})
        EXPECT_FALSE(json::parse(std::string_view(text))) << text;
}

TEST(Json, Refuses) {
    using namespace std::string_literals;
    for (auto& text : {""s, "{"s, "[1,]"s, "01"s, "1 2"s, "nan"s, "1e999"s, "\"\x01\""s, "\"\xC0\xAF\""s,
                       "\"\xED\xA0\x80\""s, "[18446744073709551616"s, "1\0"s, "\"a"s})
        EXPECT_FALSE(json::parse(text)) << text;
}

TEST(Json, DepthIsLimitedAndTheNextDocumentIsFine) {
    auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_TRUE(json::parse(nested(900)));
    EXPECT_FALSE(json::parse(nested(1100)));
    EXPECT_FALSE(json::parse(nested(200'000)));
    EXPECT_TRUE(json::parse("[1]"));
}

TEST(Json, WhatIsWrittenReadsBackEqual) {
    std::string control;
    for (int c = 0; c < 0x80; ++c) control += static_cast<char>(c);
    ValueMap map{{"z", ValueList{nullptr, true, -1, 2.0, 0.1, 1e300, 5e-324}}, {control, control}, {"a", ValueMap{}}};
    auto text = json::write(map);
    ASSERT_TRUE(text);
    EXPECT_EQ(json::parse(*text), Value(map));
    EXPECT_EQ(json::write(ValueList{Bytes{"f"}, Bytes{"hi"}, Bytes{"foo"}}), R"(["Zg==","aGk=","Zm9v"])");
}

TEST(Json, WhatItCannotSayIsRefused) {
    auto object = opaqueValue();
    for (auto& value : {object, Value(ValueList{object}), Value(std::nan("")), Value(HUGE_VAL), Value("\xFF")})
        EXPECT_FALSE(json::write(value));
}

}  // namespace tarvo::platform::testing
