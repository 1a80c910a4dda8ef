#pragma once

#include "JournalLines.h"
#include "KvRuns.h"
#include "LockedFile.h"

#include <memory>
#include <string>

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

    /// Holds a saved plan: of several runs with one plan only one goes on. False if another run holds it, or, with a
    /// `reason`, if it cannot be held.
    [[nodiscard]] bool holdPlan(const std::string& planId, std::string& reason);

    /// Adds a record. False, from then on, if that has failed.
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
    KvCRunJournal(const KvNReflasher::KvTJournalOptions& options, std::string id, std::unique_ptr<KvCLockedFile> file);

    const KvNReflasher::KvTJournalOptions options_;
    const std::string id_;
    std::unique_ptr<KvCLockedFile> file_;
    /// Held while a saved plan is run.
    std::unique_ptr<KvCLockedFile> plan_;
    KvCLineChain chain_;
    bool hasBegun_ = false;
    std::string fault_;
};
