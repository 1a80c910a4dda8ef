#include "PlanCommand.h"

#include "PathTexts.h"
#include "ReplacedFile.h"
#include "RunTexts.h"
#include "SavedPlanFile.h"
#include "SessionResult.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <array>

using namespace KvNReflasher;

namespace {

/// Options that a shown plan has no use for.
constexpr std::array plannedOptions = {"--archive",       "--description",    "--trust",   "--unsealed",
                                       "--target",        "--board-type",     "--element", "--serial-number",
                                       "--configuration", "--skip-custom",    "--force",   "--no-downgrade",
                                       "--disable",       "--unlisted-files", "--save",    "--journal"};

/// Writes the plan of the session to its file.
KvTVerdict savePlan(ToolSession& session, ReplacedFile& file, const std::string& path) {
    std::string reason;
    const std::optional<KvTSavedPlan> plan = session->planToSave(reason);
    if (!plan) {
        return {KvEFailure::archive, "the plan was not saved: " + reason};
    }
    if (const int error = file.commit(savedPlanDocument(*plan)); error != 0) {
        return {KvEFailure::output, fileFailure("cannot write", path, error)};
    }
    session.remark("the plan " + plan->id + " was saved in " + quotedPath(path));
    return {};
}

} // namespace

void PlanFilesOptions::addTo(CommandSyntax& syntax) {
    syntax.addOption("--save", "FILE", "Save the plan to FILE, for update --plan (default: none)", keptIn(saved));
    syntax.addOption("--show", "FILE", "Print the plan that was saved to FILE, and look at no target (default: none)",
                     keptIn(shown));
    syntax.addCheck([this, &syntax] {
        if (!shown && !syntax.isGiven("--archive")) {
            refuse("--archive is required");
        }
        for (const char* const option : plannedOptions) {
            if (shown && syntax.isGiven(option)) {
                refuse(std::string("--show contradicts ") + option);
            }
        }
    });
}

ExitCode PlanCommand::run() {
    if (files.shown) {
        return showSaved();
    }
    ToolSession session(request(showUpdatePlan));
    SessionResult result("plan", session);
    ReplacedFile file;
    if (files.saved) {
        if (const int error = file.open(filePath(*files.saved)); error != 0) {
            result.verdict.add({KvEFailure::output, fileFailure("cannot write", *files.saved, error)});
        }
    }
    if (result.verdict.isSuccess()) {
        showPlan(result, session, report);
    }
    if (files.saved && result.verdict.isSuccess()) {
        result.verdict = savePlan(session, file, *files.saved);
    }
    return result.conclude(json);
}

ExitCode PlanCommand::showSaved() {
    KvTVerdict verdict;
    ReplacedFile reportFile;
    if (report.file) {
        if (const int error = reportFile.open(filePath(*report.file)); error != 0) {
            verdict.add({KvEFailure::output, fileFailure("cannot write", *report.file, error)});
        }
    }
    const std::optional<KvTSavedPlan> plan =
        verdict.isSuccess() ? readPlanFile(*files.shown, verdict) : std::optional<KvTSavedPlan>();
    if (plan && !json.isWanted) {
        writeText(stdout, savedPlanText(*plan));
    }
    verdict.add(verdictOfStandardOutput());
    ReportData data = plan ? reportOf(*plan) : ReportData();
    data.facts.command = "plan";
    data.facts.exitCode = exitCodeOf(verdict.failure);
    data.verdict = verdict;
    if (json.isWanted) {
        writeText(stdout, documentOf(data));
        verdict.add(verdictOfStandardOutput());
    }
    if (reportFile.isOpen()) {
        if (const int error = reportFile.commit(reportFor(data, *report.file)); error != 0) {
            verdict.add({KvEFailure::output, fileFailure("cannot write", *report.file, error)});
        }
    }
    return conclude(verdict);
}
