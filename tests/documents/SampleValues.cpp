#include "SampleValues.h"

#include <utility>

using namespace KvNReflasher;

namespace {

const KvTVersion oldVersion = {.number = 0x1702'0001'000C'0000, .text = "23.2a12"};
const KvTVersion newVersion = {.number = 0x1702'0000'0001'0000, .text = "23.2.1"};
constexpr std::uint32_t oldChecksum = 1146530310;
constexpr std::uint32_t newChecksum = 947785106;

KvTArchiveEntry firmwareEntry() {
    return {.fileIndex = 0,
            .descriptionIndex = 1,
            .fileName = "firmware.kfw",
            .version = newVersion,
            .checksumCrc32 = newChecksum,
            .sequence = 3};
}

KvTArchiveEntry fileEntry() {
    KvTArchiveEntry entry;
    entry.fileIndex = 1;
    entry.descriptionIndex = 2;
    entry.fileName = "netz-\u00FC.ini";
    return entry;
}

KvTArchiveEntry upgradeEntry() {
    return {.fileIndex = 2,
            .descriptionIndex = 4,
            .fileName = "loader.kfw",
            .version = oldVersion,
            .checksumCrc32 = oldChecksum,
            .mode = KvEEntryMode::upgrade,
            .sequence = 5};
}

KvTArchiveEntry unmatchedEntry() {
    KvTArchiveEntry entry;
    entry.fileIndex = 3;
    entry.descriptionIndex = 5;
    entry.fileName = "other.kbs";
    entry.version = newVersion;
    entry.sequence = 5;
    return entry;
}

/// An element of the processor board.
KvTPlannedElement boardElement(std::uint32_t index) {
    KvTPlannedElement element;
    element.index = index;
    element.boardType = "QB4120";
    element.boardVariant = "A";
    element.boardId = 7;
    element.serialNumber = 2815;
    element.boardName = "QB4120 (A)";
    element.unitName = "Unit";
    element.unitInstanceName = "Press";
    element.rackName = "Rack 1";
    element.unitPath = "Unit: Rack 1 / Press";
    element.slot = 2;
    element.slotCount = 1;
    element.boardAddress = "HCN[1]";
    return element;
}

KvTPlannedElement updatedElement() {
    KvTPlannedElement element = boardElement(0);
    element.displayName = "QB4120 (A), SN 2815, Firmware";
    element.typeName = "Firmware";
    element.name = "UserFirmware";
    element.address = "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]";
    element.elementId = 1;
    element.hwCompatibilityId = 3;
    element.swCompatibilityId = 4;
    element.custom = true;
    element.installed = {.version = oldVersion, .checksumCrc32 = oldChecksum, .valid = true, .active = false};
    element.entry = firmwareEntry();
    element.decision = {.update = true,
                        .reasons = {KvEReason::versionDiffers, KvEReason::checksumDiffers, KvEReason::inactive}};
    element.phase = 1;
    return element;
}

KvTPlannedElement elementWithoutEntry() {
    KvTPlannedElement element;
    element.index = 1;
    element.serialNumber = 20480;
    element.boardName = "I/O router";
    element.displayName = "I/O router, SN 20480, Update Element";
    element.typeName = "Update Element";
    element.name = "Update Element";
    element.address = "HCN[1]/IOROUTER[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]";
    element.boardAddress = "HCN[1]/IOROUTER[1]";
    element.decision.reasons = {KvEReason::noEntry};
    return element;
}

KvTPlannedElement unlistedFile() {
    KvTPlannedElement element = boardElement(2);
    element.displayName = "QB4120 (A), SN 2815, Updatable file (netz-\u00FC.ini)";
    element.typeName = "Updatable file";
    element.name = "Updatable file";
    element.isFileSystemElement = true;
    element.targetPath = "config/netz-\u00FC.ini";
    element.entry = fileEntry();
    element.decision = {.update = true, .reasons = {KvEReason::versionDiffers}};
    element.phase = 0;
    return element;
}

KvTPlannedElement newerElement() {
    KvTPlannedElement element = boardElement(3);
    element.displayName = "QB4120 (A), SN 2815, Bootloader";
    element.typeName = "Bootloader";
    element.name = "UserIpl";
    element.address = "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]";
    element.elementId = 3;
    element.installed = {.version = newVersion, .checksumCrc32 = 0, .valid = true, .active = true};
    element.entry = upgradeEntry();
    element.decision.reasons = {KvEReason::newerInstalled};
    element.upToDate = true;
    element.disabled = true;
    return element;
}

} // namespace

KvTRelease sampleRelease() {
    return {.seal = KvESeal::trusted,
            .manifestDigest = std::string(64, 'a'),
            .created = "2026-02-28T08:00:00Z",
            .signer = "pr\u00FCfer@korvel",
            .keyKind = "ssh-ed25519",
            .keyFingerprint = "SHA256:" + std::string(43, 'b'),
            .trustFolder = "/etc/kvreflash/trust",
            .isUnsealedAccepted = false};
}

KvTArchiveContent sampleContent() {
    KvTArchiveContent content;
    content.identity = {.archiveName = "Pr\u00FCfstand",
                        .archiveVersion = "23.2.1",
                        .productName = "QB",
                        .formatVersion = "1.0",
                        .archiveVariant = ""};
    content.release = sampleRelease();
    content.entries = {firmwareEntry(), fileEntry(), upgradeEntry(), unmatchedEntry()};
    return content;
}

KvTPlan samplePlan() {
    KvTPlan plan;
    plan.archive = sampleContent().identity;
    plan.release = sampleRelease();
    plan.targetAddress = "127.0.0.1";
    plan.supported = false;
    plan.unsupportedElements = {1};
    plan.phaseCount = 2;
    plan.elements = {updatedElement(), elementWithoutEntry(), unlistedFile(), newerElement()};
    return plan;
}

KvTComparison sampleComparison() {
    KvTComparison comparison;
    comparison.before = sampleContent();
    comparison.before.release = KvTRelease();
    comparison.after = sampleContent();
    KvTArchiveDifference newer;
    newer.boardType = "QB4120";
    newer.elementId = 1;
    newer.before = {.entry = upgradeEntry(), .rules = ""};
    newer.after = {.entry = firmwareEntry(), .rules = "variant A, hw 2|3"};
    newer.change = KvEChange::up;
    newer.isContentChanged = true;
    newer.isSequenceChanged = true;
    newer.areRulesChanged = true;
    newer.isModeChanged = true;
    KvTArchiveDifference added;
    added.boardType = "QB4120";
    added.targetPath = "config/netz-\u00FC.ini";
    added.after = {.entry = fileEntry(), .rules = ""};
    added.change = KvEChange::added;
    KvTArchiveDifference removed;
    removed.boardType = "QB2000";
    removed.elementId = 4;
    removed.before = {.entry = unmatchedEntry(), .rules = ""};
    removed.change = KvEChange::removed;
    comparison.places = {newer, added, removed};
    return comparison;
}

KvTOutcome sampleOutcome() {
    KvTOutcome outcome;
    outcome.stage = KvEStage::ended;
    outcome.elements.resize(4);
    outcome.elements[0].result = KvEResult::failed;
    outcome.elements[0].failedCall = KvEFailedCall::updateErrors2;
    outcome.elements[0].state = 2;
    outcome.elements[0].errors = {{.code = 77,
                                   .text = "Flash \"worn\"",
                                   .originNode = 2815,
                                   .seconds = 1.5,
                                   .mainModule = 4,
                                   .subModule = 5,
                                   .function = "flash",
                                   .line = 66}};
    outcome.elements[0].reason = "updateErrors2: 0x4d: Flash \"worn\"";
    outcome.elements[2].result = KvEResult::updated;
    outcome.elements[2].message = "written twice";
    outcome.files = {
        {.fileIndex = 1,
         .fileName = "netz-\u00FC.ini",
         .phase = 0,
         .targetPath = "/mnt/cn/cfdrive/config/netz-\u00FC.ini",
         .result = KvEResult::updated},
        {.fileIndex = 0, .fileName = "firmware.kfw", .phase = 1, .targetPath = "", .result = KvEResult::updated}};
    outcome.errors = {{.code = 0x2002, .text = "No lock", .function = ""}};
    return outcome;
}

KvTVerification sampleVerification() {
    const KvTInstalled found = {.version = newVersion, .checksumCrc32 = 0, .valid = true, .active = std::nullopt};
    KvTVerification verification;
    verification.look.succeeded = true;
    verification.look.elements = {found, std::nullopt, std::nullopt, newerElement().installed};
    verification.look.errors = {{.code = 5, .text = "No name", .function = ""}};
    verification.elements = {
        {.index = 0, .result = KvEVerified::differs, .found = found, .leftByPlan = true},
        {.index = 2, .result = KvEVerified::notListed, .found = std::nullopt, .leftByPlan = false}};
    return verification;
}

std::vector<KvTExplanation> sampleExplanations() {
    return {{.index = 0,
             .tried = {{.fileIndex = 2,
                        .descriptionIndex = 4,
                        .fileName = "loader.kfw",
                        .failedTest = KvEMatchTest::boardVariant,
                        .archiveValue = R"(["B", null])",
                        .elementValue = R"("A")"},
                       {.fileIndex = 0, .descriptionIndex = 1, .fileName = "firmware.kfw"}},
             .otherBoardCount = 12},
            {.index = 1,
             .tried = {{.fileIndex = 3,
                        .descriptionIndex = 5,
                        .fileName = "other.kbs",
                        .failedTest = KvEMatchTest::id,
                        .archiveValue = "3",
                        .elementValue = "0"}},
             .otherBoardCount = 3}};
}

std::vector<KvTHiddenElement> sampleHiddenElements() {
    return {{.displayName = "QB7001, SN 10231, Firmware",
             .address = "HCN[1]/IOROUTER[1]/IOMODULE[2]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]",
             .hiddenBy = {KvEHiddenBy::boardTypeFilter, KvEHiddenBy::configuration},
             .boardType = "QB7001",
             .serialNumber = 10231,
             .name = "UserFirmware"}};
}

std::vector<KvTFinding> sampleFindings() {
    return {{.severity = KvESeverity::error,
             .code = "mode-unknown",
             .line = 26,
             .column = 21,
             .path = "$.files[1].mode",
             .message = R"(File entry 1 is invalid. Property "mode" is invalid.)",
             .hint = R"(Write "standard" or "upgrade".)"},
            {.severity = KvESeverity::warning, .code = "key-unknown", .message = "Unknown key.", .hint = ""}};
}

KvTReportFacts sampleFacts(const std::string& command, int exitCode) {
    return {.command = command,
            .toolVersion = "1.1.0",
            .begin = "2026-03-01T12:34:56.789Z",
            .end = "2026-03-01T12:35:01.000Z",
            .target = "press.local",
            .archiveFolder = "archive",
            .exitCode = exitCode,
            .messages = "Results:\n\n    done\n"};
}
