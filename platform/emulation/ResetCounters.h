#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What a target's resets leave behind.
struct ResetCounters {
    std::uint64_t resets = 0;
    /// Device list sessions that still shall not find the target.
    std::uint32_t hiddenLookups = 0;
};

/// The text of a state file and back; nothing for a text that is none.
[[nodiscard]] std::string textOf(const ResetCounters& counters);
[[nodiscard]] std::optional<ResetCounters> parseResetCounters(std::string_view text);
