#include "Faults.h"

#include "EmulationErrors.h"
#include "ErrorEntryReader.h"
#include "ItemReader.h"

#include <cstddef>
#include <iterator>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace {

bool readCall(const JsonPlace& place, Fault& fault) {
    std::string name;
    if (!JsonValues::readText(place, name)) {
        return false;
    }
    const auto operation = operationNamed(name);
    if (!operation) {
        return place.refuse("unknown call " + JsonValues::quoted(name));
    }
    fault.operation = *operation;
    return true;
}

bool readAt(const JsonPlace& place, Fault& fault) {
    std::string text;
    if (!JsonValues::readText(place, text)) {
        return false;
    }
    fault.at = parseAddress(text);
    return fault.at || place.refuse(JsonValues::quoted(text) + " is not an address like HCN[1]/UPDATE_INFO[1]");
}

bool readId(const JsonPlace& place, Fault& fault) {
    return JsonValues::readUnsigned32(place, fault.id.emplace());
}

bool readOccurrence(const JsonPlace& place, Fault& fault) {
    return JsonValues::readUnsigned32(place, fault.occurrence);
}

bool readErrors(const JsonPlace& place, Fault& fault) {
    return readErrorEntries(place, fault.errors.emplace());
}

bool readStatus(const JsonPlace& place, Fault& fault) {
    // Statuses have 32 bits, signed or unsigned; only a number of written bytes may be longer, which nothing needs.
    return JsonValues::readInteger(place, std::numeric_limits<std::int32_t>::min(),
                                   std::numeric_limits<std::uint32_t>::max(), fault.status.emplace());
}

constexpr std::array<JsonMemberRule<Fault>, 6> faultRules{{
    {"call", readCall},
    {"at", readAt},
    {"id", readId},
    {"occurrence", readOccurrence},
    {"errors", readErrors},
    {"status", readStatus},
}};

bool readFault(const JsonPlace& place, std::vector<Fault>& faults) {
    Fault fault;
    if (!readMembers(place, faultRules, fault)) {
        return false;
    }
    if (!place.value().contains("call")) {
        return place.refuse("the key call is missing");
    }
    faults.push_back(std::move(fault));
    return true;
}

bool fits(const Fault& fault, const CallSubject& call) {
    const bool addressFits = !fault.at || (call.address != nullptr && *call.address == *fault.at);
    return addressFits && (!fault.id || call.id == fault.id);
}

std::vector<KvTErrorEntry> errorsOf(const Fault& fault, const OperationTraits& operation) {
    if (fault.errors) {
        return *fault.errors;
    }
    return {emulationError(EmulationErrors::fault, "Fault at " + std::string(operation.name) + ".")};
}

void add(const Fault& fault, const OperationTraits& operation, std::optional<FaultEffect>& effect) {
    if (!effect) {
        effect.emplace().status = fault.status.value_or(operation.failed);
    }
    try {
        std::vector<KvTErrorEntry> errors = errorsOf(fault, operation);
        effect->errors.insert(effect->errors.end(), std::make_move_iterator(errors.begin()),
                              std::make_move_iterator(errors.end()));
    } catch (const std::bad_alloc&) {
        effect->isMemoryExhausted = true;
    }
}

} // namespace

bool readFaults(const JsonPlace& place, std::vector<Fault>& faults) {
    faults.clear();
    return readItems(place, [&faults](const JsonPlace& item) { return readFault(item, faults); });
}

Faults::Faults(std::vector<Fault> faults) {
    for (Fault& fault : faults) {
        auto& entries = byOperation_[static_cast<std::size_t>(fault.operation)];
        entries.push_back({std::move(fault), 0});
    }
}

void Faults::meet(const CallSubject& call, std::optional<FaultEffect>& effect) {
    for (Entry& entry : byOperation_[static_cast<std::size_t>(call.operation)]) {
        if (!fits(entry.fault, call)) {
            continue;
        }
        ++entry.calls;
        if (entry.fault.occurrence == 0 || entry.fault.occurrence == entry.calls) {
            add(entry.fault, traitsOf(call.operation), effect);
        }
    }
}
