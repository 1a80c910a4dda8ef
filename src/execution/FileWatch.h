#pragma once

#include "Crypto.h"
#include "KvCFirmwareArchive.h"

#include <cstdint>
#include <map>
#include <optional>

/// Notices update files that change between the plan and the end of their transfer, which an archive without a manifest
/// has nothing against.
class KvCFileWatch {
public:
    /// The archive must outlive the object.
    explicit KvCFileWatch(const KvCFirmwareArchive& archive) : archive_(archive) {}

    /// Notes what the file of this archive entry holds now, unless that was noted before.
    void note(std::uint32_t fileIndex);
    /// True if the file was noted and does not hold the same any more, or if memory is exhausted.
    [[nodiscard]] bool hasChanged(std::uint32_t fileIndex) const;
    void forget() { noted_.clear(); }

private:
    [[nodiscard]] std::optional<KvTSha256> digestOf(std::uint32_t fileIndex) const;

    const KvCFirmwareArchive& archive_;
    /// By their archive entries; nothing for a file that could not be read.
    std::map<std::uint32_t, std::optional<KvTSha256>> noted_;
};
