#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "KvCInventoryItem.h"
#include "KvCString.h"
#include "KvPlatformExport.h"

#include <cstdint>

/// A target opened for inventory operations.
class KvCInventoryRootHandle;

namespace KvNInventoryManager {

/// Names a file that a target holds for an update; made by KvCInventoryManager::transferFile().
struct KvSRemoteFileHandle {
    /// The node that holds it.
    KvCString node;
    /// Where it is there.
    KvCString path;
};

/// Called during a transfer with the bytes done and in all and the caller's context. It may use the library, but must
/// not wait for another thread that does.
using KvTransferProgress = void (*)(std::uint64_t done, std::uint64_t total, void* context);

} // namespace KvNInventoryManager

/// Access to the inventories of targets and to the update of their elements. The process has one. Every operation
/// that takes an error list adds to it exactly when it fails; unless said otherwise the result repeats that as a
/// status (0: success). Operations block until the target has answered.
class KV_PLATFORM_API KvCInventoryManager {
public:
    KvCInventoryManager(const KvCInventoryManager&) = delete;
    KvCInventoryManager(KvCInventoryManager&&) = delete;
    KvCInventoryManager& operator=(const KvCInventoryManager&) = delete;
    KvCInventoryManager& operator=(KvCInventoryManager&&) = delete;

    /// Never null; lives as long as the process.
    static KvCInventoryManager* getInstance();

    /// Opens the targets at `addressList` (dotted IPv4 text). On success `root` receives a handle that the caller
    /// releases with deleteRootHandle(); on failure it stays as it was.
    std::uint32_t createRootHandleByIpAddressList(KvCErrorListPool& errors, const char* addressList,
                                                  KvCInventoryRootHandle*& root);
    /// Releases a root handle; it is gone whatever the result.
    std::uint32_t deleteRootHandle(KvCErrorListPool& errors, KvCInventoryRootHandle* root);

    /// Reads the target's inventory. On success `tree` receives the root item, owned by the manager until the caller
    /// releases it with deleteInventoryTree(); on failure it is null.
    std::uint32_t scan(KvCErrorListPool& errors, KvCInventoryRootHandle* root, KvCInventoryItem*& tree);
    /// Releases a tree of scan(); null is ignored.
    void deleteInventoryTree(KvCInventoryItem* tree);

    /// Takes the update lock of the system at `address`, without waiting: a target that another owner holds is an
    /// error. `flags` are bits of the service. On success `lockHandle` receives the lock, to be given back with
    /// unlock().
    std::uint32_t lock(KvCErrorListPool& errors, KvCInventoryRootHandle* root, const KvCInventoryAddress& address,
                       std::uint32_t flags, void*& lockHandle);
    /// Gives the lock back. After a failure the handle remains valid.
    std::uint32_t unlock(KvCErrorListPool& errors, void* lockHandle);

    /// Copies the local file `path` to the target; `progress` and `context` may be null. On success `file` receives
    /// the remote name, which lasts until deleteRemoteFile() or the end of the lock.
    std::uint32_t transferFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                               const KvCInventoryAddress& address, void* lockHandle, const wchar_t* path,
                               KvNInventoryManager::KvTransferProgress progress, void* context,
                               KvNInventoryManager::KvSRemoteFileHandle& file);
    /// Deletes a transferred file on the target.
    std::uint32_t deleteRemoteFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                   const KvCInventoryAddress& address, void* lockHandle,
                                   KvNInventoryManager::KvSRemoteFileHandle file);

    /// Starts the update of element `elementId` of the board at `address` from a transferred file and returns at once.
    /// `timeStamp`: seconds since 1970 to be recorded with the update.
    std::uint32_t update2(KvCErrorListPool& errors, KvCInventoryRootHandle* root, const KvCInventoryAddress& address,
                          void* lockHandle, std::uint32_t elementId, KvNInventoryManager::KvSRemoteFileHandle file,
                          std::uint64_t timeStamp);
    /// Asks for the state of a started update. `id` goes in as the element's identifier; `state` comes back 1 while
    /// the update runs, 2 when it has succeeded, anything else when it has failed; `done` of `total` tells how far it
    /// is. A finished update keeps its answer until the element's next update or the end of the lock. On failure the
    /// four values stay as they were.
    std::uint32_t updateStatus2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                const KvCInventoryAddress& address, std::uint32_t& id, std::uint32_t& state,
                                std::uint32_t& done, std::uint32_t& total);
    /// Adds the errors that the target reports for a finished update to `targetErrors`, and none to `errors` for them.
    std::uint32_t updateErrors2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                const KvCInventoryAddress& address, void* lockHandle, std::uint32_t elementId,
                                KvCErrorListPool& targetErrors);
    /// Closes the update session of the system at `address`; called before unlock().
    std::uint32_t updateFinish(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                               const KvCInventoryAddress& address, void* lockHandle);

private:
    KvCInventoryManager() = default;
    ~KvCInventoryManager() = default;
};
