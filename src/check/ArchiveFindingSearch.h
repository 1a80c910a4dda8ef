#pragma once

#include "KvCFirmwareArchive.h"
#include "KvIArchive.h"
#include "KvTOptions.h"

#include <optional>
#include <string>
#include <vector>

/// Everything that is to be said about the archive that `options` name, in the order of its description. Errors are
/// what the reader refuses the archive for, in its own words: there are some exactly when it does.
[[nodiscard]] std::vector<KvNReflasher::KvTFinding> findingsOfArchive(const KvNReflasher::KvTOptions& options);

/// The same if the description file was read already: `text` is what it holds, or nothing if it cannot be read. The
/// other files of the archive, or those of the copy, are looked at now.
[[nodiscard]] std::vector<KvNReflasher::KvTFinding> findingsOfText(const KvNReflasher::KvTOptions& options,
                                                                   const std::optional<std::string>& text,
                                                                   const KvTArchiveCopy& copy = {});
