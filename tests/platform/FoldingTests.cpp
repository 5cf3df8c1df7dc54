#include "platform/Folding.h"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <random>

namespace tarvo::platform::text {
namespace {

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

/// The same rule said with ICU's sets and whole texts, without a table or pieces.
std::string byIcu(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::UnicodeSet marks(
        u"[[:Mn:]&[[:sc=Zinh:][:sc=Latn:][:sc=Grek:][:sc=Cyrl:][:sc=Bopo:][:sc=Hebr:][:sc=Arab:]]]", status);
    static const icu::UnicodeSet bases(
        u"[[:sc=Zyyy:][:sc=Latn:][:sc=Grek:][:sc=Cyrl:][:sc=Bopo:][:sc=Hebr:][:sc=Arab:]-[:M:]]", status);
    static const icu::UnicodeSet transparent(u"[[:M:][:sc=Zinh:]]", status);
    auto decomposed = icu::Normalizer2::getNFDInstance(status)->normalize(text, status);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        auto base = i;
        while (base > 0 && transparent.contains(decomposed.char32At(base))) base = decomposed.moveIndex32(base, -1);
        bool strips = transparent.contains(decomposed.char32At(base)) || bases.contains(decomposed.char32At(base));
        if (!(marks.contains(decomposed.char32At(i)) && strips)) kept.append(decomposed.char32At(i));
    }
    EXPECT_TRUE(U_SUCCESS(status));
    return utf8(icu::Normalizer2::getNFCInstance(status)->normalize(kept.foldCase(), status));
}

TEST(FoldingTests, FoldsAsReadersExpect) {
    const std::pair<const char*, const char*> cases[] = {
        {"The QUICK brown-Fox @[`{ 09", "the quick brown-fox @[`{ 09"},
        {"ÉCOLE Ñandú Ångström", "ecole nandu angstrom"},
        {"Cafe\u0301", "cafe"},
        {"Straße STRASSE", "strasse strasse"},
        {"İstanbul ıI", "istanbul ıi"},
        {"ΆΣΟΣ άσος ᾳ", "ασοσ ασοσ α"},
        {"Ёлка Йод", "елка иод"},
        {"مُحَمَّد", "محمد"},
        {"தமிழ் நீ", "தமிழ் நீ"},
        {"ที่นี่", "ที่นี่"},
        {"ガが한글", "ガが한글"},
        {"a\u0915\u0301", "a\u0915\u0301"},
        {"a\xFFz\xE2\x82 \xC3", "a\uFFFDz\uFFFD \uFFFD"},
    };
    for (auto& [text, folded] : cases) EXPECT_EQ(fold(text), folded) << text;
}

TEST(FoldingTests, EveryCharacterAgreesWithIcuAndStaysFolded) {
    for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
        if (U_IS_SURROGATE(c)) continue;
        // Some of the many code points that are not assigned yet.
        auto type = u_charType(c);
        if ((type == U_UNASSIGNED || type == U_PRIVATE_USE_CHAR) && c % 61 != 0) continue;
        // Between a letter and a mark.
        for (auto text : {icu::UnicodeString(c), icu::UnicodeString(u"É").append(c).append(UChar32(0x301))}) {
            auto folded = fold(utf8(text));
            ASSERT_EQ(folded, byIcu(text)) << std::hex << c;
            ASSERT_EQ(fold(folded), folded) << std::hex << c;
        }
    }
}

TEST(FoldingTests, RandomTextsAgreeWithIcu) {
    std::mt19937 random(7);
    // Scripts with marks, cases and compositions of their own, so that neighbours matter.
    const std::pair<UChar32, UChar32> ranges[] = {
        {0x20, 0x7E},     {0x80, 0x36F},    {0x300, 0x36F},   {0x370, 0x52F},    {0x590, 0x6FF},   {0x900, 0x97F},
        {0xB80, 0xBFF},   {0xE00, 0xE4F},   {0x1100, 0x11FF}, {0x1AB0, 0x1AFF},  {0x1DC0, 0x1FFF}, {0x200B, 0x200D},
        {0x3040, 0x30FF}, {0xAC00, 0xAC40}, {0xFB00, 0xFB4F}, {0x1E900, 0x1E95F}};
    for (int round = 0; round < 20'000; ++round) {
        icu::UnicodeString text;
        for (auto length = random() % 40; length > 0; --length) {
            auto& [first, last] = ranges[random() % 2 ? random() % 3 : random() % std::size(ranges)];
            text.append(
                static_cast<UChar32>(first + static_cast<UChar32>(random() % static_cast<unsigned>(last - first + 1))));
        }
        ASSERT_EQ(fold(utf8(text)), byIcu(text)) << "round " << round;
    }
}

TEST(FoldingTests, BrokenBytesFoldAsIcuReadsThem) {
    std::mt19937 random(11);
    const unsigned char bytes[] = {'A', 0x80, 0xBF, 0xC2, 0xC3, 0x89, 0xCC, 0x81, 0xE0, 0xE2, 0xED, 0xF0, 0xF4, 0xFF};
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        for (auto length = random() % 12; length > 0; --length)
            text += static_cast<char>(bytes[random() % sizeof bytes]);
        ASSERT_EQ(fold(text), byIcu(icu::UnicodeString::fromUTF8(text))) << "round " << round;
    }
}

}  // namespace
}  // namespace tarvo::platform::text
