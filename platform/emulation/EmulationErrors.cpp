#include "EmulationErrors.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

const Clock::time_point processBegin = Clock::now();

} // namespace

std::uint64_t EmulationErrors::timeStampNow() noexcept {
    const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - processBegin).count();
    return static_cast<std::uint64_t>(std::max<decltype(elapsed)>(elapsed, 1));
}

void addEmulationError(KvCErrorListPool& errors, std::uint32_t code, std::string text) {
    KvTErrorEntry entry;
    entry.code = code;
    entry.text = std::move(text);
    entry.timeStamp = EmulationErrors::timeStampNow();
    errors.addError(std::move(entry));
}
