#include "Clock.h"

#include <ctime>

std::uint64_t localTimeSeconds() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (localtime_r(&now, &local) == nullptr) {
        return 0;
    }
    local.tm_isdst = 0;
    const std::time_t seconds = timegm(&local);
    return seconds < 0 ? 0 : static_cast<std::uint64_t>(seconds);
}
