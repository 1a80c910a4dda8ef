#pragma once

#include "KvIReflasher.h"
#include "KvTOutcome.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Making releases: an archive is sealed with a manifest of all its files, which is then signed, and packed into one
// file. docs/releases.md describes the formats. Texts are UTF-8. All functions throw std::bad_alloc when memory is
// exhausted.

namespace KvNReflasher {

/// A description to begin with.
struct KvTDraft {
    /// The content of archive.json: an entry for each update file, with the values that the files state. A value that
    /// only a person knows is a text in "<>".
    std::string description;
    /// Number of entries.
    std::size_t fileCount = 0;
    /// The files that could not be read, a sentence each.
    std::vector<std::string> faults;
};

/// Drafts the description of an archive of which `folder` has the update files.
[[nodiscard]] KV_REFLASH_API KvTDraft draftArchive(const std::wstring& folder);

/// The manifest of an archive that is to be sealed.
struct KvTSealing {
    /// Class archive if the archive cannot be sealed.
    KvTVerdict verdict;
    /// All that keeps it from being sealed, a sentence each.
    std::vector<std::string> faults;
    /// The content of the file manifest.json of the archive folder.
    std::string manifest;
    /// SHA-256 of it, 64 hexadecimal digits.
    std::string manifestDigest;
    /// The files of the archive, and their size in bytes.
    /// @{
    std::size_t fileCount = 0;
    std::uint64_t size = 0;
    /// @}
    /// The manifest that is there says the same but for its time, which is kept.
    bool isUnchanged = false;
};

/// An archive that is to be sealed.
struct KvTUnsealedArchive {
    /// Its folder.
    std::wstring folder;
    /// The description file whose information the manifest has.
    std::wstring descriptionFileName;
    /// The time of sealing: seconds since 1970, UTC.
    std::int64_t created = 0;
};

/// Returns the manifest of the archive. It lists every file in the folder and below it but manifest.json and
/// manifest.json.sig.
[[nodiscard]] KV_REFLASH_API KvTSealing sealArchive(const KvTUnsealedArchive& archive);

/// Takes the next bytes of a package; false ends the packing.
using KvTPackageSink = bool (*)(std::string_view bytes, void* context);

/// Hands the package of the sealed archive in `folder` to `sink`, piece by piece. Returns what keeps it from being
/// packed, a sentence each: what `sink` has received is of no use then.
[[nodiscard]] KV_REFLASH_API std::vector<std::string> packArchive(const std::wstring& folder, KvTPackageSink sink,
                                                                  void* context);

} // namespace KvNReflasher
