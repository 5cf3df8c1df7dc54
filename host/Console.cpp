#include "host/Console.h"

#include <algorithm>
#include <cstdio>

namespace tarvo::host {

namespace {

std::string harmless(std::string text) {
    for (auto& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
    return text;
}

bool beginsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }

std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

std::vector<std::size_t> columnWidths(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
    }
    return widths;
}

}  // namespace

void note(std::string_view what) {
    std::string line = harmless("tarvo-host: " + std::string(what)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

int fail(std::string_view why, int status) {
    note(why);
    return status;
}

std::string tableText(const std::vector<std::vector<std::string>>& rows) {
    auto widths = columnWidths(rows);
    std::string text;
    for (auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += harmless(row[i]);
            if (i + 1 < row.size()) text.append(widths[i] - widthOf(row[i]) + 2, ' ');
        }
        text += '\n';
    }
    return text;
}

}  // namespace tarvo::host
