#pragma once

#include "KvTComparison.h"

#include <string>

/// The changes of a release: a table of the places that differ, and how many do not.
[[nodiscard]] std::string comparisonText(const KvNReflasher::KvTComparison& comparison);

/// Its changes on a target: the plans with the old and the new archive, element by element.
[[nodiscard]] std::string comparedPlansText(const KvNReflasher::KvTPlan& before, const KvNReflasher::KvTPlan& after);
