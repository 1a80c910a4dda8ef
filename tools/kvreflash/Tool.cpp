#include "Tool.h"

#include "ArchiveCheck.h"
#include "EmulatedTargets.h"
#include "PlanExplanation.h"
#include "PlanMatrix.h"
#include "SessionTask.h"
#include "TargetCapture.h"
#include "ToolOutput.h"

#include <cstdio>

namespace {

ExitCode runTask(const KvTCommandLine& line) {
    // Each session of a matrix serves its own.
    if (line.task != KvETask::matrix && !serveEmulatedTargets(line.emulatedTargets)) {
        return exitTarget;
    }
    switch (line.task) {
    case KvETask::session:
        return runSession(line);
    case KvETask::check:
        return checkArchive(line);
    case KvETask::capture:
        return captureTarget(line);
    case KvETask::explain:
        return explainPlan(line);
    case KvETask::matrix:
        return showMatrix(line);
    }
    return exitFailed;
}

} // namespace

ExitCode runTool(const std::vector<std::string>& arguments) {
    const auto line = readCommandLine(arguments);
    const auto* const answered = std::get_if<ExitCode>(&line);
    const ExitCode result = answered != nullptr ? *answered : runTask(std::get<KvTCommandLine>(line));
    // Whoever wrote to standard output, the library or the tool: what was lost shows here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        say("cannot write to standard output");
        return result == exitSuccess ? exitFailed : result;
    }
    return result;
}
