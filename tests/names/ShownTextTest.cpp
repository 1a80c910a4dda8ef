#include "ShownText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ShownText, IsAsItIsIfItIsPlain) {
    EXPECT_EQ(shownInQuotes(""), "''");
    EXPECT_EQ(shownInQuotes("network.ini"), "'network.ini'");
    EXPECT_EQ(shownInQuotes("\u00FCber uns"), "'\u00FCber uns'");
    EXPECT_EQ(shownInQuotes(std::string(255, 'x')), "'" + std::string(255, 'x') + "'");
}

TEST(ShownText, HasNothingThatHidesWhatItIs) {
    EXPECT_EQ(shownInQuotes("a\nb\t\x1B[2J"), R"('a\x0Ab\x09\x1B[2J')");
    // NOLINTNEXTLINE(misc-misleading-bidirectional): such a character is what must be shown
    EXPECT_EQ(shownInQuotes("\u00FC\u202E"), R"('\xC3\xBC\xE2\x80\xAE')");
    EXPECT_EQ(shownInQuotes("a\xFF"), R"('a\xFF')");
    EXPECT_EQ(shownInQuotes(std::string("a\0b", 3)), R"('a\x00b')");
}

TEST(ShownText, IsCutIfItIsLong) {
    EXPECT_EQ(shownInQuotes(std::string(256, 'x')), "'" + std::string(64, 'x') + "...'");
}

} // namespace
