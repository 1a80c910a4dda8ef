#pragma once

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

/// The factor that KV_TIME_SCALE gives: `text` is the variable's value, null when it is not set. Everything but a
/// number that is not negative and at most `longestScale` counts as real time.
[[nodiscard]] inline double timeScaleOf(const char* text) {
    constexpr double realTime = 1.0;
    constexpr double longestScale = 1.0e6;
    if (text == nullptr) {
        return realTime;
    }
    const std::string_view digits(text);
    double scale = realTime;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), scale);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        return realTime;
    }
    return !std::signbit(scale) && scale <= longestScale ? scale : realTime;
}
