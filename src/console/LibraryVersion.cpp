#include "LibraryVersion.h"

#include "ModuleVersion.h"

KvCVersion getToolVersion() {
    const auto version = readModuleVersion();
    if (!version) {
        return {};
    }
    return {static_cast<std::uint8_t>(version->major),
            static_cast<std::uint8_t>(version->minor),
            static_cast<std::uint8_t>(version->maintenance),
            0,
            0,
            0};
}
