#include "ErrorReport.h"

#include "KeptMessages.h"
#include "KvCConsoleWriter.h"
#include "KvEmulation.h"
#include "MessageBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

namespace {

KvTErrorEntry entryOf(std::uint32_t code, std::string text) {
    KvTErrorEntry entry;
    entry.code = code;
    entry.text = std::move(text);
    return entry;
}

/// A text of `length` letters.
std::string letters(std::size_t length) {
    return std::string(length, 'x'); // NOLINT(modernize-return-braced-init-list): braces list the characters
}

/// With a list of its own; at the end nothing may be held.
class ErrorReportTest : public testing::Test {
public:
    ErrorReportTest(const ErrorReportTest&) = delete;
    ErrorReportTest(ErrorReportTest&&) = delete;
    ErrorReportTest& operator=(const ErrorReportTest&) = delete;
    ErrorReportTest& operator=(ErrorReportTest&&) = delete;

protected:
    ErrorReportTest() : list_(KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300)) {}
    ~ErrorReportTest() override {
        KvCErrorManager::getInstance()->deleteErrorList(list_);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }

    void add(const KvTErrorEntry& entry) { list_->addError(entry); }
    void verbose() { options_.verbose = true; }

    [[nodiscard]] std::string report(std::uint32_t indentation = reportIndentation) const {
        const KeptMessages kept;
        printErrorReport(kept.writer(), options_, *list_, indentation);
        return bytesOf(KeptMessages::text());
    }
    /// The report of one entry of code 1 without its header line.
    [[nodiscard]] std::string block(const std::string& text, std::uint32_t indentation = reportIndentation) {
        list_->reset();
        add(entryOf(1, text));
        const std::string whole = report(indentation);
        const std::string header = std::string(indentation, ' ') + "ERROR 0x1 (reported by Host PC):\n";
        EXPECT_EQ(whole.substr(0, header.size()), header);
        return whole.substr(std::min(header.size(), whole.size()));
    }
    /// The header line of `entry`, without indentation.
    [[nodiscard]] std::string header(const KvTErrorEntry& entry) {
        list_->reset();
        add(entry);
        return report(0);
    }

private:
    KvCErrorList* list_;
    KvNReflasher::KvTOptions options_{};
};

/// The lines of a text block without their indentation of `indentation` columns, which each must have.
std::vector<std::string> linesOf(const std::string& block, std::size_t indentation) {
    std::vector<std::string> lines;
    std::istringstream stream(block);
    for (std::string line; std::getline(stream, line);) {
        EXPECT_EQ(line.substr(0, indentation), std::string(indentation, ' '));
        lines.push_back(line.substr(std::min(indentation, line.size())));
    }
    EXPECT_TRUE(block.empty() || block.back() == '\n');
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string result;
    for (const std::string& line : lines) {
        result += line;
    }
    return result;
}

std::string withoutLineEnds(std::string text) {
    std::replace(text.begin(), text.end(), '\r', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// Words of any length, blanks and line ends.
std::string randomText(std::mt19937& random) {
    constexpr std::string_view parts[] = {" ", "\n", "\r\n", "  ", "a", "bc", "def", "ghijklmnop", "q"};
    std::uniform_int_distribution<std::size_t> part(0, std::size(parts) - 1);
    const std::size_t length = std::uniform_int_distribution<std::size_t>(0, 400)(random);
    const bool longWords = random() % 4 == 0;
    std::string text;
    while (text.size() < length) {
        text += parts[longWords ? std::max<std::size_t>(part(random), 3) : part(random)];
    }
    return text;
}

/// The wrapping, one position at a time.
std::vector<std::string> wrappedByTheBook(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t end = begin + width;
        if (end >= text.size()) {
            end = text.size();
        } else {
            for (std::size_t blank = end; blank-- > begin + 5;) {
                if (text[blank] == ' ') {
                    end = blank + 1;
                    break;
                }
            }
        }
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

} // namespace

TEST_F(ErrorReportTest, AnEmptyListPrintsNothing) {
    verbose();
    EXPECT_EQ(report(), "");
}

TEST_F(ErrorReportTest, AnErrorOfTheHostHasAHeaderAndAnIndentedText) {
    add(entryOf(0x1234, "The text."));
    EXPECT_EQ(report(7), "       ERROR 0x1234 (reported by Host PC):\n"
                         "         The text.\n");
}

TEST_F(ErrorReportTest, AnErrorOfATargetNodeTellsItsSerialNumber) {
    KvTErrorEntry entry = entryOf(0xABCDEF, "The text.");
    entry.originNode = 4294967295U;
    add(entry);
    EXPECT_EQ(report(7), "       ERROR 0xabcdef (reported by S/N 4294967295):\n"
                         "         The text.\n");
}

TEST_F(ErrorReportTest, ACodeOfZeroHasNoPrefix) {
    EXPECT_EQ(header(entryOf(0, "")), "ERROR 0 (reported by Host PC):\n");
    EXPECT_EQ(header(entryOf(0xFFFFFFFF, "")), "ERROR 0xffffffff (reported by Host PC):\n");
}

TEST_F(ErrorReportTest, EntriesComeInTheirOrder) {
    add(entryOf(1, "one"));
    add(entryOf(2, ""));
    KvTErrorEntry third = entryOf(3, "three");
    third.originNode = 5;
    add(third);
    EXPECT_EQ(report(1), " ERROR 0x1 (reported by Host PC):\n"
                         "   one\n"
                         " ERROR 0x2 (reported by Host PC):\n"
                         " ERROR 0x3 (reported by S/N 5):\n"
                         "   three\n");
}

TEST_F(ErrorReportTest, TheListStaysAsItIs) {
    add(entryOf(1, "a\nb"));
    const std::string first = report();
    EXPECT_EQ(report(), first);
}

TEST_F(ErrorReportTest, DetailsArePrintedOnlyWhenVerbose) {
    KvTErrorEntry entry = entryOf(0x10, "text");
    entry.originNode = 77;
    entry.timeStamp = 1500000;
    entry.mainModule = 8;
    entry.subModule = 9;
    entry.function = "scan";
    entry.line = 123;
    EXPECT_EQ(header(entry), "ERROR 0x10 (reported by S/N 77):\n  text\n");
    verbose();
    EXPECT_EQ(header(entry), "ERROR 0x10 (reported by S/N 77), time  1.500 sec., module 8/9, in scan():123:\n  text\n");
}

TEST_F(ErrorReportTest, WhatIsNotKnownIsLeftOut) {
    verbose();
    EXPECT_EQ(header(entryOf(1, "")), "ERROR 0x1 (reported by Host PC):\n");
}

TEST_F(ErrorReportTest, TheTimeIsInSecondsOfTheTimeStampsTicks) {
    verbose();
    KvTErrorEntry entry = entryOf(1, "");
    entry.timeStamp = 1;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), time  0.000 sec.:\n");
    entry.timeStamp = 1234567890;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), time  1234.568 sec.:\n");
}

TEST_F(ErrorReportTest, ALargeTimeStampIsUnsigned) {
    verbose();
    KvTErrorEntry entry = entryOf(1, "");
    entry.timeStamp = 0x8000000000000000ULL;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), time  9223372036854.775 sec.:\n");
}

TEST_F(ErrorReportTest, OneModuleNumberSufficesForTheModulePart) {
    verbose();
    KvTErrorEntry entry = entryOf(1, "");
    entry.subModule = 3;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), module 0/3:\n");
    entry.mainModule = 4294967295U;
    entry.subModule = 0;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), module 4294967295/0:\n");
}

TEST_F(ErrorReportTest, TheLineNumberIsPrintedWithAFunctionOnly) {
    verbose();
    KvTErrorEntry entry = entryOf(1, "");
    entry.line = 5;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC):\n");
    entry.function = "f";
    entry.line = 0;
    EXPECT_EQ(header(entry), "ERROR 0x1 (reported by Host PC), in f():0:\n");
}

TEST_F(ErrorReportTest, AnEmptyTextPrintsTheHeaderAlone) {
    EXPECT_EQ(block(""), "");
}

TEST_F(ErrorReportTest, ATextOfTheWholeWidthIsOneLine) {
    EXPECT_EQ(block(letters(71)), "         " + letters(71) + "\n");
    const std::string words = letters(40) + " " + letters(30);
    EXPECT_EQ(block(words), "         " + words + "\n");
}

TEST_F(ErrorReportTest, ALongerTextIsBrokenBehindTheLastBlankThatFits) {
    EXPECT_EQ(linesOf(block(letters(40) + " " + letters(31)), 9),
              (std::vector<std::string>{letters(40) + " ", letters(31)}));
    EXPECT_EQ(linesOf(block(letters(10) + " " + letters(59) + " " + letters(10)), 9),
              (std::vector<std::string>{letters(10) + " " + letters(59) + " ", letters(10)}));
}

TEST_F(ErrorReportTest, ABlankBehindTheWidthBeginsTheNextLine) {
    EXPECT_EQ(linesOf(block(letters(71) + " " + letters(3)), 9),
              (std::vector<std::string>{letters(71), " " + letters(3)}));
    EXPECT_EQ(linesOf(block(letters(71) + " "), 9), (std::vector<std::string>{letters(71), " "}));
}

TEST_F(ErrorReportTest, ABlankBreaksALineFromItsSixthPositionOn) {
    EXPECT_EQ(linesOf(block(letters(5) + " " + letters(70)), 9),
              (std::vector<std::string>{letters(5) + " ", letters(70)}));
    EXPECT_EQ(linesOf(block(letters(4) + " " + letters(70)), 9),
              (std::vector<std::string>{letters(4) + " " + letters(66), letters(4)}));
    // The same in a later line, for which blanks of the line before do not count.
    EXPECT_EQ(linesOf(block(letters(70) + " " + letters(4) + " " + letters(70)), 9),
              (std::vector<std::string>{letters(70) + " ", letters(4) + " " + letters(66), letters(4)}));
}

TEST_F(ErrorReportTest, AWordLongerThanTheWidthIsCut) {
    EXPECT_EQ(linesOf(block(letters(150)), 9), (std::vector<std::string>{letters(71), letters(71), letters(8)}));
}

TEST_F(ErrorReportTest, LineEndsBecomeBlanks) {
    EXPECT_EQ(block("one\r\ntwo\nthree\r"), "         one  two three \n");
    EXPECT_EQ(block("\r\nbegin"), "           begin\n");
    EXPECT_EQ(block("\n"), "          \n");
}

TEST_F(ErrorReportTest, LineEndsAreBlanksForTheWrappingToo) {
    EXPECT_EQ(linesOf(block(letters(70) + "\r\n" + letters(5)), 9),
              (std::vector<std::string>{letters(70) + " ", " " + letters(5)}));
}

TEST_F(ErrorReportTest, OtherControlCharactersStayAsTheyAre) {
    EXPECT_EQ(block("a\tb\x1B[0m%s"), "         a\tb\x1B[0m%s\n");
}

TEST_F(ErrorReportTest, TheWidthCountsBytes) {
    std::string text;
    for (int letter = 0; letter < 36; ++letter) {
        text += "\xC3\xA4";
    }
    EXPECT_EQ(linesOf(block(text, 8), 10), (std::vector<std::string>{text.substr(0, 70), text.substr(70)}));
}

TEST_F(ErrorReportTest, AWrappingWithinACharacterShowsItsBytesOneByOne) {
    static_cast<void>(block(std::string(70, 'x') + "\xC3\xA4"));
    const std::vector<std::wstring>& messages = KeptMessages::list();
    ASSERT_GE(messages.size(), 2U);
    EXPECT_EQ(messages[messages.size() - 2], std::wstring(9, L' ') + std::wstring(70, L'x') + L"\u00C3\n");
    EXPECT_EQ(messages.back(), std::wstring(9, L' ') + L"\u00A4\n");
}

TEST_F(ErrorReportTest, TheWidthShrinksWithTheIndentation) {
    EXPECT_EQ(linesOf(block(letters(100), 0), 2), (std::vector<std::string>{letters(78), letters(22)}));
    EXPECT_EQ(linesOf(block(letters(10), 73), 75), (std::vector<std::string>{letters(5), letters(5)}));
    EXPECT_EQ(linesOf(block("a b c d e", 73), 75), (std::vector<std::string>{"a b c", " d e"}));
    EXPECT_EQ(linesOf(block("aaaaa b", 72), 74), (std::vector<std::string>{"aaaaa ", "b"}));
}

TEST_F(ErrorReportTest, AnIndentationThatLeavesNoRoomEndsAndLosesNothing) {
    const std::string text = "some words\r\nand a longwordthatdoesnotfit";
    for (std::uint32_t indentation = 74; indentation <= 200; ++indentation) {
        const std::size_t column = indentation + 2;
        const std::size_t width = column < 80 ? 80 - column : 1;
        const std::vector<std::string> lines = linesOf(block(text, indentation), column);
        EXPECT_EQ(joined(lines), withoutLineEnds(text)) << indentation;
        EXPECT_EQ(lines.size(), (text.size() + width - 1) / width) << indentation;
        EXPECT_EQ(lines.front().size(), width) << indentation;
    }
}

TEST_F(ErrorReportTest, AnyTextIsWrappedByTheBookAndKeptWhole) {
    std::mt19937 random(2026);
    for (int round = 0; round < 3000; ++round) {
        const std::string text = randomText(random);
        const std::uint32_t indentation = std::uniform_int_distribution<std::uint32_t>(0, 77)(random);
        const std::size_t column = indentation + 2;
        const std::size_t width = std::max<std::size_t>(80 - column, 1);
        const std::vector<std::string> lines = linesOf(block(text, indentation), column);
        ASSERT_EQ(joined(lines), withoutLineEnds(text)) << indentation;
        ASSERT_TRUE(std::all_of(lines.begin(), lines.end(), [&](const std::string& line) {
            return !line.empty() && line.size() <= width;
        })) << indentation;
        ASSERT_EQ(lines, wrappedByTheBook(withoutLineEnds(text), width)) << indentation;
    }
}

TEST_F(ErrorReportTest, AVeryLongTextIsWrappedWhole) {
    const std::string text = letters(1000000) + " end";
    EXPECT_EQ(joined(linesOf(block(text), 9)), text);
}
