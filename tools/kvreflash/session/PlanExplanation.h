#pragma once

#include "CommandLine.h"

/// Tells why each element of the target, or the ones that the line names, is or is not updated, and which elements the
/// session does not look at. Fails when there is no plan or no such element.
[[nodiscard]] ExitCode explainPlan(const KvTCommandLine& line);
