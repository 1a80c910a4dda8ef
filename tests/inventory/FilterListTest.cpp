#include "InventoryRules.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace {

struct FilterCase {
    std::string_view list;
    std::string_view word;
    bool matches;
};

using namespace std::string_view_literals;

constexpr std::array filterCases = {
    // Whole words, separated by commas or blanks.
    FilterCase{"QB4120", "QB4120", true},
    FilterCase{"QB7001,QB4120", "QB4120", true},
    FilterCase{"QB4120 QB7001", "QB4120", true},
    FilterCase{"QB4120,QB7001", "QB4120", true},
    FilterCase{"QB1,QB4120 QB7001", "QB4120", true},
    FilterCase{"QB1, QB4120 ,QB7001", "QB4120", true},
    FilterCase{",,  QB4120 ,", "QB4120", true},
    FilterCase{"QB4120A", "QB4120", false},
    FilterCase{"AQB4120", "QB4120", false},
    FilterCase{"QB412", "QB4120", false},
    FilterCase{"QB7001", "QB4120", false},
    FilterCase{"QB4120;QB7001", "QB4120", false},
    FilterCase{"QB4120\tQB7001", "QB4120", false},
    FilterCase{"QB4120\n", "QB4120", false},
    // First inside another word, later as a word.
    FilterCase{"QB41200,QB4120", "QB4120", true},
    FilterCase{"QB41200,AQB4120,QB4120B QB4120", "QB4120", true},
    FilterCase{"aaaa,aaa", "aaa", true},
    FilterCase{"aaaa,aaaaa", "aaa", false},
    // Case-sensitive, nothing trimmed.
    FilterCase{"qb4120", "QB4120", false},
    FilterCase{"QB4120", "QB4120 ", false},
    FilterCase{"QB4120", " QB4120", false},
    // An empty word matches, an empty list matches nothing else.
    FilterCase{"", "", true},
    FilterCase{"QB4120", "", true},
    FilterCase{" , ", "", true},
    FilterCase{"", "QB4120", false},
    // Separators only.
    FilterCase{",", "QB4120", false},
    FilterCase{" , ,,  ", "A", false},
    // Words with separators are searched as they are.
    FilterCase{"Factory Firmware", "Factory Firmware", true},
    FilterCase{"UserIpl,Factory Firmware,UserFpga", "Factory Firmware", true},
    FilterCase{"Factory,Firmware", "Factory Firmware", false},
    FilterCase{"Factory  Firmware", "Factory Firmware", false},
    FilterCase{"Old Factory Firmware", "Factory Firmware", true},
    FilterCase{"11,1,1", "1,1", true},
    FilterCase{"11,11", "1,1", false},
    FilterCase{"A,,,B", ",", true},
    FilterCase{"A,,B", ",", false},
    FilterCase{"A,B", ",", false},
    // Serial numbers.
    FilterCase{"1234", "1234", true},
    FilterCase{"1234", "123", false},
    FilterCase{"33567800", "33567800", true},
    // Other bytes are letters like any other.
    FilterCase{"Gr\xC3\xB6\xC3\x9F"
               "e,B",
               "Gr\xC3\xB6\xC3\x9F"
               "e",
               true},
    FilterCase{"A\0B"sv, "A"sv, false},
    FilterCase{"A\0B"sv, "A\0B"sv, true},
};

bool isSeparator(char character) {
    return character == ',' || character == ' ';
}

std::set<std::string> wordsOf(const std::string& list) {
    std::set<std::string> words;
    std::string word;
    for (const char character : list + ",") {
        if (!isSeparator(character)) {
            word += character;
        } else if (!word.empty()) {
            words.insert(word);
            word.clear();
        }
    }
    return words;
}

/// Tries every position of the list.
bool standsSomewhere(const std::string& list, const std::string& word) {
    const std::string framed = "," + list + ",";
    for (std::size_t position = 1; position + word.size() < framed.size(); ++position) {
        if (framed.compare(position, word.size(), word) == 0 && isSeparator(framed[position - 1]) &&
            isSeparator(framed[position + word.size()])) {
            return true;
        }
    }
    return false;
}

/// Short texts of few letters, so that words often occur inside each other.
class Texts {
public:
    std::string next(std::string_view letters, std::size_t longest) {
        std::string text(random_() % (longest + 1), ' ');
        for (char& character : text) {
            character = letters[random_() % letters.size()];
        }
        return text;
    }

private:
    std::mt19937 random_{20261121};
};

constexpr int rounds = 200000;

} // namespace

TEST(FilterList, AWordMatchesAsAWholeItemOnly) {
    for (const FilterCase& row : filterCases) {
        EXPECT_EQ(matchesFilterList(row.list, row.word), row.matches)
            << "word \"" << row.word << "\" in the list \"" << row.list << "\"";
    }
}

TEST(FilterList, MatchesTheWordsThatTheListSplitsInto) {
    Texts texts;
    int matches = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string list = texts.next("ab, ", 12);
        const std::string word = texts.next("ab", 3);
        const bool expected = word.empty() || wordsOf(list).contains(word);
        ASSERT_EQ(matchesFilterList(list, word), expected) << "word \"" << word << "\" in the list \"" << list << "\"";
        matches += expected ? 1 : 0;
    }
    EXPECT_GT(matches, rounds / 10);
    EXPECT_LT(matches, rounds - rounds / 10);
}

TEST(FilterList, AWordWithSeparatorsMatchesWhereItStandsBetweenSeparators) {
    Texts texts;
    int matches = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string list = texts.next("a, ", 12);
        const std::string word = texts.next("a, ", 4);
        const bool expected = word.empty() || standsSomewhere(list, word);
        ASSERT_EQ(matchesFilterList(list, word), expected) << "word \"" << word << "\" in the list \"" << list << "\"";
        matches += expected ? 1 : 0;
    }
    EXPECT_GT(matches, rounds / 10);
    EXPECT_LT(matches, rounds - rounds / 10);
}
