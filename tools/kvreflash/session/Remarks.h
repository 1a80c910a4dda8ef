#pragma once

#include "KvISession.h"

#include <string>
#include <vector>

// What the tool adds to what a session says.

/// The archive's own description of itself, as far as the session has read it.
[[nodiscard]] KvNReflasher::KvTArchiveIdentity archiveIdentity(KvISession& session);

/// Warns of each path that leads out of the archive's folder or out of the target's root: an archive from who knows
/// where must not do that unnoticed.
void warnOfForeignPaths(KvISession& session);

/// Leaves elements out of the update. Class selection, with a message that names each of them, if one is not exactly
/// one element.
[[nodiscard]] KvNReflasher::KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements);

/// Class selection if the filters of the options let no element through.
[[nodiscard]] KvNReflasher::KvTVerdict verdictOfFilters(const KvNReflasher::KvTPlan& plan,
                                                        const KvNReflasher::KvTOptions& options);
