#include "HistoryCommand.h"

#include "KvRunDocuments.h"
#include "ReplacedFile.h"
#include "Report.h"
#include "RunTexts.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace KvNReflasher;

namespace {

constexpr std::chrono::milliseconds pollingInterval{200};

/// Nothing, with a verdict of class selection, if there is none.
std::optional<KvTRunRecord> findRun(const JournalOption& journal, const std::string& id, KvTVerdict& verdict) {
    std::string reason = "no journal is kept";
    std::optional<KvTRunRecord> run;
    if (journal.folder) {
        run = readRun(wideOf(absolutePath(*journal.folder)), id, reason);
    }
    if (!run) {
        verdict.add({KvEFailure::selection, reason});
    }
    return run;
}

} // namespace

void HistoryCommand::addOptions(CommandSyntax& syntax) {
    syntax.addSwitch("--wait", waits,
                     "Wait until the run ends that goes on, RUN or the last one, and end with its exit code");
    syntax.addCheck([this] {
        if (report.file && argument.run.empty()) {
            refuse("--report needs a RUN");
        }
    });
    Command::addOptions(syntax);
}

ExitCode HistoryCommand::run() {
    if (waits) {
        return waitForRun();
    }
    return argument.run.empty() ? showList() : showRun(argument.run);
}

ExitCode HistoryCommand::showList() {
    const KvTRunList list = runsFor(journal, host.host);
    writeText(stdout, json.isWanted ? historyDocument(list, {}) : runListText(list.runs));
    return conclude({});
}

ExitCode HistoryCommand::showRun(const std::string& id) {
    KvTVerdict verdict;
    ReplacedFile file;
    if (report.file) {
        if (const int error = file.open(filePath(*report.file)); error != 0) {
            verdict.add({KvEFailure::output, fileFailure("cannot write", *report.file, error)});
        }
    }
    const std::optional<KvTRunRecord> run = findRun(journal, id, verdict);
    if (json.isWanted) {
        writeText(stdout, runDocument(run ? &*run : nullptr, verdict));
    } else if (run) {
        writeText(stdout, runText(*run));
    }
    if (run && file.isOpen()) {
        if (const int error = file.commit(reportFor(reportOf(*run), *report.file)); error != 0) {
            verdict.add({KvEFailure::output, fileFailure("cannot write", *report.file, error)});
        }
    }
    return conclude(verdict);
}

/// Ends as the run has ended.
ExitCode HistoryCommand::waitForRun() {
    std::string id = argument.run;
    if (id.empty()) {
        const std::vector<KvTRun> runs = runsFor(journal, host.host).runs;
        const auto last = std::find_if(runs.rbegin(), runs.rend(),
                                       [](const KvTRun& run) { return run.state == KvERunState::running; });
        if (last == runs.rend()) {
            return conclude({KvEFailure::selection, "no run goes on"});
        }
        id = last->id;
    }
    KvTVerdict verdict;
    std::optional<KvTRunRecord> run = findRun(journal, id, verdict);
    while (run && run->run.state == KvERunState::running) {
        std::this_thread::sleep_for(pollingInterval);
        run = findRun(journal, id, verdict);
    }
    if (run) {
        verdict = run->run.verdict;
    }
    if (json.isWanted) {
        writeText(stdout, runDocument(run ? &*run : nullptr, verdict));
    } else if (run) {
        writeText(stdout, runText(*run));
    }
    return conclude(verdict);
}
