#pragma once

#include "ExitCodes.h"
#include "Report.h"
#include "SharedOptions.h"
#include "ToolSession.h"

#include <optional>

/// What a command knows of its session in the end.
struct SessionResult {
    /// The name of the command, as reports state it.
    const char* command = "";
    ToolSession& session;
    /// Of the whole command.
    KvNReflasher::KvTVerdict verdict;
    /// Nothing if the target was not judged.
    std::optional<KvNReflasher::KvTVerification> verification;

    /// Shows the verification and takes its verdict in. Of a command that has failed the class stays.
    void showVerification();
    /// Writes the report and the document that are wanted, says why the command has failed, and returns its exit code:
    /// all state the same verdict. `reportOption`: null if the command has none.
    [[nodiscard]] ExitCode conclude(const ReportOption* reportOption, const JsonOption& json);
    [[nodiscard]] ReportData report() const;

private:
    void writeReport(const ReportOption* option);

    /// When it was concluded, as all documents state it.
    std::string end_;
};

/// Prepares and runs a session that shows a plan, unless its report cannot be written. The verdict includes whether the
/// archive supports the target.
[[nodiscard]] SessionResult resultOfPlan(const char* command, ToolSession& session, const ReportOption& option);
