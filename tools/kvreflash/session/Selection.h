#pragma once

#include "KvISession.h"

#include <string>
#include <vector>

/// Leaves elements out of the update. Class selection, with a message that names each of them, if one is not exactly
/// one element.
[[nodiscard]] KvNReflasher::KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements);

/// Class selection if the filters of the options let no element through.
[[nodiscard]] KvNReflasher::KvTVerdict verdictOfFilters(const KvNReflasher::KvTPlan& plan,
                                                        const KvNReflasher::KvTOptions& options);
