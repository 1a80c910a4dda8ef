#pragma once

#include "EntryMatching.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

/// The sets of values that entries allow, each known by a number.
class ValueSets {
public:
    /// The number of the set of the values that `value` allows: its own or its items; `absent` when it is nothing.
    [[nodiscard]] std::uint32_t numberOf(KvNJson::jsonView value, std::uint64_t absent);
    /// True when set `part` is empty or every value of it is in set `whole`.
    [[nodiscard]] bool isWithin(std::uint32_t part, std::uint32_t whole) const;
    [[nodiscard]] bool isEmpty(std::uint32_t set) const { return sets_[set].values->empty(); }

    /// The number that stands for a value that is null.
    static constexpr std::uint64_t nullValue = 0;

private:
    using Values = std::vector<std::uint64_t>;

    /// A set with its least and greatest value, which mostly tell already whether another one is within it.
    struct Set {
        const Values* values = nullptr;
        std::uint64_t least = 0;
        std::uint64_t greatest = 0;
    };

    [[nodiscard]] std::uint64_t numberOfScalar(KvNJson::jsonView value);

    /// Sorted, without repeated values.
    std::map<Values, std::uint32_t> numbers_;
    std::vector<Set> sets_;
    /// From 1.
    std::unordered_map<std::string_view, std::uint64_t> textNumbers_;
};

/// The values that a selection allows for a board of its types, as sets: variant, board id, hardware and software
/// compatibility.
using KvTConditions = std::array<std::uint32_t, 4>;

/// Tells the conditions of selections; those that the selections of an entry share are worked out once.
class EntryConditions {
public:
    /// Begins with another entry.
    void beginEntry() { inherited_ = {}; }
    [[nodiscard]] KvTConditions of(const KvTEntrySelection& selection);
    [[nodiscard]] const ValueSets& sets() const { return sets_; }

private:
    ValueSets sets_;
    /// Numbers of the entry's own sets; nothing as long as they are not worked out.
    std::array<std::optional<std::uint32_t>, std::tuple_size_v<KvTConditions>> inherited_;
};
