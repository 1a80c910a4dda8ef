#include "NearestWord.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace {

TEST(NearestWord, ChangedAddedAndRemovedBytesCountButNotTheirCase) {
    constexpr std::array<std::string_view, 3> words = {"boards", "boardId", "id"};
    EXPECT_EQ("boards", nearestWord("bards", words));
    EXPECT_EQ("boards", nearestWord("boardss", words));
    EXPECT_EQ("boardId", nearestWord("BOARDID", words));
    EXPECT_EQ("boardId", nearestWord("boardIt", words));
    EXPECT_EQ("id", nearestWord("Id", words));
    EXPECT_EQ("", nearestWord("comment", words));
    EXPECT_EQ("", nearestWord("", words));
    EXPECT_EQ("", nearestWord(std::string(1000000, 'b'), words));
}

} // namespace
