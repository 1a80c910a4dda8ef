#pragma once

#include "KvIArchive.h"

#include <cstddef>
#include <string>
#include <vector>

/// Number of findings of one severity.
[[nodiscard]] std::size_t countOf(const std::vector<KvNReflasher::KvTFinding>& findings,
                                  KvNReflasher::KvESeverity severity);

/// "1 error, 2 warnings".
[[nodiscard]] std::string findingCounts(const std::vector<KvNReflasher::KvTFinding>& findings);

/// A finding on the file `description` of the archive in `folder` (UTF-8) in one line without end, as a compiler's
/// message, without its hint.
[[nodiscard]] std::string findingLine(const KvNReflasher::KvTFinding& finding, const std::string& folder,
                                      const std::string& description);

/// The findings on the file `description` of the archive in `folder` (UTF-8) for readers: a paragraph for each, then
/// how many there are. The first line of a paragraph is that of a compiler's message; each finding takes two lines,
/// whatever names it holds.
[[nodiscard]] std::string findingText(const std::vector<KvNReflasher::KvTFinding>& findings, const std::string& folder,
                                      const std::string& description);
