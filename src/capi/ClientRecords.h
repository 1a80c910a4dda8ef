#pragma once

#include "KvTOutcome.h"
#include "KvTPlan.h"
#include "kvreflash.h"

#include <cstdint>

// Values of the library as records. Texts of a record are those of the value, which must outlive it.

[[nodiscard]] kvr_plan recordOf(const KvNReflasher::KvTPlan& plan, std::uint32_t entries);
[[nodiscard]] kvr_element recordOf(const KvNReflasher::KvTPlannedElement& element);
[[nodiscard]] kvr_entry recordOf(const KvNReflasher::KvTArchiveEntry& entry);
[[nodiscard]] kvr_error recordOf(const KvNReflasher::KvTErrorInfo& error);
[[nodiscard]] kvr_element_result recordOf(const KvNReflasher::KvTElementOutcome& outcome);
[[nodiscard]] kvr_verified_element recordOf(const KvNReflasher::KvTVerifiedElement& verified);
