#include "RunningUpdate.h"

#include "CommandLine.h"
#include "TextConversion.h"
#include "ToolOutput.h"

#include <atomic>
#include <cstdlib>
#include <memory>

namespace {

constexpr std::uint32_t noMorePhases = 0xFFFFFFFF;

std::atomic<RunningUpdate*> currentUpdate = nullptr;
/// Held while an interrupt is answered: an update does not end meanwhile.
std::mutex answering;

} // namespace

RunningUpdate::RunningUpdate(KvIReflasher& session) {
    KvNReflasher::KvTUpdateElementInfo* records = nullptr;
    std::uint32_t count = 0;
    session.getUpdateElements(records, count);
    const std::unique_ptr<KvNReflasher::KvTUpdateElementInfo[]> owned(records);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (!owned[index].disabled && owned[index].hasArchiveFile != 0) {
            elements_.push_back({index, owned[index].phase, wideToUtf8(owned[index].displayName.c_str())});
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

std::set<std::uint32_t> RunningUpdate::failedElements() const {
    const std::lock_guard lock(mutex_);
    return failed_;
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
