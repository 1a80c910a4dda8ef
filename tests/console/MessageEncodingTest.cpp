#include "MessageEncoding.h"

#include "MessageBytes.h"
#include "MessageCapture.h"

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

void expectBytes(const std::vector<MessageRow>& rows, bool narrowTextIsDecoded) {
    for (const MessageRow& row : rows) {
        EXPECT_EQ(messageBytes(row.message, narrowTextIsDecoded), row.bytes);
    }
}

/// What becomes of a message whose narrow texts stand in it one character per byte.
std::string bytewise(const std::wstring& message) {
    return messageBytes(message, false);
}

/// Of one whose narrow texts were decoded.
std::string decoded(const std::wstring& message) {
    return messageBytes(message, true);
}

TEST(BytewiseMessage, AsciiStaysAsItIs) {
    std::string all;
    for (char character = 0; character < 0x7F; ++character) {
        all.push_back(character);
    }
    all.push_back('\x7F');
    EXPECT_EQ(bytewise(widened(all)), all);
    EXPECT_EQ(bytewise(L""), "");
}

TEST(BytewiseMessage, NarrowUtf8ComesOutAsItCameIn) {
    for (const char* text : {"\xC2\x80", "\xC3\xBC", "\xDF\xBF", "\xE0\xA0\x80", "\xE2\x82\xAC", "\xEF\xBF\xBF",
                             "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "gr\xC3\xBCn\xE2\x82\xAC.\xF0\x9F\x94\xA7 x"}) {
        EXPECT_EQ(bytewise(widened(text)), text);
    }
}

TEST(BytewiseMessage, WideTextIsEncoded) {
    expectBytes({{L"\u00FC", "\xC3\xBC"},
                 {L"a\u20ACb", "a\xE2\x82\xAC"
                               "b"},
                 {L"\uFFFF", "\xEF\xBF\xBF"},
                 {L"\U0001F527", "\xF0\x9F\x94\xA7"},
                 {L"\u00FC\u00FC", "\xC3\xBC\xC3\xBC"}},
                false);
}

TEST(BytewiseMessage, BytesThatAreNoUtf8AreTakenForCharacters) {
    expectBytes(
        {
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
        },
        false);
}

TEST(BytewiseMessage, ACharacterAboveAByteEndsAnEmbeddedOne) {
    expectBytes({{L"\u00E2\u0082\u0152", "\xC3\xA2\xC2\x82\xC5\x92"}, {L"\u00C3\u20AC", "\xC3\x83\xE2\x82\xAC"}},
                false);
}

TEST(BytewiseMessage, SurrogatePairsAreJoined) {
    const std::wstring pair{wchar_t(0xD83D), wchar_t(0xDD27)};
    EXPECT_EQ(bytewise(pair), "\xF0\x9F\x94\xA7");
    const std::wstring first{wchar_t(0xD800), wchar_t(0xDC00)};
    EXPECT_EQ(bytewise(first), "\xF0\x90\x80\x80");
    const std::wstring last{wchar_t(0xDBFF), wchar_t(0xDFFF)};
    EXPECT_EQ(bytewise(last), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(bytewise(L"a" + pair + L"b"), "a\xF0\x9F\x94\xA7"
                                            "b");
}

TEST(BytewiseMessage, ALoneSurrogateIsReplacedAndTakesNothingAlong) {
    const std::wstring high{wchar_t(0xD83D)};
    const std::wstring low{wchar_t(0xDD27)};
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(bytewise(high), replacement);
    EXPECT_EQ(bytewise(low), replacement);
    EXPECT_EQ(bytewise(high + L"A\n"), replacement + "A\n");
    EXPECT_EQ(bytewise(high + high + low), replacement + "\xF0\x9F\x94\xA7");
    EXPECT_EQ(bytewise(low + high), replacement + replacement);
    EXPECT_EQ(bytewise(high + L"\u00C3\u00BC"), replacement + "\xC3\xBC");
}

TEST(BytewiseMessage, WhatIsNoCharacterIsReplaced) {
    if constexpr (sizeof(wchar_t) > 2) {
        for (const long long value : {0x110000LL, 0x7FFFFFFFLL, -1LL}) {
            const std::wstring message{L'a', static_cast<wchar_t>(value), L'b'};
            EXPECT_EQ(bytewise(message), "a\xEF\xBF\xBD"
                                         "b");
        }
    }
}

TEST(DecodedMessage, EveryCharacterIsEncoded) {
    expectBytes({{L"", ""},
                 {L"plain\x7F\n", "plain\x7F\n"},
                 {L"\u00FC\u20AC\U0001F527", "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x94\xA7"},
                 {widened("\xC3\xBC"), "\xC3\x83\xC2\xBC"},
                 {widened("\xE2\x82\xAC"), "\xC3\xA2\xC2\x82\xC2\xAC"}},
                true);
}

TEST(DecodedMessage, BytesThatWereNotUtf8AreNotLost) {
    for (int value = 0x80; value <= 0xFF; ++value) {
        const std::wstring message(1, static_cast<wchar_t>(value));
        const std::string bytes = decoded(message);
        ASSERT_EQ(bytes.size(), 2U) << value;
        EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0xC0 | (value >> 6)) << value;
        EXPECT_EQ(static_cast<unsigned char>(bytes[1]), 0x80 | (value & 0x3F)) << value;
    }
}

TEST(DecodedMessage, WhatIsNoCharacterIsReplacedAndPairsAreJoined) {
    const std::wstring high{wchar_t(0xD83D)};
    const std::wstring low{wchar_t(0xDD27)};
    EXPECT_EQ(decoded(high + low), "\xF0\x9F\x94\xA7");
    EXPECT_EQ(decoded(low + high), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Message, ANarrowTextThatIsUtf8IsWrittenAsItIs) {
    const std::string text = "gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x94\xA7";
    EXPECT_EQ(messageBytes(inMessage(text)), text);
    const KvCMessageCapture capture;
    capture.writer().print(L"%hs|%s|%hs", text.c_str(), L"\u00FC\u20AC", "\xC3\x83\xC2\xBC");
    EXPECT_EQ(capture.text(), text + "|\xC3\xBC\xE2\x82\xAC|\xC3\x83\xC2\xBC");
}

TEST(Message, ATextThatIsNotUtf8IsNotLost) {
    const KvCMessageCapture capture;
    capture.writer().print(L"<%hs>", "\xFF\x80\xC3");
    EXPECT_EQ(capture.text(), "<\xC3\xBF\xC2\x80\xC3\x83>");
}

} // namespace
