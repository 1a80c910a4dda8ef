#include "ResumeCommand.h"

#include "PathTexts.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UpdateRun.h"
#include "UserFiles.h"

#include <algorithm>

using namespace KvNReflasher;

namespace {

/// The id of the run to go on with: the last update that broke off or was stopped. Empty, with a verdict, if there is
/// none; class locked if an update goes on.
std::string lastOpenRun(const std::vector<KvTRun>& runs, KvTVerdict& verdict) {
    const auto last = std::find_if(runs.rbegin(), runs.rend(), [](const KvTRun& run) {
        return run.command == "update" && (run.isOpen() || run.state == KvERunState::running);
    });
    if (last == runs.rend()) {
        verdict.add({KvEFailure::selection, "the journal has no update that broke off or was stopped"});
        return {};
    }
    return last->id;
}

} // namespace

void RedoOption::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("--redo", redoes,
                     "Update elements again that were in progress and report neither version nor checksum");
}

std::optional<KvTRunRecord> ResumeCommand::chooseRun(KvTVerdict& verdict) const {
    if (!journal.folder) {
        verdict.add({KvEFailure::selection, "no journal is kept"});
        return std::nullopt;
    }
    const std::string id = argument.run.empty() ? lastOpenRun(runsFor(journal, host.host).runs, verdict) : argument.run;
    if (id.empty()) {
        return std::nullopt;
    }
    std::string reason;
    std::optional<KvTRunRecord> found = readRun(wideOf(absolutePath(*journal.folder)), id, reason);
    if (!found) {
        verdict.add({KvEFailure::selection, reason});
    } else if (found->run.command != "update") {
        verdict.add({KvEFailure::selection, "the run " + id + " is not an update"});
    } else if (!host.host.empty() && host.host != found->run.target && host.host != found->run.targetAddress) {
        verdict.add({KvEFailure::selection, "the run " + id + " was not made for '" + host.host + "'"});
    } else if (found->run.state == KvERunState::running) {
        verdict.add({KvEFailure::locked, "the run " + id + " goes on"});
    } else {
        return found;
    }
    return std::nullopt;
}

ExitCode ResumeCommand::run() {
    KvTVerdict fault;
    UpdateTask task{.request = request(performUpdate),
                    .steps = steps,
                    .report = report,
                    .json = json,
                    .plan = {},
                    .resumed = chooseRun(fault),
                    .redoesDoubtful = redo.redoes,
                    .fault = fault};
    if (task.resumed && settings.requirePlan.value && task.resumed->run.planId.empty()) {
        say("the run " + task.resumed->run.id + " had no plan: the settings file " + quotedPath(settings.file) +
            " requires one");
        return exitUsage;
    }
    if (task.resumed) {
        task.request.takeOptions(optionsFor(task.resumed->plan, {}));
        if (task.request.emulatedTargets.empty()) {
            task.request.emulatedTargets = task.resumed->run.places;
        }
    }
    return UpdateRun(task).updateAndReport();
}
