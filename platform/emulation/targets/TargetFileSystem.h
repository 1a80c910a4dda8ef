#pragma once

#include "FileBytes.h"
#include "Outcome.h"
#include "StateRecords.h"
#include "StateStore.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

/// Called with the bytes done and in all.
using TransferProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Copies the local file at `path` into `to`, which a client knows as `name`, telling `progress` (may be empty). The
/// number of bytes.
[[nodiscard]] OrFailure<std::uint64_t> copyLocalFile(std::FILE& local, const std::filesystem::path& path, std::FILE& to,
                                                     const std::string& name, const TransferProgress& progress);

/// The file system that a target shows as /mnt/cn/cfdrive. Paths are resolved component by component; no link is ever
/// followed.
class TargetFileSystem {
public:
    explicit TargetFileSystem(StateStore& state) noexcept : state_(&state) {}

    /// Creates the folder `name` in `parent`; one that exists already is a failure.
    [[nodiscard]] Outcome makeFolder(const std::string& parent, const std::string& name);
    /// Writes the local file as `name` into `folder`, replacing what is there. The number of bytes.
    [[nodiscard]] OrFailure<std::uint64_t> putFile(const std::filesystem::path& local, const std::string& folder,
                                                   const std::string& name, const TransferProgress& progress);

    struct Renamed {
        /// The new path below the root.
        std::string location;
        /// What an element that is this file has installed now.
        InstalledValues contents;
    };
    /// Renames a file in `folder`, replacing what has the new name.
    [[nodiscard]] OrFailure<Renamed> renameFile(const std::string& folder, const std::string& oldName,
                                                const std::string& newName);

private:
    [[nodiscard]] OrFailure<SystemFiles::Folder> openFolder(const std::string& path);

    StateStore* state_;
};
