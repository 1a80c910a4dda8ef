#include "EmulatedTargets.h"

#include "KvEmulation.h"
#include "ToolOutput.h"

#include <map>
#include <set>

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

bool canOnlyEmulate() {
    return KV_IS_EMULATED_ONLY != 0;
}

std::string serveEmulatedTargets(const std::vector<std::string>& folders) {
    std::map<std::string, std::string> folderOf;
    for (const std::string& folder : folders) {
        const KvEmulation::KvTServeResult result = serve(folder);
        if (!result.served) {
            return result.error;
        }
        // A target may list an address several times: it is several devices then.
        for (const std::string& address : std::set<std::string>(result.addresses.begin(), result.addresses.end())) {
            if (const auto [other, isNew] = folderOf.emplace(address, folder); !isNew) {
                say(std::string("warning: '")
                        .append(other->second)
                        .append("' and '")
                        .append(folder)
                        .append("' both have the address ")
                        .append(address));
            }
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
