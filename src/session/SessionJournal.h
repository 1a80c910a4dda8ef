#pragma once

#include "KvCRunJournal.h"
#include "KvISession.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// Writes down what a session does, if it keeps a journal.
class KvCSessionJournal {
public:
    /// Creates the file of the run, see KvISession::openJournal().
    [[nodiscard]] KvNReflasher::KvTVerdict open(const KvNReflasher::KvTJournalOptions& options);
    [[nodiscard]] bool isOpen() const { return journal_ != nullptr; }
    /// Of the open journal.
    [[nodiscard]] const KvNReflasher::KvTJournalOptions& options() const { return journal_->options(); }
    /// Empty unless something was written.
    [[nodiscard]] std::string runId() const;

    /// The run begins; it is on the disk then. `basis` is what `plan` was made of. Without effect on one that has
    /// begun.
    void begin(const KvNReflasher::KvTSavedPlan& basis, const KvNReflasher::KvTPlan& plan);
    [[nodiscard]] bool hasBegun() const { return journal_ != nullptr && journal_->hasBegun(); }
    /// An event of the run. Before a phase its intent is written, and on the disk. `outcome` is that of the
    /// element whose end or error it is, `digest` the SHA-256 of what was written to a file that the inventory does not
    /// list.
    void write(const KvNReflasher::KvTEvent& event, const KvNReflasher::KvTPlan& plan,
               const KvNReflasher::KvTElementOutcome& outcome, const std::string& digest);
    /// The transfer of this file has ended.
    void writeTransfer(const std::string& fileName, bool succeeded);
    void writeVerification(const KvNReflasher::KvTVerification& verification, const KvNReflasher::KvTVerdict& verdict);
    void writeReboot(bool succeeded);
    /// The run ends; what was written is on the disk then. The file is given back.
    void end(const KvNReflasher::KvTVerdict& verdict, std::int32_t exitCode);

    /// Memory is exhausted: something was not written down.
    void giveUp() { fault_ = "out of memory"; }
    /// Class output if it could not be written from some moment on.
    [[nodiscard]] KvNReflasher::KvTVerdict verdict() const;
    /// It cannot be written, and nothing may begin without it.
    [[nodiscard]] bool forbidsMore() const { return isRequired_ && !fault_.empty(); }

private:
    void add(const std::string& record, bool isFlushed = false);

    std::unique_ptr<KvCRunJournal> journal_;
    bool isRequired_ = false;
    std::uint32_t phase_ = 0;
    std::string fault_;
};
