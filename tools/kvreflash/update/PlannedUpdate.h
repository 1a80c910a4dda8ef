#pragma once

#include "KvCPreparation.h"
#include "KvCVersion.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What an element has installed, as the target tells.
struct KvTInstalled {
    /// The zero version when unknown.
    KvCVersion version;
    /// CRC-32; nothing when the target tells none.
    std::optional<std::uint32_t> checksum;
    bool valid = false;
    bool active = false;
};

/// What an update would do to an element.
struct KvTPlannedElement {
    std::uint32_t index = 0;
    std::string displayName;
    /// Of the inventory item; empty for a file that is no item of the inventory.
    std::string address;
    KvTInstalled installed;
    /// Index of the chosen entry among the archive's accepted ones, or noArchiveFile.
    std::uint32_t file = noArchiveFile;
    std::string fileName;
    /// Of the entry; the zero version and nothing when unknown.
    KvCVersion availableVersion;
    std::optional<std::uint32_t> availableChecksum;
    std::uint32_t phase = 0;
    bool upToDate = false;
    bool disabled = false;

    /// The update installs the chosen entry on this element.
    [[nodiscard]] bool isUpdated() const { return file != noArchiveFile && !disabled; }
};

/// The elements of a target with their plan.
[[nodiscard]] std::vector<KvTPlannedElement> plannedElements(KvCPreparation& preparation,
                                                             const std::vector<std::uint32_t>& disabledElements);

/// What an element has installed.
[[nodiscard]] KvTInstalled installedOn(const KvTUpdateElement& element);
