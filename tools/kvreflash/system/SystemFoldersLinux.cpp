#include "SystemFolders.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

SystemPlace placeOf(const char* path) {
    struct stat status {};
    return {path, lstat(path, &status) != 0 && (errno == ENOENT || errno == ENOTDIR)};
}

/// A variable of the environment; empty if it is not set.
std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

SystemPlace systemTrustFolder() {
    return placeOf("/etc/kvreflash/trust");
}

SystemPlace systemSettingsFile() {
    return placeOf("/etc/kvreflash/kvreflash.ini");
}

std::string defaultJournalFolder() {
    // The rules of this variable let a relative path count for nothing.
    if (std::string state = variable("XDG_STATE_HOME"); state.starts_with('/')) {
        return state.append("/kvreflash");
    }
    return geteuid() == 0 ? "/var/lib/kvreflash" : variable("HOME").append("/.local/state/kvreflash");
}
