#include "Tool.h"

#include "ArchiveCheck.h"
#include "Conclusion.h"
#include "PlanExplanation.h"
#include "PlanMatrix.h"
#include "SessionTask.h"
#include "TargetCapture.h"

namespace {

ExitCode runTask(const KvTCommandLine& line) {
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
    if (const auto* const answered = std::get_if<ExitCode>(&line)) {
        return *answered == exitSuccess ? conclude({}) : *answered;
    }
    return runTask(std::get<KvTCommandLine>(line));
}
