#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "Operation.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// A failure that a description puts at an imported operation.
struct Fault {
    Operation operation = Operation::getValue;
    /// Only calls with this address.
    std::optional<KvCInventoryAddress> at;
    /// Only calls with this element identifier or filter parameter number.
    std::optional<std::uint32_t> id;
    /// Which of the calls that fit is hit, counted from 1; 0: each of them.
    std::uint32_t occurrence = 1;
    /// Absent: one error that names the operation.
    std::optional<std::vector<KvTErrorEntry>> errors;
    /// The call's result; absent: that of a failed call.
    std::optional<std::int64_t> status;
};

/// A call as faults see it.
struct CallSubject {
    Operation operation = Operation::getValue;
    /// Null: the call has none.
    const KvCInventoryAddress* address = nullptr;
    std::optional<std::uint32_t> id;
};

/// What faults do to a call.
struct FaultEffect {
    std::vector<KvTErrorEntry> errors;
    std::int64_t status = 0;
    /// There was no memory for some of the errors.
    bool isMemoryExhausted = false;
};

/// The faults of one target and how many calls each has met in this process.
class Faults {
public:
    explicit Faults(std::vector<Fault> faults);

    /// Counts a call. When faults hit it, `effect` gets the errors of all of them and the status of the first fault
    /// that hit this call. Throws nothing.
    void meet(const CallSubject& call, std::optional<FaultEffect>& effect);

private:
    struct Entry {
        Fault fault;
        std::uint32_t calls = 0;
    };
    std::array<std::vector<Entry>, operationCount> byOperation_;
};
