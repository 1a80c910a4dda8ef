#pragma once

#include <cstdint>
#include <string>

namespace KvNReflasher {

/// What a session does; the values are part of the interface. "Scans" means: the target is found and its inventory
/// read.
enum KvEMode : std::uint32_t {
    showVersion = 0,            ///< run prints the library version
    showArchiveVersion = 1,     ///< run prints the archive version
    showArchiveContent = 2,     ///< run prints the table of archive entries
    dumpArchiveDescription = 3, ///< run prints the normalised description
    showTargetElements = 4,     ///< prepare scans; run prints the table of update elements
    connectOnly = 5,            ///< prepare scans; run does nothing (before a reboot)
    showUpdatePlan = 6,         ///< prepare reads the archive, scans, plans; run prints the plan
    performUpdate = 7           ///< prepare as showUpdatePlan and checks that the target is supported; run updates
};

/// Options of one session; the library keeps a copy. The fields have no defaults: begin with `KvTOptions options{}`.
/// Wide texts are UTF-16 on Windows and UTF-32 elsewhere, the others are UTF-8.
struct KvTOptions {
    /// Folder of the firmware archive.
    std::wstring archiveFolder;
    /// File name of the archive description inside the folder.
    std::wstring descriptionFileName;
    /// IPv4 address or host name of the target; empty: none given.
    std::wstring target;
    /// Words separated by "," or blanks; when not empty, only boards of these types are looked at, and boards that
    /// have no type. If a filter asks for a value that is missing, the session collects an error.
    std::string boardTypeFilter;
    /// The same for the serial numbers of boards: the whole number in decimal, the sub-number in its upper 8 bits
    /// included. What tables show as "12345(2)" is 2 * 16777216 + 12345.
    std::string serialNumberFilter;
    /// The same for the names that the inventory has of update elements, such as "UserFirmware".
    std::string elementNameFilter;
    /// Updates up-to-date elements too, but never those whose archive entry has the mode "upgrade". The list of
    /// up-to-date elements is not printed then.
    bool forceUpdate;
    /// Leaves out the progress line; the progress notification is still delivered.
    bool noProgress;
    /// Prints details.
    bool verbose;
    /// Looks at configuration elements instead of the others.
    bool configurationElements;
    /// Leaves custom elements out of the update.
    bool disableCustomElements;
    /// Not used.
    bool reserved;
    /// One of KvEMode; with any other value the session prints its banner only.
    std::uint32_t mode;
};

} // namespace KvNReflasher
