#include "ElementRecords.h"

#include "ArchiveRecords.h"
#include "JsonValues.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace KvNReflasher {

namespace {

/// Null if the checksums do not decide.
KvCJsonText checksumMismatch(const KvTPlannedElement& element) {
    const std::uint32_t installed = element.installed.checksumCrc32.value_or(0);
    if (!element.entry || element.entry->mode == KvEEntryMode::upgrade || installed == 0) {
        return {};
    }
    return element.entry->checksumCrc32 != installed;
}

/// The fields of KvTUpdateElementInfo, in their order.
void setQueryFields(KvCJsonText& record, const KvTPlannedElement& element) {
    const auto& entry = element.entry;
    record.set("index", element.index);
    record.set("boardType", element.boardType);
    record.set("serialNumber", element.serialNumber);
    record.set("boardName", element.boardName);
    record.set("unitPath", element.unitPath);
    record.set("slot", element.slotCount != 0 ? KvCJsonText(element.slot) : KvCJsonText());
    record.set("slotCount", element.slotCount);
    record.set("displayName", element.displayName);
    record.set("typeName", element.typeName);
    record.set("isFileSystemElement", element.isFileSystemElement);
    record.set("valid", element.installed.valid.value_or(false));
    record.set("active", element.installed.active.value_or(false));
    record.set("installedVersion", versionOrNull(element.installed.version));
    record.set("custom", element.custom);
    record.set("phase", valueOrNull(element.phase));
    record.set("hasArchiveFile", entry.has_value());
    record.set("archiveFileIndex", entry ? KvCJsonText(entry->fileIndex) : KvCJsonText());
    record.set("availableVersion", entry ? versionOrNull(entry->version) : KvCJsonText());
    record.set("checksumMismatch", checksumMismatch(element));
    record.set("disabled", element.disabled);
}

void setFoundFields(KvCJsonText& record, const KvTPlannedElement& element) {
    record.set("name", element.name);
    record.set("address", element.address);
    record.set("boardAddress", element.boardAddress);
    record.set("boardVariant", element.boardVariant);
    record.set("boardId", element.boardId);
    record.set("unitName", element.unitName);
    record.set("unitInstanceName", element.unitInstanceName);
    record.set("rackName", element.rackName);
    record.set("elementId", element.elementId);
    record.set("targetPath", element.targetPath);
    record.set("hwCompatibilityId", element.hwCompatibilityId);
    record.set("swCompatibilityId", element.swCompatibilityId);
    record.set("installed", installedRecord(element.installed));
    record.set("installedChecksum", valueOrNull(element.installed.checksumCrc32));
}

/// Without reasons nothing was decided.
KvCJsonText decisionCode(const KvTDecision& decision) {
    if (decision.reasons.empty()) {
        return {};
    }
    return decision.update ? "update" : "leave";
}

void setPlanFields(KvCJsonText& record, const KvTPlannedElement& element) {
    const auto& entry = element.entry;
    record.set("entry", entry ? entryRecord(*entry) : KvCJsonText());
    record.set("availableChecksum", entry ? valueOrNull(entry->checksumCrc32) : KvCJsonText());
    record.set("decision", decisionCode(element.decision));
    record.set("reasons",
               listOf(element.decision.reasons, [](KvEReason reason) { return KvCJsonText(codeOf(reason)); }));
    record.set("upToDate", element.upToDate);
    record.set("isDowngrade", element.isDowngrade);
}

/// The value of a JSON text; the text itself if it is none.
KvCJsonText valueOfText(const std::string& text) {
    const KvNJson::json value = KvNJson::json::parse(text);
    return value.is_invalid() ? textValue(text) : KvCJsonText(value);
}

} // namespace

KvCJsonText installedRecord(const KvTInstalled& installed) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("version", versionOrNull(installed.version));
    record.set("checksumCrc32", valueOrNull(installed.checksumCrc32));
    record.set("valid", valueOrNull(installed.valid));
    record.set("active", valueOrNull(installed.active));
    return record;
}

KvCJsonText plannedElementRecord(const KvTPlannedElement& element) {
    KvCJsonText record = KvCJsonText::makeObject();
    setQueryFields(record, element);
    setFoundFields(record, element);
    setPlanFields(record, element);
    return record;
}

KvCJsonText versionComponents(const std::optional<KvTVersion>& version) {
    if (!version) {
        return {};
    }
    const auto bits = [number = version->number](unsigned shift, std::uint64_t mask) {
        return KvCJsonText((number >> shift) & mask);
    };
    constexpr std::uint64_t byte = 0xFF;
    constexpr std::uint64_t word = 0xFFFF;
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("text", version->text);
    record.set("major", bits(56, byte));
    record.set("minor", bits(48, byte));
    record.set("maintenance", bits(40, byte));
    record.set("servicePackBuild", bits(32, byte));
    record.set("servicePackNumber", bits(16, word));
    record.set("patchLevel", bits(0, word));
    return record;
}

KvCJsonText triedEntryRecord(const KvTTriedEntry& entry) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("name", entry.fileName);
    record.set("index", entry.descriptionIndex);
    record.set("fileIndex", entry.fileIndex);
    record.set("failedTest", codeOrNull(entry.failedTest));
    record.set("archiveValue", valueOfText(entry.archiveValue));
    record.set("elementValue", valueOfText(entry.elementValue));
    return record;
}

KvCJsonText hiddenElementRecord(const KvTHiddenElement& element) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("displayName", element.displayName);
    record.set("address", element.address);
    record.set("hiddenBy", listOf(element.hiddenBy, [](KvEHiddenBy reason) { return KvCJsonText(codeOf(reason)); }));
    return record;
}

KvCJsonText updatesOf(const KvTPlan& plan) {
    const auto isUpdated = [](const KvTPlannedElement& element) { return element.decision.update; };
    return static_cast<std::uint64_t>(std::count_if(plan.elements.begin(), plan.elements.end(), isUpdated));
}

} // namespace KvNReflasher
