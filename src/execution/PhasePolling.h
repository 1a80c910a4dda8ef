#pragma once

#include "UpdateContext.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

/// The elements of one phase that are to be updated, in the order of the element list.
using KvTPhaseList = std::vector<const KvTUpdateElement*>;

/// For how long the started updates of a phase have shown nothing new. A round of status queries counts as long as its
/// pause is, whatever the pause takes, and the time within its calls.
class KvCStall {
public:
    /// A round has ended, `calls` of it within its calls.
    void addRound(bool hasChanged, std::chrono::nanoseconds calls);
    [[nodiscard]] std::uint32_t seconds() const {
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(unchanged_).count());
    }
    /// True if it is to be said: after 30 s, and then once a minute.
    [[nodiscard]] bool isDue();

private:
    std::chrono::nanoseconds unchanged_{0};
    std::uint32_t nextSeconds_ = firstSeconds;
    static constexpr std::uint32_t firstSeconds = 30;
};

/// Polls the started updates of a phase.
class KvCPhasePolling {
public:
    /// Both must outlive the object.
    KvCPhasePolling(const KvTUpdateContext& context, const KvTPhaseList& list) : context_(context), list_(list) {}

    /// Asks until no update is running any more or waiting is given up. Leaves the progress line open.
    void pollUpdates();

private:
    struct Round;
    [[nodiscard]] Round pollOnce() const;
    [[nodiscard]] std::uint32_t pollElement(const KvTUpdateElement& element) const;
    [[nodiscard]] std::optional<KvTTargetAnswer> askForStatus(const KvTUpdateElement& element) const;
    void failStatus(const KvTUpdateElement& element) const;
    void watchStall(const Round& round);

    const KvTUpdateContext& context_;
    const KvTPhaseList& list_;
    KvCStall stall_;
};
