#include "SystemFiles.h"

#include "OtherKind.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <utility>
#include <windows.h>

namespace SystemFiles {

namespace {

/// How often and after what pause in milliseconds a rename is tried again while another process reads the file.
constexpr int renameAttempts = 100;
constexpr DWORD renamePause = 2;

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::error_code lastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

/// A handle that is closed at the end of its scope.
class Handle {
public:
    explicit Handle(HANDLE handle) noexcept : handle_(handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    Handle& operator=(Handle&&) = delete;
    ~Handle() {
        if (isOpen()) {
            CloseHandle(handle_);
        }
    }

    [[nodiscard]] bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const noexcept { return handle_; }
    [[nodiscard]] HANDLE release() noexcept { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

private:
    HANDLE handle_;
};

/// A search of files that is closed at the end of its scope.
class Search {
public:
    explicit Search(HANDLE handle) noexcept : handle_(handle) {}
    Search(const Search&) = delete;
    Search(Search&&) = delete;
    Search& operator=(const Search&) = delete;
    Search& operator=(Search&&) = delete;
    ~Search() {
        if (isOpen()) {
            FindClose(handle_);
        }
    }

    [[nodiscard]] bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const noexcept { return handle_; }

private:
    HANDLE handle_;
};

/// The stream on `handle`; null with `error` when the handle is not open.
File streamOn(Handle handle, bool reading, std::error_code& error) {
    error.clear();
    if (!handle.isOpen()) {
        error = lastError();
        return nullptr;
    }
    const int flags = _O_BINARY | _O_NOINHERIT | (reading ? _O_RDONLY : _O_WRONLY);
    const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle.get()), flags);
    if (descriptor < 0) {
        error = {errno, std::generic_category()};
        return nullptr;
    }
    static_cast<void>(handle.release());
    File file(_fdopen(descriptor, reading ? "rb" : "wb"));
    if (file == nullptr) {
        error = {errno, std::generic_category()};
        _close(descriptor);
    }
    return file;
}

/// What is wrong with a file of these attributes for who expects a regular file.
std::error_code errorOfAttributes(DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return std::make_error_code(std::errc::too_many_symbolic_link_levels);
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    return {};
}

/// True when the system takes the path for a device: NUL and COM1 in any folder, on older systems aux.ini, too.
bool isDevicePath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.starts_with(L"\\\\.\\");
}

std::error_code errorOfRegularFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? lastError() : errorOfAttributes(attributes);
}

std::wstring wideOf(std::string_view utf8) {
    const auto length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), size);
    return text;
}

/// `path` in the form that is taken as it stands: names such as NUL or "a." are ordinary ones in it.
std::wstring verbatim(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    std::wstring text = (error ? path : absolute).lexically_normal().native();
    for (wchar_t& character : text) {
        character = character == L'/' ? L'\\' : character;
    }
    if (text.starts_with(L"\\\\?\\") || text.size() < 2) {
        return text;
    }
    return text.starts_with(L"\\\\") ? L"\\\\?\\UNC" + text.substr(1) : L"\\\\?\\" + text;
}

Handle openHandle(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags = 0) {
    return Handle(
        CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL | flags, nullptr));
}

/// Renames, trying again while another process has the replaced file open.
std::error_code rename(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) {
            return {};
        }
        const DWORD code = GetLastError();
        const bool inUse = code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION;
        if (!inUse || attempt == renameAttempts) {
            return {static_cast<int>(code), std::system_category()};
        }
        Sleep(renamePause);
    }
}

} // namespace

std::filesystem::path pathOf(std::string_view utf8) {
    return {wideOf(utf8)};
}

std::filesystem::path localPathOf(std::string_view utf8) {
    return pathOf(utf8);
}

std::string textOf(const std::filesystem::path& path) {
    const std::wstring& wide = path.native();
    const auto length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), size, nullptr, nullptr);
    return text;
}

std::optional<std::filesystem::path> pathFromEnvironment(const char* name) {
    const wchar_t* const text = _wgetenv(wideOf(name).c_str());
    return text != nullptr && *text != L'\0' ? std::optional(std::filesystem::path(text)) : std::nullopt;
}

File openForReading(const std::filesystem::path& path, std::error_code& error) {
    error.clear();
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (isDevicePath(path.native())) {
        error = OtherKind::device;
    } else if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        error = std::make_error_code(std::errc::is_a_directory);
    }
    if (error) {
        return nullptr;
    }
    Handle file = openHandle(path.native(), GENERIC_READ, shareAll, OPEN_EXISTING);
    const DWORD type = file.isOpen() ? GetFileType(file.get()) : FILE_TYPE_DISK;
    if (type != FILE_TYPE_DISK) {
        error = type == FILE_TYPE_PIPE ? OtherKind::pipe : OtherKind::device;
        return nullptr;
    }
    return streamOn(std::move(file), true, error);
}

std::uint64_t sizeOf(std::FILE& file) {
    LARGE_INTEGER size{};
    HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(&file)));
    return GetFileSizeEx(handle, &size) != 0 ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

File createNew(const std::filesystem::path& path, std::error_code& error) {
    return streamOn(openHandle(path.native(), GENERIC_WRITE, shareAll, CREATE_NEW), false, error);
}

std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder, std::error_code& error) {
    error.clear();
    std::vector<std::filesystem::path> paths;
    WIN32_FIND_DATAW entry{};
    const std::filesystem::path everything = folder / L"*";
    const Search search(FindFirstFileW(everything.c_str(), &entry));
    for (bool isFound = search.isOpen(); isFound; isFound = FindNextFileW(search.get(), &entry) != 0) {
        const std::wstring_view name(entry.cFileName);
        if (name != L"." && name != L"..") {
            paths.push_back(folder / name);
        }
    }
    if (GetLastError() != ERROR_NO_MORE_FILES) {
        error = lastError();
    }
    return paths;
}

std::error_code moveIntoPlace(const std::filesystem::path& from, const std::filesystem::path& to) {
    return rename(from.native(), to.native());
}

std::error_code appendWhole(const std::filesystem::path& path, std::string_view bytes) {
    const Handle file = openHandle(path.native(), FILE_APPEND_DATA, shareAll, OPEN_ALWAYS);
    if (!file.isOpen()) {
        return lastError();
    }
    DWORD written = 0;
    if (WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == 0) {
        return lastError();
    }
    return written == bytes.size() ? std::error_code() : std::make_error_code(std::errc::no_space_on_device);
}

std::optional<FileLock> FileLock::take(const std::filesystem::path& path, Wait wait, std::error_code& error) {
    error.clear();
    // Not shared for deletion: while somebody holds the file open, nobody can put another one in its place.
    Handle file = openHandle(path.native(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             OPEN_ALWAYS, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file.isOpen()) {
        error = lastError();
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    if (GetFileInformationByHandle(file.get(), &information) == 0) {
        error = lastError();
        return std::nullopt;
    }
    error = errorOfAttributes(information.dwFileAttributes);
    if (error) {
        return std::nullopt;
    }
    OVERLAPPED start{};
    const DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | (wait == Wait::no ? LOCKFILE_FAIL_IMMEDIATELY : 0);
    if (LockFileEx(file.get(), flags, 0, 1, 0, &start) == 0) {
        const DWORD code = GetLastError();
        if (code != ERROR_LOCK_VIOLATION && code != ERROR_IO_PENDING) {
            error = {static_cast<int>(code), std::system_category()};
        }
        return std::nullopt;
    }
    return FileLock(reinterpret_cast<std::intptr_t>(file.release()));
}

void FileLock::release() noexcept {
    if (handle_ != none) {
        HANDLE file = reinterpret_cast<HANDLE>(handle_);
        OVERLAPPED start{};
        UnlockFileEx(file, 0, 1, 0, &start);
        CloseHandle(file);
        handle_ = none;
    }
}

/// There are no operations relative to an open folder: the open handle keeps the folder from being moved or replaced.
struct Folder::Impl {
    Handle handle;
    std::wstring path;

    [[nodiscard]] std::wstring below(const std::string& name) const { return path + L"\\" + wideOf(name); }

    /// The folder at `path` itself; null with `error` if it is not a folder, or a link.
    static std::shared_ptr<const Impl> openFolder(std::wstring path, std::error_code& error) {
        Handle handle = openHandle(path, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                                   FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
        BY_HANDLE_FILE_INFORMATION information{};
        if (!handle.isOpen() || GetFileInformationByHandle(handle.get(), &information) == 0) {
            error = lastError();
            return nullptr;
        }
        error = errorOfAttributes(information.dwFileAttributes);
        if (error != std::errc::is_a_directory) {
            error = error ? error : std::make_error_code(std::errc::not_a_directory);
            return nullptr;
        }
        error.clear();
        return std::make_shared<const Impl>(Impl{std::move(handle), std::move(path)});
    }
};

std::optional<Folder> Folder::open(const std::filesystem::path& path, std::error_code& error) {
    auto impl = Impl::openFolder(verbatim(path), error);
    return impl != nullptr ? std::optional(Folder(std::move(impl))) : std::nullopt;
}

std::optional<Folder> Folder::enter(const std::string& name, std::error_code& error) const {
    auto impl = Impl::openFolder(impl_->below(name), error);
    return impl != nullptr ? std::optional(Folder(std::move(impl))) : std::nullopt;
}

std::error_code Folder::makeFolder(const std::string& name) const {
    return CreateDirectoryW(impl_->below(name).c_str(), nullptr) != 0 ? std::error_code() : lastError();
}

File Folder::openFile(const std::string& name, std::error_code& error) const {
    const std::wstring path = impl_->below(name);
    error = errorOfRegularFile(path);
    if (error) {
        return nullptr;
    }
    return streamOn(openHandle(path, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT), true, error);
}

File Folder::createFile(const std::string& name, std::error_code& error) const {
    const std::wstring path = impl_->below(name);
    error = errorOfRegularFile(path);
    if (error && !isAbsent(error)) {
        return nullptr;
    }
    // A new file instead of the emptied old one: that may have a second name outside the folder.
    if (!error && DeleteFileW(path.c_str()) == 0) {
        error = lastError();
        return nullptr;
    }
    return streamOn(openHandle(path, GENERIC_WRITE, shareAll, CREATE_NEW), false, error);
}

std::error_code Folder::renameFile(const std::string& oldName, const std::string& newName) const {
    const std::wstring from = impl_->below(oldName);
    const std::wstring to = impl_->below(newName);
    if (const std::error_code error = errorOfRegularFile(from)) {
        return error;
    }
    const std::error_code error = errorOfRegularFile(to);
    if (error && !isAbsent(error)) {
        return error;
    }
    return rename(from, to);
}

} // namespace SystemFiles
