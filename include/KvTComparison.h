#pragma once

#include "KvIArchive.h"
#include "KvTRelease.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The changes of a release: two archives side by side. Texts are UTF-8.

namespace KvNReflasher {

/// The change of a place for which an archive has an entry.
enum class KvEChange : std::uint8_t {
    /// Both archives have the same for it.
    same,
    /// Only the new archive has an entry.
    added,
    /// Only the old archive has an entry.
    removed,
    /// The new version is greater.
    up,
    /// The new version is lower.
    down,
    /// The versions are equal or not known, and something else differs.
    changed
};

/// An entry of one of the archives for a place.
struct KvTComparedEntry {
    /// As the description has it.
    KvTArchiveEntry entry;
    /// Values that boards and elements must have, as the description writes them: "variant A, board id 6|7, hw 2|3".
    /// Empty: any.
    std::string rules;
};

/// A place: an element, or a file, on boards of a type.
struct KvTArchiveDifference {
    /// Type of the boards.
    std::string boardType;
    /// Identifier of the element; nothing for a file.
    std::optional<std::uint32_t> elementId;
    /// Path of the file, below the root of the target's file system; empty for an element.
    std::string targetPath;
    /// Nothing if the archive has no entry for the place.
    /// @{
    std::optional<KvTComparedEntry> before;
    std::optional<KvTComparedEntry> after;
    /// @}
    /// The change from `before` to `after`.
    KvEChange change = KvEChange::same;
    /// The update files have other checksums, or one of them is not known.
    bool isContentChanged = false;
    /// The entry is of another phase, or for other boards or elements, or of another mode.
    /// @{
    bool isSequenceChanged = false;
    bool areRulesChanged = false;
    bool isModeChanged = false;
    /// @}
};

/// Where an archive is.
struct KvTArchivePlace {
    /// Folder or package.
    std::wstring folder;
    /// Name of the description in it.
    std::wstring descriptionFileName;
};

/// Two archives side by side.
struct KvTComparison {
    /// Class archive if one of them was refused; the messages say more.
    KvTVerdict verdict;
    /// Content of the old archive.
    KvTArchiveContent before;
    /// Content of the new archive.
    KvTArchiveContent after;
    /// The places of both, in the order of the new archive; those that only the old one has follow.
    std::vector<KvTArchiveDifference> places;
};

/// Compares two archives. Throws std::bad_alloc when memory is exhausted.
[[nodiscard]] KV_REFLASH_API KvTComparison compareArchives(const KvTArchivePlace& before, const KvTArchivePlace& after,
                                                           const KvTReleaseOptions& release);

} // namespace KvNReflasher
