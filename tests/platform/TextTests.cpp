#include "platform/Text.h"

#include <gtest/gtest.h>

namespace tarvo::platform::testing {

TEST(Text, Numbers) {
    struct Case {
        std::string_view text;
        std::optional<std::int64_t> integer;
        std::optional<double> real;
    };
    const std::optional<std::int64_t> no;
    for (auto& [digits, integer, real] : {
             Case{"0", 0, 0.0},
             Case{"+12", 12, 12.0},
             Case{"9223372036854775807", INT64_MAX, 9223372036854775807.0},
             Case{"9223372036854775808", no, 9223372036854775808.0},
             Case{"1.5", no, 1.5},
             Case{"", no, std::nullopt},
             Case{"+-1", no, std::nullopt},
             Case{" 1", no, std::nullopt},
             Case{"1x", no, std::nullopt},
             Case{"0x10", no, std::nullopt},
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

}  // namespace tarvo::platform::testing
