#include "host/commands/Console.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tarvo::host {

namespace {

TEST(Console, NoTextSteersTheTerminalOrTurnsItsDirection) {
    const struct {
        const char* name;
        std::string text, lines, json;
    } cases[] = {
        {"escape sequence", "\x1b[2J\x07\x7f", " [2J  ", "\\u001b[2J\\u0007\\u007f"},
        {"carriage return", "ok\rfailed", "ok failed", "ok\\u000dfailed"},
        {"C1 control", "\u009b31m\u0085", " 31m ", "\\u009b31m\\u0085"},
        {"embedding and override", "\u202a\u202e\u202cfdp.exe", "   fdp.exe", "\\u202a\\u202e\\u202cfdp.exe"},
        {"isolates and marks", "\u2066\u2069\u200e\u200f\u061c", "     ", "\\u2066\\u2069\\u200e\\u200f\\u061c"},
        {"separators", "\u2028\u2029", "  ", "\\u2028\\u2029"},
        {"C1 of an older terminal", "\x9b\x31m", "?1m", "?1m"},
        {"ordinary texts", "two\nM\u00fcller e\u0301 \u6771 \U0001F600 \u05d0",
         "two\nM\u00fcller e\u0301 \u6771 \U0001F600 \u05d0", "two\nM\u00fcller e\u0301 \u6771 \U0001F600 \u05d0"},
    };
    for (auto& one : cases) {
        EXPECT_EQ(harmlessLines(one.text), one.lines) << one.name;
        EXPECT_EQ(harmlessJson(one.text), one.json) << one.name;
        auto cell = tableText({{one.text, "next"}});
        EXPECT_EQ(std::count(cell.begin(), cell.end(), '\n'), 1) << one.name;
        EXPECT_EQ(harmlessLines(cell), cell) << one.name;
    }
}

}  // namespace

}  // namespace tarvo::host
