#pragma once

#include "FindingTable.h"
#include "JsonOutline.h"
#include "KvIArchive.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Collects findings.
class KvCFindingList {
public:
    /// Adds a finding on a value.
    void add(const KvTFindingRow& row, KvCOutlineValue value, std::string message, std::string hint);
    /// Adds a finding on the place at `offset`, where no value is known.
    void addAt(const KvTFindingRow& row, std::size_t offset, std::string message, std::string hint);
    /// Adds a warning on a value. `hintText` completes the rule's hint.
    void warn(KvECheckRule rule, KvCOutlineValue value, std::string message, std::string_view hintText = {});
    /// Adds a warning on a member, at its key.
    void warnAtKey(KvECheckRule rule, KvCOutlineValue member, std::string message, std::string_view hintText = {});

    /// The findings in the order of the description, whose text is `text`; findings on one place as they were added.
    /// The list is empty then.
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> takeInOrder(std::string_view text);

private:
    struct PlacedFinding {
        KvNReflasher::KvTFinding finding;
        /// In the description.
        std::size_t offset = 0;
    };

    std::vector<PlacedFinding> findings_;
};

/// `text` in quotation marks.
[[nodiscard]] std::string inQuotes(std::string_view text);
