#pragma once

#include "KvRuns.h"

#include <string>
#include <vector>

// Saved plans and runs, as the tool prints them.

/// A saved plan: its facts, and a table of its elements.
[[nodiscard]] std::string savedPlanText(const KvNReflasher::KvTSavedPlan& plan);

/// The runs of a journal, a row each.
[[nodiscard]] std::string runListText(const std::vector<KvNReflasher::KvTRun>& runs);

/// One run: its facts, and a table of the elements that it was to update.
[[nodiscard]] std::string runText(const KvNReflasher::KvTRunRecord& record);

/// What is known of the elements of a run that goes on, and what is done with them now.
[[nodiscard]] std::string resumptionText(const KvNReflasher::KvTRun& run, const KvNReflasher::KvTPlan& plan,
                                         const std::vector<KvNReflasher::KvTResumedElement>& elements);
