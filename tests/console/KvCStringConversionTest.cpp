#include "KvCStringConversion.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;

TEST(TextConversions, TextIsTheSameInBothForms) {
    EXPECT_EQ(toWide("a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80"), L"a\u00E4\u4E2D\U0001F600");
    EXPECT_EQ(toUtf8(L"a\u00E4\u4E2D\U0001F600"), "a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80");
}

TEST(TextConversions, TheEmptyTextStaysEmpty) {
    EXPECT_EQ(toWide(KvCString()), L"");
    EXPECT_EQ(toUtf8(L""), "");
}

TEST(TextConversions, IllFormedTextBecomesEmpty) {
    EXPECT_EQ(toWide("good\xC3(bad"), L"");
    EXPECT_EQ(toUtf8(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'b'}), "");
}

TEST(TextConversions, TextEndsAtItsFirstZero) {
    EXPECT_EQ(toWide(KvCString("ab\0cd"sv)), L"ab");
    EXPECT_EQ(toUtf8(std::wstring(L"ab\0cd", 5)), "ab");
    EXPECT_EQ(toUtf8(std::wstring(L"ab\0cd", 5)).length(), 2U);
}

TEST(TextConversions, LineEndsStayAsTheyAre) {
    EXPECT_EQ(toWide("a\r\nb\tc"), L"a\r\nb\tc");
    EXPECT_EQ(toUtf8(L"a\r\nb\tc"), "a\r\nb\tc");
}
