#include "EmulatedTargets.h"

#include "KvEmulation.h"
#include "ToolOutput.h"

namespace {

/// Serves the folder and says what is odd with it.
KvEmulation::KvTServeResult serve(const std::string& folder) {
    KvEmulation::KvTServeResult result = KvEmulation::serve(folder);
    for (const std::string& warning : result.warnings) {
        say("warning: " + warning);
    }
    return result;
}

} // namespace

bool canEmulate() {
    return true;
}

std::string serveEmulatedTargets(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        if (const KvEmulation::KvTServeResult result = serve(folder); !result.served) {
            return result.error;
        }
    }
    return {};
}

std::string serveAlone(const std::string& folder, std::string& address) {
    KvEmulation::reset();
    const KvEmulation::KvTServeResult result = serve(folder);
    address = result.addresses.empty() ? std::string() : result.addresses.front();
    return result.served ? std::string() : result.error;
}
