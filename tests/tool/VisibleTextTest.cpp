#include "VisibleText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

TEST(VisibleOnTerminal, OnlyLineFeedCarriageReturnAndTabStay) {
    for (int value = 0; value < 0x20; ++value) {
        const std::string text(1, static_cast<char>(value));
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(value));
        const bool stays = value == '\n' || value == '\r' || value == '\t';
        EXPECT_EQ(visibleOnTerminal(text), stays ? text : escaped) << value;
    }
    EXPECT_EQ(visibleOnTerminal("\x7F"), "\\x7F");
    EXPECT_EQ(visibleOnTerminal(" ~"), " ~");
}

TEST(VisibleOnTerminal, ControlCharactersBehindAsciiAreShownByTheirNumbers) {
    for (int value = 0x80; value < 0xA0; ++value) {
        const std::string text{'\xC2', static_cast<char>(value)};
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(value));
        EXPECT_EQ(visibleOnTerminal(text), escaped);
        EXPECT_EQ(visibleOnTerminal(text.substr(1)), escaped) << "a byte of its own";
    }
    EXPECT_EQ(visibleOnTerminal("\xC2\xA0"), "\xC2\xA0");
}

TEST(VisibleOnTerminal, OtherTextStays) {
    for (const char* text : {"", "plain", "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x94\xA7", "\\x1B", "100%\r\n\t"}) {
        EXPECT_EQ(visibleOnTerminal(text), text);
    }
}

TEST(VisibleOnTerminal, ABrokenCharacterHidesNoControlCharacter) {
    EXPECT_EQ(visibleOnTerminal("\xE2\x1B[2J"), "\xE2\\x1B[2J");
    EXPECT_EQ(visibleOnTerminal("\xF0\x9F\x1B"), "\xF0\\x9F\\x1B");
    EXPECT_EQ(visibleOnTerminal("\xC2\x1B"), "\xC2\\x1B");
    EXPECT_EQ(visibleOnTerminal("\xC2\xC2\x9B"), "\xC2\\x9B");
    EXPECT_EQ(visibleOnTerminal("\xFF\x07\xC3"), "\xFF\\x07\xC3");
}

TEST(VisibleOnTerminal, AnEscapeSequenceDoesNothing) {
    EXPECT_EQ(visibleOnTerminal("a\x1B[31mred\x1B]0;title\x07\b\n"), "a\\x1B[31mred\\x1B]0;title\\x07\\x08\n");
}

TEST(VisibleOnTerminal, AZeroCharacterEndsNothing) {
    EXPECT_EQ(visibleOnTerminal(std::string("a\0b", 3)), "a\\x00b");
}

} // namespace
