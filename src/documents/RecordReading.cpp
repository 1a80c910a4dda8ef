#include "RecordReading.h"

#include "KvCVersion.h"
#include "KvDocuments.h"

namespace KvNReflasher {

using KvNJson::jsonView;

namespace {

std::optional<KvTVersion> versionOf(jsonView text) {
    if (!text.is_string()) {
        return std::nullopt;
    }
    const std::string printed = textOf(text);
    return KvTVersion{.number = KvCVersion(printed.c_str()).getAsULong64(), .text = printed};
}

std::optional<bool> flagOf(jsonView value) {
    return value.is_boolean() ? std::optional(value.get_boolean()) : std::nullopt;
}

std::optional<KvTArchiveEntry> entryOf(jsonView record) {
    if (!record.is_object()) {
        return std::nullopt;
    }
    return KvTArchiveEntry{.fileIndex = numberOf(record.find("fileIndex")).value_or(0),
                           .descriptionIndex = numberOf(record.find("index")).value_or(0),
                           .fileName = textOf(record.find("name")),
                           .version = versionOf(record.find("version")),
                           .checksumCrc32 = numberOf(record.find("checksumCrc32")),
                           .mode =
                               meaningOf(record.find("mode"), KvEEntryMode::upgrade).value_or(KvEEntryMode::standard),
                           .sequence = numberOf(record.find("sequence")).value_or(0)};
}

KvTDecision decisionOf(jsonView record) {
    KvTDecision decision;
    decision.update = textOf(record.find("decision")) == "update";
    for (const std::optional<KvEReason>& reason :
         itemsOf(record.find("reasons"), [](jsonView word) { return meaningOf(word, KvEReason::inDoubt); })) {
        if (reason) {
            decision.reasons.push_back(*reason);
        }
    }
    return decision;
}

void readBoard(jsonView record, KvTPlannedElement& element) {
    element.boardType = textOf(record.find("boardType"));
    element.boardVariant = textOf(record.find("boardVariant"));
    element.boardId = numberOf(record.find("boardId")).value_or(0);
    element.serialNumber = numberOf(record.find("serialNumber")).value_or(0);
    element.boardName = textOf(record.find("boardName"));
    element.unitName = textOf(record.find("unitName"));
    element.unitInstanceName = textOf(record.find("unitInstanceName"));
    element.rackName = textOf(record.find("rackName"));
    element.unitPath = textOf(record.find("unitPath"));
    element.slot = numberOf(record.find("slot")).value_or(0);
    element.slotCount = numberOf(record.find("slotCount")).value_or(0);
    element.boardAddress = textOf(record.find("boardAddress"));
}

} // namespace

KvTInstalled installedOf(jsonView record) {
    KvTInstalled installed;
    installed.version = versionOf(record.find("version"));
    installed.hasVersion = installed.version.has_value();
    installed.checksumCrc32 = numberOf(record.find("checksumCrc32"));
    installed.valid = flagOf(record.find("valid"));
    installed.active = flagOf(record.find("active"));
    return installed;
}

KvTPlannedElement plannedElementOf(jsonView record) {
    KvTPlannedElement element;
    element.index = numberOf(record.find("index")).value_or(0);
    readBoard(record, element);
    element.displayName = textOf(record.find("displayName"));
    element.typeName = textOf(record.find("typeName"));
    element.name = textOf(record.find("name"));
    element.address = textOf(record.find("address"));
    element.elementId = numberOf(record.find("elementId")).value_or(0);
    element.isFileSystemElement = isTrue(record.find("isFileSystemElement"));
    element.targetPath = textOf(record.find("targetPath"));
    element.hwCompatibilityId = numberOf(record.find("hwCompatibilityId")).value_or(0);
    element.swCompatibilityId = numberOf(record.find("swCompatibilityId")).value_or(0);
    element.custom = isTrue(record.find("custom"));
    element.installed = installedOf(record.find("installed"));
    element.entry = entryOf(record.find("entry"));
    element.decision = decisionOf(record);
    element.phase = numberOf(record.find("phase"));
    element.disabled = isTrue(record.find("disabled"));
    element.upToDate = isTrue(record.find("upToDate"));
    element.isDowngrade = isTrue(record.find("isDowngrade"));
    return element;
}

std::optional<KvTArchiveIdentity> identityOf(jsonView record) {
    if (!record.is_object()) {
        return std::nullopt;
    }
    return KvTArchiveIdentity{.archiveName = textOf(record.find("archiveName")),
                              .archiveVersion = textOf(record.find("archiveVersion")),
                              .productName = textOf(record.find("productName")),
                              .formatVersion = textOf(record.find("formatVersion")),
                              .archiveVariant = textOf(record.find("archiveVariant"))};
}

std::optional<KvTRelease> releaseOf(jsonView record) {
    if (!record.is_object()) {
        return std::nullopt;
    }
    return KvTRelease{.seal = meaningOf(record.find("seal"), KvESeal::trusted).value_or(KvESeal::none),
                      .manifestDigest = textOf(record.find("manifestSha256")),
                      .created = textOf(record.find("created")),
                      .signer = textOf(record.find("signer")),
                      .keyKind = textOf(record.find("keyKind")),
                      .keyFingerprint = textOf(record.find("keyFingerprint")),
                      .trustFolder = textOf(record.find("trustFolder")),
                      .isUnsealedAccepted = isTrue(record.find("unsealedAccepted"))};
}

KvTVerdict verdictIn(jsonView record) {
    return {meaningOf(record.find("failure"), KvEFailure::output).value_or(KvEFailure::none),
            textOf(record.find("message"))};
}

} // namespace KvNReflasher
