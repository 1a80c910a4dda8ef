#include "JournalLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string chained(const std::vector<std::string>& records) {
    KvCLineChain chain;
    std::string text;
    for (const std::string& record : records) {
        chain.addTo(text, record);
    }
    return text;
}

const std::vector<std::string> records = {"{\"event\":\"begin\"}\n", "{\"event\":\"locked\"}\n",
                                          "{\"event\":\"runEnd\"}\n"};

TEST(JournalLines, HaveTheirNumberAndTheDigestOfTheLineBefore) {
    const std::string text = chained(records);
    EXPECT_TRUE(text.starts_with(R"({"number":0,"previous":")" + std::string(64, '0') +
                                 R"(","event":"begin"})"
                                 "\n"))
        << text;
    const KvTJournalText journal = journalTextOf(text);
    EXPECT_EQ(journal.lines.size(), 3U);
    EXPECT_EQ(journal.fault, "");
}

TEST(JournalLines, ThatAreCutEndBeforeTheCut) {
    const std::string text = chained(records);
    for (std::size_t size = 0; size <= text.size(); ++size) {
        const std::string cut = text.substr(0, size);
        const KvTJournalText journal = journalTextOf(cut);
        EXPECT_EQ(journal.fault, "") << size;
        EXPECT_EQ(journal.lines.size(), static_cast<std::size_t>(std::count(cut.begin(), cut.end(), '\n'))) << size;
    }
}

TEST(JournalLines, ThatWereChangedShow) {
    const std::string text = chained(records);
    const std::size_t lastLine = text.rfind('\n', text.size() - 2) + 1;
    for (std::size_t place = 0; place < lastLine - 1; ++place) {
        std::string changed = text;
        changed[place] = changed[place] == 'x' ? 'y' : 'x';
        EXPECT_NE(journalTextOf(changed).fault, "") << place;
        EXPECT_LT(journalTextOf(changed).lines.size(), 3U) << place;
    }
}

TEST(JournalLines, ThatWereAddedRemovedOrExchangedShow) {
    const std::string text = chained(records);
    const std::string first = text.substr(0, text.find('\n') + 1);
    const std::string rest = text.substr(first.size());
    const std::string second = rest.substr(0, rest.find('\n') + 1);
    const std::string third = rest.substr(second.size());
    EXPECT_EQ(journalTextOf(rest).fault, "line 1 does not follow the one before: the file was changed");
    EXPECT_EQ(journalTextOf(first + third).fault, "line 2 does not follow the one before: the file was changed");
    EXPECT_NE(journalTextOf(first + third + second).fault, "");
    EXPECT_NE(journalTextOf(first + second + second + third).fault, "");
    EXPECT_NE(journalTextOf(first + "\n" + second).fault, "");
    EXPECT_EQ(journalTextOf(first + second).fault, "");
}

} // namespace
