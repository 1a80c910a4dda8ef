#pragma once

#include "KvIArchive.h"

#include <string>

/// An archive without a target: what a session reads of it, and what is to be said about it.
class KvCArchive : public KvIArchive {
public:
    KvCArchive(const std::wstring& folder, const std::wstring& descriptionFileName);

    [[nodiscard]] KvNReflasher::KvTArchiveContent content() const override;
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> findings() const override;

private:
    /// Those of a session that shows the content.
    KvNReflasher::KvTOptions options_{};
};
