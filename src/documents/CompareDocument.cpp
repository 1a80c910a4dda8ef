#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"

// The changes of a release.

namespace KvNReflasher {

namespace {

KvCJsonText archiveRecord(const KvTArchiveContent& content) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("archive", identityRecord(content.identity));
    record.set("release", releaseRecord(content.release));
    return record;
}

/// Null for nothing.
KvCJsonText comparedRecord(const std::optional<KvTComparedEntry>& compared) {
    if (!compared) {
        return {};
    }
    KvCJsonText record = entryRecord(compared->entry);
    record.set("rules", compared->rules);
    return record;
}

KvCJsonText placeRecord(const KvTArchiveDifference& place) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("boardType", place.boardType);
    record.set("elementId", valueOrNull(place.elementId));
    record.set("targetPath", place.targetPath);
    record.set("change", codeOf(place.change));
    record.set("contentChanged", place.isContentChanged);
    record.set("sequenceChanged", place.isSequenceChanged);
    record.set("modeChanged", place.isModeChanged);
    record.set("rulesChanged", place.areRulesChanged);
    record.set("before", comparedRecord(place.before));
    record.set("after", comparedRecord(place.after));
    return record;
}

KvCJsonText planRecords(const KvTPlan* plan) {
    return plan != nullptr ? listOf(plan->elements, plannedElementRecord) : KvCJsonText();
}

} // namespace

std::string compareDocument(const KvTComparison& comparison, const KvTPlan* before, const KvTPlan* after,
                            const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("compare", verdict);
    if (comparison.verdict.isSuccess()) {
        document.set("before", archiveRecord(comparison.before));
        document.set("after", archiveRecord(comparison.after));
        document.set("places", listOf(comparison.places, placeRecord));
        document.set("elementsBefore", planRecords(before));
        document.set("elementsAfter", planRecords(after));
    }
    return documentText(document);
}

} // namespace KvNReflasher
