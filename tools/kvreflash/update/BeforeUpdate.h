#pragma once

#include "CommandLine.h"
#include "KvTArchiveFile.h"
#include "PlannedUpdate.h"

#include <optional>
#include <string>
#include <vector>

/// What is known of archive, target and plan before a session runs.
struct KvTBeforeUpdate {
    KvTArchiveInfo archive;
    /// Of the target, in dotted form.
    std::string address;
    std::vector<KvTPlannedElement> elements;
    /// See preflightFindings(); empty when that was not asked for.
    std::vector<std::string> preflightFindings;
};

/// Plans as the session will. Nothing when that fails, which the session itself will tell.
[[nodiscard]] std::optional<KvTBeforeUpdate> lookBeforeUpdate(const KvTCommandLine& line);
