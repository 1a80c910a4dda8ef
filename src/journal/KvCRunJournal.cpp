#include "KvCRunJournal.h"

#include "JournalFolder.h"
#include "KvCStringConversion.h"

#include <chrono>
#include <utility>

using namespace KvNReflasher;

std::unique_ptr<KvCRunJournal> KvCRunJournal::create(const KvTJournalOptions& options, std::string& reason) {
    reason = makeFolders(options.folder);
    if (!reason.empty()) {
        return nullptr;
    }
    const auto now = std::chrono::system_clock::now();
    removeOldRuns(options.folder, now);
    std::string id = newRunId(now);
    std::unique_ptr<KvCLockedFile> file = KvCLockedFile::create(runFilePath(options.folder, id), reason);
    if (file == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<KvCRunJournal>(new KvCRunJournal(options, std::move(id), std::move(file)));
}

KvCRunJournal::KvCRunJournal(KvTJournalOptions options, std::string id, std::unique_ptr<KvCLockedFile> file)
    : options_(std::move(options)), id_(std::move(id)), file_(std::move(file)) {}

KvCRunJournal::~KvCRunJournal() {
    (void)writeOut();
    if (!hasBegun_) {
        file_->remove();
    }
}

/// The file stays: it is empty, and who would remove it could remove one that another run has just taken.
bool KvCRunJournal::hold(const std::string& taskId, std::string& reason) {
    if (!isRunId(taskId)) { // it would lead elsewhere
        reason = "'" + taskId + "' is not an id";
        return false;
    }
    const std::wstring name = toWide(KvCString(std::string_view(taskId)));
    held_.push_back(KvCLockedFile::take(options_.folder + L"\\" + name + L".lock", reason));
    return held_.back() != nullptr;
}

bool KvCRunJournal::write(const std::string& record) {
    constexpr std::size_t mostPending = std::size_t{64} << 10U;
    constexpr std::chrono::milliseconds longestPending{100};
    if (!fault_.empty()) {
        return false;
    }
    hasBegun_ = true;
    chain_.addTo(pending_, record);
    const bool isDue = pending_.size() >= mostPending || std::chrono::steady_clock::now() - written_ >= longestPending;
    return !isDue || writeOut();
}

bool KvCRunJournal::flush() {
    return fault_.empty() && writeOut() && file_->flush(fault_);
}

bool KvCRunJournal::writeOut() {
    if (fault_.empty() && file_->append(pending_, fault_)) {
        pending_.clear();
        written_ = std::chrono::steady_clock::now();
    }
    return fault_.empty();
}
