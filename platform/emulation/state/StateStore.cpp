#include "StateStore.h"

#include "FileBytes.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

// The contents of the folder.
constexpr const char* elementFolder = "elements";
constexpr const char* transferFolder = "transferred";
constexpr const char* fileSystemFolder = "cfdrive";
constexpr const char* countersFile = "resets.json";
constexpr const char* updateLockFile = "lock";
constexpr const char* guardFile = "guard";

constexpr const char* stateExtension = ".json";
constexpr const char* asideExtension = ".tmp";

/// Far above what a state file can hold.
constexpr std::size_t largestStateFile = std::size_t(1) << 20U;

/// FNV-1a: the same on every system and in every run.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return hash;
}

std::string hexOf(std::uint64_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (unsigned shift = 64; shift > 0; shift -= 4) {
        text += digits[(number >> (shift - 4)) & 0xFU];
    }
    return text;
}

/// A file name, without extension, for an address: readable, of bounded length and fit for every file system.
std::string fileNameOf(const std::string& address) {
    constexpr std::size_t longestReadable = 80;
    std::string name;
    for (const char character : address) {
        if (character == '/') {
            name += '-';
        } else if (character == '[') {
            name += '.';
        } else if (character != ']') {
            name += character;
        }
    }
    if (name.size() <= longestReadable) {
        return name;
    }
    return name.substr(0, longestReadable) + "~" + hexOf(hashOf(address));
}

std::optional<std::string> readSmallFile(const fs::path& path, std::error_code& error) {
    const SystemFiles::File file = SystemFiles::openForReading(path, error);
    if (file == nullptr) {
        return std::nullopt;
    }
    auto text = readBytes(*file, largestStateFile);
    if (std::ferror(file.get()) != 0) {
        error = std::make_error_code(std::errc::io_error);
    }
    return text;
}

/// The record in a state file that is about to be replaced; the default when the file is absent or not understood.
template <class Record>
OrFailure<Record> readForChange(const fs::path& path, std::optional<Record> (*parse)(std::string_view)) {
    std::error_code error;
    const auto text = readSmallFile(path, error);
    if (error && !SystemFiles::isAbsent(error)) {
        return fileFailure("read", SystemFiles::textOf(path), error);
    }
    return (text ? parse(*text) : std::nullopt).value_or(Record());
}

Outcome writeNewFile(const fs::path& path, std::string_view bytes) {
    std::error_code error;
    SystemFiles::File file = SystemFiles::createNew(path, error);
    if (file == nullptr) {
        return fileFailure("write", SystemFiles::textOf(path), error);
    }
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    if (std::fclose(file.release()) != 0 || !isWritten) {
        return fileFailure("write", SystemFiles::textOf(path), "the disk does not take it");
    }
    return std::nullopt;
}

/// Writes a file aside and puts it into place, so that nobody ever sees half of it.
Outcome replaceFile(const fs::path& path, std::string_view bytes) {
    fs::path aside = path;
    aside += asideExtension;
    std::error_code ignored;
    fs::remove(aside, ignored);
    Outcome failure = writeNewFile(aside, bytes);
    if (!failure) {
        if (const std::error_code error = SystemFiles::moveIntoPlace(aside, path)) {
            failure = fileFailure("write", SystemFiles::textOf(path), error);
        }
    }
    if (failure) {
        fs::remove(aside, ignored);
    }
    return failure;
}

/// Creates the folder when it is missing; a link in its place is refused, for it may lead anywhere.
Outcome createFolder(const fs::path& path) {
    std::error_code error;
    fs::create_directory(path, error);
    std::error_code unknown;
    if (fs::symlink_status(path, unknown).type() == fs::file_type::directory) {
        return std::nullopt;
    }
    const std::error_code reason = error ? error : std::make_error_code(std::errc::not_a_directory);
    return fileFailure("create the folder", SystemFiles::textOf(path), reason);
}

/// The paths in a folder, sorted; none when it is missing.
std::vector<fs::path> listFolder(const fs::path& folder, std::error_code& error) {
    std::vector<fs::path> paths = SystemFiles::pathsIn(folder, error);
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// Deletes what is at `path`, of a folder everything in it too. No link is followed.
std::error_code removeAll(const fs::path& path) {
    std::error_code error;
    const fs::file_type type = fs::symlink_status(path, error).type();
    if (type == fs::file_type::not_found) {
        return {};
    }
    if (type == fs::file_type::directory) {
        for (const fs::path& entry : SystemFiles::pathsIn(path, error)) {
            if (const std::error_code failure = removeAll(entry)) {
                return failure;
            }
        }
        if (error) {
            return error;
        }
    }
    fs::remove(path, error);
    return error;
}

std::string ignoredFile(const fs::path& path, const std::string& reason) {
    return SystemFiles::textOf(path) + ": " + reason;
}

std::string ignoredFile(const fs::path& path, const std::error_code& error) {
    return ignoredFile(path, error ? error.message() : "not a file of the emulation");
}

} // namespace

StateStore::StateStore(const fs::path& folder) : state_(folder / "state") {}

StateStore::Contents StateStore::read() const {
    Contents contents;
    readResets(contents);
    std::error_code error;
    for (const fs::path& path : listFolder(state_ / elementFolder, error)) {
        readElement(path, contents);
    }
    if (error && !SystemFiles::isAbsent(error)) {
        contents.ignored.push_back(ignoredFile(state_ / elementFolder, error));
    }
    return contents;
}

void StateStore::readElement(const fs::path& path, Contents& contents) const {
    if (path.extension() == asideExtension) {
        return;
    }
    std::error_code error;
    const auto text = readSmallFile(path, error);
    auto state = text ? parseElementState(*text) : std::nullopt;
    if (state && elementPath(state->address) == path) {
        contents.elements.push_back(std::move(*state));
    } else if (!SystemFiles::isAbsent(error)) {
        contents.ignored.push_back(ignoredFile(path, error));
    }
}

void StateStore::readResets(Contents& contents) const {
    const fs::path path = state_ / countersFile;
    std::error_code error;
    const auto text = readSmallFile(path, error);
    if (const auto counters = text ? parseResetCounters(*text) : std::nullopt) {
        contents.resets = counters->resets;
    } else if (!SystemFiles::isAbsent(error)) {
        contents.ignored.push_back(ignoredFile(path, error));
    }
}

OrFailure<ResetCounters> StateStore::readCounters() const {
    return readForChange(state_ / countersFile, parseResetCounters);
}

Outcome StateStore::install(const std::string& address, const InstalledValues& values, bool atNextReset) {
    const auto guard = takeGuard();
    if (!guard.hasValue()) {
        return guard.failure();
    }
    if (Outcome failure = createFolderBelow(elementFolder)) {
        return failure;
    }
    const fs::path path = elementPath(address);
    auto earlier = readForChange(path, parseElementState);
    if (!earlier.hasValue()) {
        return earlier.failure();
    }
    const auto counters = readCounters();
    if (!counters.hasValue()) {
        return counters.failure();
    }
    ElementState& state = earlier.value();
    if (state.address != address) {
        state = ElementState();
        state.address = address;
    }
    const std::uint64_t resets = counters.value().resets;
    if (atNextReset) {
        state.installAtReset(values, resets);
    } else {
        state.install(values, resets);
    }
    return replaceFile(path, textOf(state));
}

Outcome StateStore::countReset(std::uint32_t hiddenLookups) {
    const auto guard = takeGuard();
    if (!guard.hasValue()) {
        return guard.failure();
    }
    auto counters = readCounters();
    if (!counters.hasValue()) {
        return counters.failure();
    }
    ++counters.value().resets;
    counters.value().hiddenLookups = hiddenLookups;
    return writeCounters(counters.value());
}

bool StateStore::takeHiddenLookup() {
    const auto seen = readCounters();
    if (!seen.hasValue() || seen.value().hiddenLookups == 0) {
        return false;
    }
    const auto guard = takeGuard();
    auto counters = readCounters();
    if (!guard.hasValue() || !counters.hasValue() || counters.value().hiddenLookups == 0) {
        return false;
    }
    --counters.value().hiddenLookups;
    return !writeCounters(counters.value());
}

OrFailure<SystemFiles::FileLock> StateStore::lockForUpdate() {
    if (Outcome failure = createFolder(state_)) {
        return std::move(*failure);
    }
    const fs::path path = state_ / updateLockFile;
    std::error_code error;
    auto lock = SystemFiles::FileLock::take(path, SystemFiles::FileLock::Wait::no, error);
    if (error) {
        return fileFailure("lock", SystemFiles::textOf(path), error);
    }
    if (!lock) {
        return Failure{EmulationErrors::targetLocked, "The target is locked by another owner."};
    }
    if (const std::error_code leftover = clearTransferredFiles()) {
        return fileFailure("clear", SystemFiles::textOf(state_ / transferFolder), leftover);
    }
    return std::move(*lock);
}

OrFailure<StateStore::TransferredFile> StateStore::createTransferredFile(std::uint64_t number) {
    if (Outcome failure = createFolderBelow(transferFolder)) {
        return std::move(*failure);
    }
    TransferredFile transferred;
    transferred.path = state_ / transferFolder / std::to_string(number);
    std::error_code error;
    transferred.file = SystemFiles::createNew(transferred.path, error);
    if (transferred.file == nullptr) {
        return fileFailure("write", SystemFiles::textOf(transferred.path), error);
    }
    return transferred;
}

std::error_code StateStore::clearTransferredFiles() const {
    return removeAll(state_ / transferFolder);
}

OrFailure<SystemFiles::Folder> StateStore::openFileSystem() {
    if (Outcome failure = createFolderBelow(fileSystemFolder)) {
        return std::move(*failure);
    }
    const fs::path path = state_ / fileSystemFolder;
    std::error_code error;
    auto folder = SystemFiles::Folder::open(path, error);
    if (!folder) {
        return fileFailure("open", SystemFiles::textOf(path), error);
    }
    return std::move(*folder);
}

Outcome StateStore::createFolderBelow(const char* name) const {
    Outcome failure = createFolder(state_);
    return failure ? failure : createFolder(state_ / name);
}

OrFailure<SystemFiles::FileLock> StateStore::takeGuard() const {
    if (Outcome failure = createFolder(state_)) {
        return std::move(*failure);
    }
    const fs::path path = state_ / guardFile;
    std::error_code error;
    auto guard = SystemFiles::FileLock::take(path, SystemFiles::FileLock::Wait::untilFree, error);
    if (!guard) {
        return fileFailure("lock", SystemFiles::textOf(path), error);
    }
    return std::move(*guard);
}

Outcome StateStore::writeCounters(const ResetCounters& counters) const {
    return replaceFile(state_ / countersFile, textOf(counters));
}

fs::path StateStore::elementPath(const std::string& address) const {
    return state_ / elementFolder / (fileNameOf(address) + stateExtension);
}
