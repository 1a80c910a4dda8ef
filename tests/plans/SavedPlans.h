#pragma once

#include "KvTSavedPlan.h"

/// A plan with a value in every member.
[[nodiscard]] KvNReflasher::KvTSavedPlan sampleSavedPlan();
