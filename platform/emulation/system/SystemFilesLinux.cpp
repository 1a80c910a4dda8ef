#include "SystemFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace SystemFiles {

namespace {

constexpr mode_t newFileMode = 0666;
constexpr mode_t newFolderMode = 0777;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// A file descriptor that is closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            static_cast<void>(::close(number_));
        }
    }

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }
    [[nodiscard]] int release() noexcept { return std::exchange(number_, -1); }

private:
    int number_;
};

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept { static_cast<void>(::closedir(directory)); }
};

/// The stream on `descriptor`; null with `error` when the descriptor is not open.
File streamOn(Descriptor descriptor, const char* mode, std::error_code& error) {
    error.clear();
    if (!descriptor.isOpen()) {
        error = lastError();
        return nullptr;
    }
    File file(::fdopen(descriptor.number(), mode));
    if (file == nullptr) {
        error = lastError();
        return nullptr;
    }
    static_cast<void>(descriptor.release());
    return file;
}

/// What is wrong with a file of this mode for who expects a regular file; nothing when it is one.
std::error_code errorOfKind(mode_t mode) {
    if (S_ISLNK(mode)) {
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    }
    if (S_ISDIR(mode)) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    return S_ISREG(mode) ? std::error_code() : std::make_error_code(std::errc::operation_not_supported);
}

/// The same for the file `name`.
std::error_code errorOfRegularFile(int folder, const char* name) {
    struct stat status {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return lastError();
    }
    return errorOfKind(status.st_mode);
}

/// False when the file at `path` is not the open one (any more).
bool isFileAt(int descriptor, const char* path) {
    struct stat open {};
    struct stat named {};
    return ::fstat(descriptor, &open) == 0 && ::lstat(path, &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

int lockDescriptor(int descriptor, FileLock::Wait wait) {
    const int operation = wait == FileLock::Wait::no ? LOCK_EX | LOCK_NB : LOCK_EX;
    int result = 0;
    do {
        result = ::flock(descriptor, operation);
    } while (result != 0 && errno == EINTR);
    return result;
}

} // namespace

std::filesystem::path pathOf(std::string_view utf8) {
    return {utf8};
}

std::filesystem::path localPathOf(std::string_view utf8) {
    std::string text(utf8);
    std::replace(text.begin(), text.end(), '\\', '/');
    return {std::move(text)};
}

std::string textOf(const std::filesystem::path& path) {
    return path.string();
}

std::optional<std::filesystem::path> pathFromEnvironment(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::optional(std::filesystem::path(text)) : std::nullopt;
}

File openForReading(const std::filesystem::path& path, std::error_code& error) {
    // Without O_NONBLOCK a named pipe that nobody writes to would block the open.
    Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (descriptor.isOpen() && ::fstat(descriptor.number(), &status) == 0 && !S_ISREG(status.st_mode)) {
        error = errorOfKind(status.st_mode);
        return nullptr;
    }
    return streamOn(std::move(descriptor), "rb", error);
}

File createNew(const std::filesystem::path& path, std::error_code& error) {
    return streamOn(Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFileMode)), "wb",
                    error);
}

std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder, std::error_code& error) {
    error.clear();
    std::vector<std::filesystem::path> paths;
    const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(folder.c_str()));
    if (directory == nullptr) {
        error = lastError();
        return paths;
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            paths.push_back(folder / name);
        }
    }
    if (errno != 0) {
        error = lastError();
    }
    return paths;
}

std::error_code moveIntoPlace(const std::filesystem::path& from, const std::filesystem::path& to) {
    return ::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : lastError();
}

std::error_code appendWhole(const std::filesystem::path& path, std::string_view bytes) {
    const Descriptor descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, newFileMode));
    if (!descriptor.isOpen()) {
        return lastError();
    }
    const auto written = ::write(descriptor.number(), bytes.data(), bytes.size());
    if (written < 0) {
        return lastError();
    }
    return static_cast<std::size_t>(written) == bytes.size() ? std::error_code()
                                                             : std::make_error_code(std::errc::no_space_on_device);
}

std::optional<FileLock> FileLock::take(const std::filesystem::path& path, Wait wait, std::error_code& error) {
    error.clear();
    for (;;) {
        Descriptor descriptor(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, newFileMode));
        if (!descriptor.isOpen()) {
            error = lastError();
            return std::nullopt;
        }
        if (lockDescriptor(descriptor.number(), wait) != 0) {
            if (errno != EWOULDBLOCK) {
                error = lastError();
            }
            return std::nullopt;
        }
        // Whoever deleted the file meanwhile has let others lock a new one.
        if (isFileAt(descriptor.number(), path.c_str())) {
            return FileLock(descriptor.release());
        }
    }
}

void FileLock::release() noexcept {
    if (handle_ != none) {
        static_cast<void>(::close(static_cast<int>(handle_)));
        handle_ = none;
    }
}

struct Folder::Impl {
    Descriptor descriptor;
};

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

std::optional<Folder> Folder::open(const std::filesystem::path& path, std::error_code& error) {
    Descriptor descriptor(::open(path.c_str(), folderFlags));
    if (!descriptor.isOpen()) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return Folder(std::make_shared<const Impl>(Impl{std::move(descriptor)}));
}

std::optional<Folder> Folder::enter(const std::string& name, std::error_code& error) const {
    Descriptor descriptor(::openat(impl_->descriptor.number(), name.c_str(), folderFlags));
    if (!descriptor.isOpen()) {
        error = lastError();
        return std::nullopt;
    }
    error.clear();
    return Folder(std::make_shared<const Impl>(Impl{std::move(descriptor)}));
}

std::error_code Folder::makeFolder(const std::string& name) const {
    return ::mkdirat(impl_->descriptor.number(), name.c_str(), newFolderMode) == 0 ? std::error_code() : lastError();
}

File Folder::openFile(const std::string& name, std::error_code& error) const {
    const int folder = impl_->descriptor.number();
    error = errorOfRegularFile(folder, name.c_str());
    if (error) {
        return nullptr;
    }
    return streamOn(Descriptor(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK)), "rb",
                    error);
}

File Folder::createFile(const std::string& name, std::error_code& error) const {
    const int folder = impl_->descriptor.number();
    error = errorOfRegularFile(folder, name.c_str());
    if (error && !isAbsent(error)) {
        return nullptr;
    }
    // A new file instead of the emptied old one: that may have a second name outside the folder.
    if (!error && ::unlinkat(folder, name.c_str(), 0) != 0) {
        error = lastError();
        return nullptr;
    }
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return streamOn(Descriptor(::openat(folder, name.c_str(), flags, newFileMode)), "wb", error);
}

std::error_code Folder::renameFile(const std::string& oldName, const std::string& newName) const {
    const int folder = impl_->descriptor.number();
    if (const std::error_code error = errorOfRegularFile(folder, oldName.c_str())) {
        return error;
    }
    const std::error_code error = errorOfRegularFile(folder, newName.c_str());
    if (error && !isAbsent(error)) {
        return error;
    }
    return ::renameat(folder, oldName.c_str(), folder, newName.c_str()) == 0 ? std::error_code() : lastError();
}

} // namespace SystemFiles
