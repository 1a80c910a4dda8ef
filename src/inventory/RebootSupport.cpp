#include "RebootSupport.h"

#include "CallJudgement.h"
#include "KvCString.h"
#include "KvCVersion.h"
#include "KvNInventoryIDs.h"

#include <algorithm>
#include <array>

namespace {

using namespace KvNInventoryIDs;

struct BoardModel {
    const char* boardType;
    /// First firmware that supports the reboot.
    const char* minimumVersion;
};

constexpr std::array boardModels = {BoardModel{"QB4120", "23.2a12"}, BoardModel{"QB4140", "5.0"}};

template <typename Value>
bool readValue(KvCErrorListPool& errors, const KvCInventoryItem& item, const KvCInventoryAddress& path, Value& value) {
    return callSucceeds(errors, [&] { item.getValue(errors, path, value); });
}

/// The first active firmware element below `updateInfo`, null when there is none; false when a read failed.
bool findFirmwareElement(KvCErrorListPool& errors, const KvCInventoryItem& updateInfo,
                         const KvCInventoryItem*& firmware) {
    for (const KvCInventoryItem* item = updateInfo.getFirstSubItem(); item != nullptr; item = item->getNext()) {
        std::uint8_t active = 0;
        if (!readValue(errors, *item, ACTIVE, active)) {
            return false;
        }
        if (active == 0) {
            continue;
        }
        KvCString name;
        if (!readValue(errors, *item, NAME, name)) {
            return false;
        }
        if (name == "UserFirmware" || name == "FactoryFirmware") {
            firmware = item;
            return true;
        }
    }
    return true;
}

} // namespace

void determineRebootSupport(KvCErrorListPool& errors, const KvCInventoryItem& root, std::uint32_t& status) {
    static const KvCInventoryAddress boardTypePath = PRODUCT / BOARD_TYPE;
    const KvCInventoryItem* node = root.getFirstSubItem();
    if (node == nullptr) {
        status = rebootCheckFailed;
        return;
    }
    if (node->getID()[1] != HCN) {
        status = rebootNotByDevice;
        return;
    }
    const KvCInventoryItem* updateInfo = node->getItem(UPDATE_INFO);
    KvCString boardType;
    if (node->getParameter(boardTypePath) == nullptr || updateInfo == nullptr ||
        !readValue(errors, *node, boardTypePath, boardType)) {
        status = rebootCheckFailed;
        return;
    }
    const auto* model = std::find_if(boardModels.begin(), boardModels.end(),
                                     [&](const BoardModel& candidate) { return boardType == candidate.boardType; });
    if (model == boardModels.end()) {
        status = rebootNotByDevice;
        return;
    }
    const KvCInventoryItem* firmware = nullptr;
    if (!findFirmwareElement(errors, *updateInfo, firmware)) {
        status = rebootCheckFailed;
        return;
    }
    if (firmware == nullptr) {
        return;
    }
    KvCVersion version;
    if (!readValue(errors, *firmware, VERSION, version)) {
        status = rebootCheckFailed;
        return;
    }
    status = version < KvCVersion(model->minimumVersion) ? rebootNotByFirmware : rebootSupported;
}
