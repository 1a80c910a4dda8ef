#pragma once

#include "KvTOutcome.h"
#include "KvTPlan.h"

#include <cstdint>
#include <string>

/// How the update has gone as a whole, as far as reasons of single elements depend on it.
struct KvTRunFacts {
    /// The client has asked it to end.
    bool wasStopped = false;
    /// It has given up waiting because nothing changed any more.
    bool hasStalled = false;
    /// Failed status queries of the element in a row.
    std::uint32_t pollFailures = 0;
};

/// Returns why an element failed, was cancelled, is missing, was not started or is still in progress, in one sentence;
/// an empty text otherwise.
[[nodiscard]] std::string reasonFor(const KvNReflasher::KvTElementOutcome& outcome,
                                    const KvNReflasher::KvTPlannedElement& element, const KvTRunFacts& run);
