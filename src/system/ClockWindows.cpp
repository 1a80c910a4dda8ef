#include "Clock.h"

#include <ctime>

std::uint64_t localTimeSeconds() {
    const __time64_t now = _time64(nullptr);
    std::tm local{};
    if (_localtime64_s(&local, &now) != 0) {
        return 0;
    }
    local.tm_isdst = 0;
    const __time64_t seconds = _mkgmtime64(&local);
    return seconds < 0 ? 0 : static_cast<std::uint64_t>(seconds);
}
