#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unordered_set>

// The plans for several targets.

namespace KvNReflasher {

namespace {

KvCJsonText elementRecord(const KvTPlannedElement& element) {
    KvCJsonText record = plannedElementRecord(element);
    record.set("state", codeOf(outlookOf(element)));
    return record;
}

KvCJsonText targetRecord(const KvTMatrixTarget& target) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("folder", target.folder);
    record.set("address", target.address);
    setVerdict(record, target.verdict);
    if (target.plan) {
        record.set("supported", target.plan->supported);
        record.set("elements", listOf(target.plan->elements, elementRecord));
    }
    return record;
}

/// The file indices of the entries that an element of the target takes.
void addTakenEntries(const KvTPlan& plan, std::unordered_set<std::uint32_t>& taken) {
    for (const KvTPlannedElement& element : plan.elements) {
        if (element.entry) {
            taken.insert(element.entry->fileIndex);
        }
    }
}

} // namespace

KvEOutlook outlookOf(const KvTPlannedElement& element) {
    if (element.decision.update) {
        return KvEOutlook::wouldUpdate;
    }
    if (element.upToDate) {
        return KvEOutlook::upToDate;
    }
    return element.disabled ? KvEOutlook::disabled : KvEOutlook::noEntry;
}

std::vector<KvTArchiveEntry> unmatchedEntries(const KvTArchiveContent& content,
                                              const std::vector<KvTMatrixTarget>& targets) {
    std::unordered_set<std::uint32_t> taken;
    bool isAnyPlanned = false;
    for (const KvTMatrixTarget& target : targets) {
        if (target.plan) {
            isAnyPlanned = true;
            addTakenEntries(*target.plan, taken);
        }
    }
    std::vector<KvTArchiveEntry> unmatched;
    if (isAnyPlanned) {
        std::copy_if(content.entries.begin(), content.entries.end(), std::back_inserter(unmatched),
                     [&taken](const KvTArchiveEntry& entry) { return taken.count(entry.fileIndex) == 0; });
    }
    return unmatched;
}

std::string matrixDocument(const KvTArchiveContent& content, const std::vector<KvTMatrixTarget>& targets,
                           const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("matrix", verdict);
    if (content.verdict.isSuccess()) {
        document.set("archive", identityRecord(content.identity));
        document.set("release", releaseRecord(content.release));
    }
    document.set("targets", listOf(targets, targetRecord));
    if (content.verdict.isSuccess()) {
        document.set("unmatchedEntries", listOf(unmatchedEntries(content, targets), entryRecord));
    }
    return documentText(document);
}

} // namespace KvNReflasher
