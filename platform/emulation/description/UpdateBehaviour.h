#pragma once

#include "KvCErrorManager.h"

#include <cstdint>
#include <optional>
#include <vector>

/// How the update of an element goes, as the element's description tells.
struct UpdateBehaviour {
    struct Progress {
        std::uint32_t done = 0;
        std::uint32_t total = 0;
    };

    enum class Activation : std::uint8_t { immediate, reboot };

    static constexpr std::uint32_t running = 1;
    static constexpr std::uint32_t succeeded = 2;

    /// Number of the status query that is answered with the final state; finalQuery() is what holds.
    std::uint32_t polls = 3;
    /// The answers before the final one, which then is the next whatever `polls` says.
    std::optional<std::vector<Progress>> progress;
    /// The final state.
    std::uint32_t state = succeeded;
    /// What the finished update reports.
    std::vector<KvTErrorEntry> errors;
    /// When that which was installed shows.
    Activation activation = Activation::immediate;

    [[nodiscard]] std::uint32_t finalQuery() const noexcept {
        return progress ? static_cast<std::uint32_t>(progress->size()) + 1 : polls;
    }
    [[nodiscard]] bool installs() const noexcept { return state == succeeded && errors.empty(); }
};
