#include "Conclusion.h"

#include "ToolOutput.h"

ExitCode conclude(const KvNReflasher::KvTVerdict& verdict) {
    if (!verdict.isSuccess()) {
        say(verdict.message);
    }
    return exitCodeOf(verdict.failure);
}

ExitCode failedFile(const char* what, const std::string& path) {
    sayFileFailure(what, path);
    return exitCodeOf(KvNReflasher::KvEFailure::output);
}
