#pragma once

#include "KvCInventoryManager.h"
#include "KvTOutcome.h"
#include "TargetLock.h"
#include "UpdateContext.h"

#include <cstdint>
#include <deque>
#include <map>

/// A transfer of an update file in one phase.
struct KvTTransfer {
    std::uint32_t fileIndex = 0;
    std::uint32_t phase = 0;
    KvNReflasher::KvEResult result = KvNReflasher::KvEResult::inProgress;
    /// The target's name of the file.
    KvNInventoryManager::KvSRemoteFileHandle remoteFile;
};

/// The update files that the target holds during one phase; deletes those that are left when it is destroyed.
class KvCTransferredFiles {
public:
    /// All must outlive the object; `transfers` receives a record of each transfer.
    KvCTransferredFiles(const KvTUpdateContext& context, const KvCTargetLock& lock, std::uint32_t phase,
                        std::deque<KvTTransfer>& transfers)
        : context_(context), lock_(lock), phase_(phase), transfers_(transfers) {}
    KvCTransferredFiles(const KvCTransferredFiles&) = delete;
    KvCTransferredFiles& operator=(const KvCTransferredFiles&) = delete;
    ~KvCTransferredFiles();

    /// The target holds the file of this archive entry.
    [[nodiscard]] bool contains(std::uint32_t fileIndex) const { return onTarget_.contains(fileIndex); }
    /// The target's name of a file that it holds.
    [[nodiscard]] const KvNInventoryManager::KvSRemoteFileHandle& remoteFile(std::uint32_t fileIndex) const {
        return onTarget_.at(fileIndex)->remoteFile;
    }
    /// Transfers the element's update file to the node `system`; prints a line. False if that failed; the errors are
    /// the element's.
    [[nodiscard]] bool transferFile(const KvTUpdateElement& element, const KvCInventoryAddress& system);
    /// Leaves the file of this archive entry where it is.
    void leave(std::uint32_t fileIndex) { onTarget_.erase(fileIndex); }
    /// Deletes all files in the order of the archive. Errors stay in the session's list for the final report.
    void deleteRemoteFiles();

private:
    const KvTUpdateContext& context_;
    const KvCTargetLock& lock_;
    std::uint32_t phase_;
    std::deque<KvTTransfer>& transfers_;
    /// By their archive entries.
    std::map<std::uint32_t, const KvTTransfer*> onTarget_;
};
