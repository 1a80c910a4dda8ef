#pragma once

#include "KvTPlan.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The update that is under way, as far as somebody who interrupts it must know. The session's notifications and
/// interrupts arrive on different threads.
class RunningUpdate {
public:
    /// A second interrupt within this time ends the tool.
    static constexpr std::chrono::seconds interruptWindow{3};

    /// What an interrupt leads to.
    struct Answer {
        /// To be told on standard error.
        std::string text;
        bool endsTool = false;
    };

    /// An update by this plan; makes it the one that interrupts concern until the object is gone.
    explicit RunningUpdate(const KvNReflasher::KvTPlan& plan);
    RunningUpdate(const RunningUpdate&) = delete;
    RunningUpdate& operator=(const RunningUpdate&) = delete;
    ~RunningUpdate();

    /// 0xFFFFFFFF: the last phase has ended.
    void beginPhase(std::uint32_t phase);
    void elementFailed(std::uint32_t index);

    /// The first interrupt warns, a second one soon after ends the tool.
    [[nodiscard]] Answer interrupt(std::chrono::steady_clock::time_point now);

    /// The update under way; null: none.
    [[nodiscard]] static RunningUpdate* current();

private:
    struct Element {
        std::uint32_t index = 0;
        std::uint32_t phase = 0;
        std::string name;
    };
    [[nodiscard]] std::string unfinishedElements() const;

    std::vector<Element> elements_;
    std::mutex mutex_;
    std::optional<std::uint32_t> phase_;
    std::set<std::uint32_t> failed_;
    std::optional<std::chrono::steady_clock::time_point> lastInterrupt_;
};

/// To be called for each interrupt of the user, on a thread of its own. Ends the process with the exit code 130, unless
/// an update is under way that has not been interrupted before.
void answerInterrupt();
