#pragma once

#include "JsonModel.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

/// Makes descriptions and parts of them by chance: right ones, slightly wrong ones, and any shape. One seed, one row.
class RandomDescriptions {
public:
    explicit RandomDescriptions(unsigned seed) : random_(seed) {}

    /// A number below `count`, which is not 0.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
    bool oneIn(std::size_t count) { return below(count) == 0; }

    /// An accepted entry, or one with up to three flaws; seldom no object at all.
    JsonModel entry();
    /// A right "info" block and up to `entries` elements of "files".
    JsonModel description(std::size_t entries);
    /// Replaces, removes, doubles or exchanges a value anywhere.
    void mutate(JsonModel& value);
    /// Changes, removes or inserts a few bytes.
    void scramble(std::string& text);

private:
    JsonModel goodObject();
    JsonModel goodEntry();
    void addFlaw(JsonModel& entry);
    JsonModel valueFor(std::string_view key);
    JsonModel anyValue(std::size_t depth);
    JsonModel anyScalar();
    std::string_view anyKey();
    JsonModel& anyNode(JsonModel& value);

    std::mt19937 random_;
};
