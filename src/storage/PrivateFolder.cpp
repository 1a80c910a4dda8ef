#include "PrivateFolder.h"

#include "FolderTree.h"
#include "PrivatePlaces.h"
#include "TextConversion.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <random>
#include <string_view>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view namePrefix = "kvreflash-archive-";
constexpr const char* lockName = "lock";
constexpr const char* folderName = "archive";

std::string newName() {
    std::random_device random;
    std::array<char, 20> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x%08x", random(), random());
    return std::string(namePrefix) + digits.data();
}

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// A place without a lock is one that is just being made, unless it was left long ago.
bool isForgotten(const fs::path& place) {
    std::error_code fault;
    const auto changed = fs::last_write_time(place, fault);
    return !fault && fs::file_time_type::clock::now() - changed > std::chrono::hours(1);
}

void removePlace(const fs::path& place, std::unique_ptr<KvCPrivateFolder::Lock> lock) {
    removeTree(place / folderName);
    lock.reset(); // some systems do not remove what is open
    removeTree(place);
}

/// Removes what processes have left that do not run any more.
void removeForgotten(const fs::path& all) {
    std::error_code fault;
    for (fs::directory_iterator found(all, fault); !fault && found != fs::directory_iterator();
         found.increment(fault)) {
        const fs::path place = found->path();
        if (!place.filename().u8string().starts_with(reinterpret_cast<const char8_t*>(namePrefix.data())) ||
            !isOwnFolder(place)) {
            continue;
        }
        std::unique_ptr<KvCPrivateFolder::Lock> lock = KvCPrivateFolder::Lock::take(place / lockName);
        std::error_code ignored;
        if (lock != nullptr || (!fs::exists(place / lockName, ignored) && isForgotten(place))) {
            removePlace(place, std::move(lock));
        }
    }
}

} // namespace

KvCPrivateFolder::KvCPrivateFolder(fs::path place, std::unique_ptr<Lock> lock)
    : place_(std::move(place)), lock_(std::move(lock)) {}

std::unique_ptr<KvCPrivateFolder> KvCPrivateFolder::create(std::string& reason) {
    try {
        return make(reason);
    } catch (const std::system_error& fault) { // names that are not well formed, and no source of random numbers
        reason = fault.what();
        return nullptr;
    }
}

std::unique_ptr<KvCPrivateFolder> KvCPrivateFolder::make(std::string& reason) {
    const fs::path all = temporaryFolder();
    if (all.empty()) {
        reason = "there is no folder for temporary files";
        return nullptr;
    }
    if (!isSafeForFolders(all)) {
        reason = "others may replace what is in '" + textOf(all) +
                 "': only its owner may write there, unless it has the sticky bit";
        return nullptr;
    }
    removeForgotten(all);
    constexpr int mostAttempts = 16;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const fs::path place = all / newName();
        if (!makeOwnFolder(place)) {
            continue;
        }
        std::unique_ptr<Lock> lock = Lock::make(place / lockName);
        std::error_code fault;
        if (lock != nullptr && fs::create_directory(place / folderName, fault)) {
            return std::unique_ptr<KvCPrivateFolder>(new KvCPrivateFolder(place, std::move(lock)));
        }
        removePlace(place, std::move(lock));
    }
    reason = "no folder can be made in '" + textOf(all) + "'";
    return nullptr;
}

KvCPrivateFolder::~KvCPrivateFolder() {
    try {
        removePlace(place_, std::move(lock_));
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the next folder that is made removes what is left
    }
}

std::wstring KvCPrivateFolder::path() const {
    return utf8ToWide(textOf(place_ / folderName).c_str());
}

std::uint64_t KvCPrivateFolder::freeSpace() const {
    std::error_code fault;
    const fs::space_info space = fs::space(place_, fault);
    return fault ? 0 : space.available;
}

FileStream KvCPrivateFolder::createFile(const std::string& name) const {
    const fs::path file = place_ / folderName / fs::path(std::u8string(name.begin(), name.end()));
    std::error_code fault;
    fs::create_directories(file.parent_path(), fault);
    // Nobody else makes files here; but two names may be one to the system.
    const bool isNew = !fault && fs::symlink_status(file, fault).type() == fs::file_type::not_found;
    return isNew ? openForWriting(path() + L"\\" + utf8ToWide(name.c_str())) : nullptr;
}
