#pragma once

#include "PrivateFolder.h"

#include <filesystem>
#include <memory>

// The needs of private folders from the operating system.

/// A lock that ends with the process that holds it.
class KvCPrivateFolder::Lock {
public:
    /// Makes the file and locks it; null when that is not possible.
    [[nodiscard]] static std::unique_ptr<Lock> make(const std::filesystem::path& file);
    /// Locks an existing file; null when another process has locked it, or it cannot be.
    [[nodiscard]] static std::unique_ptr<Lock> take(const std::filesystem::path& file);

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();

private:
    struct State;
    explicit Lock(std::unique_ptr<State> state);
    [[nodiscard]] static std::unique_ptr<Lock> open(const std::filesystem::path& file, bool isNew);

    std::unique_ptr<State> state_;
};

/// The folder for temporary files; empty if there is none.
[[nodiscard]] std::filesystem::path temporaryFolder();

/// Makes a folder that only this user has rights to; false when that is not possible, or something of this name exists.
[[nodiscard]] bool makeOwnFolder(const std::filesystem::path& folder);

/// True if `folder` is a folder, not a link, and belongs to this user.
[[nodiscard]] bool isOwnFolder(const std::filesystem::path& folder);

/// True unless another user may remove or rename what this user makes in `folder`.
[[nodiscard]] bool isSafeForFolders(const std::filesystem::path& folder);
