#include "Files.h"

#include <io.h>
#include <windows.h>

namespace {

FileStream openFile(const std::wstring& path, const wchar_t* mode) {
    std::FILE* file = nullptr;
    return FileStream(_wfopen_s(&file, path.c_str(), mode) == 0 ? file : nullptr);
}

} // namespace

FileStream openForReading(const std::wstring& path) {
    return openFile(path, L"rb");
}

FileStream openForWriting(const std::wstring& path) {
    return openFile(path, L"wb");
}

bool pathExists(const std::wstring& path) {
    return _waccess(path.c_str(), 0) == 0;
}

bool hasFileAttributes(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::uint64_t sizeOfFileCreatedIfMissing(const std::wstring& path) {
    HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return 0;
    }
    LARGE_INTEGER size{};
    const bool known = GetFileSizeEx(file, &size) != 0;
    CloseHandle(file);
    return known ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}
