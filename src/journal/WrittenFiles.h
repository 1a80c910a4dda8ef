#pragma once

#include "KvRuns.h"

#include <map>
#include <string>

/// The target that a run was made for.
struct KvTRunTarget {
    /// IPv4 address.
    std::string address;
    /// Of the processor nodes.
    std::vector<std::uint32_t> serialNumbers;
    /// As of KvTJournalOptions.
    std::vector<std::string> places;

    friend bool operator==(const KvTRunTarget&, const KvTRunTarget&) = default;
};

[[nodiscard]] KvTRunTarget targetOf(const KvNReflasher::KvTRun& run);

/// The files that the runs of a journal have written to a target, as far as it is known what they hold: SHA-256 by
/// target path.
[[nodiscard]] std::map<std::string, std::string> filesWrittenTo(const std::wstring& folder, const KvTRunTarget& target);
