#include "Crypto.h"
#include "ExhaustedMemory.h"
#include "Files.h"
#include "JournalFolder.h"
#include "KvCReflasher.h"
#include "KvCStringConversion.h"
#include "PlanDifferences.h"
#include "WrittenFiles.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <utility>

// Plans that are kept, runs that are remembered, and runs that go on.

using namespace KvNReflasher;

namespace {

std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

/// The name by which an element is found again.
std::string placeOf(const KvTPlannedElement& element) {
    return element.isListed() ? element.address : "file " + element.targetPath;
}

bool statesNothing(const KvTInstalled& installed) {
    return !installed.version && installed.checksumCrc32.value_or(0) == 0;
}

/// How far the update of an element of its plan came, as a run knows, or has taken from the one that it went on with.
/// Nothing if neither was to update it.
std::optional<KvEElementProgress> progressIn(const KvTRunRecord& run, const KvTPlannedElement& element) {
    if (element.decision.has(KvEReason::doneBefore)) {
        return KvEElementProgress::done;
    }
    if (element.decision.has(KvEReason::inDoubt)) {
        return KvEElementProgress::inProgress;
    }
    return element.decision.update ? std::optional(run.progress.at(element.index)) : std::nullopt;
}

/// The run that knows how far the elements came: of one that broke off before its plan was written, the one that it was
/// to go on with. Nothing if that cannot be read.
std::optional<KvTRunRecord> knowingRun(const KvTRunRecord& run, const std::wstring& folder) {
    std::optional<KvTRunRecord> knowing = run;
    while (knowing && knowing->plan.plan.elements.empty() && !knowing->run.resumes.empty()) {
        std::string reason;
        std::optional<KvTRunRecord> earlier = readRun(folder, knowing->run.resumes, reason);
        const bool isEarlier = earlier && earlier->run.id < knowing->run.id; // otherwise there might be no end
        knowing = isEarlier ? std::move(earlier) : std::nullopt;
    }
    return knowing;
}

bool isSealed(const KvTPlan& plan) {
    return plan.release && plan.release->seal != KvESeal::none;
}

/// The run that has run this plan with success; empty if there is none.
std::string successfulRunOf(const std::wstring& folder, const std::string& planId) {
    const std::vector<KvTRun> runs = listRuns(folder).runs;
    const auto run = std::find_if(runs.begin(), runs.end(), [&planId](const KvTRun& one) {
        return one.planId == planId && one.state == KvERunState::complete && one.verdict.isSuccess();
    });
    return run != runs.end() ? run->id : std::string();
}

} // namespace

KvTVerdict KvCReflasher::openJournal(const KvTJournalOptions& options) {
    return withoutException(KvTVerdict{KvEFailure::output, {}}, [&] {
        callbacks_.journalFunction = [](const KvTEvent& event, void* context) {
            static_cast<KvCReflasher*>(context)->journalEvent(event);
        };
        callbacks_.journalContext = this;
        preparation_.archive().keepDigest();
        return journal_.open(options);
    });
}

/// A run that was not written down does not begin if that was asked for; otherwise it goes on without.
bool KvCReflasher::beginJournal() {
    if (!journal_.isOpen() || journal_.hasBegun()) {
        return true;
    }
    const bool hasBegun = withoutException(false, [this] {
        KvTSavedPlan basis = planBasis();
        basis.id = journal_.options().planId;
        noteContents(basis, [](const KvTPlannedElement& element) { return !element.isListed(); });
        const KvTPlan nothing;
        journal_.begin(basis, plan() != nullptr ? *plan() : nothing);
        return true;
    });
    if (!hasBegun) {
        noteOutOfMemory();
        return false;
    }
    if (journal_.forbidsMore()) {
        noteFailure(KvEFailure::output, [this] { return "nothing was touched: " + journal_.verdict().message; });
    }
    return !journal_.forbidsMore();
}

void KvCReflasher::journalEvent(const KvTEvent& event) {
    const bool isWritten = withoutException(false, [&] {
        if (event.event == KvEEvent::transfer) {
            const KvTArchiveFile& file = preparation_.archive().files()[event.value];
            journal_.writeTransfer(std::string(file.name.view()), event.succeeded);
            return true;
        }
        const bool hasOutcome = event.event == KvEEvent::elementEnd || event.event == KvEEvent::elementError;
        const KvTElementOutcome outcome = hasOutcome ? outcomeOf(event.value) : KvTElementOutcome();
        journal_.write(event, *plan(), outcome,
                       event.event == KvEEvent::elementEnd ? writtenDigest(event, outcome) : std::string());
        return true;
    });
    if (!isWritten) {
        journal_.giveUp();
    }
    if (journal_.forbidsMore()) {
        control_.requestStop(KvEStop::finishBegun);
    }
}

/// Of a file that the inventory does not list; empty unless it was written and is known to hold what it held before.
std::string KvCReflasher::writtenDigest(const KvTEvent& event, const KvTElementOutcome& outcome) {
    const KvTPlannedElement& element = plan()->elements[event.value];
    if (element.isListed() || !event.succeeded || outcome.fileChanged) {
        return {};
    }
    const std::optional<KvCFileWatch::Content>& content = fileWatch_.contentOf(element.entry->fileIndex);
    return content ? hexOf(content->digest) : std::string();
}

void KvCReflasher::journalVerification(const KvTVerification& verification, const KvTVerdict& verdict) {
    attempt([&] { journal_.writeVerification(verification, verdict); });
}

KvTVerdict KvCReflasher::closeJournal(const KvTVerdict& verdict, std::int32_t exitCode) {
    return withoutException(KvTVerdict{KvEFailure::output, {}}, [&] {
        journal_.end(verdict, exitCode);
        return journal_.verdict();
    });
}

std::string KvCReflasher::runId() const {
    return withoutException(std::string(), [this] { return journal_.runId(); });
}

/// What the plan is made of, without elements and the content of files.
KvTSavedPlan KvCReflasher::planBasis() const {
    const KvCFirmwareArchive& archive = preparation_.archive();
    KvTSavedPlan saved;
    saved.toolVersion = version();
    saved.time = preciseTextOf(std::chrono::system_clock::now());
    saved.target = toUtf8(options_.target).view();
    saved.options = {.boardTypeFilter = options_.boardTypeFilter,
                     .serialNumberFilter = options_.serialNumberFilter,
                     .elementNameFilter = options_.elementNameFilter,
                     .configurationElements = options_.configurationElements,
                     .disableCustomElements = options_.disableCustomElements,
                     .forceUpdate = options_.forceUpdate,
                     .noDowngrade = leavesOutDowngrades_,
                     .unlistedFiles = unlistedFiles_,
                     .disabledElements = disabledElements_};
    if (plan() != nullptr) {
        saved.plan.archive = plan()->archive;
        saved.plan.release = plan()->release;
        saved.plan.targetAddress = plan()->targetAddress;
        saved.plan.nodeSerialNumbers = plan()->nodeSerialNumbers;
    }
    if (saved.plan.archive) {
        const std::string resolved = resolvedPath(options_.archiveFolder);
        saved.archiveFolder = resolved.empty() ? std::string(toUtf8(options_.archiveFolder).view()) : resolved;
        saved.descriptionFileName = toUtf8(options_.descriptionFileName).view();
        saved.descriptionDigest = archive.descriptionDigest();
    }
    return saved;
}

/// The plan without the content of files.
KvTSavedPlan KvCReflasher::planAsItStands() const {
    KvTSavedPlan saved = planBasis();
    if (plan() != nullptr) {
        saved.plan = *plan();
    }
    return saved;
}

/// Adds the content of each file to be used, unless a manifest stands for all of them, and watches the files of
/// elements that `isWatched` holds for. A file that cannot be read has no digest.
void KvCReflasher::noteContents(KvTSavedPlan& saved, const std::function<bool(const KvTPlannedElement&)>& isWatched) {
    if (plan() == nullptr) {
        return;
    }
    std::set<std::uint32_t> noted;
    for (const KvTPlannedElement& element : plan()->elements) {
        if (!element.decision.update) {
            continue;
        }
        if (isWatched(element)) {
            fileWatch_.watch(element.entry->fileIndex);
        }
        if (!isSealed(saved.plan) && noted.insert(element.entry->fileIndex).second) {
            saved.files.push_back(digestOf(element.entry->fileName, element.entry->fileIndex));
        }
    }
}

KvTFileDigest KvCReflasher::digestOf(const std::string& name, std::uint32_t fileIndex) {
    const std::optional<KvCFileWatch::Content>& content = fileWatch_.contentOf(fileIndex);
    return {.name = name, .size = content ? content->size : 0, .sha256 = content ? hexOf(content->digest) : ""};
}

std::optional<KvTSavedPlan> KvCReflasher::planToSave(std::string& reason) {
    const auto unread = [](const KvTFileDigest& file) { return file.sha256.empty(); };
    return withoutException(std::optional<KvTSavedPlan>(), [&]() -> std::optional<KvTSavedPlan> {
        KvTSavedPlan saved = planAsItStands();
        if (!saved.plan.archive) {
            reason = "the session has not planned an update";
            return std::nullopt;
        }
        saved.id = newRunId(std::chrono::system_clock::now());
        noteContents(saved, [](const KvTPlannedElement&) { return false; });
        if (const auto file = std::find_if(saved.files.begin(), saved.files.end(), unread); file != saved.files.end()) {
            reason = "the update file '" + file->name + "' cannot be read";
            return std::nullopt;
        }
        return saved;
    });
}

void KvCReflasher::decideUnlistedFiles(KvEUnlistedFiles which, const KvTJournalOptions& journal) {
    unlistedFiles_ = which;
    if (plan() == nullptr || which == KvEUnlistedFiles::always) {
        return;
    }
    attempt([&] {
        std::map<std::string, std::string> written;
        if (which == KvEUnlistedFiles::changed) {
            written =
                filesWrittenTo(journal.folder, {plan()->targetAddress, plan()->nodeSerialNumbers, journal.places});
        }
        for (const KvTPlannedElement& element : plan()->elements) {
            if (element.isListed() || !element.decision.update) {
                continue;
            }
            if (which == KvEUnlistedFiles::never) {
                preparation_.disableElement(element.index, KvEReason::unlistedLeftOut);
                continue;
            }
            const auto known = written.find(element.targetPath);
            const std::string digest = digestOf(element.entry->fileName, element.entry->fileIndex).sha256;
            if (known != written.end() && known->second == digest) {
                preparation_.disableElement(element.index, KvEReason::writtenBefore);
            } else {
                preparation_.addReason(element.index, KvEReason::contentDiffers);
            }
        }
    });
}

/// Leaves out what the options leave out. Returns what cannot be left out, a sentence each.
std::vector<std::string> KvCReflasher::applyOptions(const KvTDecidingOptions& options,
                                                    const KvTJournalOptions& journal) {
    std::vector<std::string> faults;
    for (const std::string& element : options.disabledElements) {
        if (!disableElement(element).isDone()) {
            faults.push_back("'" + element + "', which was left out, does not name one element any more");
        }
    }
    if (options.noDowngrade) {
        leaveOutDowngrades();
    }
    decideUnlistedFiles(options.unlistedFiles, journal);
    return faults;
}

void KvCReflasher::noteStale(const char* what, const std::vector<std::string>& differences) {
    if (!differences.empty()) {
        noteFailure(KvEFailure::stale, [&] {
            return std::string(what) + ": " + counted(differences.size(), "difference") +
                   "; the first: " + differences.front();
        });
    }
}

std::vector<std::string> KvCReflasher::holdTo(const KvTSavedPlan& plan, const KvTJournalOptions& journal) {
    std::vector<std::string> differences;
    const bool isCompared = withoutException(false, [&] {
        fileWatch_.forget();
        differences = applyOptions(plan.options, journal);
        KvTSavedPlan now = planAsItStands();
        const bool watchesAll = !isSealed(now.plan);
        noteContents(now, [watchesAll](const KvTPlannedElement&) { return watchesAll; });
        addContentsOf(plan, now);
        for (std::string& difference : differencesBetween(plan, now)) {
            differences.push_back(std::move(difference));
        }
        // Of what waits for a reboot, or is not listed, or is forced, nothing differs then.
        const std::string run = differences.empty() ? successfulRunOf(journal.folder, plan.id) : std::string();
        if (!run.empty()) {
            differences.push_back("it was run with success already: " + run);
        }
        return true;
    });
    if (!isCompared) {
        noteOutOfMemory();
        attempt([&] { differences.assign(1, "out of memory"); });
    }
    noteStale("the plan does not hold any more", differences);
    return differences;
}

/// Adds the files that an earlier plan has used, as they are now, even if `now` does not use them.
void KvCReflasher::addContentsOf(const KvTSavedPlan& earlier, KvTSavedPlan& now) {
    std::set<std::string_view> present;
    for (const KvTFileDigest& file : now.files) {
        present.insert(file.name);
    }
    std::map<std::string_view, std::uint32_t> indices;
    const std::vector<KvTArchiveFile>& files = preparation_.archive().files();
    for (std::uint32_t index = 0; index < files.size(); ++index) {
        indices.emplace(files[index].name.view(), index);
    }
    std::vector<KvTFileDigest> added;
    for (const KvTFileDigest& file : earlier.files) {
        const auto found = indices.find(file.name);
        if (found != indices.end() && !present.contains(file.name)) {
            added.push_back(digestOf(file.name, found->second));
        }
    }
    now.files.insert(now.files.end(), added.begin(), added.end());
}

KvTResumption KvCReflasher::resume(const KvTRunRecord& run, bool redo) {
    KvTResumption resumption;
    const bool isPlanned = withoutException(false, [&] {
        fileWatch_.forget();
        KvTJournalOptions journal;
        if (journal_.isOpen()) {
            journal = journal_.options();
        }
        resumption.differences = applyOptions(run.plan.options, journal);
        KvTSavedPlan now = planAsItStands();
        addContentsOf(run.plan, now);
        for (std::string& difference : originDifferencesBetween(run.plan, now)) {
            resumption.differences.push_back(std::move(difference));
        }
        if (const std::optional<KvTRunRecord> knowing = knowingRun(run, journal.folder)) {
            resumption.elements = resumedElements(*knowing);
        } else {
            resumption.differences.push_back("the run " + run.run.id + " was to go on with one that cannot be read");
        }
        for (const KvTResumedElement& element : resumption.elements) {
            leaveOutDone(element, redo);
        }
        return true;
    });
    if (!isPlanned) {
        noteOutOfMemory();
        attempt([&] { resumption.differences.assign(1, "out of memory"); });
    }
    noteStale("the run cannot go on", resumption.differences);
    return resumption;
}

std::vector<KvTResumedElement> KvCReflasher::resumedElements(const KvTRunRecord& run) const {
    std::map<std::string, KvEElementProgress> known;
    for (const KvTPlannedElement& element : run.plan.plan.elements) {
        if (const std::optional<KvEElementProgress> progress = progressIn(run, element)) {
            known.emplace(placeOf(element), *progress);
        }
    }
    std::vector<KvTResumedElement> elements;
    for (const KvTPlannedElement& element : plan()->elements) {
        const auto found = known.find(placeOf(element));
        if (found == known.end()) {
            continue;
        }
        const KvEElementProgress progress = found->second;
        const bool isOutOfDate = element.decision.update && !element.decision.has(KvEReason::forced);
        elements.push_back({.index = element.index,
                            .progress = progress,
                            .isReported = element.isListed() && !isOutOfDate,
                            .isInDoubt = element.isListed() && progress == KvEElementProgress::inProgress &&
                                         statesNothing(element.installed)});
    }
    return elements;
}

/// What the target reports counts; of files that it does not list, and of forced updates, the journal.
void KvCReflasher::leaveOutDone(const KvTResumedElement& resumed, bool redo) {
    const KvTPlannedElement& element = plan()->elements[resumed.index];
    if (!element.decision.update) {
        return;
    }
    const bool isDone = resumed.progress == KvEElementProgress::done;
    if (isDone && (resumed.isReported || !element.isListed())) {
        preparation_.disableElement(resumed.index, KvEReason::doneBefore);
    } else if (resumed.isInDoubt && !redo) {
        preparation_.disableElement(resumed.index, KvEReason::inDoubt);
    }
}
