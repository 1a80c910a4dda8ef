#include "InventoryRules.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace {

std::optional<std::uint32_t> boardIdOf(const char* boardType, std::uint32_t hardwareType) {
    constexpr std::uint32_t untouched = 4711;
    std::uint32_t boardId = untouched;
    if (boardIdOfHardwareType(boardType, hardwareType, boardId)) {
        return boardId;
    }
    EXPECT_EQ(boardId, untouched) << "an unknown board must leave the board id alone";
    return std::nullopt;
}

struct KnownBoard {
    const char* boardType;
    std::uint32_t hardwareType;
    std::uint32_t boardId;
};

constexpr std::array knownBoards = {
    KnownBoard{"QB4120", 0, 6}, KnownBoard{"QB4120", 1, 7},   KnownBoard{"QB7001", 2, 4},
    KnownBoard{"QB7001", 3, 5}, KnownBoard{"QBx86_32", 2, 2},
};

} // namespace

TEST(BoardIdentification, FiveBoardsAreKnownByTheirHardwareType) {
    for (const KnownBoard& board : knownBoards) {
        EXPECT_EQ(boardIdOf(board.boardType, board.hardwareType), board.boardId)
            << board.boardType << ", hardware type " << board.hardwareType;
    }
}

TEST(BoardIdentification, NoOtherHardwareTypeOfTheseBoardsIsKnown) {
    constexpr std::uint32_t highestTried = 300;
    for (const char* boardType : {"QB4120", "QB7001", "QBx86_32"}) {
        for (std::uint32_t hardwareType = 0; hardwareType <= highestTried; ++hardwareType) {
            bool isKnown = false;
            for (const KnownBoard& board : knownBoards) {
                isKnown = isKnown || (board.boardType == std::string(boardType) && board.hardwareType == hardwareType);
            }
            EXPECT_EQ(boardIdOf(boardType, hardwareType).has_value(), isKnown) << boardType << " " << hardwareType;
        }
    }
    EXPECT_FALSE(boardIdOf("QB4120", 0xFFFFFFFF));
    EXPECT_FALSE(boardIdOf("QB4120", 0x100));
}

TEST(BoardIdentification, TheBoardTypeIsComparedWholeAndCaseSensitive) {
    for (const char* boardType : {"", "qb4120", "QB4120 ", " QB4120", "QB412", "QB4120A", "QB4140", "QBX86_32"}) {
        EXPECT_FALSE(boardIdOf(boardType, 0)) << boardType;
        EXPECT_FALSE(boardIdOf(boardType, 1)) << boardType;
        EXPECT_FALSE(boardIdOf(boardType, 2)) << boardType;
    }
}
