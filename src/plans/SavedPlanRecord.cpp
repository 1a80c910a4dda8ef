#include "SavedPlanRecord.h"

#include "ArchiveRecords.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvRuns.h"
#include "RecordReading.h"

#include <cstdint>
#include <utility>

namespace KvNReflasher {

using KvNJson::jsonView;

namespace {

KvCJsonText numbers(const std::vector<std::uint32_t>& values) {
    return listOf(values, [](std::uint32_t value) { return KvCJsonText(value); });
}

std::vector<std::uint32_t> numbersOf(jsonView list) {
    return itemsOf(list, [](jsonView value) { return numberOf(value).value_or(0); });
}

KvCJsonText targetRecord(const KvTSavedPlan& plan) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("given", plan.target);
    record.set("address", plan.plan.targetAddress);
    record.set("nodeSerialNumbers", numbers(plan.plan.nodeSerialNumbers));
    return record;
}

KvCJsonText optionsRecord(const KvTDecidingOptions& options) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("boardTypes", options.boardTypeFilter);
    record.set("serialNumbers", options.serialNumberFilter);
    record.set("elements", options.elementNameFilter);
    record.set("configuration", options.configurationElements);
    record.set("skipCustom", options.disableCustomElements);
    record.set("force", options.forceUpdate);
    record.set("noDowngrade", options.noDowngrade);
    record.set("unlistedFiles", codeOf(options.unlistedFiles));
    record.set("disable", listOf(options.disabledElements, textValue));
    return record;
}

KvTDecidingOptions decidingOptionsOf(jsonView record) {
    return {.boardTypeFilter = textOf(record.find("boardTypes")),
            .serialNumberFilter = textOf(record.find("serialNumbers")),
            .elementNameFilter = textOf(record.find("elements")),
            .configurationElements = isTrue(record.find("configuration")),
            .disableCustomElements = isTrue(record.find("skipCustom")),
            .forceUpdate = isTrue(record.find("force")),
            .noDowngrade = isTrue(record.find("noDowngrade")),
            .unlistedFiles =
                meaningOf(record.find("unlistedFiles"), KvEUnlistedFiles::never).value_or(KvEUnlistedFiles::always),
            .disabledElements = itemsOf(record.find("disable"), textOf)};
}

KvCJsonText fileRecord(const KvTFileDigest& file) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("name", file.name);
    record.set("size", file.size);
    record.set("sha256", file.sha256);
    return record;
}

KvCJsonText archiveRecord(const KvTSavedPlan& plan) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("folder", plan.archiveFolder);
    record.set("description", plan.descriptionFileName);
    record.set("descriptionSha256", plan.descriptionDigest);
    record.set("information", plan.plan.archive ? identityRecord(*plan.plan.archive) : KvCJsonText());
    record.set("release", releaseRecord(plan.plan.release));
    record.set("files", listOf(plan.files, fileRecord));
    return record;
}

void readArchive(jsonView record, KvTSavedPlan& plan) {
    plan.archiveFolder = textOf(record.find("folder"));
    plan.descriptionFileName = textOf(record.find("description"));
    plan.descriptionDigest = textOf(record.find("descriptionSha256"));
    plan.plan.archive = identityOf(record.find("information"));
    plan.plan.release = releaseOf(record.find("release"));
    plan.files = itemsOf(record.find("files"), [](jsonView file) {
        return KvTFileDigest{.name = textOf(file.find("name")),
                             .size = numberOf<std::uint64_t>(file.find("size")).value_or(0),
                             .sha256 = textOf(file.find("sha256"))};
    });
}

} // namespace

void setPlanBasis(KvCJsonText& record, const KvTSavedPlan& plan) {
    record.set("id", plan.id);
    record.set("toolVersion", plan.toolVersion);
    record.set("time", plan.time);
    record.set("target", targetRecord(plan));
    record.set("options", optionsRecord(plan.options));
    record.set("archive", archiveRecord(plan));
}

void setPlanElements(KvCJsonText& record, const KvTPlan& plan) {
    record.set("supported", plan.supported);
    record.set("unsupportedElements", numbers(plan.unsupportedElements));
    record.set("phaseCount", plan.phaseCount);
    record.set("changes", updatesOf(plan));
    record.set("elements", listOf(plan.elements, plannedElementRecord));
}

void readPlanBasis(jsonView record, KvTSavedPlan& plan) {
    plan.id = textOf(record.find("id"));
    plan.toolVersion = textOf(record.find("toolVersion"));
    plan.time = textOf(record.find("time"));
    const jsonView target = record.find("target");
    plan.target = textOf(target.find("given"));
    plan.plan.targetAddress = textOf(target.find("address"));
    plan.plan.nodeSerialNumbers = numbersOf(target.find("nodeSerialNumbers"));
    plan.options = decidingOptionsOf(record.find("options"));
    plan.plan.configurationElements = plan.options.configurationElements;
    readArchive(record.find("archive"), plan);
}

void readPlanElements(jsonView record, KvTSavedPlan& plan) {
    plan.plan.supported = isTrue(record.find("supported"));
    plan.plan.unsupportedElements = numbersOf(record.find("unsupportedElements"));
    plan.plan.phaseCount = numberOf(record.find("phaseCount")).value_or(0);
    plan.plan.elements = itemsOf(record.find("elements"), plannedElementOf);
    std::uint32_t index = 0;
    for (KvTPlannedElement& element : plan.plan.elements) {
        element.index = index++;
    }
}

} // namespace KvNReflasher
