#pragma once

#include "KvTPlan.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// How many failed entries of an element are listed one by one when all elements are explained.
inline constexpr std::size_t fewEntries = 10;

/// The explanation of one element in some lines. Not more than `entryLimit` of the entries that failed are listed one
/// by one.
[[nodiscard]] std::string explanationText(const KvNReflasher::KvTPlannedElement& element,
                                          const KvNReflasher::KvTExplanation& explanation, std::size_t entryLimit);

/// The elements that the session does not look at; empty if there are none.
[[nodiscard]] std::string hiddenElementsText(const std::vector<KvNReflasher::KvTHiddenElement>& elements);

/// A version and how it is read: "23.2a12 (23.2.0 alpha 12)"; unknownText for nothing.
[[nodiscard]] std::string versionText(const std::optional<KvNReflasher::KvTVersion>& version);
