#include "Timestamp.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace {

using namespace std::chrono;

/// The numbers of a date and a time.
struct Numbers {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
};

/// Takes `digits` characters from the beginning of `text`, which has so many; -1 if they are not decimal digits.
int takeNumber(std::string_view& text, std::size_t digits) {
    int number = 0;
    for (const char character : text.substr(0, digits)) {
        if (character < '0' || character > '9') {
            return -1;
        }
        number = number * 10 + (character - '0');
    }
    text.remove_prefix(digits);
    return number;
}

std::optional<Numbers> numbersOf(std::string_view text, std::size_t parts) {
    constexpr std::array<std::size_t, 6> digits{4, 2, 2, 2, 2, 2};
    std::array<int, digits.size()> numbers{};
    for (std::size_t part = 0; part < parts; ++part) {
        numbers[part] = takeNumber(text, digits[part]);
        if (numbers[part] < 0) {
            return std::nullopt;
        }
    }
    return Numbers{numbers[0],
                   static_cast<unsigned>(numbers[1]),
                   static_cast<unsigned>(numbers[2]),
                   static_cast<unsigned>(numbers[3]),
                   static_cast<unsigned>(numbers[4]),
                   static_cast<unsigned>(numbers[5])};
}

bool isSound(const Numbers& numbers) {
    constexpr unsigned hours = 24;
    constexpr unsigned sixty = 60;
    return year_month_day(year(numbers.year), month(numbers.month), day(numbers.day)).ok() && numbers.hour < hours &&
           numbers.minute < sixty && numbers.second < sixty;
}

sys_seconds utcOf(const Numbers& numbers) {
    const sys_days date = year_month_day(year(numbers.year), month(numbers.month), day(numbers.day));
    return date + hours(numbers.hour) + minutes(numbers.minute) + seconds(numbers.second);
}

std::optional<sys_seconds> localOf(const Numbers& numbers) {
    constexpr int firstYear = 1900;
    std::tm local{};
    local.tm_year = numbers.year - firstYear;
    local.tm_mon = static_cast<int>(numbers.month) - 1;
    local.tm_mday = static_cast<int>(numbers.day);
    local.tm_hour = static_cast<int>(numbers.hour);
    local.tm_min = static_cast<int>(numbers.minute);
    local.tm_sec = static_cast<int>(numbers.second);
    local.tm_isdst = -1; // the time zone knows
    const std::time_t moment = std::mktime(&local);
    return moment != -1 ? std::optional(sys_seconds(seconds(moment))) : std::nullopt;
}

} // namespace

std::optional<sys_seconds> momentOf(std::string_view text) {
    constexpr std::string_view pattern = "0000-00-00T00:00:00Z";
    if (text.size() != pattern.size()) {
        return std::nullopt;
    }
    std::string digits;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (pattern[index] == '0') {
            digits += text[index];
        } else if (text[index] != pattern[index]) {
            return std::nullopt;
        }
    }
    constexpr std::size_t parts = 6;
    const std::optional<Numbers> numbers = numbersOf(digits, parts);
    return numbers && isSound(*numbers) ? std::optional(utcOf(*numbers)) : std::nullopt;
}

std::string textOfMoment(sys_seconds moment) {
    const sys_days date = floor<days>(moment);
    const year_month_day calendar(date);
    const hh_mm_ss time(moment - date);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(calendar.year()),
                  static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

std::optional<sys_seconds> momentOfSigner(std::string_view text) {
    const bool isUtc = text.ends_with('Z');
    if (isUtc) {
        text.remove_suffix(1);
    }
    struct Length {
        std::size_t characters;
        std::size_t parts;
    };
    for (const Length& length : {Length{8, 3}, Length{12, 5}, Length{14, 6}}) {
        if (text.size() != length.characters) {
            continue;
        }
        const std::optional<Numbers> numbers = numbersOf(text, length.parts);
        if (!numbers || !isSound(*numbers)) {
            return std::nullopt;
        }
        return isUtc ? std::optional(utcOf(*numbers)) : localOf(*numbers);
    }
    return std::nullopt;
}
