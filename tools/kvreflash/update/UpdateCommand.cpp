#include "UpdateCommand.h"

#include "PathTexts.h"
#include "SavedPlanFile.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UpdateRun.h"

using namespace KvNReflasher;

ExitCode UpdateCommand::run() {
    if (settings.requirePlan.value && !plan.file) {
        say("update needs --plan: the settings file " + quotedPath(settings.file) + " requires a plan");
        return exitUsage;
    }
    if (plan.file) {
        return runPlan(*plan.file);
    }
    const UpdateTask task{
        .request = request(performUpdate), .steps = steps, .report = report, .json = json, .plan = {}, .resumed = {}};
    return UpdateRun(task).updateAndReport();
}

ExitCode UpdateCommand::runPlan(const std::string& file) {
    KvTVerdict fault;
    UpdateTask task{.request = request(performUpdate),
                    .steps = steps,
                    .report = report,
                    .json = json,
                    .plan = readPlanFile(file, fault),
                    .resumed = {},
                    .fault = fault};
    if (task.plan) {
        const std::wstring moved = archive.isGiven ? wideOf(archive.folder) : std::wstring();
        task.request.takeOptions(optionsFor(*task.plan, moved));
    }
    return UpdateRun(task).updateAndReport();
}
