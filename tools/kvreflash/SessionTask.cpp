#include "SessionTask.h"

#include "BeforeUpdate.h"
#include "FilePath.h"
#include "LibrarySession.h"
#include "Report.h"
#include "TextConversion.h"
#include "ToolOutput.h"
#include "ToolVersion.h"
#include "WholeFile.h"

#include <chrono>
#include <utility>

namespace {

/// Plans as the session will, as far as that is asked for. False after findings that keep the session from running.
bool lookBefore(const KvTCommandLine& line, KvTReport& report) {
    if (!line.preflight && !line.verify && !line.reportFile) {
        return true;
    }
    std::optional<KvTBeforeUpdate> before = lookBeforeUpdate(line);
    if (!before) {
        return true; // the session itself will say why
    }
    for (const std::string& finding : before->preflightFindings) {
        say("preflight: " + finding);
        report.messages.append("preflight: ").append(finding).append("\n");
    }
    report.archive = std::move(before->archive);
    report.address = std::move(before->address);
    report.elements = std::move(before->elements);
    return before->preflightFindings.empty();
}

/// Looks at what the target has now, as far as it was asked for, and judges a successful update by it.
ExitCode lookAfterUpdate(const KvTCommandLine& line, KvTReport& report) {
    const bool succeeded = report.result == exitSuccess;
    if (succeeded && line.verify && line.reboot) {
        report.after = scanAfterReboot([&] { return scanInstalled(line.options); }, report.elements, line.waitSeconds);
    } else if ((succeeded && line.verify) || (line.reportFile && !line.reboot)) {
        report.after = scanInstalled(line.options);
    }
    if (report.after) {
        report.verified = verifyElements(report.elements, *report.after, line.reboot);
    }
    if (!succeeded || !line.verify) {
        return report.result;
    }
    if (!report.after) {
        writeText(stdout, "\nVerification: the target cannot be scanned.\n");
        return exitFailed;
    }
    writeText(stdout, verificationText(report.verified));
    return hasNoFault(report.verified) ? exitSuccess : exitFailed;
}

bool finishReport(const KvTCommandLine& line, KvTReport& report) {
    report.end = std::chrono::system_clock::now();
    if (writeReport(report, *line.reportFile)) {
        return true;
    }
    say("cannot write '" + *line.reportFile + "'");
    return false;
}

KvTReport begunReport(const KvTCommandLine& line) {
    KvTReport report;
    report.isUpdate = line.options.mode == KvNReflasher::performUpdate;
    report.toolVersion = getToolVersion().getAsString().view();
    report.begin = std::chrono::system_clock::now();
    report.target = wideToUtf8(line.options.target.c_str());
    report.archiveFolder = wideToUtf8(line.options.archiveFolder.c_str());
    return report;
}

} // namespace

ExitCode runSession(const KvTCommandLine& line) {
    if (line.reportFile && !canWriteWholeFile(filePath(*line.reportFile))) {
        sayFileFailure("cannot write", *line.reportFile);
        return exitFailed;
    }
    KvTReport report = begunReport(line);
    if (lookBefore(line, report)) {
        KvTSessionOutcome outcome = runLibrarySession(line);
        report.result = outcome.result;
        report.failedElements = std::move(outcome.failedElements);
        report.messages = withoutOverwritten(outcome.messages);
        report.result = report.isUpdate ? lookAfterUpdate(line, report) : report.result;
    } else {
        report.result = exitFailed;
    }
    const bool isReported = !line.reportFile || finishReport(line, report);
    return isReported || report.result != exitSuccess ? report.result : exitFailed;
}
