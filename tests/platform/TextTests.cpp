#include "platform/Text.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tarvo::platform::testing {

TEST(Text, Numbers) {
    using Integer = std::optional<std::int64_t>;
    for (auto& [digits, integer, real] : {std::tuple("0", Integer(0), 0.0),
                                          {"+12", 12, 12.0},
                                          {"9223372036854775807", INT64_MAX, 9223372036854775807.0},
                                          {"9223372036854775808", std::nullopt, 9223372036854775808.0},
                                          {"1.5", std::nullopt, 1.5}}) {
        EXPECT_EQ(text::toInteger(digits), integer) << digits;
        EXPECT_EQ(text::toReal(digits), real) << digits;
    }
    for (auto refused : {"", "+-1", " 1", "1x", "0x10", "nan", "1e999"})
        EXPECT_FALSE(text::toInteger(refused) || text::toReal(refused)) << refused;
}

TEST(Text, Utf8) {
    for (std::string_view good : {"", "a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"})
        EXPECT_TRUE(text::isValidUtf8(good));
    for (std::string_view bad : {"\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xFF"})
        EXPECT_FALSE(text::isValidUtf8(bad));
}

}  // namespace tarvo::platform::testing
