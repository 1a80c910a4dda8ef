#include "LockedFile.h"

#include "TextConversion.h"

#include <array>
#include <system_error>
#include <windows.h>

struct KvCLockedFile::State {
    HANDLE file = INVALID_HANDLE_VALUE;
    std::wstring path;
};

namespace {

std::string textOfError(DWORD error) {
    return std::system_category().message(static_cast<int>(error));
}

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OpenHandle = std::unique_ptr<void, HandleCloser>;

constexpr DWORD anySharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool isFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

KvCLockedFile::KvCLockedFile(std::unique_ptr<State> state) : state_(std::move(state)) {}

KvCLockedFile::~KvCLockedFile() {
    CloseHandle(state_->file);
}

/// Who has opened it for writing, without sharing that, holds it.
std::unique_ptr<KvCLockedFile> KvCLockedFile::open(const std::wstring& path, bool isNew, std::string& reason) {
    auto state = std::make_unique<State>();
    state->path = path;
    state->file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                              nullptr, isNew ? CREATE_NEW : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (state->file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        reason = error == ERROR_SHARING_VIOLATION ? std::string() : textOfError(error);
        return nullptr;
    }
    return std::unique_ptr<KvCLockedFile>(new KvCLockedFile(std::move(state)));
}

std::unique_ptr<KvCLockedFile> KvCLockedFile::create(const std::wstring& path, std::string& reason) {
    return open(path, true, reason);
}

std::unique_ptr<KvCLockedFile> KvCLockedFile::take(const std::wstring& path, std::string& reason) {
    return open(path, false, reason);
}

bool KvCLockedFile::isHeld(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, anySharing, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_SHARING_VIOLATION;
    }
    CloseHandle(file);
    return false;
}

std::optional<std::string> KvCLockedFile::contentOf(const std::wstring& path, std::uint64_t most) {
    const HANDLE opened = CreateFileW(path.c_str(), GENERIC_READ, anySharing, nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    const OpenHandle file(opened);
    std::string content;
    constexpr std::size_t pieceSize = 65536;
    std::string piece(pieceSize, '\0');
    for (;;) {
        DWORD size = 0;
        if (ReadFile(opened, piece.data(), static_cast<DWORD>(piece.size()), &size, nullptr) == 0 ||
            content.size() + size > most) {
            return std::nullopt;
        }
        if (size == 0) {
            return content;
        }
        content.append(piece, 0, size);
    }
}

bool KvCLockedFile::append(std::string_view bytes, std::string& reason) {
    LARGE_INTEGER none{};
    bool isWritten = SetFilePointerEx(state_->file, none, nullptr, FILE_END) != 0;
    while (isWritten && !bytes.empty()) {
        DWORD size = 0;
        isWritten = WriteFile(state_->file, bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr) != 0;
        bytes.remove_prefix(size);
    }
    if (!isWritten) {
        reason = textOfError(GetLastError());
    }
    return isWritten;
}

bool KvCLockedFile::flush(std::string& reason) {
    if (FlushFileBuffers(state_->file) != 0) {
        return true;
    }
    reason = textOfError(GetLastError());
    return false;
}

void KvCLockedFile::remove() {
    (void)DeleteFileW(state_->path.c_str());
}

std::string makeFolders(const std::wstring& path) {
    for (std::size_t end = path.find_first_of(L"\\/", 1); end != std::wstring::npos;
         end = path.find_first_of(L"\\/", end + 1)) {
        (void)CreateDirectoryW(path.substr(0, end).c_str(), nullptr); // what is missing then shows at the next one
    }
    if (CreateDirectoryW(path.c_str(), nullptr) != 0) {
        return {};
    }
    const DWORD error = GetLastError();
    return isFolder(path) ? std::string() : textOfError(error == ERROR_ALREADY_EXISTS ? ERROR_DIRECTORY : error);
}

bool removeFile(const std::wstring& path) {
    return DeleteFileW(path.c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
}
