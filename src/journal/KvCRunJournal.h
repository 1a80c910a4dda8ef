#pragma once

#include "JournalLines.h"
#include "KvRuns.h"
#include "LockedFile.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

/// The journal of a run that goes on: a file that is held, so that others see that it goes on, and grows line by line.
class KvCRunJournal {
public:
    /// Makes the folder if it is missing, removes runs that are too old, and creates the file. Null, with a `reason`,
    /// if that is not possible.
    [[nodiscard]] static std::unique_ptr<KvCRunJournal> create(const KvNReflasher::KvTJournalOptions& options,
                                                               std::string& reason);

    /// Id of the run.
    [[nodiscard]] const std::string& id() const { return id_; }
    [[nodiscard]] const KvNReflasher::KvTJournalOptions& options() const { return options_; }

    /// Holds what only one run at a time may do: run the plan of this id, or go on with the run of this id. False if
    /// another run holds it, or, with a `reason`, if it cannot be held.
    [[nodiscard]] bool hold(const std::string& taskId, std::string& reason);

    /// Adds a record. Those that come within a tenth of a second are written together, at the latest by flush(). False,
    /// from then on, if that has failed.
    [[nodiscard]] bool write(const std::string& record);
    /// Waits until all records are on the disk. False, from then on, if that is not known.
    [[nodiscard]] bool flush();
    /// Why it cannot be written any more; empty if it can.
    [[nodiscard]] const std::string& fault() const { return fault_; }

    /// Something was written.
    [[nodiscard]] bool hasBegun() const { return hasBegun_; }
    /// Removes the file of a run that has not begun.
    ~KvCRunJournal();
    KvCRunJournal(const KvCRunJournal&) = delete;
    KvCRunJournal& operator=(const KvCRunJournal&) = delete;

private:
    KvCRunJournal(KvNReflasher::KvTJournalOptions options, std::string id, std::unique_ptr<KvCLockedFile> file);

    const KvNReflasher::KvTJournalOptions options_;
    const std::string id_;
    std::unique_ptr<KvCLockedFile> file_;
    std::vector<std::unique_ptr<KvCLockedFile>> held_;
    [[nodiscard]] bool writeOut();

    KvCLineChain chain_;
    /// Lines that are not in the file yet.
    std::string pending_;
    std::chrono::steady_clock::time_point written_;
    bool hasBegun_ = false;
    std::string fault_;
};
