#pragma once

#include <cstdint>
#include <string>

/// The progress of an update as lines for a log: one for every tenth of a phase that is reached.
class PlainProgress {
public:
    /// A phase begins; 0xFFFFFFFF: the last one has ended.
    void beginPhase(std::uint32_t phase) {
        phase_ = phase;
        shownTenths_ = 0;
    }
    /// The line that tells `percentage` of the phase; empty when its tenth has been told.
    [[nodiscard]] std::string lineFor(std::uint32_t percentage) {
        constexpr std::uint32_t tenth = 10;
        if (percentage / tenth <= shownTenths_) {
            return {};
        }
        shownTenths_ = percentage / tenth;
        return "Phase " + std::to_string(phase_) + ": " + std::to_string(shownTenths_ * tenth) + "%\n";
    }

private:
    std::uint32_t phase_ = 0;
    std::uint32_t shownTenths_ = 0;
};
