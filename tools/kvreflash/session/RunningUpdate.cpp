#include "RunningUpdate.h"

#include "ExitCodes.h"
#include "ReplacedFile.h"
#include "Texts.h"
#include "ToolOutput.h"

#include <cstdlib>
#include <utility>

using namespace KvNReflasher;
using Clock = std::chrono::steady_clock;

namespace {

/// The update of the running command. It does not end while somebody holds the mutex.
std::mutex currentMutex;
RunningUpdate* currentUpdate = nullptr;
/// Nothing is left that a request could end: the tool is about to return its exit code.
bool hasUpdated = false;
std::condition_variable updateEnded;

/// Says the answer, and ends the tool if it asks for that. Nothing is to run any more then, whatever the other thread
/// is doing; messages are flushed one by one.
void carryOut(const RunningUpdate::Answer& answer) {
    if (!answer.text.empty()) {
        writeText(stderr, answer.text);
    }
    if (answer.endsTool) {
        removeTemporaryFiles();
        std::_Exit(exitInterrupted);
    }
}

/// Ends the tool unless its update has ended. The mutex must be held.
void endUnlessUpdated() {
    if (!hasUpdated) {
        removeTemporaryFiles();
        std::_Exit(exitInterrupted);
    }
}

void append(std::string& list, const std::string& item) {
    list.append(list.empty() ? "" : ", ").append(item);
}

} // namespace

std::optional<StopLadder::Rung> StopLadder::request(Clock::time_point now) {
    if (last_ && now - *last_ <= window) {
        return {};
    }
    last_ = now;
    if (rung_ != Rung::end) {
        rung_ = static_cast<Rung>(static_cast<int>(rung_) + 1);
    }
    return rung_;
}

bool StopLadder::climbTo(Rung rung, Clock::time_point now) {
    if (rung_ >= rung) {
        return false;
    }
    last_ = now;
    rung_ = rung;
    return true;
}

RunningUpdate::RunningUpdate(RequestStop requestStop) : requestStop_(std::move(requestStop)) {
    const std::lock_guard lock(currentMutex);
    currentUpdate = this;
    hasUpdated = false;
}

RunningUpdate::~RunningUpdate() {
    const std::lock_guard lock(currentMutex);
    currentUpdate = nullptr;
    hasUpdated = true;
    updateEnded.notify_all();
}

RunningUpdate* RunningUpdate::current() {
    const std::lock_guard lock(currentMutex);
    return currentUpdate;
}

void RunningUpdate::setPlan(const KvTPlan& plan) {
    const std::lock_guard lock(mutex_);
    elements_.clear();
    for (const KvTPlannedElement& element : plan.elements) {
        std::string board = element.boardName;
        if (element.serialNumber != 0) {
            board.append(", S/N ").append(std::to_string(element.serialNumber));
        }
        elements_.push_back({visibleInLine(element.displayName), visibleInLine(board)});
    }
}

void RunningUpdate::onEvent(const KvTEvent& event) {
    const std::lock_guard lock(mutex_);
    if (event.event == KvEEvent::elementStart) {
        inProgress_.insert(event.value);
    } else if (event.event == KvEEvent::elementEnd) {
        inProgress_.erase(event.value);
    }
}

bool RunningUpdate::isStopRequested() const {
    const std::lock_guard lock(mutex_);
    return ladder_.rung() != StopLadder::Rung::none;
}

std::string RunningUpdate::namesInProgress() const {
    std::string names;
    for (const std::uint32_t index : inProgress_) {
        append(names, "'" + elements_.at(index).name + "'");
    }
    return names.empty() ? "no element is in progress" : "in progress: " + names;
}

/// Each board once.
std::string RunningUpdate::boardsInProgress() const {
    std::set<std::string> seen;
    std::string boards;
    for (const std::uint32_t index : inProgress_) {
        const std::string& board = elements_.at(index).board;
        if (seen.insert(board).second) {
            append(boards, board);
        }
    }
    return boards;
}

RunningUpdate::Answer RunningUpdate::answerTo(StopLadder::Rung rung) {
    switch (rung) {
    case StopLadder::Rung::none:
        break;
    case StopLadder::Rung::finishBegun:
        requestStop_(KvEStop::finishBegun);
        return {"\nkvreflash: the update is asked to end: nothing new begins, and what has begun is awaited. Ask again "
                "to give up waiting.\n",
                false};
    case StopLadder::Rung::giveUp:
        requestStop_(KvEStop::giveUp);
        return {"\nkvreflash: waiting is given up; " + namesInProgress() + ". Ask again to end at once.\n", false};
    case StopLadder::Rung::end: {
        const std::string boards = boardsInProgress();
        return {"\nkvreflash: ended at once; " +
                    (boards.empty() ? "no update was in progress" : "this may have cut an update on: " + boards) + "\n",
                true};
    }
    }
    return {};
}

RunningUpdate::Answer RunningUpdate::request(Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    const std::optional<StopLadder::Rung> rung = ladder_.request(now);
    return rung ? answerTo(*rung) : Answer();
}

RunningUpdate::Answer RunningUpdate::climbTo(StopLadder::Rung rung, Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    return ladder_.climbTo(rung, now) ? answerTo(rung) : Answer();
}

void answerStopRequest() {
    const std::lock_guard lock(currentMutex);
    if (currentUpdate != nullptr) {
        carryOut(currentUpdate->request(Clock::now()));
    } else {
        endUnlessUpdated();
    }
}

void answerLostTerminal() {
    const std::lock_guard lock(currentMutex);
    if (currentUpdate == nullptr) {
        endUnlessUpdated();
    }
}

void answerClosing(std::chrono::milliseconds patience) {
    std::unique_lock lock(currentMutex);
    if (currentUpdate == nullptr) {
        endUnlessUpdated();
        return;
    }
    const auto hasEnded = [] { return currentUpdate == nullptr; };
    carryOut(currentUpdate->climbTo(StopLadder::Rung::finishBegun, Clock::now()));
    if (!updateEnded.wait_for(lock, patience, hasEnded)) {
        carryOut(currentUpdate->climbTo(StopLadder::Rung::giveUp, Clock::now()));
        updateEnded.wait(lock, hasEnded);
    }
}
