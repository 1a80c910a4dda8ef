#pragma once

#include "KvCString.h"
#include "KvCVersion.h"
#include "KvTArchiveFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What an update would do to an element.
enum class KvEElementOutlook : std::uint8_t {
    wouldUpdate,
    upToDate,
    /// No entry of the archive fits the element.
    noEntry,
    /// A rule or an option leaves the element out.
    disabled
};
inline constexpr std::size_t elementOutlookCount = 4;

struct KvTMatrixElement {
    /// Position in the target's element list, from 0.
    std::uint32_t index = 0;
    KvCString displayName;
    KvCVersion installedVersion;
    /// The zero version also when no entry fits.
    KvCVersion availableVersion;
    KvEElementOutlook outlook = KvEElementOutlook::noEntry;
};

/// A target and the plan of an update of it.
struct KvTMatrixTarget {
    std::string folder;
    /// The first one of the folder; empty when there is none.
    std::string address;
    /// Why there is no plan; then nothing of the following is known.
    std::optional<std::string> error;
    /// An update would not refuse the target.
    bool supported = false;
    std::vector<KvTMatrixElement> elements;
    /// What the planning had to say beyond what the archive has.
    std::string messages;
    /// Of each of the archive's entries: how many elements it fits.
    std::vector<std::uint32_t> matchCounts;
};

/// An entry of the archive.
struct KvTMatrixEntry {
    /// In the description's list "files".
    std::uint32_t index = 0;
    KvCString name;
};

/// What all plans have in common.
struct KvTMatrixArchive {
    KvTArchiveInfo info;
    std::vector<KvTMatrixEntry> entries;
    /// What reading the archive had to say, the banner included: the beginning of what every session says.
    std::string messages;
};
