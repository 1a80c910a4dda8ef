#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"

#include <cstdint>

// What is on the target, and why a plan decides what it does.

namespace KvNReflasher {

namespace {

KvCJsonText explanationRecord(const KvTPlan& plan, const KvTExplanation& explanation) {
    const KvTPlannedElement& element = plan.elements.at(explanation.index);
    KvCJsonText record = plannedElementRecord(element);
    record.set("installedVersionRead", versionComponents(element.installed.version));
    record.set("availableVersionRead", element.entry ? versionComponents(element.entry->version) : KvCJsonText());
    record.set("triedEntries", listOf(explanation.tried, triedEntryRecord));
    record.set("entriesForOtherBoardTypes", static_cast<std::uint64_t>(explanation.otherBoardCount));
    return record;
}

} // namespace

std::string elementsDocument(const KvTPlan* plan, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("elements", verdict);
    if (plan != nullptr) {
        document.set("elements", listOf(plan->elements, plannedElementRecord));
    }
    return documentText(document);
}

std::string explainDocument(const KvTPlan* plan, const std::vector<KvTExplanation>& explanations,
                            const std::vector<KvTHiddenElement>& hidden, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("explain", verdict);
    if (plan != nullptr) {
        document.set("release", releaseRecord(plan->release));
        document.set("elements", listOf(explanations, [plan](const KvTExplanation& explanation) {
                         return explanationRecord(*plan, explanation);
                     }));
        document.set("hiddenElements", listOf(hidden, hiddenElementRecord));
    }
    return documentText(document);
}

} // namespace KvNReflasher
