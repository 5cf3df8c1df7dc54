#include "host/commands/Console.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdio>

namespace tarvo::host {

namespace {

// Controls steer the terminal; characters of direction and line separators make a text look like another one.
bool isHarmful(UChar32 character) {
    auto type = u_charType(character);
    return type == U_CONTROL_CHAR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR ||
           u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL);
}

using Replacement = std::string (*)(UChar32 character);

std::string asBlank(UChar32) { return " "; }
std::string asJsonEscape(UChar32 character) {
    char text[16];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(character));
    return text;
}

std::string withoutHarmful(std::string_view text, std::string_view allowed, Replacement replacement = asBlank) {
    auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        auto begin = at;
        while (at < text.size() && isPlain(text[at])) ++at;
        result += text.substr(begin, at - begin);
        if (at == text.size()) break;
        begin = at;
        UChar32 character = 0;
        U8_NEXT(text.data(), at, text.size(), character);
        auto bytes = text.substr(begin, at - begin);
        bool isAllowed = bytes.size() == 1 && allowed.find(bytes.front()) != std::string_view::npos;
        // Bytes that are not UTF-8 could be controls of an older terminal.
        if (character < 0)
            result += '?';
        else if (isHarmful(character) && !isAllowed)
            result += replacement(character);
        else
            result += bytes;
    }
    return result;
}

std::string harmless(std::string_view text) { return withoutHarmful(text, ""); }

// Terminals give a wide character of East Asia two places, and a combining accent none.
std::size_t placesOf(UChar32 character) {
    auto type = u_charType(character);
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) return 0;
    auto width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::size_t widthOf(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        UChar32 character = 0;
        U8_NEXT(text.data(), at, text.size(), character);
        width += character < 0 ? 1 : placesOf(character);
    }
    return width;
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

void writeLogLine(std::string_view line) {
    auto text = harmless(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void note(std::string_view what) { writeLogLine("tarvo-host: " + std::string(what)); }

int fail(std::string_view why, int status) {
    note(why);
    return status;
}

std::string harmlessLines(std::string_view text) { return withoutHarmful(text, "\n"); }

std::string harmlessJson(std::string_view json) { return withoutHarmful(json, "\n", asJsonEscape); }

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
