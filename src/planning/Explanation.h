#pragma once

#include "EntryMatching.h"
#include "KvTArchiveFile.h"
#include "KvTPlan.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Finds out which entries are tried for an element, by the rule that has planned.
class KvCExplainer {
public:
    /// The accepted entries; they must outlive the explainer and stay as they are.
    explicit KvCExplainer(const std::vector<KvTArchiveFile>& files);

    [[nodiscard]] KvNReflasher::KvTExplanation explain(const KvTUpdateElement& element) const;

private:
    void listEntry(const KvTArchiveFile& entry, std::uint32_t file);

    const std::vector<KvTArchiveFile>& files_;
    /// Of each board type, the entries that are for it, in their order.
    std::unordered_map<std::string_view, std::vector<std::uint32_t>> entriesOfBoardType_;
};
