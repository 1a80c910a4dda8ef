#include "ReplacedFile.h"

#include "NewFiles.h"
#include "Streams.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <random>
#include <set>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// Most reports fit; of a longer one the rest may still meet a full disk.
constexpr std::uint64_t reservedRoom = 1U << 20U;

/// The temporary files of the process.
struct Temporaries {
    std::mutex mutex;
    std::set<fs::path> paths;
};

/// Never destroyed: a process may end on one thread while another one still writes.
Temporaries& temporaries() {
    static auto* const all = new Temporaries;
    return *all;
}

void keepInMind(const fs::path& path) {
    const std::lock_guard lock(temporaries().mutex);
    temporaries().paths.insert(path);
}

void forget(const fs::path& path) {
    const std::lock_guard lock(temporaries().mutex);
    temporaries().paths.erase(path);
}

/// A name that says what the file is, and that nobody else comes upon. It is short: the name of the file that it is to
/// become may be as long as names can be.
fs::path temporaryName() {
    std::random_device random;
    std::array<char, 40> name{};
    std::snprintf(name.data(), name.size(), ".kvreflash-%08x%08x.tmp", random(), random());
    return name.data();
}

} // namespace

ReplacedFile::ReplacedFile(ReplacedFile&& other) noexcept
    : file_(std::move(other.file_)), temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::exchange(other.descriptor_, -1)), size_(std::exchange(other.size_, 0)) {}

int ReplacedFile::open(const fs::path& path) {
    discard();
    WrittenPlace place;
    if (const int error = findWrittenPlace(path, place); error != 0) {
        return error;
    }
    file_ = place.path;
    if (place.isReplaced) {
        return createTemporary(place.exists);
    }
    descriptor_ = openAsItIs(file_);
    return descriptor_ < 0 ? errno : 0;
}

int ReplacedFile::createTemporary(bool replacesFile) {
    int error = EEXIST;
    while (error == EEXIST) {
        temporary_ = file_.parent_path() / temporaryName();
        keepInMind(temporary_);
        descriptor_ = createNewFile(temporary_);
        error = descriptor_ < 0 ? errno : 0;
        if (error != 0) {
            forget(std::exchange(temporary_, {}));
        }
    }
    if (error == 0 && replacesFile) {
        error = takeRights(descriptor_, file_);
    }
    if (error == 0) {
        error = reserveRoom(descriptor_, reservedRoom);
    }
    if (error != 0) {
        discard();
    }
    return error;
}

int ReplacedFile::append(std::string_view content) {
    if (!isOpen()) {
        return EBADF;
    }
    if (temporary_.empty() && size_ == 0) {
        // It may be where standard output goes.
        (void)std::fflush(stdout);
    }
    size_ += content.size();
    return writeBytes(descriptor_, content) ? 0 : errno;
}

int ReplacedFile::commit(std::string_view content) {
    int error = append(content);
    if (error == 0 && !temporary_.empty()) {
        error = replace();
    }
    discard();
    return error;
}

int ReplacedFile::replace() {
    int error = finishFile(std::exchange(descriptor_, -1), size_);
    if (error == 0) {
        error = replaceFile(temporary_, file_);
    }
    if (error == 0) {
        forget(std::exchange(temporary_, {}));
    }
    return error;
}

void ReplacedFile::discard() {
    if (descriptor_ >= 0) {
        closeFile(std::exchange(descriptor_, -1));
    }
    size_ = 0;
    if (!temporary_.empty()) {
        std::error_code ignored;
        fs::remove(temporary_, ignored);
        forget(std::exchange(temporary_, {}));
    }
}

void removeTemporaryFiles() {
    const std::lock_guard lock(temporaries().mutex);
    for (const fs::path& path : temporaries().paths) {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
}
