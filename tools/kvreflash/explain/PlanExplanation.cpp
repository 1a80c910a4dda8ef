#include "PlanExplanation.h"

ExitCode explainPlan(const KvTCommandLine& /*line*/) {
    return exitFailed;
}
