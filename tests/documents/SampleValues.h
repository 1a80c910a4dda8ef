#pragma once

#include "KvDocuments.h"

#include <string>
#include <vector>

// Small values of every kind, of which the documents of expected/ are made.

/// An archive with the entries that the plan has chosen, and one that nothing takes.
[[nodiscard]] KvNReflasher::KvTArchiveContent sampleContent();

/// An element each that is updated, that has no entry, that is a file which the inventory does not list, and that has a
/// newer version than an upgrade offers.
[[nodiscard]] KvNReflasher::KvTPlan samplePlan();

/// The first element has failed, the file was written.
[[nodiscard]] KvNReflasher::KvTOutcome sampleOutcome();

/// What the target reports of that.
[[nodiscard]] KvNReflasher::KvTVerification sampleVerification();

[[nodiscard]] std::vector<KvNReflasher::KvTExplanation> sampleExplanations();
[[nodiscard]] std::vector<KvNReflasher::KvTHiddenElement> sampleHiddenElements();
[[nodiscard]] std::vector<KvNReflasher::KvTFinding> sampleFindings();
[[nodiscard]] KvNReflasher::KvTReportFacts sampleFacts(const std::string& command, int exitCode);
