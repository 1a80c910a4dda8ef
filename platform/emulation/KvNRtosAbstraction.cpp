#include "KvNRtosAbstraction.h"

#include "EmulationErrors.h"
#include "Ledger.h"
#include "TimeScale.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace {

/// The bytes of an IPv4 address in order, which are also the bytes of its number in memory.
using AddressBytes = std::array<std::uint8_t, 4>;

/// A decimal number of 0 to 255 that fills `text`.
std::optional<std::uint8_t> parseByte(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (const char character : text) {
        if (character < '0' || character > '9') {
            return std::nullopt;
        }
        number = number * 10 + static_cast<std::uint32_t>(character - '0');
        if (number > 255) {
            return std::nullopt;
        }
    }
    return static_cast<std::uint8_t>(number);
}

std::optional<AddressBytes> parseAddress(std::string_view text) {
    AddressBytes bytes{};
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const bool isLast = index + 1 == bytes.size();
        const std::size_t end = isLast ? text.size() : text.find('.');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const auto byte = parseByte(text.substr(0, end));
        if (!byte) {
            return std::nullopt;
        }
        bytes[index] = *byte;
        text.remove_prefix(isLast ? end : end + 1);
    }
    return bytes;
}

} // namespace

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
    std::string text;
    for (const std::uint8_t byte : std::bit_cast<AddressBytes>(address)) {
        if (!text.empty()) {
            text += '.';
        }
        text += std::to_string(byte);
    }
    const std::size_t written = std::min(text.size(), length);
    std::copy_n(text.begin(), written, buffer);
    buffer[written] = '\0';
}

std::uint32_t KvNRtosAbstraction::stringToIpV4(KvCErrorListPool& errors, const char* text) {
    const std::string_view given(text != nullptr ? text : "");
    if (const auto bytes = parseAddress(given)) {
        return std::bit_cast<std::uint32_t>(*bytes);
    }
    std::string message(1, '"');
    message += given;
    message += "\" is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are expected.";
    errors.addError(emulationError(EmulationErrors::notAnIpV4Address, std::move(message)));
    return 0;
}
