#include "WideFormat.h"

#include "FormatCases.h"
#include "RedirectedStream.h"
#include "ScratchFolder.h"
#include "StreamGuard.h"

#include <gtest/gtest.h>

namespace {

/// One byte per character.
std::string narrowed(const std::wstring& text) {
    std::string result;
    for (const wchar_t character : text) {
        result += static_cast<char>(static_cast<unsigned char>(character));
    }
    return result;
}

} // namespace

class WideFormatIntoText : public testing::TestWithParam<FormatCase> {};
class WideFormatOntoStream : public testing::TestWithParam<FormatCase> {};

TEST_P(WideFormatIntoText, CountsTheCharactersAndTheBytesOfNarrowTexts) {
    const int count = GetParam().call(Formatter(
        [](const wchar_t* format, Formatter::Arguments& arguments) { return countFormatted(format, arguments.list); }));
    EXPECT_EQ(count, static_cast<int>(GetParam().text.size()));
}

TEST_P(WideFormatIntoText, FillsABufferThatJustHoldsThem) {
    const std::wstring& expected = GetParam().inBuffer();
    constexpr wchar_t untouched = L'~';
    std::wstring buffer(expected.size() + 3, untouched);
    const int count = GetParam().call(Formatter([&](const wchar_t* format, Formatter::Arguments& arguments) {
        return formatIntoBuffer(buffer.data(), expected.size() + 1, format, arguments.list);
    }));
    EXPECT_EQ(count, static_cast<int>(GetParam().text.size()));
    EXPECT_EQ(buffer, expected + L'\0' + untouched + untouched);
}

TEST_P(WideFormatOntoStream, WritesOneBytePerCharacter) {
    const Written written = writeCase(GetParam());
    EXPECT_EQ(written.bytes, narrowed(GetParam().text));
    EXPECT_EQ(written.result, static_cast<int>(GetParam().text.size()));
}

INSTANTIATE_TEST_SUITE_P(Shapes, WideFormatIntoText, testing::ValuesIn(formatCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(WideTexts, WideFormatIntoText, testing::ValuesIn(wideTextCases()), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Shapes, WideFormatOntoStream, testing::ValuesIn(formatCases()), nameOfCase);

TEST(WideFormat, LeavesFlushingToTheCaller) {
    const ScratchFolder folder;
    const StreamGuard stream(std::fopen((folder.path() / "stream").string().c_str(), "w"));
    ASSERT_NE(stream, nullptr);
    const Formatter format([&](const wchar_t* text, Formatter::Arguments& arguments) {
        return writeFormatted(stream.get(), text, arguments.list);
    });
    EXPECT_EQ(format(L"%hs\n", "abc"), 4);
    EXPECT_EQ(folder.read("stream"), "");
    std::fflush(stream.get());
    EXPECT_EQ(writtenLines(folder.read("stream")), "abc\n");
}
