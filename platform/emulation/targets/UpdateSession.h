#pragma once

#include "EmulatedTarget.h"
#include "Ledger.h"
#include "SystemFiles.h"
#include "TargetFileSystem.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// What a client does with a target under its update lock: the files that it transferred and the updates that it
/// started. All of it ends with the session.
class UpdateSession {
public:
    UpdateSession(std::shared_ptr<EmulatedTarget> target, SystemFiles::FileLock lock);
    UpdateSession(const UpdateSession&) = delete;
    UpdateSession(UpdateSession&&) = delete;
    UpdateSession& operator=(const UpdateSession&) = delete;
    UpdateSession& operator=(UpdateSession&&) = delete;
    ~UpdateSession();

    [[nodiscard]] const std::shared_ptr<EmulatedTarget>& sharedTarget() const noexcept { return target_; }

    /// The ledger counts lock and files as given back from now on, whether or not they really are.
    void countAsReleased() noexcept;

    /// Copies the local file to the target. The result is the path by which the target knows it.
    [[nodiscard]] OrFailure<std::string> transferFile(const std::filesystem::path& local,
                                                      const TransferProgress& progress);
    /// Deletes the transferred file at `path`.
    [[nodiscard]] Outcome deleteRemoteFile(std::string_view path);
    /// The ledger counts that file as deleted from now on, whether or not it is.
    void countRemoteFileAsDeleted(std::string_view path);

    /// The answer to a status query.
    struct Status {
        std::uint32_t state = 0;
        std::uint32_t done = 0;
        std::uint32_t total = 0;
    };
    /// Starts the update of `element` from the transferred file at `path`.
    [[nodiscard]] Outcome start(const ItemDescription& element, std::string_view path);
    /// Answers the next status query. The final answer installs, and repeats itself until the element's next update.
    [[nodiscard]] OrFailure<Status> queryStatus(const ItemDescription& element);
    /// What a finished update reports.
    [[nodiscard]] OrFailure<std::vector<KvTErrorEntry>> reportedErrors(const ItemDescription& element) const;

private:
    struct RemoteFile {
        std::filesystem::path path;
        HeldCount count;
        /// Once an update has asked for it.
        std::optional<InstalledValues> contents;
    };
    struct PathHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view path) const noexcept { return std::hash<std::string_view>()(path); }
    };
    struct Update {
        std::uint32_t answeredQueries = 0;
        bool isFinished = false;
        InstalledValues contents;
    };

    /// What a transferred file installs. It is read once, however many elements are updated from it.
    [[nodiscard]] OrFailure<InstalledValues> contentsOf(std::string_view path);

    std::shared_ptr<EmulatedTarget> target_;
    SystemFiles::FileLock lock_;
    HeldCount count_;
    /// By their paths on the target, which are looked up without memory: releases must not need any.
    std::unordered_map<std::string, RemoteFile, PathHash, std::equal_to<>> files_;
    std::unordered_map<const ItemDescription*, Update> updates_;
};
