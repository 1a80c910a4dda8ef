#pragma once

#include "JsonText.h"
#include "KvNJson.h"
#include "KvTSavedPlan.h"

// A saved plan as JSON, without format and digest.

namespace KvNReflasher {

/// Adds what the plan was made of: target, options, archive. It may leave out its elements.
void setPlanBasis(KvCJsonText& record, const KvTSavedPlan& plan);
/// Adds what was planned: elements, phases and what sums them up.
void setPlanElements(KvCJsonText& record, const KvTPlan& plan);

/// Read what these have added. Each element's index is its position.
/// @{
void readPlanBasis(KvNJson::jsonView record, KvTSavedPlan& plan);
void readPlanElements(KvNJson::jsonView record, KvTSavedPlan& plan);
/// @}

} // namespace KvNReflasher
