#include "KvCDirectFileWriter.h"

#include "CallJudgement.h"
#include "ErrorEntries.h"
#include "ExhaustedMemory.h"
#include "Files.h"
#include "HostInterfaceHandles.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"
#include "OwnedErrorList.h"

#include <algorithm>
#include <string_view>
#include <type_traits>

namespace {

constexpr std::string_view temporarySuffix = ".tmp";

template <typename... Arguments>
void addMessage(std::vector<std::wstring>& messages, KvCFormat<std::type_identity_t<Arguments>...> format,
                Arguments... arguments) {
    KvCConsoleWriter::format<Arguments...>(messages.emplace_back(), format, arguments...);
}

} // namespace

struct KvCDirectFileWriter::Paths {
    Paths(const std::wstring& archiveFolder, const KvCString& fileName, const KvCString& targetPath)
        : localSource(archiveFolder + L"/" + toWide(fileName)), target(targetRoot) {
        target.append("/").append(targetPath.c_str());
    }
    /// Takes the target apart; false when it has no folder.
    [[nodiscard]] bool split() {
        const std::size_t separator = target.rfind('/');
        if (separator == std::string::npos) {
            return false;
        }
        folder = target.substr(0, separator);
        name = target.substr(separator + 1);
        temporaryName.append(name).append(temporarySuffix);
        return true;
    }

    std::wstring localSource;
    std::string target;
    std::string folder;
    std::string name;
    std::string temporaryName;
};

KvCDirectFileWriter::~KvCDirectFileWriter() {
    if (deviceHandle_ == nullptr) {
        return;
    }
    // Without memory for a list of its own the handle is given back all the same.
    KvCErrorManager& manager = *KvCErrorManager::getInstance();
    KvCOwnedErrorList own;
    attempt([&own] { own = KvCOwnedErrorList::create(); });
    KvCErrorListPool& errors = own.get() != nullptr ? *own : manager.getMasterErrorList();
    attempt([&] { (void)KvHIM_deleteDeviceHandle(errors, deviceHandle_); });
    if (own.get() != nullptr) {
        attempt([&] { manager.sendErrorList(own.get(), 0); });
    }
}

bool KvCDirectFileWriter::writeFileToTarget(const KvTArchiveFile& entry, const KvCString& targetPath,
                                            std::vector<std::wstring>& messages) {
    messages.clear();
    errors_.clear();
    Paths paths(readFolder_.empty() ? options_.archiveFolder : readFolder_, entry.name, targetPath);
    if (!paths.split()) {
        addMessage(messages, L"ERROR: Invalid target file path: %hs\n", paths.target.c_str());
        return false;
    }
    if (entry.fileMissing) {
        return false;
    }
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    const bool isWritten = write(*errors, paths, targetPath, messages);
    errors_ = errorEntriesOf(*errors);
    return isWritten;
}

bool KvCDirectFileWriter::write(KvCErrorListPool& errors, const Paths& paths, const KvCString& targetPath,
                                std::vector<std::wstring>& messages) {
    if (!openDevice(errors)) {
        addMessage(messages, L"ERROR: Writing %hs failed. Cannot create device handle.\n", paths.target.c_str());
        return false;
    }
    FileTransferClient client(errors);
    const std::int32_t status = client.createBy(
        [&](KvHIMFTClientHandle& handle) { return KvHIM_createFTClientHandle(errors, deviceHandle_, handle); });
    if (status != 0) {
        addMessage(messages, L"ERROR: Writing %hs failed. Cannot create FT client handle.\n", paths.target.c_str());
        return false;
    }
    createFolders(errors, client.get(), paths.folder, messages);
    if (!transfer(errors, client.get(), paths, messages)) {
        return false;
    }
    if (client.release() != 0) {
        addMessage(messages, L"ERROR: Cannot delete FT client handle after writing %hs.\n", targetPath.c_str());
        return false;
    }
    if (options_.verbose) {
        addMessage(messages, L"Successfully written %hs.\n", paths.target.c_str());
    }
    return true;
}

/// Finds the device unless an earlier write has done so.
bool KvCDirectFileWriter::openDevice(KvCErrorListPool& errors) {
    return deviceHandle_ != nullptr ||
           (targetAccess_.findDevice(errors, deviceHandle_) == 0 && deviceHandle_ != nullptr);
}

/// Creates the folders of `folder` below the root one by one. One that exists already is as good, so statuses matter
/// only for what is told.
void KvCDirectFileWriter::createFolders(KvCErrorListPool& errors, KvHIMFTClientHandle client, const std::string& folder,
                                        std::vector<std::wstring>& messages) const {
    std::size_t parentEnd = targetRoot.size();
    while (parentEnd < folder.size()) {
        const std::size_t end = std::min(folder.find('/', parentEnd + 1), folder.size());
        const std::string parent = folder.substr(0, parentEnd);
        const std::string name = folder.substr(parentEnd + 1, end - parentEnd - 1);
        const std::int32_t status = KvHIM_makeDir(errors, nullptr, client, parent.c_str(), name.c_str());
        if (status == 0 && options_.verbose) {
            addMessage(messages, L"Directory %hs created.\n", folder.substr(0, end).c_str());
        }
        parentEnd = end;
    }
}

/// Writes the file under its temporary name and renames it.
bool KvCDirectFileWriter::transfer(KvCErrorListPool& errors, KvHIMFTClientHandle client, const Paths& paths,
                                   std::vector<std::wstring>& messages) const {
    // Creates an update file that is missing, empty; the target then gets an empty file.
    const std::uint64_t size = sizeOfFileCreatedIfMissing(paths.localSource);
    std::int64_t written = 0;
    const bool put = callSucceeds(errors, [&] {
        written = KvHIM_putFileU(errors, nullptr, client, paths.localSource.c_str(), paths.folder.c_str(),
                                 paths.temporaryName.c_str(), nullptr, nullptr);
    });
    if (!put || written < 0 || static_cast<std::uint64_t>(written) != size) {
        addMessage(messages, L"ERROR: Writing %hs failed. Cannot transfer file to target device. Status: %d\n",
                   paths.target.c_str(), static_cast<int>(written));
        return false;
    }
    std::int32_t result = 0;
    const bool renamed = callSucceeds(errors, [&] {
        result = KvHIM_renameFile(errors, nullptr, client, paths.folder.c_str(), paths.temporaryName.c_str(),
                                  paths.name.c_str());
    });
    if (!renamed || result < 0) {
        addMessage(messages, L"ERROR: Writing %hs failed. Cannot rename temporary file. Status: %d\n",
                   paths.target.c_str(), static_cast<int>(result));
        return false;
    }
    return true;
}
