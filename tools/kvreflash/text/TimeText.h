#pragma once

#include <chrono>
#include <string>

/// A point of time as RFC 3339 has it, in UTC: "2026-03-01T12:34:56Z".
[[nodiscard]] std::string timeText(std::chrono::system_clock::time_point time);

/// The same with milliseconds: "2026-03-01T12:34:56.789Z".
[[nodiscard]] std::string preciseTimeText(std::chrono::system_clock::time_point time);
