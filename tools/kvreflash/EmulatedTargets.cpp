#include "EmulatedTargets.h"

#include "KvEmulation.h"
#include "ToolOutput.h"

namespace {

/// Why the folder cannot be served; empty when it is.
std::string serve(const std::string& folder) {
    const KvEmulation::KvTServeResult result = KvEmulation::serve(folder);
    for (const std::string& warning : result.warnings) {
        say("warning: " + warning);
    }
    return result.served ? std::string() : result.error;
}

} // namespace

bool canEmulate() {
    return true;
}

bool serveEmulatedTargets(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        if (const std::string error = serve(folder); !error.empty()) {
            say(error);
            return false;
        }
    }
    return true;
}

std::string serveAlone(const std::string& folder) {
    KvEmulation::reset();
    return serve(folder);
}
