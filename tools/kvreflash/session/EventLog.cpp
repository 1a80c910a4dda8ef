#include "EventLog.h"

#include "Streams.h"
#include "TimeText.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <chrono>
#include <utility>

using namespace KvNReflasher;

namespace {

std::string now() {
    return preciseTimeText(std::chrono::system_clock::now());
}

} // namespace

bool EventLog::open(const std::string& path) {
    file_ = path == "-" ? stderr : createFile(filePath(path));
    return file_ != nullptr;
}

void EventLog::writeRunBegin(const KvTReportFacts& facts) {
    if (isOpen()) {
        writeLine(runBeginEvent(now(), facts));
    }
}

void EventLog::writePlan(const KvTPlan& plan) {
    if (!isOpen()) {
        return;
    }
    for (const KvTPlannedElement& element : plan.elements) {
        if (element.entry) {
            fileNames_.emplace(element.entry->fileIndex, element.entry->fileName);
        }
    }
    writeLine(planEvent(now(), plan));
}

void EventLog::write(const KvTEvent& event, const KvISession& session) {
    if (isOpen()) {
        writeLine(lineOf(event, session));
    }
}

void EventLog::writeVerification(const KvTVerification& verification, const KvTVerdict& verdict) {
    if (isOpen()) {
        writeLine(verifyEvent(now(), verification, verdict));
    }
}

void EventLog::writeRunEnd(const KvTVerdict& verdict, int exitCode) {
    if (isOpen()) {
        writeLine(runEndEvent(now(), verdict, exitCode));
    }
}

std::string EventLog::lineOf(const KvTEvent& event, const KvISession& session) {
    const auto element = [&]() -> const KvTPlannedElement& { return session.plan()->elements.at(event.value); };
    switch (event.event) {
    case KvEEvent::phase:
        phase_ = event.value;
        percentage_.reset();
        return phaseEvent(now(), event.value);
    case KvEEvent::progress:
        return std::exchange(percentage_, event.value) == event.value ? "" : progressEvent(now(), event.value);
    case KvEEvent::elementError:
        return elementErrorEvent(now(), element(), session.outcomeOf(event.value).reason);
    case KvEEvent::locked:
        return lockedEvent(now());
    case KvEEvent::unlocked:
        return unlockedEvent(now(), event.succeeded);
    case KvEEvent::transfer:
        return transferEvent(now(), fileNames_.at(event.value), phase_, event.succeeded);
    case KvEEvent::elementStart:
        return elementStartEvent(now(), element());
    case KvEEvent::elementEnd: {
        const KvTElementOutcome outcome = session.outcomeOf(event.value);
        return elementEndEvent(now(), element(), event.succeeded, outcome.result, outcome.reason);
    }
    case KvEEvent::stalled:
        break; // what does not change is not repeated
    }
    return {};
}

void EventLog::writeLine(const std::string& line) {
    const bool isWritten =
        file_ == stderr ? writeToErrors(line)
                        : std::fwrite(line.data(), 1, line.size(), file_) == line.size() && std::fflush(file_) == 0;
    complete_ = isWritten && complete_;
}

bool EventLog::close() {
    if (file_ != nullptr && file_ != stderr) {
        complete_ = std::fclose(file_) == 0 && complete_;
    }
    file_ = nullptr;
    return complete_;
}
