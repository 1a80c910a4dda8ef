#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvRunDocuments.h"
#include "OutcomeRecords.h"

#include <cstddef>

namespace KvNReflasher {

namespace {

KvCJsonText textOrNull(const std::string& text) {
    return text.empty() ? KvCJsonText() : textValue(text);
}

KvCJsonText targetRecord(const KvTRun& run) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("given", run.target);
    record.set("address", run.targetAddress);
    record.set("nodeSerialNumbers",
               listOf(run.nodeSerialNumbers, [](std::uint32_t number) { return KvCJsonText(number); }));
    record.set("places", listOf(run.places, textValue));
    return record;
}

/// What the run has written at its end; null if it has not.
KvCJsonText endRecord(const KvTRun& run) {
    if (run.end.empty()) {
        return {};
    }
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("time", run.end);
    setVerdict(record, run.verdict);
    record.set("exitCode", static_cast<std::uint32_t>(run.exitCode));
    return record;
}

KvCJsonText runRecord(const KvTRun& run) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("id", run.id);
    record.set("state", codeOf(run.state));
    record.set("open", run.isOpen());
    record.set("command", run.command);
    record.set("toolVersion", run.toolVersion);
    record.set("begin", run.begin);
    record.set("end", endRecord(run));
    record.set("user", run.user);
    record.set("computer", run.computer);
    record.set("target", targetRecord(run));
    record.set("archiveFolder", run.archiveFolder);
    record.set("archive", run.archive ? identityRecord(*run.archive) : KvCJsonText());
    record.set("plan", textOrNull(run.planId));
    record.set("resumes", textOrNull(run.resumes));
    record.set("resumedBy", textOrNull(run.resumedBy));
    record.set("fault", textOrNull(run.fault));
    return record;
}

/// Null if the target was not looked at, or does not list the element.
KvCJsonText afterRecord(const KvTRunRecord& run, std::size_t index) {
    const bool isFound =
        run.verification && index < run.verification->look.elements.size() && run.verification->look.elements[index];
    return isFound ? installedRecord(*run.verification->look.elements[index]) : KvCJsonText();
}

KvCJsonText elementRecord(const KvTRunRecord& run, std::size_t index) {
    KvCJsonText record = plannedElementRecord(run.plan.plan.elements[index]);
    record.set("progress", codeOf(run.progress.at(index)));
    record.set("outcome", codeOf(run.outcome.elements.at(index).result));
    record.set("reason", run.outcome.elements.at(index).reason);
    record.set("after", afterRecord(run, index));
    return record;
}

} // namespace

std::string historyDocument(const KvTRunList& list, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("history", verdict);
    document.set("runs", listOf(list.runs, runRecord));
    document.set("faults", listOf(list.faults, textValue));
    return documentText(document);
}

std::string runDocument(const KvTRunRecord* run, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("run", verdict);
    document.set("run", run != nullptr ? runRecord(run->run) : KvCJsonText());
    KvCJsonText elements = KvCJsonText::makeArray();
    for (std::size_t index = 0; run != nullptr && index < run->plan.plan.elements.size(); ++index) {
        elements.append(elementRecord(*run, index));
    }
    document.set("elements", elements);
    return documentText(document);
}

} // namespace KvNReflasher
