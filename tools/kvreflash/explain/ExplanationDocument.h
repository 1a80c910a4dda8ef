#pragma once

#include "Explanation.h"
#include "HiddenElements.h"

#include <string>
#include <vector>

/// The explanations as a JSON document.
[[nodiscard]] std::string explanationDocument(const std::vector<KvTExplanation>& explanations,
                                              const std::vector<KvTArchiveFile>& files,
                                              const std::vector<KvTHiddenElement>& hidden);
