#include "EmulatedRack.h"

#include <KvEmulation.h>

#include <cstdio>

bool serveEmulatedRack(const std::string& folder) {
    const KvEmulation::KvTServeResult result = KvEmulation::serve(folder);
    if (!result.served) {
        std::fprintf(stderr, "client: %s\n", result.error.c_str());
    }
    return result.served;
}
