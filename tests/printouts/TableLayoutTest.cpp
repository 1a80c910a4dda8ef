#include "TableLayout.h"

#include "KeptMessages.h"
#include "KvCConsoleWriter.h"
#include "MessageBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using namespace std::string_view_literals;

std::vector<std::wstring> messagesOf(const KvTTable& rows) {
    const KeptMessages kept;
    printTable(kept.writer(), rows);
    return KeptMessages::list();
}

std::string printed(const KvTTable& rows) {
    const KeptMessages kept;
    printTable(kept.writer(), rows);
    return bytesOf(KeptMessages::text());
}

/// Of a table whose rows are made when they are asked for.
std::string printedUnkept(const KvTTable& rows) {
    const KeptMessages kept;
    printTable(kept.writer(), rows.size(), [&rows](std::size_t index) { return rows[index]; });
    return bytesOf(KeptMessages::text());
}

std::size_t columnCount(const KvTTable& rows) {
    std::size_t count = 0;
    for (const auto& row : rows) {
        count = std::max(count, row.size());
    }
    return count;
}

std::size_t widthOf(const KvTTable& rows, std::size_t column) {
    std::size_t width = 0;
    for (const auto& row : rows) {
        width = std::max(width, column < row.size() ? row[column].length() : 0);
    }
    return width;
}

/// The layout, cell by cell.
std::string printedByTheBook(const KvTTable& rows) {
    std::string text;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        std::size_t rule = 0;
        for (std::size_t column = 0; column < columnCount(rows); ++column) {
            const std::string cell = column < rows[index].size() ? rows[index][column].c_str() : "";
            const std::size_t width = widthOf(rows, column);
            text += column > 0 ? " | " : "";
            text += cell + std::string(width - cell.size(), ' ');
            rule += width + (column > 0 ? 3 : 0);
        }
        text += '\n';
        if (index == 0) {
            text.append(rule, '-');
            text += '\n';
        }
    }
    return text;
}

KvTTable randomTable(std::mt19937& random) {
    const auto upTo = [&](std::size_t largest) {
        return std::uniform_int_distribution<std::size_t>(0, largest)(random);
    };
    constexpr std::string_view pieces[] = {"a", "BC", "%s", "\xC3\xA4", " ", "|", "-"};
    KvTTable rows(1 + upTo(20));
    for (auto& row : rows) {
        row.resize(upTo(7));
        for (KvCString& cell : row) {
            for (std::size_t count = upTo(6); count > 0; --count) {
                cell += pieces[upTo(std::size(pieces) - 1)];
            }
        }
    }
    // A table has a column at least.
    rows.front().resize(std::max<std::size_t>(rows.front().size(), 1));
    return rows;
}

} // namespace

TEST(Table, WithoutRowsPrintsNothing) {
    EXPECT_TRUE(messagesOf({}).empty());
}

TEST(Table, OfAHeadingOnlyPrintsTheHeadingAndTheRule) {
    EXPECT_EQ(printed({{"Name", "Version"}}), "Name | Version\n"
                                              "--------------\n");
}

TEST(Table, OfOneColumnHasNoSeparators) {
    EXPECT_EQ(printed({{"No."}, {"1"}}), "No.\n---\n1  \n");
}

TEST(Table, ColumnsAreAsWideAsTheirLongestCell) {
    EXPECT_EQ(printed({{"A", "Heading", "C"}, {"longest", "b", ""}, {"a", "", "cc"}}), "A       | Heading | C \n"
                                                                                       "----------------------\n"
                                                                                       "longest | b       |   \n"
                                                                                       "a       |         | cc\n");
}

TEST(Table, MissingCellsAreBlank) {
    EXPECT_EQ(printed({{"A", "B", "C"}, {"1"}, {}, {"1", "22"}}), "A | B  | C\n"
                                                                  "----------\n"
                                                                  "1 |    |  \n"
                                                                  "  |    |  \n"
                                                                  "1 | 22 |  \n");
}

TEST(Table, AColumnOfALaterRowBelongsToAllRows) {
    EXPECT_EQ(printed({{"A", "B"}, {"1", "2"}, {"1", "2", "[FILE MISSING]"}, {"1", "2"}}), "A | B |               \n"
                                                                                           "----------------------\n"
                                                                                           "1 | 2 |               \n"
                                                                                           "1 | 2 | [FILE MISSING]\n"
                                                                                           "1 | 2 |               \n");
}

TEST(Table, AColumnWithoutTextStillHasItsSeparator) {
    EXPECT_EQ(printed({{"A", "", ""}, {"1"}}), "A |  | \n-------\n1 |  | \n");
}

TEST(Table, WidthsCountBytes) {
    EXPECT_EQ(printed({{"\xC3\xA4\xC3\xB6", "B"}, {"abc", "d"}}), "\xC3\xA4\xC3\xB6 | B\n"
                                                                  "--------\n"
                                                                  "abc  | d\n");
}

TEST(Table, TextsOfCellsAreNoFormats) {
    EXPECT_EQ(printed({{"%s%n"}, {"100%"}}), "%s%n\n----\n100%\n");
}

TEST(Table, ACellEndsAtItsFirstZeroAndKeepsItsWidth) {
    EXPECT_EQ(printed({{KvCString("ab\0cd"sv), "B"}, {"a", "b"}}), "ab    | B\n"
                                                                   "---------\n"
                                                                   "a     | b\n");
}

TEST(Table, AHeadingWithoutCellsHasAnEmptyRule) {
    EXPECT_EQ(printed({{}}), "\n\n");
    EXPECT_EQ(printed({{}, {"a"}}), " \n-\na\n");
}

TEST(Table, AnyTableIsLaidOutByTheBook) {
    std::mt19937 random(2026);
    for (int round = 0; round < 2000; ++round) {
        const KvTTable rows = randomTable(random);
        ASSERT_EQ(printed(rows), printedByTheBook(rows)) << round;
        ASSERT_EQ(printedUnkept(rows), printedByTheBook(rows)) << round;
    }
}

TEST(Table, ALargeTableArrivesWholeInMessagesOfWholeLines) {
    KvTTable rows{{"Number", "Text"}};
    for (std::uint32_t number = 0; number < 5000; ++number) {
        rows.push_back({KvCString(number), KvCString(std::string(number % 50, 'x'))});
    }
    EXPECT_TRUE(printed(rows) == printedByTheBook(rows));
    const std::vector<std::wstring> messages = messagesOf(rows);
    EXPECT_GT(messages.size(), 1U);
    EXPECT_LT(messages.size(), rows.size());
    for (const std::wstring& message : messages) {
        ASSERT_EQ(message.back(), L'\n');
    }
}

TEST(Table, ARowLongerThanAMessageArrivesWhole) {
    const KvTTable rows{{"A", "B"}, {KvCString(std::string(100000, 'x')), "b"}, {"a", "b"}};
    EXPECT_TRUE(printed(rows) == printedByTheBook(rows));
}
