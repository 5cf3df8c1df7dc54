#include "platform/Text.h"

#include <gmock/gmock.h>

namespace tarvo::platform::testing {

using ::testing::ElementsAre;

TEST(Text, SplitAndJoin) {
    EXPECT_THAT(text::split("a,b,,", ","), ElementsAre("a", "b", "", ""));
    EXPECT_THAT(text::split("", ","), ElementsAre(""));
    EXPECT_THAT(text::split("a<>b", "<>"), ElementsAre("a", "b"));
    EXPECT_THAT(text::split("ab", ""), ElementsAre("ab"));
    EXPECT_EQ(text::join({"a", "", "b"}, ", "), "a, , b");
    EXPECT_EQ(text::join({}, ","), "");
}

TEST(Text, Trimmed) {
    EXPECT_EQ(text::trimmed(" \t a b\r\n"), "a b");
    EXPECT_EQ(text::trimmed("a"), "a");
    EXPECT_EQ(text::trimmed(" \n "), "");
}

TEST(Text, Numbers) {
    struct Case {
        std::string_view text;
        std::optional<std::int64_t> integer;
        std::optional<double> real;
    };
    const std::optional<std::int64_t> no;
    for (auto& [digits, integer, real] : {
             Case{"0", 0, 0.0},
             Case{"-12", -12, -12.0},
             Case{"+12", 12, 12.0},
             Case{"9223372036854775807", INT64_MAX, 9223372036854775807.0},
             Case{"9223372036854775808", no, 9223372036854775808.0},
             Case{"1.5", no, 1.5},
             Case{"1e3", no, 1000.0},
             Case{"", no, std::nullopt},
             Case{"+", no, std::nullopt},
             Case{"+-1", no, std::nullopt},
             Case{" 1", no, std::nullopt},
             Case{"1x", no, std::nullopt},
             Case{"0x10", no, std::nullopt},
             Case{"inf", no, std::nullopt},
             Case{"nan", no, std::nullopt},
             Case{"1e999", no, std::nullopt},
         }) {
        EXPECT_EQ(text::toInteger(digits), integer) << digits;
        EXPECT_EQ(text::toReal(digits), real) << digits;
    }
}

TEST(Text, Utf8) {
    for (std::string_view good : {"", "a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"})
        EXPECT_TRUE(text::isValidUtf8(good));
    for (std::string_view bad : {"\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xFF"})
        EXPECT_FALSE(text::isValidUtf8(bad));
}

TEST(Text, Encodings) {
    EXPECT_EQ(text::percentEscape("aZ9-._~ /%\xC3\xA9+"), "aZ9-._~%20%2F%25%C3%A9%2B");
    EXPECT_EQ(text::hex(std::string_view("\0\xAB", 2)), "00ab");
    struct Case {
        std::string_view bytes, base64;
    };
    for (auto& [bytes, base64] :
         {Case{"", ""}, Case{"f", "Zg=="}, Case{"fo", "Zm8="}, Case{"foo", "Zm9v"}, Case{"\xFF\xFE\xFD", "//79"}})
        EXPECT_EQ(text::base64(bytes), base64);
    EXPECT_EQ(text::asciiLowercase("AbZ\xC3\x89"), "abz\xC3\x89");
    EXPECT_TRUE(text::equalsIgnoringAsciiCase("Content-Type", "content-type"));
    EXPECT_FALSE(text::equalsIgnoringAsciiCase("a", "ab"));
}

}  // namespace tarvo::platform::testing
