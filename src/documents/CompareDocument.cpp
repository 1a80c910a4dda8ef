#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"

// The changes of a release.

namespace KvNReflasher {

using KvNJson::json;

namespace {

json archiveRecord(const KvTArchiveContent& content) {
    json record = json::makeObject();
    record.set("archive", identityRecord(content.identity));
    record.set("release", releaseRecord(content.release));
    return record;
}

/// Null for nothing.
json comparedRecord(const std::optional<KvTComparedEntry>& compared) {
    if (!compared) {
        return {};
    }
    json record = entryRecord(compared->entry);
    record.set("rules", textValue(compared->rules));
    return record;
}

json placeRecord(const KvTArchiveDifference& place) {
    json record = json::makeObject();
    record.set("boardType", textValue(place.boardType));
    record.set("elementId", valueOrNull(place.elementId));
    record.set("targetPath", textValue(place.targetPath));
    record.set("change", codeOf(place.change));
    record.set("contentChanged", place.isContentChanged);
    record.set("sequenceChanged", place.isSequenceChanged);
    record.set("modeChanged", place.isModeChanged);
    record.set("rulesChanged", place.areRulesChanged);
    record.set("before", comparedRecord(place.before));
    record.set("after", comparedRecord(place.after));
    return record;
}

json planRecords(const KvTPlan* plan) {
    return plan != nullptr ? listOf(plan->elements, plannedElementRecord) : json();
}

} // namespace

std::string compareDocument(const KvTComparison& comparison, const KvTPlan* before, const KvTPlan* after,
                            const KvTVerdict& verdict) {
    json document = framedDocument("compare", verdict);
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
