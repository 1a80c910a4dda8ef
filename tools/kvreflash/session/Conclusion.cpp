#include "Conclusion.h"

#include "ToolOutput.h"

#include <cstdio>

using namespace KvNReflasher;

ExitCode conclude(KvTVerdict verdict) {
    // Whoever wrote to standard output, the library or the tool: what was lost shows here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const KvTVerdict loss{KvEFailure::output, "cannot write to standard output"};
        if (!verdict.isSuccess()) {
            say(loss.message);
        }
        verdict.add(loss);
    }
    if (!verdict.isSuccess()) {
        // Without memory a session cannot say that it has none.
        say(verdict.message.empty() ? "out of memory" : verdict.message);
    }
    return exitCodeOf(verdict.failure);
}
