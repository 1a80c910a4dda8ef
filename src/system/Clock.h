#pragma once

#include <cstdint>

/// The local wall-clock time, daylight saving time included, counted as if it were UTC, in seconds since 1970; 0 when
/// it cannot be converted.
[[nodiscard]] std::uint64_t localTimeSeconds();
