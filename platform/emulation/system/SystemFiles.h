#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

/// The operating system as far as the emulation needs more than the standard library: one source per system implements
/// it. Failures come back as an error code; a function that yields something clears it when it succeeds. Nothing here
/// throws but std::bad_alloc.
namespace SystemFiles {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// True if `error` says that something does not exist.
[[nodiscard]] inline bool isAbsent(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory;
}

/// The path whose text is `utf8`.
[[nodiscard]] std::filesystem::path pathOf(std::string_view utf8);
/// The path of a local file that a client names: "\" separates components on every system.
[[nodiscard]] std::filesystem::path localPathOf(std::string_view utf8);
/// The text of `path` in UTF-8.
[[nodiscard]] std::string textOf(const std::filesystem::path& path);

/// The path that the environment variable `name` holds; nothing when it is unset or empty.
[[nodiscard]] std::optional<std::filesystem::path> pathFromEnvironment(const char* name);

/// Opens a regular file for reading bytes. Anything else, such as a folder, a pipe or a device, is refused, and nothing
/// waits for it.
[[nodiscard]] File openForReading(const std::filesystem::path& path, std::error_code& error);
/// Size of an open file in bytes; 0 when it is not known.
[[nodiscard]] std::uint64_t sizeOf(std::FILE& file);
/// Creates a file for writing bytes; whatever exists at `path`, be it a link, is a failure.
[[nodiscard]] File createNew(const std::filesystem::path& path, std::error_code& error);
/// The paths in a folder, in no order; those found before an error. (The standard library's iterators end the process
/// when memory is exhausted.)
[[nodiscard]] std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder, std::error_code& error);
/// Renames a file, replacing the one that is at `to`, in one step for other processes.
[[nodiscard]] std::error_code moveIntoPlace(const std::filesystem::path& from, const std::filesystem::path& to);
/// Appends `bytes` to a file, which is created when missing, in one step for other processes. A pipe that nobody reads
/// is a failure.
[[nodiscard]] std::error_code appendWhole(const std::filesystem::path& path, std::string_view bytes);

/// An exclusive lock on a file, held against other processes and other owners in this one. It ends with the object and
/// with the process, however that ends. The file itself stays.
class FileLock {
public:
    enum class Wait : std::uint8_t { no, untilFree };

    /// Takes the lock on the file at `path`, which is created when missing and must be a regular file. Nothing without
    /// an error: another owner holds it (with Wait::no only).
    [[nodiscard]] static std::optional<FileLock> take(const std::filesystem::path& path, Wait wait,
                                                      std::error_code& error);

    FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, none)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        if (this != &other) {
            release();
            handle_ = std::exchange(other.handle_, none);
        }
        return *this;
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { release(); }

private:
    static constexpr std::intptr_t none = -1;

    explicit FileLock(std::intptr_t handle) noexcept : handle_(handle) {}
    void release() noexcept;

    std::intptr_t handle_;
};

/// An open folder. Its operations take the name of one component right below it and never follow a link, so that
/// nothing outside the folder can be reached, however the tree below it changes meanwhile.
class Folder {
public:
    /// Opens the folder at `path`, whose last component must be no link.
    [[nodiscard]] static std::optional<Folder> open(const std::filesystem::path& path, std::error_code& error);

    [[nodiscard]] std::optional<Folder> enter(const std::string& name, std::error_code& error) const;
    /// A folder or file that exists already is a failure.
    [[nodiscard]] std::error_code makeFolder(const std::string& name) const;
    /// Opens a regular file for reading bytes.
    [[nodiscard]] File openFile(const std::string& name, std::error_code& error) const;
    /// Creates a file for writing bytes in place of a regular file of that name.
    [[nodiscard]] File createFile(const std::string& name, std::error_code& error) const;
    /// Renames a regular file, replacing a regular file that has the new name.
    [[nodiscard]] std::error_code renameFile(const std::string& oldName, const std::string& newName) const;

private:
    struct Impl;
    explicit Folder(std::shared_ptr<const Impl> impl) noexcept : impl_(std::move(impl)) {}
    std::shared_ptr<const Impl> impl_;
};

} // namespace SystemFiles
