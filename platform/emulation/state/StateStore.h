#pragma once

#include "Outcome.h"
#include "StateRecords.h"
#include "SystemFiles.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

/// The folder `state` of an emulated target: everything that the emulation writes. It is created by the first write,
/// and deleting it resets the target. Several processes may use it at the same time: a file is replaced in one step,
/// and whoever changes one holds the folder's guard meanwhile. A file that cannot be understood counts as absent;
/// nothing is written over one that cannot be read, since what it holds would be lost.
class StateStore {
public:
    /// The state of the target in `folder`; touches nothing.
    explicit StateStore(const std::filesystem::path& folder);

    /// Everything that was installed, and what a reader should know about files that were ignored.
    struct Contents {
        std::vector<ElementState> elements;
        std::uint64_t resets = 0;
        /// "FILE: why it is ignored"
        std::vector<std::string> ignored;
    };
    [[nodiscard]] Contents read() const;

    /// Records an installation into the element at `address`.
    [[nodiscard]] Outcome install(const std::string& address, const InstalledValues& values, bool atNextReset);
    /// Counts a reset, after which `hiddenLookups` device list sessions shall not find the target.
    [[nodiscard]] Outcome countReset(std::uint32_t hiddenLookups);
    /// Counts a device list session. True when it shall not find the target. Where the count cannot be read or written,
    /// it finds the target.
    [[nodiscard]] bool takeHiddenLookup();

    /// Takes the update lock without waiting and clears what its last owner has left.
    [[nodiscard]] OrFailure<SystemFiles::FileLock> lockForUpdate();

    /// A new file for what a client transfers, in a folder that lockForUpdate() empties.
    struct TransferredFile {
        std::filesystem::path path;
        SystemFiles::File file;
    };
    [[nodiscard]] OrFailure<TransferredFile> createTransferredFile(std::uint64_t number);
    /// Deletes that folder.
    [[nodiscard]] std::error_code clearTransferredFiles() const;

    /// The folder that holds the target's file system, created when missing.
    [[nodiscard]] OrFailure<SystemFiles::Folder> openFileSystem();

private:
    /// Creates the folder `state` and the folder `name` in it.
    [[nodiscard]] Outcome createFolderBelow(const char* name) const;
    /// Waits for whoever else changes a file just now.
    [[nodiscard]] OrFailure<SystemFiles::FileLock> takeGuard() const;
    [[nodiscard]] OrFailure<ResetCounters> readCounters() const;
    [[nodiscard]] Outcome writeCounters(const ResetCounters& counters) const;
    [[nodiscard]] std::filesystem::path elementPath(const std::string& address) const;
    void readResets(Contents& contents) const;
    void readElement(const std::filesystem::path& path, Contents& contents) const;

    std::filesystem::path state_;
};
