#include "platform/Folding.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <array>
#include <cstring>

namespace tarvo::platform::text {

namespace {

bool dropsItsMarks(UScriptCode script) {
    switch (script) {
        case USCRIPT_LATIN:
        case USCRIPT_GREEK:
        case USCRIPT_CYRILLIC:
        case USCRIPT_BOPOMOFO:
        case USCRIPT_HEBREW:
        case USCRIPT_ARABIC:
            return true;
        default:
            return false;
    }
}

UScriptCode scriptOf(UChar32 c) {
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(c, &status);
}

// Drops marks from decomposed text. A mark belongs to the letter before it; joiners between the two belong to no
// script.
icu::UnicodeString withoutAccents(const icu::UnicodeString& decomposed) {
    icu::UnicodeString kept;
    bool baseDrops = true;
    for (int32_t i = 0; i < decomposed.length();) {
        auto c = decomposed.char32At(i);
        i += U16_LENGTH(c);
        auto script = scriptOf(c);
        bool mark = (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0;
        if (u_charType(c) == U_NON_SPACING_MARK && baseDrops && (script == USCRIPT_INHERITED || dropsItsMarks(script)))
            continue;
        kept.append(c);
        if (!mark && script != USCRIPT_INHERITED) baseDrops = script == USCRIPT_COMMON || dropsItsMarks(script);
    }
    return kept;
}

// The whole rule, for any text. The steps cannot fail but for want of memory.
void appendByRule(std::string& out, std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    auto decompose = icu::Normalizer2::getNFDInstance(status);
    auto compose = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    auto whole = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    auto folded = withoutAccents(decompose->normalize(whole, status)).foldCase();
    compose->normalize(folded, status).toUTF8String(out);
}

constexpr char32_t tableBegin = 0x80, tableEnd = 0x370;

// What each character from U+0080 to U+036F becomes. Marks of this range vanish after every character below
// `tableEnd`, no character below U+0300 joins with the one before it, and the rule looks at no other neighbours; so
// such a text is folded character by character.
struct LatinTable {
    struct Entry {
        std::uint8_t size = 0;
        char bytes[7] = {};
    };
    std::array<Entry, tableEnd - tableBegin> entries;

    LatinTable() {
        for (char32_t c = tableBegin; c < tableEnd; ++c) {
            const char text[] = {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
            std::string folded;
            appendByRule(folded, std::string_view(text, 2));
            auto& entry = entries[c - tableBegin];
            entry.size = static_cast<std::uint8_t>(folded.copy(entry.bytes, sizeof entry.bytes));
        }
    }

    static const LatinTable& shared() {
        static const LatinTable table;
        return table;
    }
};

bool isAscii(char byte) { return static_cast<signed char>(byte) >= 0; }
char lowerAscii(char c) { return static_cast<char>(c + ((static_cast<unsigned char>(c - 'A') < 26) << 5)); }

// The character of two bytes at the front when it is well-formed and below `end`, else 0.
char32_t twoByteCharacter(std::string_view text, char32_t end) {
    if (text.size() < 2) return 0;
    auto first = static_cast<unsigned char>(text[0]), second = static_cast<unsigned char>(text[1]);
    if (first < 0xC2 || first > 0xDF || (second & 0xC0) != 0x80) return 0;
    char32_t c = static_cast<char32_t>(first & 0x1F) << 6 | (second & 0x3F);
    return c < end ? c : 0;
}

// How many bytes at the front are for the whole rule: up to the next character that joins with nothing before it.
std::size_t lengthForRule(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && !isAscii(text[length]) && !twoByteCharacter(text.substr(length), 0x300)) ++length;
    return length;
}

// Lower-cases ASCII into `out`, which has room for the text, and gives the length of the ASCII run at the front.
// Blocks of a fixed size are what compilers turn into vector code.
std::size_t lowerAsciiRun(std::string_view text, char* out) {
    constexpr std::size_t block = 32;
    std::size_t done = 0;
    for (; done + block <= text.size(); done += block) {
        std::uint8_t bits = 0;
        for (std::size_t i = 0; i < block; ++i) bits |= static_cast<std::uint8_t>(text[done + i]);
        if (bits & 0x80) break;
        for (std::size_t i = 0; i < block; ++i) out[done + i] = lowerAscii(text[done + i]);
    }
    for (; done < text.size() && isAscii(text[done]); ++done) out[done] = lowerAscii(text[done]);
    return done;
}

// The text after an ASCII run; it begins with a byte that is not ASCII.
void appendMixed(std::string& out, std::string_view text) {
    auto& table = LatinTable::shared();
    while (!text.empty()) {
        if (isAscii(text[0])) {
            out += lowerAscii(text[0]);
            text.remove_prefix(1);
        } else if (auto c = twoByteCharacter(text, tableEnd)) {
            auto& entry = table.entries[c - tableBegin];
            out.append(entry.bytes, entry.size);
            text.remove_prefix(2);
        } else {
            auto length = lengthForRule(text);
            appendByRule(out, text.substr(0, length));
            text.remove_prefix(length);
        }
    }
}

}  // namespace

void appendFolded(std::string& out, std::string_view text) {
    auto before = out.size();
    out.resize(before + text.size());
    auto ascii = lowerAsciiRun(text, out.data() + before);
    out.resize(before + ascii);
    if (ascii < text.size()) appendMixed(out, text.substr(ascii));
}

std::string fold(std::string_view text) {
    std::string folded;
    appendFolded(folded, text);
    return folded;
}

}  // namespace tarvo::platform::text
