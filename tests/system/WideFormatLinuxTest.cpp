// What the C runtime of other systems leaves open, or does in its own way.
#include "WideFormat.h"

#include "FormatCases.h"
#include "StreamGuard.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cwchar>
#include <map>

namespace {

const Formatter& counting() {
    static const Formatter formatter(
        [](const wchar_t* format, Formatter::Arguments& arguments) { return countFormatted(format, arguments.list); });
    return formatter;
}

Formatter writingTo(std::FILE* stream) {
    return Formatter([=](const wchar_t* format, Formatter::Arguments& arguments) {
        return writeFormatted(stream, format, arguments.list);
    });
}

/// Wide text is UTF-8 on a stream, whatever the locale.
const std::map<std::string, std::string>& wideTextBytes() {
    static const std::map<std::string, std::string> bytes = {
        {"LatinText", "f\xC3\xBCr"},
        {"ThreeByteText", "<\xE4\xB8\xAD\xE6\x96\x87>"},
        {"TextBeyondTheBasicPlane", "\xF0\x9F\x98\x80|"},
        {"PaddedLatinText", "  \xC3\xA4|\xC3\xA4  |"},
        {"LatinTextCut", "\xC3\xA4\xC3\xB6|"},
        {"WideBesideNarrow", "\xC3\xA4\xC3\xA4"},
    };
    return bytes;
}

} // namespace

class WideFormatOntoStreamLinux : public testing::TestWithParam<FormatCase> {};

TEST_P(WideFormatOntoStreamLinux, WritesWideTextAsUtf8AndCountsCharacters) {
    const Written written = writeCase(GetParam());
    EXPECT_EQ(written.bytes, wideTextBytes().at(GetParam().name));
    EXPECT_EQ(written.result, static_cast<int>(GetParam().text.size()));
}

INSTANTIATE_TEST_SUITE_P(WideTexts, WideFormatOntoStreamLinux, testing::ValuesIn(wideTextCases()), nameOfCase);

TEST(WideFormatFailure, AConversionThatIsNotKnown) {
    for (const wchar_t* format : {L"%q", L"%", L"%5", L"%-", L"%.", L"%h", L"%ls", L"%lu", L"%hhu", L"%n", L"%+d"}) {
        EXPECT_EQ(counting()(format, 0), -1) << testing::PrintToString(std::wstring(format));
    }
}

TEST(WideFormatFailure, ANarrowNumber) {
    EXPECT_EQ(counting()(L"%hu", 70000U), -1);
    EXPECT_EQ(counting()(L"%hx", 70000U), -1);
}

TEST(WideFormatFailure, MoreCharactersThanTheResultCanTell) {
    EXPECT_EQ(counting()(L"%*sx", INT_MAX, L""), -1);
    EXPECT_EQ(counting()(L"%*sx", INT_MIN, L""), -1);
}

TEST(WideFormatFailure, ANumberOfMoreDigitsThanAnyoneReads) {
    EXPECT_EQ(counting()(L"%.600f", 1.0), -1);
    EXPECT_EQ(counting()(L"%.511u", 1U), 511);
    EXPECT_EQ(counting()(L"%.512u", 1U), -1);
}

TEST(WideFormatFailure, ABufferThatIsTooSmallIsFilledAndNotMore) {
    std::wstring buffer(6, L'~');
    const Formatter format([&](const wchar_t* text, Formatter::Arguments& arguments) {
        return formatIntoBuffer(buffer.data(), 3, text, arguments.list);
    });
    EXPECT_EQ(format(L"%hs", "abc"), -1);
    EXPECT_EQ(buffer, L"abc~~~");
    EXPECT_EQ(format(L"%hs", "wxyz"), -1);
    EXPECT_EQ(buffer, L"wxy~~~");
}

TEST(WideFormatOntoStreamFailure, NothingCanBeWritten) {
    const StreamGuard readOnly(std::fopen("/dev/null", "rb"));
    ASSERT_NE(readOnly, nullptr);
    EXPECT_EQ(writingTo(readOnly.get())(L"%hs", "abc"), -1);
    EXPECT_EQ(writingTo(readOnly.get())(L"%hs", ""), 0);
}

TEST(WideFormatOntoStreamFailure, TheStreamIsUsedForWideCharacters) {
    const StreamGuard stream(std::tmpfile());
    ASSERT_NE(stream, nullptr);
    ASSERT_GT(std::fwide(stream.get(), 1), 0);
    EXPECT_EQ(writingTo(stream.get())(L"abc"), -1);
}

TEST(WideFormatLinux, WhatIsNoCharacterBecomesTheReplacementCharacter) {
    const StreamGuard stream(std::tmpfile());
    ASSERT_NE(stream, nullptr);
    const std::array<wchar_t, 6> text{L'a', static_cast<wchar_t>(0xD800), L'b', static_cast<wchar_t>(0x110000), L'c'};
    EXPECT_EQ(writingTo(stream.get())(L"%s", text.data()), 5);
    std::rewind(stream.get());
    std::array<char, 16> bytes{};
    EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), stream.get()), 9U);
    EXPECT_STREQ(bytes.data(), "a\xEF\xBF\xBD"
                               "b\xEF\xBF\xBD"
                               "c");
}
