#pragma once

#include "CommandLine.h"
#include "KvTArchiveFile.h"
#include "PlannedUpdate.h"
#include "Verification.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// What came of an element in a session.
enum class KvEOutcome : std::uint8_t {
    /// The update does not touch it.
    untouched,
    /// A plan that was not carried out.
    planned,
    updated,
    /// The session reported it failed.
    failed,
    /// The session failed, and the target does not report what was to be installed.
    uncertain
};

/// Everything that a report of a session tells.
struct KvTReport {
    bool isUpdate = false;
    std::string toolVersion;
    std::chrono::system_clock::time_point begin;
    std::chrono::system_clock::time_point end;
    /// As given, and the address that it stands for, empty when it was not found.
    std::string target;
    std::string address;
    std::string archiveFolder;
    /// Nothing when there was no plan.
    std::optional<KvTArchiveInfo> archive;
    /// With their state before the session.
    std::vector<KvTPlannedElement> elements;
    /// What the target has installed afterwards; nothing when that was not asked or it did not answer.
    std::optional<KvTInstalledElements> after;
    std::set<std::uint32_t> failedElements;
    /// Refers to `elements`, in their order; empty when the target was not asked afterwards.
    std::vector<KvTVerifiedElement> verified;
    /// What the session said, the errors of the target among it, without the progress that was overwritten.
    std::string messages;
    ExitCode result = exitSuccess;

    [[nodiscard]] KvEOutcome outcomeOf(const KvTPlannedElement& element) const;
    /// Null when it was not verified.
    [[nodiscard]] const KvTVerifiedElement* verificationOf(const KvTPlannedElement& element) const;
};

/// `messages` as a terminal shows them in the end: of each line what stands behind the last carriage return.
[[nodiscard]] std::string withoutOverwritten(const std::string& messages);

/// "updated", ...
[[nodiscard]] const char* wordFor(KvEOutcome outcome);

/// A point of time as "2026-03-01 12:34:56 UTC".
[[nodiscard]] std::string timeText(std::chrono::system_clock::time_point time);

/// The report as a JSON document.
[[nodiscard]] std::string reportDocument(const KvTReport& report);

/// The report as one HTML file that needs no other.
[[nodiscard]] std::string reportPage(const KvTReport& report);

/// Writes the report to a file, whose ending, .html or .json, decides the form. False when it cannot be
/// written; what becomes of an earlier report then, writeWholeFile() tells.
[[nodiscard]] bool writeReport(const KvTReport& report, const std::string& path);
