#pragma once

#include "KvIReflasher.h"
#include "KvTPlan.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A plan that is kept: what was planned for one target from one archive, so that it can be approved, and run later
// exactly as it was approved. Texts are UTF-8.

namespace KvNReflasher {

/// Which files that the inventory does not list are written.
enum class KvEUnlistedFiles : std::uint8_t {
    /// All for which the archive has an entry.
    always,
    /// Those whose content is not the one that was last written to this place of this target, as far as the journal
    /// knows.
    changed,
    /// None.
    never
};

/// The options that decide what an update does.
struct KvTDecidingOptions {
    /// The filters, as KvTOptions has them: words separated by commas or blanks.
    /// @{
    std::string boardTypeFilter;
    std::string serialNumberFilter;
    std::string elementNameFilter;
    /// @}
    /// The session looks at configuration elements instead of the others.
    bool configurationElements = false;
    /// Custom elements are left out.
    bool disableCustomElements = false;
    /// Elements that are up to date are updated, too.
    bool forceUpdate = false;
    /// Elements for which the archive has a lower version are left out.
    bool noDowngrade = false;
    /// Which of the files that the inventory does not list are written.
    KvEUnlistedFiles unlistedFiles = KvEUnlistedFiles::always;
    /// The elements that were left out by hand, as they were named.
    std::vector<std::string> disabledElements;
};

/// A file of an archive, by its content.
struct KvTFileDigest {
    /// As the description names it.
    std::string name;
    /// In bytes.
    std::uint64_t size = 0;
    /// SHA-256, 64 hexadecimal digits.
    std::string sha256;
};

/// A plan that is kept.
struct KvTSavedPlan {
    /// Time and random number; no two plans have the same.
    std::string id;
    /// Version of the library that has planned.
    std::string toolVersion;
    /// When it was planned: RFC 3339, UTC.
    std::string time;
    /// The target as it was given: an address or a name.
    std::string target;
    /// The options that it was planned with.
    KvTDecidingOptions options;
    /// Path of the archive, from the root.
    std::string archiveFolder;
    /// Name of the description file in the archive.
    std::string descriptionFileName;
    /// SHA-256 of the description; empty if no archive was read.
    std::string descriptionDigest;
    /// The files to be used, each once, in the order of the plan. Empty if the archive is sealed: the digest of its
    /// manifest stands for all of them.
    std::vector<KvTFileDigest> files;
    /// Target, archive and elements.
    KvTPlan plan;

    /// Number of elements and files that an update changes.
    [[nodiscard]] std::uint32_t changes() const {
        return static_cast<std::uint32_t>(
            std::count_if(plan.elements.begin(), plan.elements.end(),
                          [](const KvTPlannedElement& element) { return element.decision.update; }));
    }
};

/// Returns the document of a saved plan: JSON, UTF-8, with a line end. It ends with its own digest. Throws
/// std::bad_alloc when memory is exhausted, as the following.
[[nodiscard]] KV_REFLASH_API std::string savedPlanDocument(const KvTSavedPlan& plan);
/// Reads the document of a saved plan. Nothing, with a `reason`, unless it is one and still has each byte that it was
/// written with.
[[nodiscard]] KV_REFLASH_API std::optional<KvTSavedPlan> readSavedPlan(const std::string& document,
                                                                       std::string& reason);
/// Returns the options of a session that is to run the plan. `archiveFolder`: where the archive is now; empty: where it
/// was.
[[nodiscard]] KV_REFLASH_API KvTOptions optionsFor(const KvTSavedPlan& plan, const std::wstring& archiveFolder);

} // namespace KvNReflasher
