#include "KvCConsoleWriter.h"

#include "KeptMessages.h"
#include "MessageBytes.h"
#include "RedirectedStream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

namespace {

using Messages = std::vector<std::wstring>;

const KvTCallbacks noCallbacks;

} // namespace

TEST(ConsoleWriterWithCallback, HandsOverEachMessageAsItIsPrinted) {
    const KeptMessages kept;
    const KvCConsoleWriter& writer = kept.writer();
    EXPECT_EQ(writer.print(L"%*s%hs\n", 8, L"", "item"), 13);
    EXPECT_EQ(writer.print(L"%s: %u%%\r", L"\u00E4\u4E2D", 42U), 8);
    EXPECT_EQ(KeptMessages::list(), (Messages{L"        item\n", L"\u00E4\u4E2D: 42%\r"}));
}

TEST(ConsoleWriterWithCallback, NarrowTextArrivesAsTheSystemMakesItWideAndCountsItsBytes) {
    const KeptMessages kept;
    EXPECT_EQ(kept.writer().print(L"%hs|\n", "\xC3\xA4"), 4);
    EXPECT_EQ(KeptMessages::list(), (Messages{inMessage("\xC3\xA4") + L"|\n"}));
}

TEST(ConsoleWriterWithCallback, BytesThatAreNotUtf8ArriveOneByOne) {
    const KeptMessages kept;
    EXPECT_EQ(kept.writer().print(L"%hs", "\xFF\x80\xC3"), 3);
    EXPECT_EQ(KeptMessages::list(), (Messages{L"\u00FF\u0080\u00C3"}));
}

TEST(ConsoleWriterWithCallback, AMessageWithoutCharactersIsNotHandedOver) {
    const KeptMessages kept;
    const KvCConsoleWriter& writer = kept.writer();
    EXPECT_EQ(writer.print(L""), 0);
    EXPECT_EQ(writer.print(L"%hs", ""), 0);
    EXPECT_EQ(writer.print(L"%*s", 0, L""), 0);
    EXPECT_TRUE(KeptMessages::list().empty());
}

TEST(ConsoleWriterWithCallback, NothingGoesToStandardOutput) {
    const KeptMessages kept;
    const RedirectedStream output(stdout);
    EXPECT_EQ(kept.writer().print(L"text\n"), 5);
    std::fflush(stdout);
    EXPECT_EQ(output.received(), "");
}

TEST(ConsoleWriterWithCallback, ALongMessageArrivesWhole) {
    const KeptMessages kept;
    const std::string text(1000000, 'x');
    EXPECT_EQ(kept.writer().print(L"%hs\n", text.c_str()), 1000001);
    ASSERT_EQ(KeptMessages::list().size(), 1U);
    EXPECT_TRUE(KeptMessages::list().front() == std::wstring(1000000, L'x') + L'\n');
}

TEST(ConsoleWriterWithCallback, WhatTheCallbackThrowsReachesTheCaller) {
    KvTCallbacks callbacks;
    callbacks.message = [](const std::wstring&) { throw std::runtime_error("thrown"); };
    const KvCConsoleWriter writer(callbacks);
    EXPECT_THROW(writer.print(L"text"), std::runtime_error);
}

TEST(ConsoleWriterWithCallback, TheCallbackMayPrintItself) {
    static const KvCConsoleWriter* nested = nullptr;
    static Messages messages;
    KvTCallbacks callbacks;
    callbacks.message = [](const std::wstring& text) {
        messages.push_back(text);
        if (messages.size() == 1) {
            EXPECT_EQ(nested->print(L"inner %u", 2U), 7);
        }
    };
    const KvCConsoleWriter writer(callbacks);
    nested = &writer;
    EXPECT_EQ(writer.print(L"outer %u", 1U), 7);
    EXPECT_EQ(messages, (Messages{L"outer 1", L"inner 2"}));
}

TEST(ConsoleWriterOnStandardOutput, EachMessageArrivesAtOnce) {
    const RedirectedStream output(stdout);
    const KvCConsoleWriter writer(noCallbacks);
    EXPECT_EQ(writer.print(L"%3u%%\r", 7U), 5);
    EXPECT_EQ(output.received(), "  7%\r");
    EXPECT_EQ(writer.print(L"a"), 1);
    EXPECT_EQ(output.received(), "  7%\ra");
    EXPECT_EQ(writer.print(L"bc"), 2);
    EXPECT_EQ(output.received(), "  7%\rabc");
}

TEST(ConsoleWriterOnStandardOutput, NarrowTextArrivesByteForByte) {
    const RedirectedStream output(stdout);
    EXPECT_EQ(KvCConsoleWriter(noCallbacks).print(L"%hs|", "\xC3\xA4\xFF\x80"), 5);
    EXPECT_EQ(output.received(), "\xC3\xA4\xFF\x80|");
}

TEST(ConsoleWriterOnStandardOutput, AMessageWithoutCharactersStillFlushes) {
    const RedirectedStream output(stdout);
    std::fputs("pending", stdout);
    EXPECT_EQ(output.received(), "");
    EXPECT_EQ(KvCConsoleWriter(noCallbacks).print(L"%hs", ""), 0);
    EXPECT_EQ(output.received(), "pending");
}

TEST(ConsoleWriter, TheCallbackMayChangeBetweenMessages) {
    static std::wstring received;
    received.clear();
    KvTCallbacks callbacks;
    const KvCConsoleWriter writer(callbacks);
    const RedirectedStream output(stdout);
    EXPECT_EQ(writer.print(L"1"), 1);
    callbacks.message = [](const std::wstring& text) { received += text; };
    EXPECT_EQ(writer.print(L"2"), 1);
    callbacks.message = nullptr;
    EXPECT_EQ(writer.print(L"3"), 1);
    EXPECT_EQ(received, L"2");
    EXPECT_EQ(output.received(), "13");
}

TEST(ConsoleWriterFormat, ReplacesWhatTheTextHeld) {
    std::wstring text = L"former text that is longer";
    EXPECT_EQ(KvCConsoleWriter::format(text, L"%s\\%hs", L"folder", "file"), 11);
    EXPECT_EQ(text, L"folder\\file");
}

TEST(ConsoleWriterFormat, TheTextEndsWithItsLastCharacterWhateverItsBytesCount) {
    std::wstring text;
    EXPECT_EQ(KvCConsoleWriter::format(text, L"%s\\%hs", L"\u00E4", "\xE2\x82\xAC.bin"), 9);
    EXPECT_EQ(text, L"\u00E4\\" + inMessage("\xE2\x82\xAC") + L".bin");
}

TEST(ConsoleWriterFormat, ATextWithoutCharactersIsEmpty) {
    std::wstring text = L"former";
    EXPECT_EQ(KvCConsoleWriter::format(text, L"%hs", ""), 0);
    EXPECT_EQ(text, L"");
}

TEST(ConsoleWriterFormat, ResultAndArgumentMayBeTheSame) {
    std::wstring text = L"middle";
    EXPECT_EQ(KvCConsoleWriter::format(text, L"<%s, %s>", text.c_str(), text.c_str()), 16);
    EXPECT_EQ(text, L"<middle, middle>");
}

TEST(ConsoleWriterFormat, PrintsNothing) {
    const RedirectedStream output(stdout);
    std::wstring text;
    EXPECT_EQ(KvCConsoleWriter::format(text, L"text"), 4);
    std::fflush(stdout);
    EXPECT_EQ(output.received(), "");
}
