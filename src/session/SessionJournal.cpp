#include "SessionJournal.h"

#include "ExhaustedMemory.h"
#include "JournalFolder.h"
#include "KvCStringConversion.h"
#include "KvDocuments.h"
#include "RunRecords.h"

#include <chrono>

using namespace KvNReflasher;

namespace {

constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

std::string now() {
    return preciseTextOf(std::chrono::system_clock::now());
}

} // namespace

KvTVerdict KvCSessionJournal::open(const KvTJournalOptions& options) {
    journal_.reset();
    fault_.clear();
    isRequired_ = options.isRequired;
    std::string reason;
    journal_ = KvCRunJournal::create(options, reason);
    for (const std::string& task : {options.planId, options.resumes}) {
        if (journal_ == nullptr || task.empty() || journal_->hold(task, reason)) {
            continue;
        }
        journal_.reset();
        if (reason.empty()) {
            return {KvEFailure::locked, "another run does the same: " + task};
        }
    }
    if (journal_ == nullptr) {
        return {KvEFailure::output,
                "the journal in '" + std::string(toUtf8(options.folder).view()) + "' cannot be written: " + reason};
    }
    return {};
}

std::string KvCSessionJournal::runId() const {
    return hasBegun() ? journal_->id() : std::string();
}

void KvCSessionJournal::begin(const KvTSavedPlan& basis, const KvTPlan& plan) {
    if (journal_ != nullptr && !journal_->hasBegun()) {
        add(beginRecord(now(), journal_->options(), basis));
        add(planRecord(now(), plan), true);
    }
}

void KvCSessionJournal::write(const KvTEvent& event, const KvTPlan& plan, const KvTElementOutcome& outcome,
                              const std::string& digest) {
    if (!hasBegun() || event.event == KvEEvent::progress || event.event == KvEEvent::stalled) {
        return;
    }
    if (event.event == KvEEvent::phase) {
        phase_ = event.value;
        if (event.value != afterLastPhase) {
            add(intentRecord(now(), event.value, plan), true);
        }
    }
    std::string line = notifiedEvent(now(), event, phase_, plan, outcome);
    if (event.event == KvEEvent::elementEnd && !plan.elements[event.value].isListed()) {
        line = withWrittenFile(line, plan.elements[event.value].targetPath, digest);
    }
    add(line);
}

void KvCSessionJournal::writeTransfer(const std::string& fileName, bool succeeded) {
    if (hasBegun()) {
        add(transferEvent(now(), fileName, phase_, succeeded));
    }
}

void KvCSessionJournal::writeVerification(const KvTVerification& verification, const KvTVerdict& verdict) {
    if (hasBegun()) {
        add(withVerifiedElements(verifyEvent(now(), verification, verdict), verification));
    }
}

void KvCSessionJournal::writeReboot(bool succeeded) {
    if (hasBegun()) {
        add(rebootRecord(now(), succeeded));
    }
}

void KvCSessionJournal::end(const KvTVerdict& verdict, std::int32_t exitCode) {
    if (hasBegun()) {
        add(runEndEvent(now(), verdict, exitCode), true);
    }
    journal_.reset();
}

KvTVerdict KvCSessionJournal::verdict() const {
    return fault_.empty() ? KvTVerdict() : KvTVerdict{KvEFailure::output, "the journal cannot be written: " + fault_};
}

/// What cannot be written any more is not tried again.
void KvCSessionJournal::add(const std::string& record, bool isFlushed) {
    if (!journal_->write(record) || (isFlushed && !journal_->flush())) {
        fault_ = journal_->fault();
    }
}
