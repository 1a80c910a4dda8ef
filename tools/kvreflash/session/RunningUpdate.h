#pragma once

#include "KvISession.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The requests of the user to end an update: each one asks for more than the one before.
class StopLadder {
public:
    enum class Rung : std::uint8_t {
        none,
        /// Nothing new begins; what has begun is awaited.
        finishBegun,
        /// Waiting is given up.
        giveUp,
        /// The tool ends at once.
        end
    };
    /// Requests that arrive within this time are one: a terminal sends one to each process of a group, and whatever
    /// launched the tool may pass its own on.
    static constexpr std::chrono::seconds window{1};

    /// Takes a request; the rung that it reaches, or nothing if it is the same as the last one.
    [[nodiscard]] std::optional<Rung> request(std::chrono::steady_clock::time_point now);
    /// Climbs to this rung; false if it is reached already.
    [[nodiscard]] bool climbTo(Rung rung, std::chrono::steady_clock::time_point now);
    [[nodiscard]] Rung rung() const { return rung_; }

private:
    Rung rung_ = Rung::none;
    std::optional<std::chrono::steady_clock::time_point> last_;
};

/// The update that a command makes, from its preparation to its report, as far as somebody who ends it must know. The
/// session's events and the requests to end it arrive on different threads.
class RunningUpdate {
public:
    /// What a request leads to.
    struct Answer {
        /// To be said on standard error; empty: nothing.
        std::string text;
        bool endsTool = false;
    };

    /// Asks the session to end; called on the thread that a request arrives on.
    using RequestStop = std::function<void(KvNReflasher::KvEStop)>;

    /// Makes it the one that requests concern until the object is gone.
    explicit RunningUpdate(RequestStop requestStop);
    RunningUpdate(const RunningUpdate&) = delete;
    RunningUpdate& operator=(const RunningUpdate&) = delete;
    ~RunningUpdate();

    /// The elements that are to be updated.
    void setPlan(const KvNReflasher::KvTPlan& plan);
    /// An event of the session.
    void onEvent(const KvNReflasher::KvTEvent& event);

    [[nodiscard]] Answer request(std::chrono::steady_clock::time_point now);
    [[nodiscard]] Answer climbTo(StopLadder::Rung rung, std::chrono::steady_clock::time_point now);
    /// Nothing new is to begin.
    [[nodiscard]] bool isStopRequested() const;

    /// The update of the running command; null: none.
    [[nodiscard]] static RunningUpdate* current();

private:
    struct Element {
        std::string name;
        std::string board;
    };
    [[nodiscard]] Answer answerTo(StopLadder::Rung rung);
    [[nodiscard]] std::string namesInProgress() const;
    [[nodiscard]] std::string boardsInProgress() const;

    const RequestStop requestStop_;
    mutable std::mutex mutex_;
    StopLadder ladder_;
    /// By index.
    std::vector<Element> elements_;
    /// Begun, and neither ended nor failed.
    std::set<std::uint32_t> inProgress_;
};

/// To be called for each request of the user to end the tool, on a thread of its own. Asks the running update to end,
/// or ends the process with the exit code 130: at once if no update is running, at the third request otherwise.
void answerStopRequest();

/// To be called when the terminal is gone. An update goes on; everything else ends with the exit code 130.
void answerLostTerminal();

/// To be called when the window of the tool is closed or the user logs off. Asks the running update to end, and after
/// `patience` to give up waiting; does not return while the update goes on, since the system ends the process then.
void answerClosing(std::chrono::milliseconds patience);
