#pragma once

#include <cstdint>
#include <string>

namespace KvNReflasher {

/// One update element of the target, as KvIReflasher::getUpdateElements() returns it. The plan (phase to disabled)
/// is there after a prepare that planned.
struct KvTUpdateElementInfo {
    /// Position in the element list, from 0: the "No." of the plan and what disableUpdateElement() takes.
    std::uint32_t index = 0;
    /// Type of the board that carries the element, as the target tells it; may be empty.
    std::wstring boardType;
    /// Serial number of the board; the upper 8 bits may hold a sub-number.
    std::uint32_t serialNumber = 0;
    /// Name or type of the board, and its variant in parentheses.
    std::wstring boardName;
    /// The unit's name, followed by its rack and instance names where it has them.
    std::wstring unitPath;
    /// Slot that the board is in, as the target tells it.
    std::uint32_t slot = 0;
    /// How many slots the board takes; 0: it has no slot.
    std::uint32_t slotCount = 0;
    /// The element's name in tables and results.
    std::wstring displayName;
    /// What kind of element it is, such as "Firmware" or "FPGA".
    std::wstring typeName;
    /// A file in the target's file system rather than something that is flashed.
    bool isFileSystemElement = false;
    /// What is installed is complete and can be used.
    bool valid = false;
    /// What is installed is what the board runs.
    bool active = false;
    /// Empty when unknown.
    std::wstring installedVersion;
    /// 1 for a custom element, else 0.
    std::uint32_t custom = 0;
    /// From 0; meaningful for an element that is not disabled and has an archive file.
    std::uint32_t phase = 0;
    /// 1 when an archive entry matches the element, else 0.
    std::uint32_t hasArchiveFile = 0;
    /// Index into getArchiveFiles(); 0xFFFFFFFF: no matching entry.
    std::uint32_t archiveFileIndex = 0;
    /// Empty when unknown or without a matching entry.
    std::wstring availableVersion;
    /// The installed checksum differs from the matching entry's. A missing one counts as 0.
    bool checksumMismatch = false;
    /// The element takes no part in the update.
    bool disabled = false;
};

/// One file entry of the archive, as KvIReflasher::getArchiveFiles() returns it.
struct KvTArchiveFileInfo {
    /// File name, as the description has it; UTF-8.
    std::string name;
    /// Version as the tables show it.
    std::string version;
};

} // namespace KvNReflasher
