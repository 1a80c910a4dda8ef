#include "ClientRecords.h"

#include <algorithm>
#include <optional>

using namespace KvNReflasher;

namespace {

std::uint32_t countOf(std::size_t size) {
    return static_cast<std::uint32_t>(size);
}

std::uint32_t bitIf(bool isKnown, std::uint32_t bit) {
    return isKnown ? bit : 0;
}

std::uint32_t flagOf(bool value) {
    return value ? 1 : 0;
}

const char* textOf(const std::optional<KvTVersion>& version) {
    return version ? version->text.c_str() : "";
}

std::uint32_t knownOf(const KvTInstalled& installed) {
    return bitIf(installed.version.has_value(), KVR_KNOWS_VERSION) |
           bitIf(installed.checksumCrc32.has_value(), KVR_KNOWS_CHECKSUM) |
           bitIf(installed.valid.has_value(), KVR_KNOWS_VALID) | bitIf(installed.active.has_value(), KVR_KNOWS_ACTIVE);
}

} // namespace

kvr_plan recordOf(const KvTPlan& plan, std::uint32_t entries) {
    const auto changes = std::count_if(plan.elements.begin(), plan.elements.end(),
                                       [](const KvTPlannedElement& element) { return element.decision.update; });
    kvr_plan record{};
    record.elements = countOf(plan.elements.size());
    record.changes = static_cast<std::uint32_t>(changes);
    record.phases = plan.phaseCount;
    record.entries = entries;
    record.supported = flagOf(plan.supported);
    record.nodes = countOf(plan.nodeSerialNumbers.size());
    record.target_address = plan.targetAddress.c_str();
    record.archive_name = plan.archive ? plan.archive->archiveName.c_str() : "";
    record.archive_version = plan.archive ? plan.archive->archiveVersion.c_str() : "";
    record.product_name = plan.archive ? plan.archive->productName.c_str() : "";
    record.archive_variant = plan.archive ? plan.archive->archiveVariant.c_str() : "";
    return record;
}

kvr_element recordOf(const KvTPlannedElement& element) {
    kvr_element record{};
    record.index = element.index;
    record.known = knownOf(element.installed) | bitIf(element.entry.has_value(), KVR_KNOWS_ENTRY) |
                   bitIf(element.phase.has_value(), KVR_KNOWS_PHASE);
    record.updated = flagOf(element.decision.update);
    record.disabled = flagOf(element.disabled);
    record.up_to_date = flagOf(element.upToDate);
    record.downgrade = flagOf(element.isDowngrade);
    record.custom = flagOf(element.custom);
    record.phase = element.phase.value_or(0);
    record.element_id = element.elementId;
    record.serial_number = element.serialNumber;
    record.slot = element.slot;
    record.slot_count = element.slotCount;
    record.checksum = element.installed.checksumCrc32.value_or(0);
    record.valid = flagOf(element.installed.valid.value_or(false));
    record.active = flagOf(element.installed.active.value_or(false));
    record.reasons = countOf(element.decision.reasons.size());
    record.display_name = element.displayName.c_str();
    record.type_name = element.typeName.c_str();
    record.name = element.name.c_str();
    record.address = element.address.c_str();
    record.target_path = element.targetPath.c_str();
    record.board_type = element.boardType.c_str();
    record.board_variant = element.boardVariant.c_str();
    record.board_name = element.boardName.c_str();
    record.board_id = element.boardId;
    record.unit_path = element.unitPath.c_str();
    record.version = textOf(element.installed.version);
    record.available_version = "";
    if (element.entry) {
        record.entry = element.entry->fileIndex;
        record.available_version = textOf(element.entry->version);
        record.available_checksum = element.entry->checksumCrc32.value_or(0);
    }
    return record;
}

kvr_entry recordOf(const KvTArchiveEntry& entry) {
    kvr_entry record{};
    record.index = entry.fileIndex;
    record.description_index = entry.descriptionIndex;
    record.known = bitIf(entry.version.has_value(), KVR_KNOWS_VERSION) |
                   bitIf(entry.checksumCrc32.has_value(), KVR_KNOWS_CHECKSUM);
    record.checksum = entry.checksumCrc32.value_or(0);
    record.sequence = entry.sequence;
    record.upgrade_only = flagOf(entry.mode == KvEEntryMode::upgrade);
    record.file_name = entry.fileName.c_str();
    record.version = textOf(entry.version);
    return record;
}

kvr_error recordOf(const KvTErrorInfo& error) {
    kvr_error record{};
    record.code = error.code;
    record.origin_node = error.originNode;
    record.line = error.line;
    record.text = error.text.c_str();
    record.function = error.function.c_str();
    return record;
}

kvr_element_result recordOf(const KvTElementOutcome& outcome) {
    kvr_element_result record{};
    record.result = static_cast<std::uint32_t>(outcome.result);
    record.failed_call = static_cast<std::uint32_t>(outcome.failedCall);
    record.known = bitIf(outcome.state.has_value(), KVR_KNOWS_STATE);
    record.state = outcome.state.value_or(0);
    record.file_changed = flagOf(outcome.fileChanged);
    record.errors = countOf(outcome.errors.size());
    record.reason = outcome.reason.c_str();
    return record;
}

kvr_verified_element recordOf(const KvTVerifiedElement& verified) {
    kvr_verified_element record{};
    record.element = verified.index;
    record.result = static_cast<std::uint32_t>(verified.result);
    record.file_changed = flagOf(verified.fileChanged);
    record.version = "";
    if (verified.found) {
        record.known = knownOf(*verified.found);
        record.checksum = verified.found->checksumCrc32.value_or(0);
        record.valid = flagOf(verified.found->valid.value_or(false));
        record.active = flagOf(verified.found->active.value_or(false));
        record.version = textOf(verified.found->version);
    }
    return record;
}
