#include "ArchivePaths.h"
#include "CallJudgement.h"
#include "KvCConsoleWriter.h"
#include "KvCUpdateDriver.h"

#include <algorithm>
#include <functional>

using namespace KvNReflasher;

namespace {

constexpr int lineIndentation = 8;
/// Column width of the file names.
constexpr int nameWidth = 46;
constexpr int resultGap = 2;

} // namespace

void KvCUpdateDriver::transferFiles(const PhaseList& list) {
    const KvCInventoryAddress* system = planner_.inventory().systemAddress();
    if (system == nullptr) {
        return;
    }
    bool headingPrinted = false;
    for (KvTUpdateElement* element : list) {
        if (element->isFileSystemElement || element->updateState != toBeUpdated ||
            transferOfFile_[element->archiveFileIndex] != 0) {
            continue;
        }
        if (!headingPrinted) {
            writer_.print(L"\n\nTransferring files:\n");
            headingPrinted = true;
        }
        transferFile(*element, *system);
    }
}

/// A file that was transferred serves every element of its entry in this phase.
void KvCUpdateDriver::transferFile(KvTUpdateElement& element, const KvCInventoryAddress& system) {
    const std::uint32_t fileIndex = element.archiveFileIndex;
    const KvTArchiveFile& file = fileOf(element);
    writer_.print(L"%*s%-*s%*s", lineIndentation, L"", nameWidth, toWide(file.name).c_str(), resultGap, L"");
    const std::wstring path = updateFilePath(options_, file.name);
    KvTTransfer& transfer = transfers_.emplace_back();
    transfer.fileIndex = fileIndex;
    transfer.phase = phase_;
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool transferred = callSucceeds(errors, [&] {
        KvCInventoryManager::getInstance()->transferFile(errors, rootHandle(), system, lockHandle_, path.c_str(),
                                                         nullptr, nullptr, transfer.remoteFile);
    });
    if (transferred) {
        transfer.result = KvEResult::updated;
        transferOfFile_[fileIndex] = transfers_.size();
        filesOnTarget_.push_back(fileIndex);
        writer_.print(L"[OK]\n");
    } else {
        transfer.result = KvEResult::failed;
        writer_.print(L"[ERROR]\n");
        fail(element, KvEFailedCall::transferFile);
    }
    callbacks_.notifyEvent({KvEEvent::transfer, fileIndex, transferred});
}

const KvNInventoryManager::KvSRemoteFileHandle& KvCUpdateDriver::remoteFileOf(const KvTUpdateElement& element) const {
    return transfers_[transferOfFile_[element.archiveFileIndex] - 1].remoteFile;
}

/// In the order of the archive: taken from the back, so that a file stays noted until it was asked to be deleted.
/// Errors stay in `errors` for the final report.
void KvCUpdateDriver::deleteRemoteFiles(KvCErrorListPool& errors) {
    const KvCInventoryAddress* system = planner_.inventory().systemAddress();
    if (system == nullptr) {
        return;
    }
    std::sort(filesOnTarget_.begin(), filesOnTarget_.end(), std::greater<>());
    while (!filesOnTarget_.empty()) {
        const std::uint32_t fileIndex = filesOnTarget_.back();
        KvCInventoryManager::getInstance()->deleteRemoteFile(errors, rootHandle(), *system, lockHandle_,
                                                             transfers_[transferOfFile_[fileIndex] - 1].remoteFile);
        transferOfFile_[fileIndex] = 0;
        filesOnTarget_.pop_back();
    }
}
