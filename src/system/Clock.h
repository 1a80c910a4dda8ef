#pragma once

#include <cstdint>

/// The local wall-clock time counted as if it were UTC, in seconds since 1970, daylight saving time not counted as
/// such; 0 when the time cannot be converted.
[[nodiscard]] std::uint64_t localTimeSeconds();
