#include "EmulatedTargets.h"

#include "KvEmulation.h"
#include "ToolOutput.h"

bool serveEmulatedTargets(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        const KvEmulation::KvTServeResult result = KvEmulation::serve(folder);
        for (const std::string& warning : result.warnings) {
            say("warning: " + warning);
        }
        if (!result.served) {
            say(result.error);
            return false;
        }
    }
    return true;
}
