#pragma once

#include "KvDocuments.h"
#include "KvRuns.h"

#include <string>
#include <vector>

/// A session, as its report shows it.
struct ReportData {
    KvNReflasher::KvTReportFacts facts;
    KvNReflasher::KvTVerdict verdict;
    /// Null: there is none.
    const KvNReflasher::KvTPlan* plan = nullptr;
    KvNReflasher::KvTOutcome outcome;
    /// Null: the target was not looked at.
    const KvNReflasher::KvTVerification* verification = nullptr;
    /// The accepted entries of the archive.
    std::vector<KvNReflasher::KvTArchiveEntry> entries;

    /// The session has updated the target, or tried to.
    [[nodiscard]] bool isUpdate() const { return facts.command == "update"; }
    /// A word on what became of an element: "updated", "failed", "up to date", ...
    [[nodiscard]] std::string wordFor(const KvNReflasher::KvTPlannedElement& element) const;
    /// What it is drawn as: "planned", "updated", "failed", "uncertain", or "" for an element that is not updated.
    [[nodiscard]] const char* styleOf(const KvNReflasher::KvTPlannedElement& element) const;
    /// Null if it was not verified.
    [[nodiscard]] const KvNReflasher::KvTVerifiedElement*
    verificationOf(const KvNReflasher::KvTPlannedElement& element) const;
};

/// The report as one HTML file that needs no other.
[[nodiscard]] std::string reportPage(const ReportData& report);

/// The report as the JSON document of its command.
[[nodiscard]] std::string documentOf(const ReportData& report);

/// The report for a file, whose ending, .html or .json, decides the form.
[[nodiscard]] std::string reportFor(const ReportData& report, const std::string& path);

/// A saved plan, as a report shows it. The plan must outlive the result.
[[nodiscard]] ReportData reportOf(const KvNReflasher::KvTSavedPlan& plan);
/// A run of the journal, as a report shows it. The run must outlive the result.
[[nodiscard]] ReportData reportOf(const KvNReflasher::KvTRunRecord& run);
