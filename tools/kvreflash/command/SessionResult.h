#pragma once

#include "ExitCodes.h"
#include "KvTOutcome.h"
#include "ReplacedFile.h"
#include "Report.h"
#include "SharedOptions.h"
#include "ToolSession.h"

#include <optional>
#include <string>

/// What a command knows of its session in the end.
class SessionResult {
public:
    /// `command`: its name, as reports state it. `session` must outlive the result.
    SessionResult(const char* command, ToolSession& session) : command_(command), session_(session) {}

    /// Opens the file of the report if one is wanted; class output if it cannot be written.
    void openReport(const ReportOption& option);
    /// Shows the verification and takes its verdict in. Of a command that has failed the class stays.
    void showVerification();
    /// Writes the document that is wanted, the last event and the report if its file is open, says why the command has
    /// failed, and returns its exit code. All state the same verdict, unless the report is what cannot be written.
    [[nodiscard]] ExitCode conclude(const JsonOption& json);

    /// Of the whole command.
    KvNReflasher::KvTVerdict verdict;
    /// Nothing if the target was not judged.
    std::optional<KvNReflasher::KvTVerification> verification;

private:
    [[nodiscard]] ReportData report() const;
    void writeReport();

    const char* command_;
    ToolSession& session_;
    ReplacedFile reportFile_;
    std::string reportPath_;
    /// When it was concluded, as all documents state it.
    std::string end_;
};

/// Prepares and runs the session of `result` that shows a plan, unless its report cannot be written. The verdict
/// includes whether the archive supports the target.
void showPlan(SessionResult& result, ToolSession& session, const ReportOption& option);
