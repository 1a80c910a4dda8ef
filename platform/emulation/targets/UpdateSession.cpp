#include "UpdateSession.h"

#include "ItemAddressText.h"
#include "UpdateFileContents.h"

#include <atomic>
#include <cstdint>
#include <new>
#include <system_error>
#include <utility>

namespace {

/// The number of the file that was transferred last by this process: a file is never mistaken for one of an earlier
/// session.
std::atomic<std::uint64_t> lastTransfer{0};

Failure noSuchRemoteFile(std::string_view path) {
    return {EmulationErrors::wrongHandle, "The target holds no transferred file \"" + std::string(path) + "\"."};
}

/// What the status query number `query` of an update is answered with, from 1.
UpdateSession::Status answerTo(std::uint32_t query, const UpdateBehaviour& update) {
    const std::uint32_t polls = update.finalQuery();
    if (query >= polls) {
        return {update.state, polls, polls};
    }
    if (!update.progress) {
        return {UpdateBehaviour::running, query, polls};
    }
    const UpdateBehaviour::Progress& progress = (*update.progress)[query - 1];
    return {UpdateBehaviour::running, progress.done, progress.total};
}

bool isFinal(std::uint32_t query, const UpdateBehaviour& update) {
    return query >= update.finalQuery() && update.state != UpdateBehaviour::running;
}

/// What an update from the file at `path` installs.
OrFailure<InstalledValues> readContents(const std::filesystem::path& path) {
    std::error_code error;
    const SystemFiles::File file = SystemFiles::openForReading(path, error);
    if (file == nullptr) {
        return fileFailure("read", SystemFiles::textOf(path), error);
    }
    auto contents = readUpdateFileContents(*file);
    if (!contents) {
        return fileFailure("read", SystemFiles::textOf(path), "the disk does not give it");
    }
    contents->isActivated = true;
    return std::move(*contents);
}

} // namespace

UpdateSession::UpdateSession(std::shared_ptr<EmulatedTarget> target, SystemFiles::FileLock lock)
    : target_(std::move(target)), lock_(std::move(lock)), count_(Ledger::instance().locks) {}

UpdateSession::~UpdateSession() {
    // What cannot be deleted now, be it that memory is exhausted, is cleared by the next lock.
    try {
        static_cast<void>(target_->state().clearTransferredFiles());
    } catch (const std::bad_alloc&) {
    }
}

void UpdateSession::countAsReleased() noexcept {
    count_.release();
    for (auto& file : files_) {
        file.second.count.release();
    }
}

OrFailure<std::string> UpdateSession::transferFile(const std::filesystem::path& local,
                                                   const TransferProgress& progress) {
    std::error_code error;
    const SystemFiles::File source = SystemFiles::openForReading(local, error);
    if (source == nullptr) {
        return fileFailure("read", SystemFiles::textOf(local), error);
    }
    const std::uint64_t number = ++lastTransfer;
    auto remote = target_->state().createTransferredFile(number);
    if (!remote.hasValue()) {
        return remote.failure();
    }
    const std::filesystem::path path = remote.value().path;
    const auto copied = copyLocalFile(*source, local, *remote.value().file, SystemFiles::textOf(path), progress);
    if (!copied.hasValue()) {
        remote.value().file.reset();
        std::filesystem::remove(path, error);
        return copied.failure();
    }
    std::string targetPath = "transferred/" + std::to_string(number);
    files_.emplace(targetPath, RemoteFile{path, HeldCount(Ledger::instance().remoteFiles), std::nullopt});
    return targetPath;
}

Outcome UpdateSession::deleteRemoteFile(std::string_view path) {
    const auto found = files_.find(path);
    if (found == files_.end()) {
        ++Ledger::instance().badReleases;
        return noSuchRemoteFile(path);
    }
    std::error_code error;
    std::filesystem::remove(found->second.path, error);
    if (error) {
        return fileFailure("delete", SystemFiles::textOf(found->second.path), error);
    }
    files_.erase(found);
    return std::nullopt;
}

void UpdateSession::countRemoteFileAsDeleted(std::string_view path) {
    const auto found = files_.find(path);
    if (found != files_.end()) {
        found->second.count.release();
    }
}

Outcome UpdateSession::start(const ItemDescription& element, std::string_view path) {
    const auto running = updates_.find(&element);
    if (running != updates_.end() && !running->second.isFinished) {
        return Failure{EmulationErrors::wrongUpdateState,
                       itemAddressText(element.address()) + " is being updated already."};
    }
    auto contents = contentsOf(path);
    if (!contents.hasValue()) {
        return contents.failure();
    }
    updates_[&element] = Update{0, false, std::move(contents.value())};
    return std::nullopt;
}

OrFailure<InstalledValues> UpdateSession::contentsOf(std::string_view path) {
    const auto found = files_.find(path);
    if (found == files_.end()) {
        return noSuchRemoteFile(path);
    }
    RemoteFile& remote = found->second;
    if (!remote.contents) {
        auto contents = readContents(remote.path);
        if (!contents.hasValue()) {
            return contents;
        }
        remote.contents = std::move(contents.value());
    }
    return *remote.contents;
}

OrFailure<UpdateSession::Status> UpdateSession::queryStatus(const ItemDescription& element) {
    const auto found = updates_.find(&element);
    if (found == updates_.end()) {
        return Failure{EmulationErrors::wrongUpdateState,
                       "No update of " + itemAddressText(element.address()) + " was started."};
    }
    Update& update = found->second;
    const UpdateBehaviour& behaviour = element.update();
    const std::uint32_t query = update.answeredQueries + (update.isFinished ? 0 : 1);
    const bool isLast = isFinal(query, behaviour);
    if (isLast && !update.isFinished && behaviour.installs()) {
        if (Outcome failure = target_->install(element, update.contents)) {
            return std::move(*failure);
        }
    }
    update.isFinished = isLast;
    update.answeredQueries = query;
    return answerTo(query, behaviour);
}

OrFailure<std::vector<KvTErrorEntry>> UpdateSession::reportedErrors(const ItemDescription& element) const {
    const auto found = updates_.find(&element);
    if (found == updates_.end()) {
        return Failure{EmulationErrors::wrongUpdateState,
                       "No update of " + itemAddressText(element.address()) + " was started."};
    }
    if (!found->second.isFinished) {
        return Failure{EmulationErrors::wrongUpdateState,
                       "The update of " + itemAddressText(element.address()) + " is still running."};
    }
    return element.update().errors;
}
