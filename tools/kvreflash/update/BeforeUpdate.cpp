#include "BeforeUpdate.h"

#include "PlannedTarget.h"
#include "Preflight.h"

namespace {

/// As much of the plan as a check of the update files needs.
KvNReflasher::KvTPlan planOf(const std::vector<KvTPlannedElement>& elements) {
    KvNReflasher::KvTPlan plan;
    for (const KvTPlannedElement& element : elements) {
        KvNReflasher::KvTPlannedElement& planned = plan.elements.emplace_back();
        planned.decision.update = element.isUpdated();
        if (element.file != noArchiveFile) {
            planned.entry.emplace().fileIndex = element.file;
        }
    }
    return plan;
}

} // namespace

std::optional<KvTBeforeUpdate> lookBeforeUpdate(const KvTCommandLine& line) {
    PlannedTarget target(line.options);
    // Errors of the scan do not keep a session from running either.
    if (!target.plan()) {
        return std::nullopt;
    }
    KvCPreparation& preparation = target.preparation();
    KvTBeforeUpdate before;
    before.archive = preparation.archive().info();
    before.address = preparation.targetAccess().ipAddress().view();
    before.elements = plannedElements(preparation, line.disabledElements);
    if (line.preflight) {
        before.preflightFindings = preflightFindings(preparation.archive(), line.options, planOf(before.elements));
    }
    return before;
}
