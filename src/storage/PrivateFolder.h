#pragma once

#include "Files.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

/// A folder for temporary files that nobody but this user can look into, below the system's folder for such files. It
/// lasts as long as the object; what a process has left that was killed is removed when the next one is made.
class KvCPrivateFolder {
public:
    /// Null, with a `reason`, when none can be made.
    [[nodiscard]] static std::unique_ptr<KvCPrivateFolder> create(std::string& reason);

    KvCPrivateFolder(const KvCPrivateFolder&) = delete;
    KvCPrivateFolder& operator=(const KvCPrivateFolder&) = delete;
    /// Removes the folder and all that is in it.
    ~KvCPrivateFolder();

    /// Its path (as of Files.h).
    [[nodiscard]] std::wstring path() const;
    /// Bytes that can still be written there; 0 when that is not known.
    [[nodiscard]] std::uint64_t freeSpace() const;
    /// Creates a file below it for binary writing, and the folders of `name`, which are separated by "/". Null when
    /// that is not possible, or when something of this name exists.
    [[nodiscard]] FileStream createFile(const std::string& name) const;

    /// Held as long as a folder is in use.
    class Lock;

private:
    KvCPrivateFolder(std::filesystem::path place, std::unique_ptr<Lock> lock);
    [[nodiscard]] static std::unique_ptr<KvCPrivateFolder> make(std::string& reason);

    /// Has the folder, and beside it the file that is locked.
    std::filesystem::path place_;
    std::unique_ptr<Lock> lock_;
};
