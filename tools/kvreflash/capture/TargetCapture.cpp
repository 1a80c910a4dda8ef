#include "TargetCapture.h"

ExitCode captureTarget(const KvTCommandLine& /*line*/) {
    return exitFailed;
}
