// A saved plan: reading it, and comparing it with itself.

#include "KvNJson.h"
#include "PlanDifferences.h"
#include "Property.h"
#include "SavedPlanRecord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace KvNReflasher;
using KvNJson::json;

namespace {

KvTSavedPlan planOf(KvNJson::jsonView record) {
    KvTSavedPlan plan;
    readPlanBasis(record, plan);
    readPlanElements(record, plan);
    return plan;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string reason;
    if (const std::optional<KvTSavedPlan> saved = readSavedPlan(text, reason)) {
        require(savedPlanDocument(*saved) == text, "A saved plan that is accepted is written as it was read.");
    } else {
        require(!reason.empty(), "There is a reason if a saved plan is not accepted.");
    }
    const KvTSavedPlan plan = planOf(json::parse(text).view());
    const std::string document = savedPlanDocument(plan);
    const std::optional<KvTSavedPlan> again = readSavedPlan(document, reason);
    require(again.has_value(), "A plan that was written is accepted.");
    require(differencesBetween(plan, *again).empty(), "A plan that was written and read does not differ.");
    return 0;
}
