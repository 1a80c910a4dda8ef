#include "SystemFolders.h"

#include <cerrno>
#include <sys/stat.h>

std::string systemTrustFolder() {
    constexpr const char* folder = "/etc/kvreflash/trust";
    struct stat status {};
    const bool isAbsent = lstat(folder, &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
    return isAbsent ? std::string() : folder;
}
