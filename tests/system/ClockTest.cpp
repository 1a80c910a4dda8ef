#include "Clock.h"

#include "EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

namespace {

/// The process's time zone while it lives.
class TimeZone {
public:
    explicit TimeZone(const std::string& zone) : variable_(std::in_place, "TZ", zone) { tzset(); }
    TimeZone(const TimeZone&) = delete;
    TimeZone(TimeZone&&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    TimeZone& operator=(TimeZone&&) = delete;
    ~TimeZone() {
        variable_.reset();
        tzset();
    }

private:
    std::optional<EnvironmentVariable> variable_;
};

/// A moment's local calendar time, counted as if it were UTC.
std::int64_t calendarSeconds(std::time_t moment) {
    using namespace std::chrono;
    const std::tm* const local = std::localtime(&moment);
    const sys_days day = year(local->tm_year + 1900) / (local->tm_mon + 1) / local->tm_mday;
    return duration_cast<seconds>(day.time_since_epoch()).count() +
           (hours(local->tm_hour) + minutes(local->tm_min) + seconds(local->tm_sec)).count();
}

struct ZoneCase {
    const char* name;
    const char* zone;
    /// Seconds by which local time, daylight saving time included, is ahead of UTC.
    std::int64_t offset;

    friend std::ostream& operator<<(std::ostream& stream, const ZoneCase& row) { return stream << row.name; }
};

constexpr ZoneCase zoneCases[] = {
    {"Utc", "UTC0", 0},
    {"EastOfUtc", "KVE-5:30", 19800},
    {"WestOfUtc", "KVW8", -28800},
    {"ADayAhead", "KVA-14", 50400},
};

} // namespace

class ClockInZone : public testing::TestWithParam<ZoneCase> {};

TEST_P(ClockInZone, LocalTimeIsCountedAsIfItWereUtc) {
    const TimeZone zone(GetParam().zone);
    const std::int64_t before = std::time(nullptr);
    const auto time = static_cast<std::int64_t>(localTimeSeconds());
    const std::int64_t after = std::time(nullptr);
    EXPECT_GE(time, before + GetParam().offset);
    EXPECT_LE(time, after + GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Zones, ClockInZone, testing::ValuesIn(zoneCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Clock, DaylightSavingTimeIsPartOfTheLocalTime) {
    // Daylight saving time all year, where a rule of its own can be given.
    const TimeZone zone("KVS5KVD4,0/0,J365/25");
    const std::time_t before = std::time(nullptr);
    const auto time = static_cast<std::int64_t>(localTimeSeconds());
    const std::time_t after = std::time(nullptr);
    EXPECT_GE(time, calendarSeconds(before));
    EXPECT_LE(time, calendarSeconds(after));
    const std::int64_t saving = std::localtime(&before)->tm_isdst > 0 ? 3600 : 0;
    EXPECT_GE(time, before - 18000 + saving);
    EXPECT_LE(time, after - 18000 + saving);
}
