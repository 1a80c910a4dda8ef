#include "Files.h"

#include "TextConversion.h"

#include <algorithm>
#include <array>
#include <io.h>
#include <string_view>
#include <utility>
#include <windows.h>

namespace {

FileStream openFile(const std::wstring& path, const wchar_t* mode) {
    std::FILE* file = nullptr;
    return FileStream(_wfopen_s(&file, path.c_str(), mode) == 0 ? file : nullptr);
}

/// Gives a handle back at the end of its scope.
struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OpenHandle = std::unique_ptr<void, HandleCloser>;

/// True when the system takes the path for a device: NUL and COM1 in any folder, on older systems aux.ini, too. Asked
/// before anything is opened: a console or a port may keep whoever reads it waiting.
bool isDevicePath(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.starts_with(LR"(\\.\)");
}

HANDLE handleOf(std::FILE& file) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(&file)));
}

/// A file or folder; null when there is none. Its contents may not be read.
OpenHandle openToLookAt(std::wstring path) {
    // Paths without limit of their length know no "/".
    std::replace(path.begin(), path.end(), L'/', L'\\');
    HANDLE handle = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    return OpenHandle(handle != INVALID_HANDLE_VALUE ? handle : nullptr);
}

} // namespace

FileStream openForReading(const std::wstring& path) {
    if (isDevicePath(path)) {
        return nullptr;
    }
    FileStream file = openFile(path, L"rb");
    return file != nullptr && GetFileType(handleOf(*file)) == FILE_TYPE_DISK ? std::move(file) : nullptr;
}

std::optional<std::size_t> readBeginning(const std::wstring& path, std::span<std::uint8_t> beginning) {
    const FileStream file = openForReading(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    // A buffer would cost more than the one read that fills `beginning`.
    (void)std::setvbuf(file.get(), nullptr, _IONBF, 0);
    const std::size_t size = std::fread(beginning.data(), 1, beginning.size(), file.get());
    return std::ferror(file.get()) == 0 ? std::optional(size) : std::nullopt;
}

bool seekTo(std::FILE& file, std::uint64_t offset) {
    return _fseeki64(&file, static_cast<long long>(offset), SEEK_SET) == 0;
}

std::uint64_t sizeOfOpenFile(std::FILE& file) {
    LARGE_INTEGER size{};
    return GetFileSizeEx(handleOf(file), &size) != 0 ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

std::string_view otherKindOf(const std::wstring& path) {
    if (isDevicePath(path)) {
        return "a device";
    }
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return "a folder";
    }
    const OpenHandle file = openToLookAt(path);
    const DWORD type = file != nullptr ? GetFileType(file.get()) : FILE_TYPE_DISK;
    if (type == FILE_TYPE_DISK) {
        return {};
    }
    return type == FILE_TYPE_PIPE ? "a pipe" : "a device";
}

FileStream openForWriting(const std::wstring& path) {
    return openFile(path, L"wb");
}

bool pathExists(const std::wstring& path) {
    return _waccess(path.c_str(), 0) == 0;
}

bool isAbsent(const std::wstring& path) {
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    // Of a share that does not answer nobody knows what it holds.
    constexpr std::array<DWORD, 5> noSuchFile{ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME,
                                              ERROR_BAD_PATHNAME, ERROR_FILENAME_EXCED_RANGE};
    return std::find(noSuchFile.begin(), noSuchFile.end(), GetLastError()) != noSuchFile.end();
}

bool hasFileAttributes(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isLink(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

std::string resolvedPath(const std::wstring& path) {
    const OpenHandle file = openToLookAt(path);
    if (file == nullptr) {
        return {};
    }
    // The first call counts the zero at the end, the second one does not.
    std::wstring resolved(GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    resolved.resize(GetFinalPathNameByHandleW(file.get(), resolved.data(), static_cast<DWORD>(resolved.size()),
                                              FILE_NAME_NORMALIZED));
    if (resolved.starts_with(LR"(\\?\)") && !resolved.starts_with(LR"(\\?\UNC\)")) {
        resolved.erase(0, std::wstring_view(LR"(\\?\)").size());
    }
    std::replace(resolved.begin(), resolved.end(), L'\\', L'/');
    return wideToUtf8(resolved.c_str());
}

std::uint64_t sizeOfFileCreatedIfMissing(const std::wstring& path) {
    if (isDevicePath(path)) {
        return 0;
    }
    HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 0;
    }
    LARGE_INTEGER size{};
    const bool known = GetFileType(file) == FILE_TYPE_DISK && GetFileSizeEx(file, &size) != 0;
    CloseHandle(file);
    return known ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}
