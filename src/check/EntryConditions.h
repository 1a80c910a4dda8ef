#pragma once

#include "EntryMatching.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

/// The sets of values that entries allow, each known by a number.
class KvCValueSets {
public:
    /// The number of the set of the allowed values.
    [[nodiscard]] std::uint32_t numberOf(const KvCAllowedValues& allowed);
    /// True when set `part` is empty or every value of it is in set `whole`.
    [[nodiscard]] bool isWithin(std::uint32_t part, std::uint32_t whole) const;
    [[nodiscard]] bool isEmpty(std::uint32_t set) const { return sets_[set]->empty(); }

private:
    /// Sorted, without repeated values.
    using Values = std::vector<KvTComparedValue>;

    std::map<Values, std::uint32_t> numbers_;
    std::vector<const Values*> sets_;
};

/// The values that a selection allows for a board of its types, as the numbers of sets in the order of
/// comparedProperties.
using KvTConditions = std::array<std::uint32_t, comparedProperties.size()>;

/// Tells the conditions of selections; those that the selections of an entry share are worked out once.
class KvCEntryConditions {
public:
    /// Begins with another entry.
    void beginEntry() { shared_ = {}; }
    [[nodiscard]] KvTConditions of(const KvTEntrySelection& selection);
    [[nodiscard]] const KvCValueSets& sets() const { return sets_; }

private:
    KvCValueSets sets_;
    /// Numbers of the entry's own sets; nothing as long as they are not worked out.
    std::array<std::optional<std::uint32_t>, std::tuple_size_v<KvTConditions>> shared_;
};
