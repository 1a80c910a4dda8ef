#include "PlanMatrix.h"

ExitCode showMatrix(const KvTCommandLine& /*line*/) {
    return exitFailed;
}
