#pragma once

#include "KvCString.h"
#include "KvCTargetAccess.h"
#include "KvHostInterface.h"
#include "KvTArchiveFile.h"
#include "KvTOptions.h"
#include "KvTOutcome.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The root folder of the target's file system, as target paths see it.
inline constexpr std::string_view targetRoot = "/mnt/cn/cfdrive";

/// Copies update files into the target's file system, below its root folder /mnt/cn/cfdrive. Each is written under a
/// temporary name and renamed, so that the target never sees half a file under its final name.
class KvCDirectFileWriter {
public:
    /// Both must outlive the writer.
    KvCDirectFileWriter(const KvNReflasher::KvTOptions& options, const KvCTargetAccess& targetAccess)
        : options_(options), targetAccess_(targetAccess) {}
    KvCDirectFileWriter(const KvCDirectFileWriter&) = delete;
    KvCDirectFileWriter& operator=(const KvCDirectFileWriter&) = delete;
    /// Gives the device handle back.
    ~KvCDirectFileWriter();

    /// Lets the following take the update files from this folder in place of that of the options.
    void readFrom(std::wstring folder) { readFolder_ = std::move(folder); }

    /// Writes the update file of `entry` to `targetPath` below the root, creating the folders on the way. `messages`
    /// is emptied and receives what there is to say, line ends included: one message for a failure (none when the
    /// update file is known to be missing), details with the verbose option. True when the file is in its place.
    [[nodiscard]] bool writeFileToTarget(const KvTArchiveFile& entry, const KvCString& targetPath,
                                         std::vector<std::wstring>& messages);

    /// The errors that the last write has met.
    [[nodiscard]] const std::vector<KvNReflasher::KvTErrorInfo>& errors() const { return errors_; }

private:
    struct Paths;
    [[nodiscard]] bool write(KvCErrorListPool& errors, const Paths& paths, const KvCString& targetPath,
                             std::vector<std::wstring>& messages);
    [[nodiscard]] bool openDevice(KvCErrorListPool& errors);
    [[nodiscard]] bool transfer(KvCErrorListPool& errors, KvHIMFTClientHandle client, const Paths& paths,
                                std::vector<std::wstring>& messages) const;
    void createFolders(KvCErrorListPool& errors, KvHIMFTClientHandle client, const std::string& folder,
                       std::vector<std::wstring>& messages) const;

    const KvNReflasher::KvTOptions& options_;
    const KvCTargetAccess& targetAccess_;
    /// Empty: that of the options.
    std::wstring readFolder_;
    /// Kept from the first write on.
    KvHIMDeviceHandle deviceHandle_ = nullptr;
    std::vector<KvNReflasher::KvTErrorInfo> errors_;
};
