#include <gtest/gtest.h>

#include "platform/Text.h"
#include "sandbox/SandboxArguments.h"

namespace tarvo::sandbox {
namespace {

std::variant<Arguments, EarlyEnd> parse(const std::vector<std::string>& values) {
    std::vector<const char*> given{"tarvo-sandbox"};
    for (const auto& value : values) given.push_back(value.c_str());
    return parseArguments(static_cast<int>(given.size()), given.data());
}

TEST(ArgumentsTests, WrongOnesEndWithOneLine) {
    for (std::string row : {"--port 65536", "--port x", "--bogus", "word", "--account onlyid", "--account :secret",
                            "--identifier other", "--host-name a_b", "--seed -1", "--records 100001", "--state"}) {
        auto parsed = parse(text::split(row, " "));
        auto* end = std::get_if<EarlyEnd>(&parsed);
        ASSERT_TRUE(end) << row;
        EXPECT_EQ(end->status, 2) << row;
        EXPECT_FALSE(end->text.empty());
        EXPECT_EQ(end->text.find('\n'), std::string::npos) << end->text;
        EXPECT_EQ(end->text.find("secret"), std::string::npos) << end->text;
    }
}

}  // namespace
}  // namespace tarvo::sandbox
