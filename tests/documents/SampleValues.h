#pragma once

#include "KvDocuments.h"

#include <string>
#include <vector>

// Small values of every kind, of which the documents of expected/ are made.

/// Of an archive that somebody trusted has signed.
[[nodiscard]] KvNReflasher::KvTRelease sampleRelease();

/// An archive with the entries that the plan has chosen, and one that nothing takes.
[[nodiscard]] KvNReflasher::KvTArchiveContent sampleContent();

/// An element each that is updated, that has no entry, that is a file which the inventory does not list, and that has a
/// newer version than an upgrade offers.
[[nodiscard]] KvNReflasher::KvTPlan samplePlan();

/// The first element has failed, the file was written.
[[nodiscard]] KvNReflasher::KvTOutcome sampleOutcome();

/// What the target reports of that.
[[nodiscard]] KvNReflasher::KvTVerification sampleVerification();

/// Places of which one has come, one has gone, and one has a newer file for other boards.
[[nodiscard]] KvNReflasher::KvTComparison sampleComparison();

[[nodiscard]] std::vector<KvNReflasher::KvTExplanation> sampleExplanations();
[[nodiscard]] std::vector<KvNReflasher::KvTHiddenElement> sampleHiddenElements();
[[nodiscard]] std::vector<KvNReflasher::KvTFinding> sampleFindings();
[[nodiscard]] KvNReflasher::KvTReportFacts sampleFacts(const std::string& command, int exitCode);
