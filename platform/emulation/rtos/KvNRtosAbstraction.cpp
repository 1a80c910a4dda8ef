#include "KvNRtosAbstraction.h"

#include "EmulationErrors.h"
#include "IpV4Text.h"
#include "Ledger.h"
#include "TimeScale.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

void KvNRtosAbstraction::usleep(std::uint32_t microseconds) {
    Ledger& ledger = Ledger::instance();
    ledger.sleptMicroseconds += microseconds;
    ++ledger.sleeps;
    const double scaled = static_cast<double>(microseconds) * timeScaleOf(std::getenv("KV_TIME_SCALE"));
    if (scaled > 0.0) {
        std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(scaled));
    }
}

void KvNRtosAbstraction::ipToString(std::uint32_t address, char* buffer, std::size_t length) {
    const std::string text = ipV4Text(address);
    const std::size_t written = std::min(text.size(), length);
    std::copy_n(text.begin(), written, buffer);
    buffer[written] = '\0';
}

std::uint32_t KvNRtosAbstraction::stringToIpV4(KvCErrorListPool& errors, const char* text) {
    const std::string_view given(text != nullptr ? text : "");
    if (const auto address = parseIpV4(given)) {
        return *address;
    }
    try {
        std::string message(1, '"');
        message += given;
        message += "\" is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are expected.";
        errors.addError(emulationError(EmulationErrors::notAnIpV4Address, std::move(message)));
    } catch (const std::bad_alloc&) {
        errors.addError(memoryExhaustedError());
    }
    return 0;
}
