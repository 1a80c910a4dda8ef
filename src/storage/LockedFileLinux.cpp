#include "LockedFile.h"

#include "TextConversion.h"
#include "WholeFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

struct KvCLockedFile::State {
    int file = -1;
    std::string path;
};

namespace {

std::string nativePath(const std::wstring& path) {
    std::string native = wideToUtf8(path.c_str());
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

/// Of the whole file. The lock belongs to the opened file, not to the process, so that two of a process exclude each
/// other, too.
struct flock wholeFile(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

/// A file that was created is found after a loss of power only if its folder is on the disk, too.
void flushFolderOf(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int opened = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened >= 0) {
        (void)fsync(opened);
        close(opened);
    }
}

} // namespace

KvCLockedFile::KvCLockedFile(std::unique_ptr<State> state) : state_(std::move(state)) {}

KvCLockedFile::~KvCLockedFile() {
    close(state_->file);
}

std::unique_ptr<KvCLockedFile> KvCLockedFile::open(const std::wstring& path, bool isNew, std::string& reason) {
    constexpr mode_t ownRights = 0600;
    auto state = std::make_unique<State>();
    state->path = nativePath(path);
    const int flags = O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | (isNew ? O_EXCL : 0);
    state->file = ::open(state->path.c_str(), flags, ownRights);
    if (state->file < 0) {
        reason = std::strerror(errno);
        return nullptr;
    }
    std::unique_ptr<KvCLockedFile> file(new KvCLockedFile(std::move(state)));
    struct flock lock = wholeFile(F_WRLCK);
    if (fcntl(file->state_->file, F_OFD_SETLK, &lock) != 0) {
        reason = errno == EACCES || errno == EAGAIN ? "" : std::strerror(errno);
        return nullptr;
    }
    if (isNew) {
        flushFolderOf(file->state_->path);
    }
    return file;
}

std::unique_ptr<KvCLockedFile> KvCLockedFile::create(const std::wstring& path, std::string& reason) {
    return open(path, true, reason);
}

std::unique_ptr<KvCLockedFile> KvCLockedFile::take(const std::wstring& path, std::string& reason) {
    return open(path, false, reason);
}

bool KvCLockedFile::isHeld(const std::wstring& path) {
    const int file = ::open(nativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return false;
    }
    struct flock lock = wholeFile(F_RDLCK);
    const bool isHeld = fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(file);
    return isHeld;
}

std::optional<std::string> KvCLockedFile::contentOf(const std::wstring& path, std::uint64_t most) {
    return textOfFile(path, most);
}

bool KvCLockedFile::append(std::string_view bytes, std::string& reason) {
    while (!bytes.empty()) {
        const ssize_t written = write(state_->file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            reason = std::strerror(errno);
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool KvCLockedFile::flush(std::string& reason) {
    if (fsync(state_->file) == 0) {
        return true;
    }
    reason = std::strerror(errno);
    return false;
}

void KvCLockedFile::remove() {
    (void)unlink(state_->path.c_str());
}

std::string makeFolders(const std::wstring& path) {
    constexpr mode_t ownRights = 0700;
    const std::string native = nativePath(path);
    for (std::size_t end = native.find('/', 1); end != std::string::npos; end = native.find('/', end + 1)) {
        (void)mkdir(native.substr(0, end).c_str(), ownRights); // what is missing then shows at the next one
    }
    if (mkdir(native.c_str(), ownRights) == 0) {
        return {};
    }
    const int error = errno;
    struct stat status {};
    const bool isFolder = stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder ? std::string() : std::strerror(error == EEXIST ? ENOTDIR : error);
}

bool removeFile(const std::wstring& path) {
    return unlink(nativePath(path).c_str()) == 0 || errno == ENOENT;
}
