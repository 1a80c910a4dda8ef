#include "BeforeUpdate.h"

#include "PlannedTarget.h"
#include "Preflight.h"

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
        before.preflightFindings = preflightFindings(preparation.archive(), line.options, before.elements);
    }
    return before;
}
