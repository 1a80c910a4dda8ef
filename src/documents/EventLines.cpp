#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"
#include "OutcomeRecords.h"

#include <algorithm>
#include <cstdint>
#include <utility>

// The lines of events.

namespace KvNReflasher {

namespace {

KvCJsonText eventRecord(const std::string& time, const char* name) {
    KvCJsonText event = KvCJsonText::makeObject();
    event.set("time", time);
    event.set("event", name);
    return event;
}

/// One that has a number.
KvCJsonText numberEvent(const std::string& time, const char* name, std::uint32_t value) {
    KvCJsonText event = eventRecord(time, name);
    event.set("value", value);
    return event;
}

KvCJsonText elementEvent(const std::string& time, const char* name, const KvTPlannedElement& element) {
    KvCJsonText event = numberEvent(time, name, element.index);
    event.set("name", element.displayName);
    return event;
}

std::string fileNameOf(const KvTPlan& plan, std::uint32_t fileIndex) {
    const auto element =
        std::find_if(plan.elements.begin(), plan.elements.end(), [fileIndex](const KvTPlannedElement& one) {
            return one.entry && one.entry->fileIndex == fileIndex;
        });
    return element != plan.elements.end() ? element->entry->fileName : std::string();
}

} // namespace

std::string runBeginEvent(const std::string& time, const KvTReportFacts& facts) {
    KvCJsonText event = eventRecord(time, "runBegin");
    event.set("command", facts.command);
    event.set("toolVersion", facts.toolVersion);
    event.set("target", facts.target);
    event.set("archiveFolder", facts.archiveFolder);
    return std::move(event).takeLine();
}

std::string planEvent(const std::string& time, const KvTPlan& plan) {
    KvCJsonText event = eventRecord(time, "plan");
    event.set("phaseCount", plan.phaseCount);
    event.set("updates", updatesOf(plan));
    event.set("supported", plan.supported);
    event.set("targetAddress", plan.targetAddress);
    event.set("release", releaseRecord(plan.release));
    return std::move(event).takeLine();
}

std::string lockedEvent(const std::string& time) {
    return eventRecord(time, "locked").takeLine();
}

std::string phaseEvent(const std::string& time, std::uint32_t number) {
    return numberEvent(time, "phase", number).takeLine();
}

std::string progressEvent(const std::string& time, std::uint32_t percent) {
    return numberEvent(time, "progress", percent).takeLine();
}

std::string transferEvent(const std::string& time, const std::string& fileName, std::uint32_t phase, bool succeeded) {
    KvCJsonText event = eventRecord(time, "transfer");
    event.set("file", fileName);
    event.set("phase", phase);
    event.set("succeeded", succeeded);
    return std::move(event).takeLine();
}

std::string elementStartEvent(const std::string& time, const KvTPlannedElement& element) {
    KvCJsonText event = elementEvent(time, "elementStart", element);
    event.set("address", element.address);
    event.set("file", element.entry ? textValue(element.entry->fileName) : KvCJsonText(""));
    return std::move(event).takeLine();
}

std::string elementErrorEvent(const std::string& time, const KvTPlannedElement& element, const std::string& reason) {
    KvCJsonText event = elementEvent(time, "elementError", element);
    event.set("reason", reason);
    return std::move(event).takeLine();
}

std::string elementEndEvent(const std::string& time, const KvTPlannedElement& element, bool succeeded, KvEResult result,
                            const std::string& reason) {
    KvCJsonText event = elementEvent(time, "elementEnd", element);
    event.set("succeeded", succeeded);
    event.set("result", codeOf(result));
    event.set("reason", reason);
    return std::move(event).takeLine();
}

std::string unlockedEvent(const std::string& time, bool succeeded) {
    KvCJsonText event = eventRecord(time, "unlocked");
    event.set("succeeded", succeeded);
    return std::move(event).takeLine();
}

std::string notifiedEvent(const std::string& time, const KvTEvent& event, std::uint32_t phase, const KvTPlan& plan,
                          const KvTElementOutcome& outcome) {
    const auto element = [&]() -> const KvTPlannedElement& { return plan.elements.at(event.value); };
    switch (event.event) {
    case KvEEvent::phase:
        return phaseEvent(time, event.value);
    case KvEEvent::progress:
        return progressEvent(time, event.value);
    case KvEEvent::elementError:
        return elementErrorEvent(time, element(), outcome.reason);
    case KvEEvent::locked:
        return lockedEvent(time);
    case KvEEvent::unlocked:
        return unlockedEvent(time, event.succeeded);
    case KvEEvent::transfer:
        return transferEvent(time, fileNameOf(plan, event.value), phase, event.succeeded);
    case KvEEvent::elementStart:
        return elementStartEvent(time, element());
    case KvEEvent::elementEnd:
        return elementEndEvent(time, element(), event.succeeded, outcome.result, outcome.reason);
    case KvEEvent::stalled:
        break; // what does not change is not repeated
    }
    return {};
}

std::string verifyEvent(const std::string& time, const KvTVerification& verification, const KvTVerdict& verdict) {
    KvCJsonText event = eventRecord(time, "verify");
    event.set("counts", verifiedCounts(verification));
    event.set("failure", codeOrNull(verdict.failure));
    return std::move(event).takeLine();
}

std::string runEndEvent(const std::string& time, const KvTVerdict& verdict, int exitCode) {
    KvCJsonText event = eventRecord(time, "runEnd");
    setVerdict(event, verdict);
    event.set("exitCode", static_cast<std::uint32_t>(exitCode));
    return std::move(event).takeLine();
}

} // namespace KvNReflasher
