#include "TargetLock.h"

#include "CallJudgement.h"
#include "ExhaustedMemory.h"
#include "KvCConsoleWriter.h"
#include "OwnedErrorList.h"

namespace {

constexpr std::uint32_t lockFlags = 0x10003;

} // namespace

KvCTargetLock::~KvCTargetLock() {
    if (isHeld_) {
        attempt([this] { finishUpdate(); });
        attempt([this] { KvCInventoryManager::getInstance()->unlock(context_.errors, handle_); });
    }
}

bool KvCTargetLock::lockTarget() {
    const KvCInventoryAddress* address = context_.inventory.systemAddress();
    if (address == nullptr) {
        if (context_.options.verbose) {
            context_.writer.print(L"ERROR: Cannot lock target system! No HCN or CN found!\n");
        }
        return false;
    }
    isHeld_ = callSucceeds(context_.errors, [&] {
        const KvCCallUnderWay call(context_.control, "lock");
        KvCInventoryManager::getInstance()->lock(context_.errors, context_.inventory.rootHandle(), *address, lockFlags,
                                                 handle_);
    });
    if (!isHeld_ && context_.options.verbose) {
        context_.writer.print(L"ERROR: Cannot lock target system (%hs)!\n", address->toString().c_str());
    }
    return isHeld_;
}

void KvCTargetLock::unlockTarget() {
    finishUpdate();
    isHeld_ = false;
    const bool isUnlocked = callSucceeds(context_.errors, [this] {
        const KvCCallUnderWay call(context_.control, "unlock");
        KvCInventoryManager::getInstance()->unlock(context_.errors, handle_);
    });
    context_.callbacks.notifyEvent({KvNReflasher::KvEEvent::unlocked, 0, isUnlocked});
    if (isUnlocked) {
        handle_ = nullptr;
    } else if (context_.options.verbose) {
        context_.writer.print(L"ERROR: Cannot unlock target system!\n");
    }
}

/// Closes the update session on both nodes. What goes wrong here is of no interest to anybody.
void KvCTargetLock::finishUpdate() {
    const KvCOwnedErrorList dropped = KvCOwnedErrorList::create();
    const KvCTargetInventory& inventory = context_.inventory;
    for (const KvCInventoryAddress* address : {inventory.cnAddress(), inventory.hcnAddress()}) {
        if (address != nullptr) {
            const KvCCallUnderWay call(context_.control, "updateFinish");
            KvCInventoryManager::getInstance()->updateFinish(*dropped, inventory.rootHandle(), *address, handle_);
        }
    }
}
