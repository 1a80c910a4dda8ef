#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// A file that no other process writes to as long as the object lasts. What holds the file ends with the process,
/// however that ends. Only this user may read and write it. Paths are as of Files.h.
class KvCLockedFile {
public:
    /// Creates a file. Null, with a `reason`, if that is not possible or something of this name exists.
    [[nodiscard]] static std::unique_ptr<KvCLockedFile> create(const std::wstring& path, std::string& reason);
    /// Opens a file, which is created if it is missing. Null if that is not possible; without a `reason` if another
    /// object holds it.
    [[nodiscard]] static std::unique_ptr<KvCLockedFile> take(const std::wstring& path, std::string& reason);
    /// True if an object holds the file at `path`, in whatever process.
    [[nodiscard]] static bool isHeld(const std::wstring& path);
    /// The content of the file at `path`, which somebody may hold and write to; nothing if it cannot be read or has
    /// more than `most` bytes.
    [[nodiscard]] static std::optional<std::string> contentOf(const std::wstring& path, std::uint64_t most);

    KvCLockedFile(const KvCLockedFile&) = delete;
    KvCLockedFile& operator=(const KvCLockedFile&) = delete;
    ~KvCLockedFile();

    /// Adds to the end of the file; false, with a `reason`, if not all of it was written.
    [[nodiscard]] bool append(std::string_view bytes, std::string& reason);
    /// Waits until all that was appended is on the disk; false, with a `reason`, if that is not known.
    [[nodiscard]] bool flush(std::string& reason);
    /// Removes the file.
    void remove();

private:
    struct State;
    explicit KvCLockedFile(std::unique_ptr<State> state);
    [[nodiscard]] static std::unique_ptr<KvCLockedFile> open(const std::wstring& path, bool isNew, std::string& reason);

    std::unique_ptr<State> state_;
};

/// Makes the folder at `path`, and those above it that are missing; those that are made can be used by this user alone.
/// An empty text, or why there is no such folder then.
[[nodiscard]] std::string makeFolders(const std::wstring& path);
/// Removes the file at `path`; false if it is still there.
bool removeFile(const std::wstring& path);
