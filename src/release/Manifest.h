#pragma once

#include "Crypto.h"
#include "KvTPlan.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Name of the manifest in an archive.
inline constexpr std::string_view manifestName = "manifest.json";
/// Name of the signatures of the manifest in an archive.
inline constexpr std::string_view signatureName = "manifest.json.sig";
/// True of the names of these two.
[[nodiscard]] constexpr bool isSealFile(std::string_view name) {
    return name == manifestName || name == signatureName;
}
/// Size in bytes of the largest manifest that is read. 100,000 files take less.
inline constexpr std::uint64_t largestManifest = std::uint64_t{32} << 20U;
/// The longest name and the largest file that a package can hold, in bytes.
/// @{
inline constexpr std::size_t longestPackedName = 100;
inline constexpr std::uint64_t largestPackedFile = (std::uint64_t{8} << 30U) - 1;
/// @}
/// True of a time that a package can hold: from 1970 to 2242-03-16T12:56:31Z.
[[nodiscard]] constexpr bool isPackedTime(std::chrono::sys_seconds time) {
    constexpr std::int64_t latest = (std::int64_t{8} << 30U) - 1;
    const std::int64_t seconds = time.time_since_epoch().count();
    return seconds >= 0 && seconds <= latest;
}

/// A file of a sealed archive.
struct KvTSealedFile {
    /// Below the archive folder, folders separated by "/".
    std::string name;
    /// In bytes.
    std::uint64_t size = 0;
    KvTSha256 sha256{};
};

/// The content of an archive: every file but the manifest itself and its signatures.
struct KvTManifest {
    KvNReflasher::KvTArchiveIdentity archive;
    /// When it was sealed.
    std::chrono::sys_seconds created;
    /// In the order of the manifest.
    std::vector<KvTSealedFile> files;

    /// Size in bytes of all files.
    [[nodiscard]] std::uint64_t size() const;
};

/// The name under which a manifest has the file that a description calls so: folders are separated by "/". There is one
/// name for each file.
[[nodiscard]] std::string sealedNameOf(std::string_view name);

/// Reads a manifest. Nothing, with a `reason`, unless it is one and all names in it are safe.
[[nodiscard]] std::optional<KvTManifest> parseManifest(std::string_view text, std::string& reason);

/// The text of a manifest, line end included.
[[nodiscard]] std::string textOf(const KvTManifest& manifest);

/// Why files of these names cannot be together in an archive, a sentence for each fault; empty if they can.
[[nodiscard]] std::vector<std::string> faultsOfNames(const std::vector<KvTSealedFile>& files);
