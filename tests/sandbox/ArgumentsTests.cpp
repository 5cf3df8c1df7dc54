#include <gtest/gtest.h>

#include "sandbox/SandboxArguments.h"

namespace tarvo::sandbox {
namespace {

std::variant<Arguments, EarlyEnd> parse(std::vector<const char*> values) {
    values.insert(values.begin(), "tarvo-sandbox");
    return parseArguments(static_cast<int>(values.size()), values.data());
}

TEST(ArgumentsTests, WrongOnesEndWithOneLine) {
    std::vector<std::vector<const char*>> rows = {
        {"--port", "65536"},
        {"--port", "x"},
        {"--bogus"},
        {"word"},
        {"--account", "onlyid"},
        {"--account", ":secret"},
        {"--identifier", "other"},
        {"--host-name", "a b"},
        {"--seed", "-1"},
        {"--records", "100001"},
        {"--state"},
    };
    for (const auto& row : rows) {
        auto parsed = parse(row);
        auto* end = std::get_if<EarlyEnd>(&parsed);
        ASSERT_TRUE(end) << row[0];
        EXPECT_EQ(end->status, 2) << row[0];
        EXPECT_FALSE(end->text.empty());
        EXPECT_EQ(end->text.find('\n'), std::string::npos) << end->text;
        EXPECT_EQ(end->text.find("secret"), std::string::npos) << end->text;
    }
}

}  // namespace
}  // namespace tarvo::sandbox
