#pragma once

#include "KvCErrorManager.h"
#include "KvTOutcome.h"

#include <cstdint>
#include <vector>

/// The entries of an error list from number `begin` on, up to number `end`, as the values that clients are given.
[[nodiscard]] std::vector<KvNReflasher::KvTErrorInfo>
errorEntriesOf(const KvCErrorListPool& list, std::uint32_t begin = 0, std::uint32_t end = 0xFFFFFFFF);
