#pragma once

#include <cstdint>
#include <string>

namespace KvNReflasher {

/// One update element of the target, as KvIReflasher::getUpdateElements() returns it. The plan (phase to disabled)
/// is there after a prepare that planned.
struct KvTUpdateElementInfo {
    /// Position in the element list, from 0: the "No." of the plan and what disableUpdateElement() takes.
    std::uint32_t index;
    std::wstring boardType;
    /// The upper 8 bits may hold a sub-number.
    std::uint32_t serialNumber;
    std::wstring boardName;
    /// The unit's name, followed by its rack and instance names where it has them.
    std::wstring unitPath;
    std::uint32_t slot;
    /// 0: the board has no slot.
    std::uint32_t slotCount;
    std::wstring displayName;
    std::wstring typeName;
    bool isFileSystemElement;
    bool valid;
    bool active;
    /// Empty when unknown.
    std::wstring installedVersion;
    /// 1 for a custom element, else 0.
    std::uint32_t custom;
    /// From 0; meaningful for an element that is not disabled and has an archive file.
    std::uint32_t phase;
    /// 1 when an archive entry matches the element, else 0.
    std::uint32_t hasArchiveFile;
    /// Index into getArchiveFiles(); 0xFFFFFFFF: no matching entry.
    std::uint32_t archiveFileIndex;
    /// Empty when unknown or without a matching entry.
    std::wstring availableVersion;
    /// The installed checksum differs from the matching entry's, a missing one included.
    bool checksumMismatch;
    /// The element takes no part in the update.
    bool disabled;
};

/// One file entry of the archive, as KvIReflasher::getArchiveFiles() returns it.
struct KvTArchiveFileInfo {
    /// UTF-8.
    std::string name;
    std::string version;
};

} // namespace KvNReflasher
