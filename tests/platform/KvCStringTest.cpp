#include "KvCString.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(String, IsEmptyWithoutAText) {
    const KvCString text;
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.length(), 0U);
    EXPECT_STREQ(text.c_str(), "");
}

TEST(String, ANullPointerCountsAsTheEmptyText) {
    const char* const nothing = nullptr;
    EXPECT_TRUE(KvCString(nothing).isEmpty());
}

TEST(String, OfANumberIsItsDecimalText) {
    EXPECT_STREQ(KvCString(0U).c_str(), "0");
    EXPECT_STREQ(KvCString(1234567890U).c_str(), "1234567890");
    EXPECT_STREQ(KvCString(4294967295U).c_str(), "4294967295");
}

TEST(String, CountsBytesNotCharacters) {
    EXPECT_EQ(KvCString("\xC3\xA4\xE2\x82\xAC").length(), 5U);
}

TEST(String, KeepsEmbeddedZeroBytesOfAView) {
    const KvCString text("a\0b"sv);
    EXPECT_EQ(text.length(), 3U);
    EXPECT_EQ(text.view(), "a\0b"sv);
    EXPECT_FALSE(text == "a");
}

TEST(String, TakesOverAStandardString) {
    EXPECT_TRUE(KvCString("taken over"s) == "taken over");
}

TEST(String, AppendsTextsOfEveryKind) {
    KvCString text("a");
    text += KvCString("b");
    text += "c";
    text += "d\0e"sv;
    EXPECT_EQ(text.view(), "abcd\0e"sv);
}

TEST(String, AppendsItself) {
    KvCString text("ab");
    text += text;
    EXPECT_TRUE(text == "abab");
}

TEST(String, ComparesByteByByte) {
    EXPECT_TRUE(KvCString("HCN") == KvCString("HCN"));
    EXPECT_FALSE(KvCString("HCN") == KvCString("hcn"));
    EXPECT_TRUE(KvCString("HCN") != "HCN "sv);
}
