#include "NewFiles.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// The standard stream whose file, pipe or device this is, if it can be written to; negative if there is none.
int standardStreamOf(const struct stat& status) {
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat stream {};
        const bool isOpen = fstat(descriptor, &stream) == 0 && (fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY;
        if (isOpen && stream.st_dev == status.st_dev && stream.st_ino == status.st_ino) {
            return descriptor;
        }
    }
    return -1;
}

/// Why a file cannot be replaced although one can be created beside it.
int errorOfReplacing(const fs::path& file) {
    struct statx found {};
    if (statx(AT_FDCWD, file.c_str(), AT_SYMLINK_NOFOLLOW, STATX_UID, &found) != 0) {
        return errno == ENOSYS ? 0 : errno;
    }
    if ((found.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) {
        return EPERM;
    }
    if ((found.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
        return EBUSY;
    }
    // Where everybody may create files, such as in /tmp, nobody may replace those of others.
    struct stat folder {};
    const bool isShared = stat(folderOf(file).c_str(), &folder) == 0 && (folder.st_mode & S_ISVTX) != 0;
    const uid_t user = geteuid();
    return isShared && user != 0 && user != found.stx_uid && user != folder.st_uid ? EPERM : 0;
}

/// A place that nothing is at, as far as links are followed.
int errorOfNewPlace(const fs::path& path) {
    struct stat link {};
    return !path.has_filename() || lstat(path.c_str(), &link) == 0 ? ENOENT : 0;
}

} // namespace

int findWrittenPlace(const fs::path& path, WrittenPlace& place) {
    place = {path, true, false};
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? errorOfNewPlace(path) : errno;
    }
    place.exists = true;
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    place.isReplaced = S_ISREG(status.st_mode) && standardStreamOf(status) < 0;
    if (!place.isReplaced) {
        return 0;
    }
    std::error_code fault;
    if (fs::is_symlink(path, fault)) {
        place.path = fs::canonical(path, fault);
    }
    return fault ? fault.value() : errorOfReplacing(place.path);
}

int openAsItIs(const fs::path& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return -1;
    }
    if (const int stream = standardStreamOf(status); stream >= 0) {
        return fcntl(stream, F_DUPFD_CLOEXEC, 0);
    }
    // Opening a pipe waits for its reader otherwise.
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    const int flags = descriptor < 0 ? -1 : fcntl(descriptor, F_GETFL);
    const bool isOpen = flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
    // A device that is always full says so even if it is given nothing.
    if (isOpen && (!S_ISCHR(status.st_mode) || write(descriptor, "", 0) == 0)) {
        return descriptor;
    }
    if (descriptor >= 0) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return -1;
}

int createNewFile(const fs::path& path) {
    constexpr mode_t anyRights = 0666;
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, anyRights);
}

int takeRights(int descriptor, const fs::path& existing) {
    constexpr mode_t rights = 0777;
    struct stat status {};
    if (stat(existing.c_str(), &status) != 0) {
        return errno;
    }
    // Only some users may give files away.
    std::ignore = fchown(descriptor, status.st_uid, status.st_gid);
    return fchmod(descriptor, status.st_mode & rights) == 0 ? 0 : errno;
}

int reserveRoom(int descriptor, std::uint64_t size) {
    rlimit limit{};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur < size) {
        size = limit.rlim_cur;
    }
    const int error = size == 0 ? 0 : posix_fallocate(descriptor, 0, static_cast<off_t>(size));
    return error == ENOSPC || error == EDQUOT || error == EIO ? error : 0;
}

int finishFile(int descriptor, std::uint64_t size) {
    int error = ftruncate(descriptor, static_cast<off_t>(size)) == 0 && fsync(descriptor) == 0 ? 0 : errno;
    if (close(descriptor) != 0 && error == 0) {
        error = errno;
    }
    return error;
}

void closeFile(int descriptor) {
    close(descriptor);
}

int replaceFile(const fs::path& file, const fs::path& replaced) {
    if (rename(file.c_str(), replaced.c_str()) != 0) {
        return errno;
    }
    const int folder = open(folderOf(replaced).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) {
        return 0; // it may be written to without being read
    }
    // Not every file system has folders that it could write.
    const int error = fsync(folder) == 0 || errno == EINVAL ? 0 : errno;
    close(folder);
    return error;
}
