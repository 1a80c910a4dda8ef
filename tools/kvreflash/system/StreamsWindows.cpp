#include "Streams.h"

#include <algorithm>
#include <cerrno>
#include <io.h>
#include <windows.h>

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return false;
}

std::FILE* createFile(const std::filesystem::path& path) {
    std::FILE* file = nullptr;
    return _wfopen_s(&file, path.c_str(), L"wb") == 0 ? file : nullptr;
}

int descriptorOf(std::FILE* stream) {
    return _fileno(stream);
}

bool waitsForReader(int descriptor) {
    if (descriptor < 0) {
        return false;
    }
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    return handle != INVALID_HANDLE_VALUE && GetFileType(handle) != FILE_TYPE_DISK;
}

bool writeBytes(int descriptor, std::string_view bytes) {
    if (descriptor < 0) {
        errno = EBADF;
        return false;
    }
    constexpr std::size_t mostAtOnce = 1U << 20U;
    while (!bytes.empty()) {
        const int written = _write(descriptor, bytes.data(), static_cast<unsigned>(std::min(bytes.size(), mostAtOnce)));
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::size_t writeWithoutWaiting(int /*descriptor*/, std::string_view /*bytes*/) {
    return 0;
}

void keepSignalsFromThread() {}
