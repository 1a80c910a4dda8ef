#include "Faults.h"

#include "EmulationErrors.h"

#include <cstddef>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace {

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
