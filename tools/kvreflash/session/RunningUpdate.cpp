#include "RunningUpdate.h"

#include "ExitCodes.h"
#include "Texts.h"
#include "ToolOutput.h"

#include <atomic>
#include <cstdlib>

namespace {

constexpr std::uint32_t noMorePhases = 0xFFFFFFFF;

std::atomic<RunningUpdate*> currentUpdate = nullptr;
/// Held while an interrupt is answered: an update does not end meanwhile.
std::mutex answering;

} // namespace

RunningUpdate::RunningUpdate(const KvNReflasher::KvTPlan& plan) {
    for (const KvNReflasher::KvTPlannedElement& element : plan.elements) {
        if (element.phase) {
            elements_.push_back({element.index, *element.phase, visibleInLine(element.displayName)});
        }
    }
    currentUpdate = this;
}

RunningUpdate::~RunningUpdate() {
    const std::lock_guard lock(answering);
    currentUpdate = nullptr;
}

RunningUpdate* RunningUpdate::current() {
    return currentUpdate;
}

void RunningUpdate::beginPhase(std::uint32_t phase) {
    const std::lock_guard lock(mutex_);
    phase_ = phase;
}

void RunningUpdate::elementFailed(std::uint32_t index) {
    const std::lock_guard lock(mutex_);
    failed_.insert(index);
}

std::string RunningUpdate::unfinishedElements() const {
    if (!phase_) {
        return "No phase had begun.\n";
    }
    if (*phase_ == noMorePhases) {
        return "All phases had ended.\n";
    }
    std::string text = "Elements of phase " + std::to_string(*phase_) + " that were not reported failed:\n";
    for (const Element& element : elements_) {
        if (element.phase == *phase_ && failed_.count(element.index) == 0) {
            text += "  " + std::to_string(element.index) + "  " + element.name + "\n";
        }
    }
    return text;
}

RunningUpdate::Answer RunningUpdate::interrupt(std::chrono::steady_clock::time_point now) {
    const std::lock_guard lock(mutex_);
    if (lastInterrupt_ && now - *lastInterrupt_ <= interruptWindow) {
        return {"\nkvreflash: interrupted; the target may be incomplete. " + unfinishedElements(), true};
    }
    lastInterrupt_ = now;
    return {"\nkvreflash: the target is being updated; interrupting may leave it incomplete. The update goes on. "
            "Interrupt again within " +
                std::to_string(interruptWindow.count()) + " s to end at once.\n",
            false};
}

void answerInterrupt() {
    const std::lock_guard lock(answering);
    RunningUpdate* const update = RunningUpdate::current();
    if (update != nullptr) {
        const RunningUpdate::Answer answer = update->interrupt(std::chrono::steady_clock::now());
        writeText(stderr, answer.text);
        if (!answer.endsTool) {
            return;
        }
    }
    // Nothing is to run any more, whatever the other thread is doing; messages are flushed one by one.
    std::_Exit(exitInterrupted);
}
