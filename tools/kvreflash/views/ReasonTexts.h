#pragma once

#include "KvTPlan.h"

// Sentences for the reasons of a plan.

/// What follows from the reason, such as "update: the version differs".
[[nodiscard]] const char* sentenceOf(KvNReflasher::KvEReason reason);
[[nodiscard]] const char* sentenceOf(KvNReflasher::KvEHiddenBy reason);
/// A few words on why an element is not updated, such as "up to date"; empty for one that is.
[[nodiscard]] const char* shortTextOf(const KvNReflasher::KvTDecision& decision);
