#include "PrivatePlaces.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

struct KvCPrivateFolder::Lock::State {
    int file;
};

KvCPrivateFolder::Lock::Lock(std::unique_ptr<State> state) : state_(std::move(state)) {}

KvCPrivateFolder::Lock::~Lock() {
    close(state_->file);
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::open(const std::filesystem::path& file, bool isNew) {
    constexpr mode_t ownRights = 0600;
    auto state = std::make_unique<State>();
    state->file = ::open(file.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | (isNew ? O_CREAT | O_EXCL : 0), ownRights);
    if (state->file < 0) {
        return nullptr;
    }
    std::unique_ptr<Lock> lock(new Lock(std::move(state)));
    struct stat status {};
    // Somebody may have taken a new file for one that was left, and removed it.
    const bool isHeld = flock(lock->state_->file, LOCK_EX | LOCK_NB) == 0 && fstat(lock->state_->file, &status) == 0 &&
                        status.st_nlink > 0;
    if (!isHeld) {
        lock.reset();
    }
    return lock;
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::make(const std::filesystem::path& file) {
    return open(file, true);
}

std::unique_ptr<KvCPrivateFolder::Lock> KvCPrivateFolder::Lock::take(const std::filesystem::path& file) {
    return open(file, false);
}

std::filesystem::path temporaryFolder() {
    const char* const chosen = std::getenv("TMPDIR");
    const std::filesystem::path folder = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
    std::error_code fault;
    return is_directory(folder, fault) ? folder : std::filesystem::path();
}

bool makeOwnFolder(const std::filesystem::path& folder) {
    constexpr mode_t ownRights = 0700;
    return mkdir(folder.c_str(), ownRights) == 0;
}

bool isOwnFolder(const std::filesystem::path& folder) {
    struct stat status {};
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

bool isSafeForFolders(const std::filesystem::path& folder) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0 || (status.st_uid != geteuid() && status.st_uid != 0)) {
        return false;
    }
    return (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (status.st_mode & S_ISVTX) != 0;
}
