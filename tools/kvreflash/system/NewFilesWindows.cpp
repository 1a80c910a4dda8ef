#include "NewFiles.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <string>
#include <utility>
#include <windows.h>

namespace fs = std::filesystem;

namespace {

struct KnownError {
    DWORD stated;
    int value;
};
constexpr std::array knownErrors{
    KnownError{ERROR_FILE_NOT_FOUND, ENOENT},    KnownError{ERROR_PATH_NOT_FOUND, ENOENT},
    KnownError{ERROR_BAD_NETPATH, ENOENT},       KnownError{ERROR_BAD_NET_NAME, ENOENT},
    KnownError{ERROR_INVALID_DRIVE, ENOENT},     KnownError{ERROR_INVALID_NAME, EINVAL},
    KnownError{ERROR_BAD_PATHNAME, EINVAL},      KnownError{ERROR_FILENAME_EXCED_RANGE, ENAMETOOLONG},
    KnownError{ERROR_DIRECTORY, ENOTDIR},        KnownError{ERROR_ACCESS_DENIED, EACCES},
    KnownError{ERROR_SHARING_VIOLATION, EACCES}, KnownError{ERROR_LOCK_VIOLATION, EACCES},
    KnownError{ERROR_WRITE_PROTECT, EROFS},      KnownError{ERROR_FILE_EXISTS, EEXIST},
    KnownError{ERROR_ALREADY_EXISTS, EEXIST},    KnownError{ERROR_DISK_FULL, ENOSPC},
    KnownError{ERROR_HANDLE_DISK_FULL, ENOSPC},  KnownError{ERROR_CANT_RESOLVE_FILENAME, ELOOP},
    KnownError{ERROR_NOT_ENOUGH_MEMORY, ENOMEM}};

/// What the last failure of the system means.
int lastError() {
    const DWORD stated = GetLastError();
    for (const KnownError& known : knownErrors) {
        if (known.stated == stated) {
            return known.value;
        }
    }
    return EIO;
}

/// As the name of a device, such as NUL and COM1, or of a pipe begins.
bool isDeviceOrPipe(const fs::path& path) {
    constexpr DWORD longest = 32768;
    std::wstring full(longest, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), longest, full.data(), nullptr));
    return full.rfind(L"\\\\.\\", 0) == 0;
}

/// Finds what the link leads to.
int followLink(const fs::path& link, fs::path& found) {
    constexpr DWORD anySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file =
        CreateFileW(link.c_str(), 0, anySharing, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return lastError();
    }
    constexpr DWORD longest = 32768;
    std::wstring name(longest, L'\0');
    const DWORD size = GetFinalPathNameByHandleW(file, name.data(), longest, FILE_NAME_NORMALIZED);
    const int error = size == 0 || size >= longest ? lastError() : 0;
    CloseHandle(file);
    name.resize(error == 0 ? size : 0);
    found = std::move(name);
    return error;
}

bool isLongestNameExceeded(const fs::path& path) {
    constexpr std::size_t longest = 255;
    return path.filename().native().size() > longest;
}

} // namespace

int findWrittenPlace(const fs::path& path, WrittenPlace& place) {
    place = {path, !isDeviceOrPipe(path), false};
    if (!place.isReplaced) {
        return 0;
    }
    if (isLongestNameExceeded(path)) {
        return ENAMETOOLONG;
    }
    DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return path.has_filename() && GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : lastError();
    }
    place.exists = true;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        if (const int error = followLink(path, place.path); error != 0) {
            return error;
        }
        attributes = GetFileAttributesW(place.path.c_str());
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return EISDIR;
    }
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? EACCES : 0;
}

int openAsItIs(const fs::path& path) {
    return _wopen(path.c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
}

int createNewFile(const fs::path& path) {
    // Whoever ends the tool may remove the file while it is open.
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        errno = lastError();
        return -1;
    }
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) {
        CloseHandle(file);
        DeleteFileW(path.c_str());
    }
    return descriptor;
}

int takeRights(int /*descriptor*/, const fs::path& /*existing*/) {
    return 0; // a file has the rights of its folder
}

int reserveRoom(int descriptor, std::uint64_t size) {
    const int error = _chsize_s(descriptor, static_cast<long long>(size));
    return error == ENOSPC ? error : 0;
}

int finishFile(int descriptor, std::uint64_t size) {
    int error = _chsize_s(descriptor, static_cast<long long>(size));
    if (error == 0 && _commit(descriptor) != 0) {
        error = errno;
    }
    if (_close(descriptor) != 0 && error == 0) {
        error = errno;
    }
    return error;
}

void closeFile(int descriptor) {
    _close(descriptor);
}

int replaceFile(const fs::path& file, const fs::path& replaced) {
    // Another program may hold the file for a moment, a tool that replaces it at the same time among them.
    constexpr int attempts = 50;
    constexpr DWORD pause = 20;
    int error = 0;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (MoveFileExW(file.c_str(), replaced.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return 0;
        }
        error = lastError();
        if (error != EACCES) {
            break;
        }
        Sleep(pause);
    }
    return error;
}
