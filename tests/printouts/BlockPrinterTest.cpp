#include "BlockPrinter.h"

#include "KeptMessages.h"

#include <gtest/gtest.h>

namespace {

void printLines(KvCBlockPrinter& printer, std::size_t count) {
    for (; count > 0; --count) {
        printer.text().append("line");
        printer.endLine();
    }
    printer.finish();
}

/// The number of lines in each message; a test failure if one ends within a line.
std::vector<std::size_t> linesOfMessages() {
    std::vector<std::size_t> result;
    for (const std::wstring& message : KeptMessages::list()) {
        EXPECT_EQ(message.back(), L'\n');
        result.push_back(static_cast<std::size_t>(std::count(message.begin(), message.end(), L'\n')));
    }
    return result;
}

} // namespace

TEST(BlockPrinter, AMessageEndsWithTheLineThatFillsIt) {
    const KeptMessages kept;
    KvCBlockPrinter printer(kept.writer(), 12);
    printLines(printer, 7); // of five characters each
    EXPECT_EQ(linesOfMessages(), (std::vector<std::size_t>{3, 3, 1}));
}

TEST(BlockPrinter, WithoutASizeMessagesAreBlocks) {
    const KeptMessages kept;
    KvCBlockPrinter printer(kept.writer());
    printLines(printer, 2 * KvCBlockPrinter::blockSize / 5);
    EXPECT_EQ(linesOfMessages(), (std::vector<std::size_t>{3277, 3276}));
}

TEST(BlockPrinter, TheWholeTextIsOneMessage) {
    const KeptMessages kept;
    KvCBlockPrinter printer(kept.writer(), KvCBlockPrinter::wholeText);
    printLines(printer, 100000);
    EXPECT_EQ(linesOfMessages(), (std::vector<std::size_t>{100000}));
}

TEST(BlockPrinter, NothingIsNoMessage) {
    const KeptMessages kept;
    KvCBlockPrinter printer(kept.writer());
    printer.finish();
    EXPECT_TRUE(KeptMessages::list().empty());
}
