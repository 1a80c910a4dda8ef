#include "Files.h"

#include "TextConversion.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string nativePath(const std::wstring& path) {
    std::string result = wideToUtf8(path.c_str());
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

} // namespace

FileStream openForReading(const std::wstring& path) {
    return FileStream(std::fopen(nativePath(path).c_str(), "rbe"));
}

FileStream openForWriting(const std::wstring& path) {
    return FileStream(std::fopen(nativePath(path).c_str(), "wbe"));
}

bool pathExists(const std::wstring& path) {
    return access(nativePath(path).c_str(), F_OK) == 0;
}

bool hasFileAttributes(const std::wstring& path) {
    struct stat status {};
    return stat(nativePath(path).c_str(), &status) == 0;
}

bool isLink(const std::wstring& path) {
    struct stat status {};
    return lstat(nativePath(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::string resolvedPath(const std::wstring& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(nativePath(path).c_str(), nullptr), &std::free);
    return resolved != nullptr ? std::string(resolved.get()) : std::string();
}

std::uint64_t sizeOfFileCreatedIfMissing(const std::wstring& path) {
    const int file = open(nativePath(path).c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) {
        return 0;
    }
    struct stat status {};
    const bool known = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    close(file);
    return known ? static_cast<std::uint64_t>(status.st_size) : 0;
}
