#pragma once

#include "Crypto.h"
#include "KvCFirmwareArchive.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>

/// Knows what update files hold, and notices those that change between the plan and the end of their transfer, which an
/// archive without a manifest has nothing against.
class KvCFileWatch {
public:
    /// The content of a file.
    struct Content {
        /// In bytes.
        std::uint64_t size = 0;
        KvTSha256 digest{};

        friend bool operator==(const Content&, const Content&) = default;
    };

    /// The archive must outlive the object.
    explicit KvCFileWatch(const KvCFirmwareArchive& archive) : archive_(archive) {}

    /// What the file of this archive entry held when it was first asked for; nothing if it could not be read.
    [[nodiscard]] const std::optional<Content>& contentOf(std::uint32_t fileIndex);
    /// Lets hasChanged() look at the file from now on.
    void watch(std::uint32_t fileIndex);
    /// True if the file is watched and does not hold the same any more, or if memory is exhausted.
    [[nodiscard]] bool hasChanged(std::uint32_t fileIndex) const;
    void forget() {
        contents_.clear();
        watched_.clear();
    }

private:
    [[nodiscard]] std::optional<Content> read(std::uint32_t fileIndex) const;

    const KvCFirmwareArchive& archive_;
    /// By their archive entries.
    std::map<std::uint32_t, std::optional<Content>> contents_;
    std::set<std::uint32_t> watched_;
};
