#include "Files.h"

#include "TextConversion.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
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

bool isRegular(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

/// A file that is open for reading, and its size before it was opened. `descriptor` is -1 if there is none.
struct OpenFile {
    int descriptor = -1;
    std::size_t size = 0;
};

/// Opens what is a regular file when it is looked at. `creation` is 0 or O_CREAT.
OpenFile openUnlessOtherKind(const std::string& path, int creation) {
    constexpr mode_t newFileMode = 0666;
    struct stat status {};
    const bool isThere = stat(path.c_str(), &status) == 0;
    if (isThere && !S_ISREG(status.st_mode)) {
        return {}; // Opening may wait for another process, and does something to some devices.
    }
    // O_NONBLOCK is for what has taken the file's place meanwhile.
    return {open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | creation, newFileMode),
            isThere ? static_cast<std::size_t>(status.st_size) : 0};
}

/// The descriptor of a regular file, open for reading; -1 when there is none. `creation` is 0 or O_CREAT.
int openRegularFile(const std::string& path, int creation) {
    const int file = openUnlessOtherKind(path, creation).descriptor;
    if (file >= 0 && !isRegular(file)) {
        close(file);
        return -1;
    }
    return file;
}

} // namespace

FileStream openForReading(const std::wstring& path) {
    const int file = openRegularFile(nativePath(path), 0);
    if (file < 0) {
        return nullptr;
    }
    FileStream stream(fdopen(file, "rb"));
    if (stream == nullptr) {
        close(file);
    }
    return stream;
}

std::optional<std::size_t> readBeginning(const std::wstring& path, std::span<std::uint8_t> beginning) {
    const OpenFile file = openUnlessOtherKind(nativePath(path), 0);
    if (file.descriptor < 0) {
        return std::nullopt;
    }
    // Pipes, sockets and terminals that have taken the file's place cannot be read at a position. Looking at the file
    // once more, or reading at its end, would cost another call for each file of an archive.
    const std::size_t wanted = file.size > 0 ? std::min(beginning.size(), file.size) : beginning.size();
    std::size_t size = 0;
    ssize_t part = 0;
    do {
        part = pread(file.descriptor, beginning.data() + size, wanted - size, static_cast<off_t>(size));
        size += part > 0 ? static_cast<std::size_t>(part) : 0;
    } while ((part > 0 && size < wanted) || (part < 0 && errno == EINTR));
    close(file.descriptor);
    return part < 0 ? std::nullopt : std::optional(size);
}

bool seekTo(std::FILE& file, std::uint64_t offset) {
    return fseeko(&file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

std::uint64_t sizeOfOpenFile(std::FILE& file) {
    struct stat status {};
    return fstat(fileno(&file), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::string_view otherKindOf(const std::wstring& path) {
    struct stat status {};
    if (stat(nativePath(path).c_str(), &status) != 0) {
        return {};
    }
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return {};
    case S_IFDIR:
        return "a folder";
    case S_IFIFO:
        return "a pipe";
    case S_IFSOCK:
        return "a socket";
    default:
        return "a device";
    }
}

FileStream openForWriting(const std::wstring& path) {
    return FileStream(std::fopen(nativePath(path).c_str(), "wbe"));
}

bool pathExists(const std::wstring& path) {
    return access(nativePath(path).c_str(), F_OK) == 0;
}

bool isAbsent(const std::wstring& path) {
    struct stat status {};
    return lstat(nativePath(path).c_str(), &status) != 0 &&
           (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG);
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
    const int file = openRegularFile(nativePath(path), O_CREAT);
    if (file < 0) {
        return 0;
    }
    struct stat status {};
    const bool known = fstat(file, &status) == 0;
    close(file);
    return known ? static_cast<std::uint64_t>(status.st_size) : 0;
}
