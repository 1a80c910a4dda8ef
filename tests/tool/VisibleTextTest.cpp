#include "Texts.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

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

TEST(VisibleOnTerminal, CharactersThatTurnTheDirectionOrTakeNoPlaceAreShown) {
    // NOLINTBEGIN(misc-misleading-bidirectional): such characters are what has to be shown
    const std::vector<std::pair<const char*, const char*>> rows{
        {"\xD8\x9C", "\\u{061C}"},     {"\xE2\x80\x8B", "\\u{200B}"}, {"\xE2\x80\x8F", "\\u{200F}"},
        {"\xE2\x80\xA8", "\\u{2028}"}, {"\xE2\x80\xAE", "\\u{202E}"}, {"\xE2\x81\xA6", "\\u{2066}"},
        {"\xE2\x81\xA0", "\\u{2060}"}, {"\xEF\xBB\xBF", "\\u{FEFF}"}, {"\xC2\xAD", "\\xAD"},
        {"\xE3\x85\xA4", "\\u{3164}"}, {"\xEF\xB8\x8F", "\\u{FE0F}"}, {"\xF3\xA0\x81\x81", "\\u{E0041}"}};
    // NOLINTEND(misc-misleading-bidirectional)
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(visibleOnTerminal(std::string("a") + text + "b"), std::string("a") + shown + "b");
        EXPECT_EQ(visibleInLine(text), shown);
    }
    for (const char* text : {"\xE2\x80\x8A", "\xE2\x80\x90", "\xE2\x80\xA7", "\xE2\x80\xAF", "\xE2\x81\xB0"}) {
        EXPECT_EQ(visibleOnTerminal(text), text) << "a neighbour of them";
    }
}

TEST(VisibleInLine, NoCharacterEndsTheLine) {
    EXPECT_EQ(visibleInLine("a\nb\rc\td\x1B"), "a\\x0Ab\\x0Dc\\x09d\\x1B");
    EXPECT_EQ(visibleInLine("gr\xC3\xBCn \xE2\x82\xAC \xC2\x9B"), "gr\xC3\xBCn \xE2\x82\xAC \\x9B");
}

TEST(VisibleInLine, BytesThatBelongToNoCharacterAreShownByTheirNumbers) {
    EXPECT_EQ(visibleInLine("a\xFF\xC3(\xE2\x82"), "a\\xFF\\xC3(\\xE2\\x82");
    EXPECT_EQ(visibleInLines("a\xFF\n"), "a\\xFF\n");
}

TEST(VisibleInLines, OnlyLineFeedsAndTabsStay) {
    EXPECT_EQ(visibleInLines("a\nb\rc\td\x1B\xC2\x85"), "a\nb\\x0Dc\td\\x1B\\x85");
}

TEST(Beginnings, ATextThatFitsIsWhole) {
    const Beginning whole = beginningOf("gr\xC3\xBCn\n", 8);
    EXPECT_EQ(whole.shown, "gr\xC3\xBCn\\x0A");
    EXPECT_FALSE(whole.isCut);
    EXPECT_EQ(whole.characterCount, 5U);
    EXPECT_FALSE(beginningOf("", 0).isCut);
}

TEST(Beginnings, ATextIsCutBetweenCharactersAsTheyAreShown) {
    struct Row {
        const char* text;
        std::size_t limit;
        const char* shown;
        std::size_t characterCount;
    };
    for (const Row& row :
         {Row{"gr\xC3\xBCn", 3, "gr\xC3\xBC", 4}, Row{"ab\n", 5, "ab", 3},
          Row{"\xE4\xB8\xAD\xE6\x96\x87", 3, "\xE4\xB8\xAD", 2}, Row{"\xE4\xB8\xAD\xE6\x96\x87", 1, "", 2},
          Row{"\xFF\xFF", 4, "\\xFF", 2}, Row{"a", 0, "", 1}}) {
        const Beginning beginning = beginningOf(row.text, row.limit);
        EXPECT_EQ(beginning.shown, row.shown);
        EXPECT_TRUE(beginning.isCut) << row.shown;
        EXPECT_EQ(beginning.characterCount, row.characterCount) << row.shown;
    }
}

TEST(Beginnings, MarksThatTakeNoColumnMakeNoTextEndless) {
    std::string text = "a";
    for (int count = 0; count < 1000; ++count) {
        text += "\xCC\x81";
    }
    EXPECT_EQ(columnsOf(text), 1U);
    EXPECT_EQ(beginningOf(text, 10).shown.size(), 19U);
    EXPECT_EQ(beginningOf(text, 10).characterCount, 1001U);
}

TEST(Columns, AreThoseOfATerminal) {
    const std::vector<std::pair<const char*, std::size_t>> rows{
        {"", 0},
        {"abc", 3},
        {"gr\xC3\xBCn", 4},
        {"u\xCC\x88", 1},
        {"\xE4\xB8\xAD\xE6\x96\x87", 4},             // Han
        {"\xED\x95\x9C", 2},                         // a Hangul syllable
        {"\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", 2}, // the same in three parts
        {"\xEF\xBC\xA1", 2},                         // fullwidth
        {"\xEF\xBD\xB1", 1},                         // halfwidth
        {"\xF0\x9F\x94\xA7", 2},                     // an emoji
        {"\xF0\xA0\x80\x80", 2},                     // Han beyond the first plane
        {"\xE2\x82\xAC\xC2\xB0", 2},                 // signs
        {"\xD7\xA9\xD6\xB8", 1},                     // Hebrew with a vowel
        {"\xFF\xC3", 2}};                            // no characters
    for (const auto& [text, columns] : rows) {
        EXPECT_EQ(columnsOf(text), columns) << text;
    }
}

} // namespace
