#pragma once

#include "KvIReflasher.h"

#include <cstdint>
#include <vector>

// What the tool says on standard error where a session is silent about something that its user will not have meant.

/// Of each of `elements`, which are to be left out of the update: that there is no such element.
void sayWhichElementsAreNotThere(KvIReflasher& session, const std::vector<std::uint32_t>& elements);

/// When the options have a filter that lets nothing through: a session without work succeeds.
void sayWhenAllIsFiltered(KvIReflasher& session, const KvNReflasher::KvTOptions& options);

/// What helps after a prepare() that has ended with the status `prepared`; the session itself has said why.
void sayWhatIsMissing(KvIReflasher& session, const KvNReflasher::KvTOptions& options, std::uint32_t prepared);
