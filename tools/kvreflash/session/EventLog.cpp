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
    if (isOpen()) {
        writeLine(planEvent(now(), plan));
    }
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

/// Empty if the event has no line or repeats the last percentage of its phase.
std::string EventLog::lineOf(const KvTEvent& event, const KvISession& session) {
    if (event.event == KvEEvent::phase) {
        phase_ = event.value;
        percentage_.reset();
    }
    if (event.event == KvEEvent::progress && std::exchange(percentage_, event.value) == event.value) {
        return {};
    }
    static const KvTPlan none;
    const KvTPlan& plan = session.plan() != nullptr ? *session.plan() : none;
    return notifiedEvent(now(), event, phase_, plan, session.outcomeOf(event.value));
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
