#pragma once

#include "Explanation.h"
#include "HiddenElements.h"

#include <cstddef>
#include <string>
#include <vector>

/// How many failed entries of an element are told one by one when all elements are explained.
inline constexpr std::size_t fewEntries = 10;

/// The explanation of one element in some lines. Not more than `entryLimit` of the entries that failed are told one by
/// one.
[[nodiscard]] std::string explanationText(const KvTExplanation& explanation, const std::vector<KvTArchiveFile>& files,
                                          std::size_t entryLimit);

/// The elements that the session does not look at; empty when there are none.
[[nodiscard]] std::string hiddenElementsText(const std::vector<KvTHiddenElement>& elements);

/// A version and how it is read: "23.2a12 (23.2.0 alpha 12)"; "---" for the zero version.
[[nodiscard]] std::string versionText(const KvCVersion& version);
