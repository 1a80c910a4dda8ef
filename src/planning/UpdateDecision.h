#pragma once

#include "KvTArchiveFile.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"

#include <cstdint>

/// Why an element that an archive entry matches needs an update, or why it does not.
enum class KvEDecision : std::uint8_t {
    elementInvalid,
    elementInactive,
    /// Mode "upgrade": the entry's version is greater.
    versionGreater,
    versionDiffers,
    checksumDiffers,
    upToDate
};

/// Decides by the first rule that holds.
[[nodiscard]] KvEDecision decideUpdate(const KvTUpdateElement& element, const KvTArchiveFile& file,
                                       const KvNReflasher::KvTOptions& options);

/// True when an element that is up to date takes no part in the update: always, but for "standard" entries of a forced
/// one.
[[nodiscard]] bool leavesOutUpToDate(const KvTArchiveFile& file, const KvNReflasher::KvTOptions& options);

/// True for an FPGA element that no entry matches and whose carrier board the target does not have.
[[nodiscard]] bool lacksCarrierBoard(const KvTUpdateElement& element);
