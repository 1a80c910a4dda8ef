#include "MessageText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct MessageRow {
    std::wstring message;
    std::string bytes;
};

/// A message that holds a narrow text: one character per byte.
std::wstring widened(const std::string& bytes) {
    std::wstring result;
    for (const char byte : bytes) {
        result.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
    }
    return result;
}

void expectBytes(const std::vector<MessageRow>& rows) {
    for (const MessageRow& row : rows) {
        EXPECT_EQ(messageBytes(row.message), row.bytes);
    }
}

TEST(MessageBytes, AsciiStaysAsItIs) {
    std::string all;
    for (char character = 0; character < 0x7F; ++character) {
        all.push_back(character);
    }
    all.push_back('\x7F');
    EXPECT_EQ(messageBytes(widened(all)), all);
    EXPECT_EQ(messageBytes(L""), "");
}

TEST(MessageBytes, NarrowUtf8ComesOutAsItCameIn) {
    for (const char* text : {"\xC2\x80", "\xC3\xBC", "\xDF\xBF", "\xE0\xA0\x80", "\xE2\x82\xAC", "\xEF\xBF\xBF",
                             "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "gr\xC3\xBCn\xE2\x82\xAC.\xF0\x9F\x94\xA7 x"}) {
        EXPECT_EQ(messageBytes(widened(text)), text);
    }
}

TEST(MessageBytes, WideTextIsEncoded) {
    expectBytes({{L"\u00FC", "\xC3\xBC"},
                 {L"a\u20ACb", "a\xE2\x82\xAC"
                               "b"},
                 {L"\uFFFF", "\xEF\xBF\xBF"},
                 {L"\U0001F527", "\xF0\x9F\x94\xA7"},
                 {L"\u00FC\u00FC", "\xC3\xBC\xC3\xBC"}});
}

TEST(MessageBytes, BytesThatAreNoUtf8AreTakenForCharacters) {
    expectBytes({
        {widened("\x80"), "\xC2\x80"},
        {widened("\xFF"), "\xC3\xBF"},
        {widened("\xC3"), "\xC3\x83"},
        {widened("\xC3 "), "\xC3\x83 "},
        {widened("\xC0\x80"), "\xC3\x80\xC2\x80"},                                     // too long for its value
        {widened("\xE0\x80\x80"), "\xC3\xA0\xC2\x80\xC2\x80"},                         // too long for its value
        {widened("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80"},                         // a surrogate
        {widened("\xF4\x90\x80\x80"), "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80"},             // beyond the last character
        {widened("\xF8\x88\x80\x80\x80"), "\xC3\xB8\xC2\x88\xC2\x80\xC2\x80\xC2\x80"}, // no such beginning
        {widened("\xE2\x82"), "\xC3\xA2\xC2\x82"},                                     // cut off
        {widened("\xE2\x82\xC3\xBC"), "\xC3\xA2\xC2\x82\xC3\xBC"},                     // cut off by a good one
    });
}

TEST(MessageBytes, ACharacterAboveAByteEndsAnEmbeddedOne) {
    expectBytes({{L"\u00E2\u0082\u0152", "\xC3\xA2\xC2\x82\xC5\x92"}, {L"\u00C3\u20AC", "\xC3\x83\xE2\x82\xAC"}});
}

TEST(MessageBytes, SurrogatePairsAreJoined) {
    const std::wstring pair{wchar_t(0xD83D), wchar_t(0xDD27)};
    EXPECT_EQ(messageBytes(pair), "\xF0\x9F\x94\xA7");
    const std::wstring first{wchar_t(0xD800), wchar_t(0xDC00)};
    EXPECT_EQ(messageBytes(first), "\xF0\x90\x80\x80");
    const std::wstring last{wchar_t(0xDBFF), wchar_t(0xDFFF)};
    EXPECT_EQ(messageBytes(last), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(messageBytes(L"a" + pair + L"b"), "a\xF0\x9F\x94\xA7"
                                                "b");
}

TEST(MessageBytes, ALoneSurrogateIsReplacedAndTakesNothingAlong) {
    const std::wstring high{wchar_t(0xD83D)};
    const std::wstring low{wchar_t(0xDD27)};
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(messageBytes(high), replacement);
    EXPECT_EQ(messageBytes(low), replacement);
    EXPECT_EQ(messageBytes(high + L"A\n"), replacement + "A\n");
    EXPECT_EQ(messageBytes(high + high + low), replacement + "\xF0\x9F\x94\xA7");
    EXPECT_EQ(messageBytes(low + high), replacement + replacement);
    EXPECT_EQ(messageBytes(high + L"\u00C3\u00BC"), replacement + "\xC3\xBC");
}

TEST(MessageBytes, WhatIsNoCharacterIsReplaced) {
    if constexpr (sizeof(wchar_t) > 2) {
        for (const long long value : {0x110000LL, 0x7FFFFFFFLL, -1LL}) {
            const std::wstring message{L'a', static_cast<wchar_t>(value), L'b'};
            EXPECT_EQ(messageBytes(message), "a\xEF\xBF\xBD"
                                             "b");
        }
    }
}

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
