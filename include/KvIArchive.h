#pragma once

#include "KvIReflasher.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"
#include "KvTRelease.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KvNReflasher {

enum class KvESeverity : std::uint8_t {
    /// The archive is refused.
    error,
    /// The archive is read, but it may not do what is expected.
    warning
};

/// Something that is to be said about an archive.
struct KvTFinding {
    /// Whether the archive is refused for it.
    KvESeverity severity = KvESeverity::error;
    /// Kind of finding, for programs; docs/archive-check.md lists them.
    std::string code;
    /// Place in the description, from 1; columns count characters.
    /// @{
    std::size_t line = 1;
    std::size_t column = 1;
    /// @}
    /// JSON path of the value concerned.
    std::string path = "$";
    /// One sentence: what is the matter.
    std::string message;
    /// Advice on how to mend it; may be empty.
    std::string hint;
};

/// The content of an archive.
struct KvTArchiveContent {
    /// The archive's information about itself.
    KvTArchiveIdentity identity;
    /// In the order of the description.
    std::vector<KvTArchiveEntry> entries;
    /// Whether the archive was accepted, and why not. If it was not, the other fields are incomplete.
    KvTVerdict verdict;
    /// The messages that a session prints while it reads the archive; UTF-8.
    std::string messages;
    /// Its release record; nothing if it was not accepted, or if that was not asked for.
    std::optional<KvTRelease> release;
};

} // namespace KvNReflasher

/// A firmware archive without a target. An object is used from one thread. Each operation reads the archive anew.
/// Operations throw nothing but std::bad_alloc when memory is exhausted. New operations go to the end.
class KV_REFLASH_API KvIArchive {
public:
    /// An archive in `folder` with the description file of that name. Nothing is read yet. The caller deletes it.
    /// Throws std::bad_alloc when memory is exhausted.
    static KvIArchive* createInstance(const std::wstring& folder, const std::wstring& descriptionFileName);

    /// The same, and asks what vouches for the archive, as KvISession::setRelease() says: it is refused unless it is
    /// what its manifest says, and signed by somebody trusted if there is a trust folder.
    static KvIArchive* createInstance(const std::wstring& folder, const std::wstring& descriptionFileName,
                                      const KvNReflasher::KvTReleaseOptions& release);

    KvIArchive(const KvIArchive&) = delete;
    KvIArchive& operator=(const KvIArchive&) = delete;
    virtual ~KvIArchive() = default;

    /// Returns the content as a session reads it.
    [[nodiscard]] virtual KvNReflasher::KvTArchiveContent content() const = 0;
    /// Everything that is wrong with it, and everything that may not do what is expected, in the order of the
    /// description.
    [[nodiscard]] virtual std::vector<KvNReflasher::KvTFinding> findings() const = 0;

protected:
    KvIArchive() = default;
};
