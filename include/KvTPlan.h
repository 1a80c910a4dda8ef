#pragma once

#include "KvTRelease.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The plan of a session: a value that says for each element of the target what was found, which archive entry was
// chosen, and what was decided and why. Texts are UTF-8. What is not known is nothing, never a number that stands for
// it.

namespace KvNReflasher {

/// A release version.
struct KvTVersion {
    /// Major, minor, maintenance, service pack build (8 bits each), service pack number, patch level (16 bits each),
    /// most significant first. Not ordered as a number: compare versions by what the session decided.
    std::uint64_t number = 0;
    /// The printed form, such as "23.2a12".
    std::string text;

    /// Equal number and text.
    friend bool operator==(const KvTVersion&, const KvTVersion&) = default;
};

/// The installed image of an element, as the target reports it. A parameter that the element does not have is nothing.
struct KvTInstalled {
    /// Nothing for the zero version, too, which states none.
    std::optional<KvTVersion> version;
    /// CRC-32 of what is installed; 0: the element has the parameter, but no checksum is known.
    std::optional<std::uint32_t> checksumCrc32;
    /// The installed image is complete and can be used.
    std::optional<bool> valid;
    /// The board runs the installed image.
    std::optional<bool> active;
    /// The element has a version, even if it is the zero version.
    bool hasVersion = false;

    /// Equal in every field.
    friend bool operator==(const KvTInstalled&, const KvTInstalled&) = default;
};

/// The archive's information about itself.
struct KvTArchiveIdentity {
    /// As the description writes them; versions as they are printed.
    /// @{
    std::string archiveName;
    std::string archiveVersion;
    std::string productName;
    std::string formatVersion;
    /// @}
    /// Empty: none.
    std::string archiveVariant;
};

/// How an entry's elements are updated.
enum class KvEEntryMode : std::uint8_t {
    /// When version or checksum differ.
    standard,
    /// When the entry's version is greater.
    upgrade
};

/// An accepted file entry of the archive.
struct KvTArchiveEntry {
    /// Position among the accepted entries, as of KvIReflasher::getArchiveFiles().
    std::uint32_t fileIndex = 0;
    /// Position in the description's "files", from 0.
    std::uint32_t descriptionIndex = 0;
    /// Name of the update file, relative to the archive folder.
    std::string fileName;
    /// Nothing if the description states no version for it.
    std::optional<KvTVersion> version;
    /// CRC-32 of the contents; nothing if neither the description nor the file states one.
    std::optional<std::uint32_t> checksumCrc32;
    /// When its elements are out of date.
    KvEEntryMode mode = KvEEntryMode::standard;
    /// Entries of a lower sequence are installed in an earlier phase.
    std::uint32_t sequence = 0;
};

/// Why an element is updated, or why it is not. Listed in the order of this enumeration.
enum class KvEReason : std::uint8_t {
    // For an update.
    /// Mode standard: the entry has another version. Mode upgrade: the entry has a greater version.
    versionDiffers,
    checksumDiffers,
    /// The installed image is not valid.
    invalid,
    /// The installed image is not active.
    inactive,
    /// The element is up to date, and the update is forced.
    forced,

    // Against an update.
    upToDate,
    /// A greater version is installed, and the entry's mode is upgrade.
    newerInstalled,
    /// No entry of the archive matches the element.
    noEntry,
    /// No entry that this library can read matches the element; one that it must ignore for its feature level does.
    featureLevel,
    /// It is a custom element, and these are left out.
    customLeftOut,
    /// The client has disabled the element.
    disabled,
    /// It is an FPGA element whose carrier board, a QB5150 or QB5170, the target does not have.
    carrierBoardMissing,
    /// The entry has a lower version than is installed, and these are left out.
    downgradeLeftOut,

    // Of files that the inventory does not list, and of runs that go on.
    /// For an update: the journal does not have this content as the one that was last written to this place.
    contentDiffers,
    /// It is a file that the inventory does not list, and these are left out.
    unlistedLeftOut,
    /// The journal has this content as the one that was last written to this place.
    writtenBefore,
    /// The run that goes on has installed it, and the target reports it.
    doneBefore,
    /// It was in progress when the run broke off, and reports neither version nor checksum.
    inDoubt
};

/// Whether an element is updated.
struct KvTDecision {
    /// The element takes part in the update.
    bool update = false;
    /// Those for an update if it is updated, else those against it; in the order of KvEReason. Empty if the session has
    /// read no archive.
    std::vector<KvEReason> reasons;

    /// True if `reason` is one of the reasons.
    [[nodiscard]] bool has(KvEReason reason) const {
        return std::find(reasons.begin(), reasons.end(), reason) != reasons.end();
    }
};

/// An element of the target and what an update does to it.
struct KvTPlannedElement {
    /// Position in the element list, from 0: the "No." of the plan.
    std::uint32_t index = 0;

    // What was found.

    /// The values by which entries name the board; empty or 0 if it states none.
    /// @{
    std::string boardType;
    std::string boardVariant;
    std::uint32_t boardId = 0;
    /// @}
    /// The upper 8 bits may hold a sub-number.
    std::uint32_t serialNumber = 0;
    /// Name or type of the board, and its variant in parentheses.
    std::string boardName;
    /// Name of the unit and of its instance, and the rack that it is in; each may be empty.
    /// @{
    std::string unitName;
    std::string unitInstanceName;
    std::string rackName;
    /// @}
    /// These three as tables show them: "UNIT: RACK / INSTANCE".
    std::string unitPath;
    /// The board's slot.
    std::uint32_t slot = 0;
    /// 0: the board has no slot.
    std::uint32_t slotCount = 0;
    /// The element's name in tables and results.
    std::string displayName;
    /// Kind of element, such as "Firmware" or "FPGA".
    std::string typeName;
    /// The name that the inventory has of it, such as "UserFirmware".
    std::string name;
    /// Address of the inventory item; empty for a file that the inventory does not list.
    std::string address;
    /// Address of the board that carries it.
    std::string boardAddress;
    /// The number by which entries name it; 0 for a file.
    std::uint32_t elementId = 0;
    /// A file in the target's file system rather than something that is flashed.
    bool isFileSystemElement = false;
    /// Path of a file, below the root of the target's file system.
    std::string targetPath;
    /// Compatibility of hardware and software; 0 if the element states none.
    /// @{
    std::uint32_t hwCompatibilityId = 0;
    std::uint32_t swCompatibilityId = 0;
    /// @}
    /// A custom element: an option leaves these out of the update.
    bool custom = false;
    /// Its report when it was found.
    KvTInstalled installed;

    // What was chosen and decided.
    /// Nothing if no entry matches.
    std::optional<KvTArchiveEntry> entry;
    /// Whether it is updated, and why.
    KvTDecision decision;
    /// Phase of the update, from 0; nothing if it is not updated.
    std::optional<std::uint32_t> phase;
    /// The element takes no part in the update. An element without an entry need not be disabled.
    bool disabled = false;
    /// The entry offers nothing else than is installed or, in mode upgrade, nothing newer.
    bool upToDate = false;
    /// The entry has a lower version than is installed. Versions that are not known are not compared.
    bool isDowngrade = false;

    /// The inventory of the target lists it; other elements are files that only the archive knows.
    [[nodiscard]] bool isListed() const { return !address.empty(); }
};

/// The plan of an update of one target.
struct KvTPlan {
    /// Nothing if the session reads no archive.
    std::optional<KvTArchiveIdentity> archive;
    /// The release record of the archive; nothing if the session did not ask for it.
    std::optional<KvTRelease> release;
    /// IPv4 address of the target, in dotted form.
    std::string targetAddress;
    /// Serial numbers of the target's processor nodes, as far as it reports them: of the HCN, then of the CN.
    std::vector<std::uint32_t> nodeSerialNumbers;
    /// An update would not refuse the target.
    bool supported = true;
    /// Indices of the elements that decide that the target is not supported: elements of the processor nodes without an
    /// entry.
    std::vector<std::uint32_t> unsupportedElements;
    /// The session looks at configuration elements instead of the others; it does not ask whether they are active.
    bool configurationElements = false;
    /// Number of phases of the update.
    std::uint32_t phaseCount = 0;
    /// In the order of the element list: each index is the position.
    std::vector<KvTPlannedElement> elements;
};

// Computed on request, and not part of the plan.

/// A test that decides whether an entry is meant for an element.
enum class KvEMatchTest : std::uint8_t {
    boardType,
    boardVariant,
    boardId,
    /// File-system elements take target paths, all others identifiers.
    addressing,
    id,
    targetPath,
    hwCompatibilityId,
    swCompatibilityId,
    /// All tests passed.
    none
};

/// An entry that was tried for an element.
struct KvTTriedEntry {
    /// The entry, as of KvTArchiveEntry.
    /// @{
    std::uint32_t fileIndex = 0;
    std::uint32_t descriptionIndex = 0;
    std::string fileName;
    /// @}
    /// The first test that it failed.
    KvEMatchTest failedTest = KvEMatchTest::none;
    /// The values that this test compared, as JSON texts; "null" if the description or the element states nothing.
    /// @{
    std::string archiveValue = "null";
    std::string elementValue = "null";
    /// @}
};

/// Which entries were tried for an element.
struct KvTExplanation {
    /// The element.
    std::uint32_t index = 0;
    /// The entries for the element's board type, up to the chosen one.
    std::vector<KvTTriedEntry> tried;
    /// Number of other entries before the chosen one or, without one, in the archive.
    std::size_t otherBoardCount = 0;
};

/// Reasons why a session does not look at an element of the target.
enum class KvEHiddenBy : std::uint8_t {
    boardTypeFilter,
    serialNumberFilter,
    elementNameFilter,
    /// The session looks at elements of the other kind: configuration elements, or all others.
    configuration
};

/// An element of the target that the session does not look at.
struct KvTHiddenElement {
    /// The element's name in tables and results.
    std::string displayName;
    /// Address of the inventory item.
    std::string address;
    /// All reasons; never empty.
    std::vector<KvEHiddenBy> hiddenBy;
    /// The values that filters are compared with; empty or 0 if it states none.
    /// @{
    std::string boardType;
    std::uint32_t serialNumber = 0;
    std::string name;
    /// @}
};

} // namespace KvNReflasher
