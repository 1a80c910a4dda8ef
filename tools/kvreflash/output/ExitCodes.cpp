#include "ExitCodes.h"

#include "KvDocuments.h"
#include "ToolOutput.h"

#include <cstdio>
#include <utility>

using namespace KvNReflasher;

KvTVerdict verdictOfStandardOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return {};
    }
    return {KvEFailure::output, "cannot write to standard output"};
}

ExitCode conclude(KvTVerdict verdict) {
    if (KvTVerdict loss = verdictOfStandardOutput(); !loss.isSuccess()) {
        if (verdict.failure < loss.failure) {
            say(loss.message);
        }
        verdict.add(std::move(loss));
    }
    if (!verdict.isSuccess()) {
        // Without memory a session cannot say that it has none.
        say(verdict.message.empty() ? "out of memory" : verdict.message);
    }
    return static_cast<ExitCode>(exitCodeOf(verdict.failure));
}
