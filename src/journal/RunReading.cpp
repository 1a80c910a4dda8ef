#include "JournalFolder.h"
#include "JournalLines.h"
#include "KvDocuments.h"
#include "LockedFile.h"
#include "RecordReading.h"
#include "SavedPlanRecord.h"

#include <algorithm>
#include <utility>

using KvNJson::json;
using KvNJson::jsonView;

namespace KvNReflasher {

namespace {

constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

/// The file of a run as far as it is to be trusted.
struct RunFile {
    std::string text;
    KvTJournalText journal;
    bool isHeld = false;
};

/// Nothing if there is none or it cannot be read.
std::optional<RunFile> readRunFile(const std::wstring& folder, const std::string& id) {
    const std::wstring path = runFilePath(folder, id);
    RunFile file;
    file.isHeld = KvCLockedFile::isHeld(path); // before the text, which has its end if the run has ended by now
    std::optional<std::string> text = KvCLockedFile::contentOf(path, largestRunFile);
    if (!text) {
        return std::nullopt;
    }
    file.text = std::move(*text);
    file.journal = journalTextOf(file.text);
    return file;
}

std::string eventOf(jsonView record) {
    return textOf(record.find("event"));
}

void readBegin(jsonView record, KvTRun& run, KvTSavedPlan& plan) {
    run.command = textOf(record.find("command"));
    run.begin = textOf(record.find("time"));
    run.user = textOf(record.find("user"));
    run.computer = textOf(record.find("computer"));
    run.places = itemsOf(record.find("places"), textOf);
    run.resumes = textOf(record.find("resumes"));
    readPlanBasis(record.find("plan"), plan);
    run.planId = plan.id;
    run.toolVersion = plan.toolVersion;
    run.target = plan.target;
    run.targetAddress = plan.plan.targetAddress;
    run.nodeSerialNumbers = plan.plan.nodeSerialNumbers;
    run.archiveFolder = plan.archiveFolder;
    run.archive = plan.plan.archive;
}

void readEnd(jsonView record, KvTRun& run) {
    run.end = textOf(record.find("time"));
    run.verdict = verdictIn(record);
    run.exitCode = static_cast<std::int32_t>(numberOf(record.find("exitCode")).value_or(0));
    run.state = run.verdict.failure == KvEFailure::stopped ? KvERunState::stopped : KvERunState::complete;
}

/// The run in short, from the first line and the last one. False if the file has no line of a run.
bool readSummary(const RunFile& file, const std::string& id, KvTRun& run, KvTSavedPlan& plan) {
    if (file.journal.lines.empty()) {
        return false;
    }
    const json begin = json::parse(file.journal.lines.front());
    if (eventOf(begin.view()) != "begin") {
        return false;
    }
    run.id = id;
    run.fault = file.journal.fault;
    readBegin(begin.view(), run, plan);
    run.state = file.isHeld ? KvERunState::running : KvERunState::brokenOff;
    const json last = json::parse(file.journal.lines.back());
    if (run.fault.empty() && last.is_invalid()) {
        run.fault = "line " + std::to_string(file.journal.lines.size()) + " is not a record";
    }
    if (run.fault.empty() && eventOf(last.view()) == "runEnd") {
        readEnd(last.view(), run);
    }
    if (run.state == KvERunState::brokenOff) {
        run.verdict = {KvEFailure::errors, "the run broke off"};
    }
    return true;
}

/// Follows the records of a run, in their order.
class RunReplay {
public:
    explicit RunReplay(KvTRunRecord& record) : record_(record) {}

    void follow(jsonView line) {
        const std::string event = eventOf(line);
        if (event == "plan" && record_.outcome.stage < KvEStage::prepared) { // later ones do not count
            readPlan(line);
        } else if (event == "locked") {
            reach(KvEStage::locked);
        } else if (event == "intent") {
            beginPhase(line);
        } else if (event == "phase" && numberOf(line.find("value")) == afterLastPhase) {
            endPhase();
            reach(KvEStage::phasesRun);
        } else if (event == "transfer") {
            addTransfer(line);
        } else if (event == "elementStart") {
            setProgress(line, KvEElementProgress::inProgress, KvEResult::inProgress);
        } else if (event == "elementError") {
            setProgress(line, KvEElementProgress::failed, KvEResult::failed);
        } else if (event == "elementEnd") {
            endElement(line);
        } else if (event == "verify") {
            readVerification(line);
        } else if (event == "reboot" && isTrue(line.find("succeeded"))) {
            reach(KvEStage::rebooted);
        } else if (event == "runEnd") {
            reach(KvEStage::ended);
        }
    }

private:
    void reach(KvEStage stage) { record_.outcome.stage = std::max(record_.outcome.stage, stage); }

    void readPlan(jsonView line) {
        readPlanElements(line, record_.plan);
        reach(KvEStage::prepared);
        for (const KvTPlannedElement& element : record_.plan.plan.elements) {
            const bool isPlanned = element.decision.update;
            record_.progress.push_back(isPlanned ? KvEElementProgress::untouched : KvEElementProgress::notPlanned);
            record_.outcome.elements.emplace_back().result = isPlanned ? KvEResult::notStarted : KvEResult::notPlanned;
        }
    }

    /// What has begun is not known to the line: a computer without power loses what was not on the disk.
    void beginPhase(jsonView line) {
        endPhase();
        intended_ = itemsOf(line.find("elements"),
                            [](jsonView element) { return numberOf(element.find("index")).value_or(afterLastPhase); });
        for (const std::uint32_t index : intended_) {
            if (index < record_.progress.size()) {
                record_.progress[index] = KvEElementProgress::inProgress;
            }
        }
    }

    /// An element that was not begun in its phase is not begun later.
    void endPhase() {
        for (const std::uint32_t index : intended_) {
            if (index < record_.progress.size() && record_.outcome.elements[index].result == KvEResult::notStarted) {
                record_.progress[index] = KvEElementProgress::untouched;
            }
        }
        intended_.clear();
    }

    void setProgress(jsonView line, KvEElementProgress progress, KvEResult result) {
        const std::uint32_t index = numberOf(line.find("value")).value_or(afterLastPhase);
        if (index < record_.progress.size()) {
            record_.progress[index] = progress;
            record_.outcome.elements[index].result = result;
            record_.outcome.elements[index].reason = textOf(line.find("reason"));
        }
    }

    void endElement(jsonView line) {
        const bool succeeded = isTrue(line.find("succeeded"));
        setProgress(line, succeeded ? KvEElementProgress::done : KvEElementProgress::failed,
                    meaningOf(line.find("result"), KvEResult::inProgress)
                        .value_or(succeeded ? KvEResult::updated : KvEResult::failed));
    }

    void addTransfer(jsonView line) {
        KvTFileOutcome file;
        file.fileName = textOf(line.find("file"));
        file.phase = numberOf(line.find("phase")).value_or(0);
        file.result = isTrue(line.find("succeeded")) ? KvEResult::updated : KvEResult::failed;
        for (const KvTPlannedElement& element : record_.plan.plan.elements) {
            if (element.entry && element.entry->fileName == file.fileName) {
                file.fileIndex = element.entry->fileIndex;
            }
        }
        record_.outcome.files.push_back(std::move(file));
    }

    void readVerification(jsonView line) {
        KvTVerification verification;
        verification.look.succeeded = isTrue(line.find("lookSucceeded"));
        verification.look.elements.resize(record_.plan.plan.elements.size());
        const jsonView elements = line.find("elements");
        for (std::size_t item = 0; elements.is_array() && item < elements.size(); ++item) {
            const jsonView element = elements.at(item);
            const std::optional<std::uint32_t> index = numberOf(element.find("index"));
            if (!index || *index >= record_.plan.plan.elements.size()) {
                continue;
            }
            KvTVerifiedElement verified;
            verified.index = *index;
            verified.result = meaningOf(element.find("result"), KvEVerified::differs).value_or(KvEVerified::notJudged);
            if (element.find("after").is_object()) {
                verified.found = installedOf(element.find("after"));
            }
            verified.leftByPlan = isTrue(element.find("leftByPlan"));
            verified.fileChanged = isTrue(element.find("fileChanged"));
            verification.look.elements[*index] = verified.found;
            verification.elements.push_back(std::move(verified));
        }
        record_.verification = std::move(verification);
    }

    KvTRunRecord& record_;
    /// The elements of the phase that goes on.
    std::vector<std::uint32_t> intended_;
};

/// The id of the last of the runs that has gone on with this one; empty if none has.
std::string resumerOf(const std::string& id, const std::vector<KvTRun>& runs) {
    const auto last =
        std::find_if(runs.rbegin(), runs.rend(), [&id](const KvTRun& later) { return later.resumes == id; });
    return last != runs.rend() ? last->id : std::string();
}

} // namespace

KvTRunList listRuns(const std::wstring& folder) {
    KvTRunList list;
    for (const std::string& id : runIdsIn(folder)) {
        KvTRun run;
        KvTSavedPlan plan;
        const std::optional<RunFile> file = readRunFile(folder, id);
        if (!file) {
            list.faults.push_back("the run " + id + " cannot be read");
        } else if (readSummary(*file, id, run, plan)) {
            list.runs.push_back(std::move(run));
        } else if (!file->text.empty()) { // without a line it is about to begin, or never has
            list.faults.push_back("the file of the run " + id + " is not a journal");
        }
    }
    for (KvTRun& run : list.runs) {
        run.resumedBy = resumerOf(run.id, list.runs);
    }
    return list;
}

std::optional<KvTRunRecord> readRun(const std::wstring& folder, const std::string& id, std::string& reason) {
    const std::optional<RunFile> file = isRunId(id) ? readRunFile(folder, id) : std::nullopt;
    if (!file) {
        reason = "there is no run '" + id + "' that can be read";
        return std::nullopt;
    }
    KvTRunRecord record;
    if (!readSummary(*file, id, record.run, record.plan)) {
        reason = "the file of the run " + id + " is not a journal";
        return std::nullopt;
    }
    RunReplay replay(record);
    for (const std::string_view line : file->journal.lines) {
        replay.follow(json::parse(line).view());
    }
    record.outcome.verdict = record.run.verdict;
    if (record.run.state != KvERunState::running) { // a run that goes on was not resumed
        record.run.resumedBy = resumerOf(id, listRuns(folder).runs);
    }
    return record;
}

} // namespace KvNReflasher
