// In place of EmulatedTargets.cpp, with a platform that cannot emulate.

#include "EmulatedTargets.h"

bool canEmulate() {
    return false;
}

bool canOnlyEmulate() {
    return false;
}

std::string serveEmulatedTargets(const std::vector<std::string>& folders) {
    return folders.empty() ? std::string() : "the platform cannot emulate targets";
}

std::string serveAlone(const std::string& folder, std::string& /*address*/) {
    return folder + ": the platform cannot emulate targets";
}
