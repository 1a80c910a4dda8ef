#include "SystemFiles.h"

#include "OtherKind.h"

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
    switch (mode & S_IFMT) {
    case S_IFREG:
        return {};
    case S_IFLNK:
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    case S_IFDIR:
        return std::make_error_code(std::errc::is_a_directory);
    case S_IFIFO:
        return OtherKind::pipe;
    case S_IFSOCK:
        return OtherKind::socket;
    default:
        return OtherKind::device;
    }
}

/// The same for the file `name`; `linkFlag` is AT_SYMLINK_NOFOLLOW, or 0 for what a link leads to.
std::error_code errorOfRegularFile(int folder, const char* name, int linkFlag = AT_SYMLINK_NOFOLLOW) {
    struct stat status {};
    return ::fstatat(folder, name, &status, linkFlag) == 0 ? errorOfKind(status.st_mode) : lastError();
}

/// The same for an open file.
std::error_code errorOfOpenFile(const Descriptor& file) {
    struct stat status {};
    return ::fstat(file.number(), &status) == 0 ? errorOfKind(status.st_mode) : lastError();
}

/// Opens a regular file for reading; null with `error` for anything else. `linkFlag` as above.
File openRegularFile(int folder, const char* name, int linkFlag, std::error_code& error) {
    // Opening may wait for another process, and does something to some devices.
    error = errorOfRegularFile(folder, name, linkFlag);
    if (error) {
        return nullptr;
    }
    // O_NONBLOCK is for what has taken the file's place meanwhile.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (linkFlag != 0 ? O_NOFOLLOW : 0);
    Descriptor descriptor(::openat(folder, name, flags));
    if (descriptor.isOpen()) {
        error = errorOfOpenFile(descriptor);
    }
    return error ? nullptr : streamOn(std::move(descriptor), "rb", error);
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
    return openRegularFile(AT_FDCWD, path.c_str(), 0, error);
}

std::uint64_t sizeOf(std::FILE& file) {
    struct stat status {};
    return ::fstat(::fileno(&file), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
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
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    // Without O_NONBLOCK the opening of a pipe waits for a reader. The reader, once there, is waited for.
    const Descriptor descriptor(::open(path.c_str(), flags | O_NONBLOCK, newFileMode));
    if (!descriptor.isOpen() || ::fcntl(descriptor.number(), F_SETFL, flags) != 0) {
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
        error = errorOfOpenFile(descriptor);
        if (error) {
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
    return openRegularFile(impl_->descriptor.number(), name.c_str(), AT_SYMLINK_NOFOLLOW, error);
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
