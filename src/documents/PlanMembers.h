#pragma once

#include "ArchiveRecords.h"
#include "JsonValues.h"

#include <cstdint>
#include <vector>

namespace KvNReflasher {

/// Adds what the documents of a plan have in common: the archive, what the plan says of the target as a whole, and what
/// `toRecord` makes of each element. Null leaves out what depends on it.
template <typename ToRecord>
void setPlanMembers(KvNJson::json& document, const KvTPlan* plan, const std::vector<KvTArchiveEntry>* entries,
                    ToRecord&& toRecord) {
    if (plan != nullptr) {
        document.set("archive", plan->archive ? identityRecord(*plan->archive) : KvNJson::json());
    }
    if (entries != nullptr) {
        document.set("files", listOf(*entries, entryRecord));
    }
    if (plan == nullptr) {
        return;
    }
    document.set("targetAddress", textValue(plan->targetAddress));
    document.set("supported", plan->supported);
    document.set("unsupportedElements",
                 listOf(plan->unsupportedElements, [](std::uint32_t index) { return KvNJson::json(index); }));
    document.set("phaseCount", plan->phaseCount);
    document.set("elements", listOf(plan->elements, toRecord));
}

} // namespace KvNReflasher
