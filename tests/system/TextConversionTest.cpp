#include "TextConversion.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr char32_t lastCodePoint = 0x10FFFF;

bool isSurrogate(char32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

std::string inUtf8(char32_t codePoint) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    const auto trail = [&](unsigned shift) { return byte(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        return {byte(codePoint)};
    }
    if (codePoint < 0x800) {
        return {byte(0xC0 | (codePoint >> 6)), trail(0)};
    }
    if (codePoint < 0x10000) {
        return {byte(0xE0 | (codePoint >> 12)), trail(6), trail(0)};
    }
    return {byte(0xF0 | (codePoint >> 18)), trail(12), trail(6), trail(0)};
}

/// UTF-16 or UTF-32, by the size of a wide character.
std::wstring inWideText(char32_t codePoint) {
    if (sizeof(wchar_t) == 2 && codePoint > 0xFFFF) {
        return {static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)), static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF))};
    }
    return {static_cast<wchar_t>(codePoint)};
}

struct NarrowCase {
    const char* name;
    std::string text;

    friend std::ostream& operator<<(std::ostream& stream, const NarrowCase& row) { return stream << row.name; }
};

std::vector<NarrowCase> illFormedCases() {
    return {
        {"LoneTrailByte", "\x80"},
        {"LastLoneTrailByte", "\xBF"},
        {"TwoTrailBytes", "\x80\xBF"},
        {"TruncatedPair", "\xC3"},
        {"TruncatedTriple", "\xE4\xB8"},
        {"LeadOfTripleAlone", "\xE4"},
        {"TruncatedQuadruple", "\xF0\x9F\x98"},
        {"PairWithoutTrail", "\xC3(x"},
        {"TripleWithoutSecondTrail", "\xE4\xB8(x"},
        {"LeadAfterLead", "\xC3\xC3\xA4"},
        {"OverlongZero", "\xC0\x80"},
        {"OverlongPair", "\xC1\xBF"},
        {"OverlongZeroInThreeBytes", "\xE0\x80\x80"},
        {"OverlongTriple", "\xE0\x9F\xBF"},
        {"OverlongZeroInFourBytes", "\xF0\x80\x80\x80"},
        {"OverlongQuadruple", "\xF0\x8F\xBF\xBF"},
        {"FirstSurrogate", "\xED\xA0\x80"},
        {"LastSurrogate", "\xED\xBF\xBF"},
        {"PairOfSurrogates", "\xED\xA0\xBD\xED\xB8\x80"},
        {"BeyondTheLastCodePoint", "\xF4\x90\x80\x80"},
        {"LargestFourBytes", "\xF7\xBF\xBF\xBF"},
        {"FiveBytes", "\xF8\x88\x80\x80\x80"},
        {"SixBytes", "\xFC\x84\x80\x80\x80\x80"},
        {"ByteFE", "\xFE"},
        {"ByteFF", "\xFF"},
        {"Latin1Text", "f\xFCr"},
        {"IllFormedAtTheEndOfAGoodText", "good\xC3\xA4\xFF"},
        {"IllFormedAtTheBeginOfAGoodText", "\xFFgood"},
    };
}

struct WideCase {
    const char* name;
    std::wstring text;

    friend std::ostream& operator<<(std::ostream& stream, const WideCase& row) { return stream << row.name; }
};

constexpr auto highHalf = static_cast<wchar_t>(0xD83D);
constexpr auto lowHalf = static_cast<wchar_t>(0xDE00);

std::vector<WideCase> illFormedWideCases() {
    std::vector<WideCase> cases = {
        {"HighHalfAlone", {highHalf}},
        {"LowHalfAlone", {lowHalf}},
        {"HalvesInWrongOrder", {lowHalf, highHalf}},
        {"HighHalfBeforeALetter", {highHalf, L'a'}},
        {"HighHalfTwice", {highHalf, highHalf}},
        {"IllFormedAtTheEndOfAGoodText", {L'g', L'o', highHalf}},
    };
    if (sizeof(wchar_t) > 2) {
        cases.push_back({"PairOfHalvesInWideCharacters", {highHalf, lowHalf}});
        cases.push_back({"BeyondTheLastCodePoint", {static_cast<wchar_t>(0x110000)}});
        cases.push_back({"Negative", {static_cast<wchar_t>(-1)}});
    }
    return cases;
}

template <typename Case>
std::string nameOf(const testing::TestParamInfo<Case>& row) {
    return row.param.name;
}

} // namespace

class IllFormedUtf8 : public testing::TestWithParam<NarrowCase> {};
class IllFormedWideText : public testing::TestWithParam<WideCase> {};

TEST_P(IllFormedUtf8, GivesTheEmptyText) {
    EXPECT_EQ(utf8ToWide(GetParam().text.c_str()), L"");
}

TEST_P(IllFormedWideText, GivesTheEmptyText) {
    EXPECT_EQ(wideToUtf8(GetParam().text.c_str()), "");
}

INSTANTIATE_TEST_SUITE_P(TextConversion, IllFormedUtf8, testing::ValuesIn(illFormedCases()), nameOf<NarrowCase>);
INSTANTIATE_TEST_SUITE_P(TextConversion, IllFormedWideText, testing::ValuesIn(illFormedWideCases()), nameOf<WideCase>);

TEST(TextConversion, TheEmptyTextStaysEmpty) {
    EXPECT_EQ(utf8ToWide(""), L"");
    EXPECT_EQ(wideToUtf8(L""), "");
}

TEST(TextConversion, EndsAtTheFirstZero) {
    EXPECT_EQ(utf8ToWide("ab\0cd"), L"ab");
    EXPECT_EQ(wideToUtf8(L"ab\0cd"), "ab");
    EXPECT_EQ(utf8ToWide("ab\0\xFF"), L"ab");
}

TEST(TextConversion, EveryCodePointIsConvertedBothWays) {
    for (char32_t codePoint = 1; codePoint <= lastCodePoint; ++codePoint) {
        if (isSurrogate(codePoint)) {
            continue;
        }
        const std::string narrow = inUtf8(codePoint);
        const std::wstring wide = inWideText(codePoint);
        ASSERT_EQ(utf8ToWide(narrow.c_str()), wide) << static_cast<std::uint32_t>(codePoint);
        ASSERT_EQ(wideToUtf8(wide.c_str()), narrow) << static_cast<std::uint32_t>(codePoint);
    }
}

TEST(TextConversion, NoSurrogateIsConverted) {
    for (char32_t codePoint = 0xD800; codePoint <= 0xDFFF; ++codePoint) {
        ASSERT_EQ(utf8ToWide(inUtf8(codePoint).c_str()), L"") << static_cast<std::uint32_t>(codePoint);
        ASSERT_EQ(wideToUtf8(std::wstring(1, static_cast<wchar_t>(codePoint)).c_str()), "")
            << static_cast<std::uint32_t>(codePoint);
    }
}

TEST(TextConversion, LongTextsOfAnyCharactersComeBackAsTheyWere) {
    std::mt19937 random(20260101);
    std::uniform_int_distribution<std::uint32_t> bits(1, 21);
    std::uniform_int_distribution<std::uint32_t> number(0, 0x1FFFFF);
    for (int round = 0; round < 200; ++round) {
        std::string narrow;
        std::wstring wide;
        while (wide.size() < 300) {
            const char32_t codePoint = number(random) >> (21 - bits(random));
            if (codePoint == 0 || codePoint > lastCodePoint || isSurrogate(codePoint)) {
                continue;
            }
            narrow += inUtf8(codePoint);
            wide += inWideText(codePoint);
        }
        ASSERT_EQ(utf8ToWide(narrow.c_str()), wide);
        ASSERT_EQ(wideToUtf8(wide.c_str()), narrow);
    }
}

TEST(IsLetter, TrueForLettersOfAnyAlphabet) {
    for (const wchar_t letter : std::wstring(L"AMZamz\u00C4\u00E9\u00DF\u0416\u03BB\u05D0\u4E2D")) {
        EXPECT_TRUE(isLetter(letter)) << static_cast<std::uint32_t>(letter);
    }
}

TEST(IsLetter, FalseForEverythingElse) {
    for (const wchar_t other : std::wstring(L"0123456789.:-_ @[`{/\t\n\u00A0\u00D7\u20AC")) {
        EXPECT_FALSE(isLetter(other)) << static_cast<std::uint32_t>(other);
    }
    EXPECT_FALSE(isLetter(L'\0'));
}
