#include "ElementRecords.h"

#include "ArchiveRecords.h"
#include "JsonValues.h"

#include <cstdint>
#include <string>
#include <utility>

namespace KvNReflasher {

using KvNJson::json;

namespace {

/// Null if the checksums do not decide.
json checksumMismatch(const KvTPlannedElement& element) {
    const std::uint32_t installed = element.installed.checksumCrc32.value_or(0);
    if (!element.entry || element.entry->mode == KvEEntryMode::upgrade || installed == 0) {
        return {};
    }
    return element.entry->checksumCrc32 != installed;
}

/// The fields of KvTUpdateElementInfo, in their order.
void setQueryFields(json& record, const KvTPlannedElement& element) {
    const auto& entry = element.entry;
    record.set("index", element.index);
    record.set("boardType", textValue(element.boardType));
    record.set("serialNumber", element.serialNumber);
    record.set("boardName", textValue(element.boardName));
    record.set("unitPath", textValue(element.unitPath));
    record.set("slot", element.slotCount != 0 ? json(element.slot) : json());
    record.set("slotCount", element.slotCount);
    record.set("displayName", textValue(element.displayName));
    record.set("typeName", textValue(element.typeName));
    record.set("isFileSystemElement", element.isFileSystemElement);
    record.set("valid", element.installed.valid.value_or(false));
    record.set("active", element.installed.active.value_or(false));
    record.set("installedVersion", versionOrNull(element.installed.version));
    record.set("custom", element.custom);
    record.set("phase", valueOrNull(element.phase));
    record.set("hasArchiveFile", entry.has_value());
    record.set("archiveFileIndex", entry ? json(entry->fileIndex) : json());
    record.set("availableVersion", entry ? versionOrNull(entry->version) : json());
    record.set("checksumMismatch", checksumMismatch(element));
    record.set("disabled", element.disabled);
}

void setFoundFields(json& record, const KvTPlannedElement& element) {
    record.set("name", textValue(element.name));
    record.set("address", textValue(element.address));
    record.set("boardAddress", textValue(element.boardAddress));
    record.set("boardVariant", textValue(element.boardVariant));
    record.set("boardId", element.boardId);
    record.set("unitName", textValue(element.unitName));
    record.set("unitInstanceName", textValue(element.unitInstanceName));
    record.set("rackName", textValue(element.rackName));
    record.set("elementId", element.elementId);
    record.set("targetPath", textValue(element.targetPath));
    record.set("hwCompatibilityId", element.hwCompatibilityId);
    record.set("swCompatibilityId", element.swCompatibilityId);
    record.set("installed", installedRecord(element.installed));
    record.set("installedChecksum", valueOrNull(element.installed.checksumCrc32));
}

/// Without reasons nothing was decided.
json decisionCode(const KvTDecision& decision) {
    if (decision.reasons.empty()) {
        return {};
    }
    return decision.update ? "update" : "leave";
}

void setPlanFields(json& record, const KvTPlannedElement& element) {
    const auto& entry = element.entry;
    record.set("entry", entry ? entryRecord(*entry) : json());
    record.set("availableChecksum", entry ? valueOrNull(entry->checksumCrc32) : json());
    record.set("decision", decisionCode(element.decision));
    record.set("reasons", listOf(element.decision.reasons, [](KvEReason reason) { return json(codeOf(reason)); }));
    record.set("upToDate", element.upToDate);
    record.set("isDowngrade", element.isDowngrade);
}

/// The value of a JSON text; the text itself if it is none.
json valueOfText(const std::string& text) {
    json value = json::parse(text);
    return value.is_invalid() ? textValue(text) : std::move(value);
}

} // namespace

json installedRecord(const KvTInstalled& installed) {
    json record = json::makeObject();
    record.set("version", versionOrNull(installed.version));
    record.set("checksumCrc32", valueOrNull(installed.checksumCrc32));
    record.set("valid", valueOrNull(installed.valid));
    record.set("active", valueOrNull(installed.active));
    return record;
}

json plannedElementRecord(const KvTPlannedElement& element) {
    json record = json::makeObject();
    setQueryFields(record, element);
    setFoundFields(record, element);
    setPlanFields(record, element);
    return record;
}

json versionComponents(const std::optional<KvTVersion>& version) {
    if (!version) {
        return {};
    }
    const auto bits = [number = version->number](unsigned shift, std::uint64_t mask) {
        return json((number >> shift) & mask);
    };
    constexpr std::uint64_t byte = 0xFF;
    constexpr std::uint64_t word = 0xFFFF;
    json record = json::makeObject();
    record.set("text", textValue(version->text));
    record.set("major", bits(56, byte));
    record.set("minor", bits(48, byte));
    record.set("maintenance", bits(40, byte));
    record.set("servicePackBuild", bits(32, byte));
    record.set("servicePackNumber", bits(16, word));
    record.set("patchLevel", bits(0, word));
    return record;
}

json triedEntryRecord(const KvTTriedEntry& entry) {
    json record = json::makeObject();
    record.set("name", textValue(entry.fileName));
    record.set("index", entry.descriptionIndex);
    record.set("fileIndex", entry.fileIndex);
    record.set("failedTest", codeOrNull(entry.failedTest));
    record.set("archiveValue", valueOfText(entry.archiveValue));
    record.set("elementValue", valueOfText(entry.elementValue));
    return record;
}

json hiddenElementRecord(const KvTHiddenElement& element) {
    json record = json::makeObject();
    record.set("displayName", textValue(element.displayName));
    record.set("address", textValue(element.address));
    record.set("hiddenBy", listOf(element.hiddenBy, [](KvEHiddenBy reason) { return json(codeOf(reason)); }));
    return record;
}

} // namespace KvNReflasher
