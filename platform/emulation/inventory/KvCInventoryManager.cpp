#include "KvCInventoryManager.h"

#include "Call.h"
#include "InventoryTree.h"
#include "IpV4Text.h"
#include "Ledger.h"
#include "SystemFiles.h"
#include "UpdateSession.h"
#include "WideText.h"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using RemoteFileHandle = KvNInventoryManager::KvSRemoteFileHandle;

Failure wrongRootHandle() {
    return {EmulationErrors::wrongHandle, "The root handle is not valid (any more)."};
}

Failure wrongLockHandle() {
    return {EmulationErrors::wrongHandle, "The lock handle is not valid (any more) for this target."};
}

/// A call on a target that a root handle stands for.
class TargetCall : public Call {
public:
    TargetCall(Operation operation, KvCErrorListPool& errors, KvCInventoryRootHandle* root) : Call(operation, errors) {
        if (const TargetHandle* const handle = service().rootHandles.find(root)) {
            target_ = handle->target;
            bindTo(target_);
        }
    }

    /// Null when the root handle is dead.
    [[nodiscard]] const std::shared_ptr<EmulatedTarget>& target() const noexcept { return target_; }
    /// The session of a lock on this target; null when the lock handle is not one.
    [[nodiscard]] std::shared_ptr<UpdateSession> sessionOf(void* lockHandle) const {
        const auto* const session = service().locks.find(lockHandle);
        return session != nullptr && (*session)->sharedTarget() == target_ ? *session : nullptr;
    }
    /// Why the call cannot be made on the item at `address` of this target.
    [[nodiscard]] Outcome refuseUnlessItem(const KvCInventoryAddress& address) const {
        if (target_ == nullptr) {
            return wrongRootHandle();
        }
        return target_->findItem(address) != nullptr ? Outcome() : EmulatedTarget::noSuchItem(address);
    }
    /// The same for a call under a lock.
    [[nodiscard]] Outcome refuseUnlessLocked(const std::shared_ptr<UpdateSession>& session,
                                             const KvCInventoryAddress& address) const {
        if (target_ != nullptr && session == nullptr) {
            return wrongLockHandle();
        }
        return refuseUnlessItem(address);
    }

private:
    std::shared_ptr<EmulatedTarget> target_;
};

std::uint32_t statusOf(std::int64_t result) {
    return static_cast<std::uint32_t>(result);
}

TransferProgress progressFor(KvNInventoryManager::KvTransferProgress progress, void* context) {
    if (progress == nullptr) {
        return {};
    }
    return [progress, context](std::uint64_t done, std::uint64_t total) { progress(done, total, context); };
}

std::unique_ptr<KvCInventoryItem> scanTarget(const std::shared_ptr<EmulatedTarget>& target) {
    const std::shared_ptr<const ItemDescription> root(target, target->description().inventory.get());
    return KvCInventoryItem::Impl::makeTree(std::make_unique<InventoryTreeSource>(
        InventoryTreeSource{root, target->installedElements(), target, HeldCount(Ledger::instance().inventoryTrees)}));
}

} // namespace

KvCInventoryManager* KvCInventoryManager::getInstance() {
    static KvCInventoryManager manager;
    return &manager;
}

std::uint32_t KvCInventoryManager::createRootHandleByIpAddressList(KvCErrorListPool& errors, const char* addressList,
                                                                   KvCInventoryRootHandle*& root) {
    const std::string_view text(addressList != nullptr ? addressList : "");
    Call call(Operation::createRootHandleByIpAddressList, errors);
    call.addField("name", text);
    const auto address = parseIpV4(text);
    const std::shared_ptr<EmulatedTarget> target = address ? call.service().targetAt(*address) : nullptr;
    call.bindTo(target);
    return statusOf(call.run([&]() -> std::int64_t {
        if (!address) {
            std::string reason("\"");
            reason.append(text).append("\" is not an IPv4 address.");
            return call.fail({EmulationErrors::notAnIpV4Address, std::move(reason)});
        }
        if (target == nullptr) {
            std::string reason("There is no target with the address ");
            reason.append(text).append(".");
            return call.fail({EmulationErrors::notFound, std::move(reason)});
        }
        root = call.service().rootHandles.add({target, HeldCount(Ledger::instance().rootHandles)});
        return 0;
    }));
}

std::uint32_t KvCInventoryManager::deleteRootHandle(KvCErrorListPool& errors, KvCInventoryRootHandle* root) {
    TargetCall call(Operation::deleteRootHandle, errors, root);
    // The handle is gone whatever the result.
    const bool wasAlive = call.service().rootHandles.release(root).has_value();
    return statusOf(call.run([&] { return wasAlive ? 0 : call.fail(wrongRootHandle()); }));
}

std::uint32_t KvCInventoryManager::scan(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                        KvCInventoryItem*& tree) {
    tree = nullptr;
    TargetCall call(Operation::scan, errors, root);
    return statusOf(call.run([&]() -> std::int64_t {
        if (call.target() == nullptr) {
            return call.fail(wrongRootHandle());
        }
        std::unique_ptr<KvCInventoryItem> scanned = scanTarget(call.target());
        scannedTrees().insert(scanned.get());
        tree = scanned.release();
        return 0;
    }));
}

void KvCInventoryManager::deleteInventoryTree(KvCInventoryItem* tree) {
    if (tree == nullptr) {
        return;
    }
    const std::lock_guard guard(EmulationService::instance().mutex());
    if (scannedTrees().erase(tree) == 0) {
        ++Ledger::instance().badReleases;
        return;
    }
    delete tree;
}

std::uint32_t KvCInventoryManager::lock(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                        const KvCInventoryAddress& address, std::uint32_t flags, void*& lockHandle) {
    TargetCall call(Operation::lock, errors, root);
    call.setAddress(address);
    call.addField("flags", flags);
    return statusOf(call.run([&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessItem(address)) {
            return call.fail(*refusal);
        }
        auto lock = call.target()->state().lockForUpdate();
        if (!lock.hasValue()) {
            return call.fail(lock.failure());
        }
        lockHandle = call.service().open(std::make_shared<UpdateSession>(call.target(), std::move(lock.value())));
        return 0;
    }));
}

std::uint32_t KvCInventoryManager::unlock(KvCErrorListPool& errors, void* lockHandle) {
    Call call(Operation::unlock, errors);
    const auto* const session = call.service().locks.find(lockHandle);
    if (session != nullptr) {
        call.bindTo((*session)->sharedTarget());
    }
    const auto release = [&]() -> std::int64_t {
        return call.service().locks.release(lockHandle) ? 0 : call.fail(wrongLockHandle());
    };
    const auto countAsReleased = [&] {
        if (session != nullptr) {
            (*session)->countAsReleased();
        }
    };
    return statusOf(call.run(release, countAsReleased));
}

std::uint32_t KvCInventoryManager::transferFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                const KvCInventoryAddress& address, void* lockHandle,
                                                const wchar_t* path, KvNInventoryManager::KvTransferProgress progress,
                                                void* context, RemoteFileHandle& file) {
    const std::wstring_view local(path != nullptr ? path : L"");
    TargetCall call(Operation::transferFile, errors, root);
    call.setAddress(address);
    call.addField("path", local);
    const std::shared_ptr<UpdateSession> session = call.sessionOf(lockHandle);
    return statusOf(call.run([&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessLocked(session, address)) {
            return call.fail(*refusal);
        }
        KvCString node = address.toString();
        auto remote =
            session->transferFile(SystemFiles::localPathOf(utf8OfWide(local)), progressFor(progress, context));
        if (!remote.hasValue()) {
            return call.fail(remote.failure());
        }
        file = {std::move(node), KvCString(std::move(remote.value()))};
        return 0;
    }));
}

std::uint32_t KvCInventoryManager::deleteRemoteFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                    const KvCInventoryAddress& address, void* lockHandle,
                                                    RemoteFileHandle file) {
    TargetCall call(Operation::deleteRemoteFile, errors, root);
    call.setAddress(address);
    const std::shared_ptr<UpdateSession> session = call.sessionOf(lockHandle);
    const auto remove = [&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessLocked(session, address)) {
            // Without its lock the file is gone already.
            Ledger::instance().badReleases += session == nullptr ? 1 : 0;
            return call.fail(*refusal);
        }
        return call.conclude(session->deleteRemoteFile(file.path.view()));
    };
    const auto countAsDeleted = [&] {
        if (session != nullptr) {
            session->countRemoteFileAsDeleted(file.path.view());
        }
    };
    return statusOf(call.run(remove, countAsDeleted));
}

std::uint32_t KvCInventoryManager::update2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                           const KvCInventoryAddress& address, void* lockHandle,
                                           std::uint32_t elementId, RemoteFileHandle file,
                                           std::uint64_t /*timeStamp*/) {
    TargetCall call(Operation::update2, errors, root);
    call.setAddress(address);
    call.setId(elementId);
    const std::shared_ptr<UpdateSession> session = call.sessionOf(lockHandle);
    return statusOf(call.run([&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessLocked(session, address)) {
            return call.fail(*refusal);
        }
        const auto element = call.target()->findElement(address, elementId);
        return element.hasValue() ? call.conclude(session->start(*element.value(), file.path.view()))
                                  : call.fail(element.failure());
    }));
}

std::uint32_t KvCInventoryManager::updateStatus2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                 const KvCInventoryAddress& address, std::uint32_t& id,
                                                 std::uint32_t& state, std::uint32_t& done, std::uint32_t& total) {
    TargetCall call(Operation::updateStatus2, errors, root);
    call.setAddress(address);
    call.setId(id);
    return statusOf(call.run([&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessItem(address)) {
            return call.fail(*refusal);
        }
        const auto element = call.target()->findElement(address, id);
        if (!element.hasValue()) {
            return call.fail(element.failure());
        }
        const std::shared_ptr<UpdateSession> session = call.service().sessionWith(*call.target());
        if (session == nullptr) {
            return call.fail({EmulationErrors::wrongUpdateState, "No update of this target was started."});
        }
        const auto status = session->queryStatus(*element.value());
        if (!status.hasValue()) {
            return call.fail(status.failure());
        }
        state = status.value().state;
        done = status.value().done;
        total = status.value().total;
        return 0;
    }));
}

std::uint32_t KvCInventoryManager::updateErrors2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                 const KvCInventoryAddress& address, void* lockHandle,
                                                 std::uint32_t elementId, KvCErrorListPool& targetErrors) {
    TargetCall call(Operation::updateErrors2, errors, root);
    call.setAddress(address);
    call.setId(elementId);
    const std::shared_ptr<UpdateSession> session = call.sessionOf(lockHandle);
    std::vector<KvTErrorEntry> reported;
    const std::int64_t result = call.run([&]() -> std::int64_t {
        if (const Outcome refusal = call.refuseUnlessLocked(session, address)) {
            return call.fail(*refusal);
        }
        const auto element = call.target()->findElement(address, elementId);
        if (!element.hasValue()) {
            return call.fail(element.failure());
        }
        auto finished = session->reportedErrors(*element.value());
        if (!finished.hasValue()) {
            return call.fail(finished.failure());
        }
        reported = std::move(finished.value());
        return 0;
    });
    for (KvTErrorEntry& entry : reported) {
        targetErrors.addError(std::move(entry));
    }
    return statusOf(result);
}

std::uint32_t KvCInventoryManager::updateFinish(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                const KvCInventoryAddress& address, void* lockHandle) {
    TargetCall call(Operation::updateFinish, errors, root);
    call.setAddress(address);
    const std::shared_ptr<UpdateSession> session = call.sessionOf(lockHandle);
    return statusOf(call.run([&] { return call.conclude(call.refuseUnlessLocked(session, address)); }));
}
