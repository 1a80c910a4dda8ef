#include "CallWatch.h"

#include "ToolOutput.h"

using namespace KvNReflasher;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds firstTime{30};
constexpr std::chrono::seconds interval{60};
/// Pause between two looks at the session.
constexpr std::chrono::seconds lookPause{1};

} // namespace

std::string BlockedCall::textFor(const KvTActivity& activity, const KvTPlan* plan, Clock::time_point now) {
    if (activity.call == nullptr) {
        return {};
    }
    if (activity.begin != begin_) {
        begin_ = activity.begin;
        next_ = firstTime;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - begin_);
    if (seconds < next_) {
        return {};
    }
    next_ = seconds + interval;
    std::string text = "the call ";
    text.append(activity.call);
    if (activity.element && plan != nullptr && *activity.element < plan->elements.size()) {
        text.append(" for '").append(plan->elements[*activity.element].displayName).append("'");
    }
    return text + " has not returned for " + std::to_string(seconds.count()) + " s";
}

CallWatch::CallWatch(const KvISession& session) : session_(session), thread_([this] { watch(); }) {}

CallWatch::~CallWatch() {
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
    }
    ended_.notify_all();
    thread_.join();
}

void CallWatch::watch() {
    BlockedCall blocked;
    std::unique_lock lock(mutex_);
    while (!ended_.wait_for(lock, lookPause, [this] { return hasEnded_; })) {
        if (const std::string text = blocked.textFor(session_.activity(), session_.plan(), Clock::now());
            !text.empty()) {
            say(text);
        }
    }
}
