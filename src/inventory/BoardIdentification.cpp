#include "InventoryRules.h"

#include <algorithm>
#include <array>

namespace {

struct BoardIdRow {
    const char* boardType;
    std::uint32_t hardwareType;
    std::uint32_t boardId;
};

constexpr std::array boardIds = {BoardIdRow{"QB4120", 0, 6}, BoardIdRow{"QB4120", 1, 7}, BoardIdRow{"QB7001", 2, 4},
                                 BoardIdRow{"QB7001", 3, 5}, BoardIdRow{"QBx86_32", 2, 2}};

} // namespace

bool boardIdOfHardwareType(const KvCString& boardType, std::uint32_t hardwareType, std::uint32_t& boardId) {
    const auto* row = std::find_if(boardIds.begin(), boardIds.end(), [&](const BoardIdRow& candidate) {
        return boardType == candidate.boardType && hardwareType == candidate.hardwareType;
    });
    if (row == boardIds.end()) {
        return false;
    }
    boardId = row->boardId;
    return true;
}
