#pragma once

#include "KvIArchive.h"

#include <optional>
#include <string>

/// An archive without a target: what a session reads of it, and what is to be said about it.
class KvCArchive : public KvIArchive {
public:
    /// `release`: what the archive must be accepted for; nothing: that is not asked.
    KvCArchive(const std::wstring& folder, const std::wstring& descriptionFileName,
               std::optional<KvNReflasher::KvTReleaseOptions> release = std::nullopt);

    [[nodiscard]] KvNReflasher::KvTArchiveContent content() const override;
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> findings() const override;

private:
    /// Those of a session that shows the content.
    KvNReflasher::KvTOptions options_{};
    std::optional<KvNReflasher::KvTReleaseOptions> release_;
};
