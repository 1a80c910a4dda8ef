#include "TimeText.h"

#include <array>
#include <cstdio>

namespace {

/// "2026-03-01T12:34:56", and the milliseconds behind it.
std::pair<std::string, int> partsOf(std::chrono::system_clock::time_point time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(time - day));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return {text.data(), static_cast<int>(clock.subseconds().count())};
}

} // namespace

std::string timeText(std::chrono::system_clock::time_point time) {
    return partsOf(time).first + "Z";
}

std::string preciseTimeText(std::chrono::system_clock::time_point time) {
    const auto [seconds, milliseconds] = partsOf(time);
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03dZ", milliseconds);
    return seconds + fraction.data();
}
