#include "SessionTask.h"

#include "BeforeUpdate.h"
#include "Files.h"
#include "LibrarySession.h"
#include "PlannedTarget.h"
#include "Report.h"
#include "TextConversion.h"
#include "ToolOutput.h"
#include "ToolVersion.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

/// As files are opened: "\\" separates on every system.
std::filesystem::path pathOf(const std::string& utf8) {
    std::u8string text(utf8.begin(), utf8.end());
    std::replace(text.begin(), text.end(), u8'\\', u8'/');
    return {text};
}

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

/// Finds out with a file beside the report's own, so that an older report stays until the new one is written.
bool canWriteReport(const std::string& path) {
    const std::string aside = path + ".new";
    std::error_code ignored;
    if (std::filesystem::is_directory(pathOf(path), ignored)) {
        return false;
    }
    if (std::filesystem::exists(pathOf(aside), ignored)) {
        return true; // not ours to remove
    }
    if (openForWriting(utf8ToWide(aside.c_str())) == nullptr) {
        return false;
    }
    std::filesystem::remove(pathOf(aside), ignored);
    return true;
}

/// The elements for whose sake the archive does not support the target; the session names none.
void sayUnsupportedElements(const KvTCommandLine& line) {
    constexpr std::size_t mostNames = 3;
    PlannedTarget target(line.options, KvNReflasher::showUpdatePlan);
    if (!target.plan()) {
        return;
    }
    const std::vector<const KvTUpdateElement*> elements = target.preparation().unsupportedElements();
    std::string names;
    for (std::size_t index = 0; index < std::min(elements.size(), mostNames); ++index) {
        names.append(index == 0 ? "'" : ", '").append(elements[index]->displayName.view()).append("'");
    }
    if (elements.size() > mostNames) {
        names.append(" and ").append(std::to_string(elements.size() - mostNames)).append(" more");
    }
    if (!elements.empty()) {
        say("there is no entry for " + names);
    }
}

/// True when nothing but the target's name was missing: what is read before it can be read.
bool lacksTargetOnly(const KvNReflasher::KvTOptions& options) {
    if (!options.target.empty() || options.mode < KvNReflasher::showTargetElements) {
        return false;
    }
    const bool readsArchive =
        options.mode == KvNReflasher::showUpdatePlan || options.mode == KvNReflasher::performUpdate;
    return !readsArchive || PlannedTarget(options, KvNReflasher::showArchiveContent).plan();
}

/// What to do about a session that has failed, where the tool knows more than the session.
void sayWhatFailed(const KvTCommandLine& line, ExitCode result) {
    if (result == exitTargetNotSupported) {
        sayUnsupportedElements(line);
    } else if (result == exitFailed && lacksTargetOnly(line.options)) {
        say("give the target with -t HOST");
    }
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
    if (line.reportFile && !canWriteReport(*line.reportFile)) {
        sayFileFailure("cannot write", *line.reportFile);
        return exitFailed;
    }
    KvTReport report = begunReport(line);
    if (lookBefore(line, report)) {
        KvTSessionOutcome outcome = runLibrarySession(line);
        sayWhatFailed(line, outcome.result);
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
