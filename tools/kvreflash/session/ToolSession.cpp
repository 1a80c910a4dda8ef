#include "ToolSession.h"

#include "EmulatedTargets.h"
#include "Terminal.h"
#include "ToolOutput.h"

#include <new>
#include <utility>

using namespace KvNReflasher;

ToolSession::ToolSession(const KvTCommandLine& line)
    : line_(line), session_(KvISession::createInstance(line.options)), shown_(line.json ? stderr : stdout) {
    if (session_ == nullptr) {
        throw std::bad_alloc();
    }
    if (line.json || line.reportFile || isTerminal(stdout) || !writesAnyWideText()) {
        session_->setMessageFunction(takeMessage, this);
    }
    if (line.options.mode == performUpdate) {
        session_->setEventFunction(takeEvent, this);
    }
}

bool ToolSession::openEvents() {
    return !line_.eventsFile || events_.open(*line_.eventsFile);
}

void ToolSession::keepMessages() {
    shown_ = nullptr;
    session_->setMessageFunction(takeMessage, this);
}

bool ToolSession::prepare() {
    if (std::string fault = serveEmulatedTargets(line_.emulatedTargets); !fault.empty()) {
        served_ = {KvEFailure::target, std::move(fault)};
        return false;
    }
    return session_->prepare() == 0;
}

KvTVerdict ToolSession::verdict() const {
    KvTVerdict verdict = served_;
    verdict.add(session_->outcome().verdict);
    if (served_.isSuccess() && verdict.failure == KvEFailure::target && line_.options.target.empty()) {
        verdict.message = "give the target with -t HOST";
    }
    return verdict;
}

bool ToolSession::run() {
    if (line_.options.mode != performUpdate) {
        return session_->run();
    }
    update_.emplace(*session_->plan());
    const bool succeeded = session_->run();
    update_.reset();
    return succeeded;
}

void ToolSession::takeMessage(const std::string& message, void* context) {
    auto& session = *static_cast<ToolSession*>(context);
    if (session.shown_ != nullptr) {
        writeText(session.shown_, message);
    }
    session.messages_ += message;
}

void ToolSession::takeEvent(const KvTEvent& event, void* context) {
    static_cast<ToolSession*>(context)->onEvent(event);
}

void ToolSession::onEvent(const KvTEvent& event) {
    switch (event.event) {
    case KvEEvent::phase:
        events_.write("phase", event.value);
        progress_.beginPhase(event.value);
        if (update_) {
            update_->beginPhase(event.value);
        }
        break;
    case KvEEvent::progress:
        events_.write("progress", event.value);
        if (line_.progress == KvEProgress::plain) {
            writeText(shown_, progress_.lineFor(event.value));
        }
        break;
    case KvEEvent::elementError:
        events_.write("elementError", event.value);
        if (update_) {
            update_->elementFailed(event.value);
        }
        break;
    case KvEEvent::locked:
    case KvEEvent::unlocked:
    case KvEEvent::transfer:
    case KvEEvent::elementStart:
    case KvEEvent::elementEnd:
        break;
    }
}
