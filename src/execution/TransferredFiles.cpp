#include "TransferredFiles.h"

#include "CallJudgement.h"
#include "ExhaustedMemory.h"
#include "KvCConsoleWriter.h"

using namespace KvNReflasher;

namespace {

constexpr int lineIndentation = 8;
/// Column width of the file names.
constexpr int nameWidth = 46;
constexpr int resultGap = 2;

} // namespace

KvCTransferredFiles::~KvCTransferredFiles() {
    attempt([this] { deleteRemoteFiles(); });
}

bool KvCTransferredFiles::transferFile(const KvTUpdateElement& element, const KvCInventoryAddress& system) {
    const std::uint32_t fileIndex = element.archiveFileIndex;
    const KvTArchiveFile& file = context_.fileOf(element);
    context_.writer.print(L"%*s%-*s%*s", lineIndentation, L"", nameWidth, toWide(file.name).c_str(), resultGap, L"");
    const std::wstring path = context_.archive.pathOf(file.name);
    KvTTransfer& transfer = transfers_.emplace_back();
    transfer.fileIndex = fileIndex;
    transfer.phase = phase_;
    // Listed before the transfer: once the target has the file, nothing may fail before it is noted.
    onTarget_.emplace(fileIndex, &transfer);
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool isTransferred = callSucceeds(errors, [&] {
        const KvCCallUnderWay call(context_.control, "transferFile", element.index);
        KvCInventoryManager::getInstance()->transferFile(errors, context_.inventory.rootHandle(), system,
                                                         lock_.handle(), path.c_str(), nullptr, nullptr,
                                                         transfer.remoteFile);
    });
    transfer.result = isTransferred ? KvEResult::updated : KvEResult::failed;
    if (!isTransferred) {
        onTarget_.erase(fileIndex);
    }
    context_.writer.print(L"%s", isTransferred ? L"[OK]\n" : L"[ERROR]\n");
    return isTransferred;
}

void KvCTransferredFiles::deleteRemoteFiles() {
    const KvCTargetInventory& inventory = context_.inventory;
    while (!onTarget_.empty()) {
        // A file stays listed until it was asked to be deleted.
        const KvTTransfer& transfer = *onTarget_.begin()->second;
        if (transfer.result == KvEResult::updated) {
            const KvCCallUnderWay call(context_.control, "deleteRemoteFile");
            KvCInventoryManager::getInstance()->deleteRemoteFile(context_.errors, inventory.rootHandle(),
                                                                 *inventory.systemAddress(), lock_.handle(),
                                                                 transfer.remoteFile);
        }
        onTarget_.erase(onTarget_.begin());
    }
}
