#pragma once

#include "KvTOutcome.h"
#include "ReplacedFile.h"
#include "Report.h"
#include "SharedOptions.h"
#include "ToolSession.h"

#include <optional>

/// What a command knows of its session in the end.
struct SessionResult {
    /// The name of the command, as reports state it.
    const char* command = "";
    const ToolSession& session;
    /// Of the whole command.
    KvNReflasher::KvTVerdict verdict;
    /// Nothing if the target was not judged.
    std::optional<KvNReflasher::KvTVerification> verification;
    /// Open while a report is to be written.
    ReplacedFile reportFile{};

    /// Shows the verification and takes its verdict in. Of a command that has failed the class stays.
    void showVerification();
    /// Opens the file of the report if one is wanted; class output if it cannot be written.
    void openReport(const ReportOption& option);
    /// Writes the report if its file is open; class output if that fails.
    void writeReport(const ReportOption& option);
    [[nodiscard]] ReportData report() const;
};

/// Prepares and runs a session that shows a plan, unless its report cannot be written. The verdict includes whether the
/// archive supports the target.
[[nodiscard]] SessionResult resultOfPlan(const char* command, ToolSession& session, const ReportOption& option);
