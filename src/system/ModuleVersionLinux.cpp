#include "ModuleVersion.h"

// Shared objects carry no version resource: the build gives the project's version.
std::optional<KvTModuleVersion> readModuleVersion() {
    return KvTModuleVersion{KV_PROJECT_VERSION_MAJOR, KV_PROJECT_VERSION_MINOR, KV_PROJECT_VERSION_PATCH};
}
