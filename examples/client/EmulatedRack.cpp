#include "EmulatedRack.h"

#include <KvEmulation.h>

bool serveEmulatedRack(const std::string& folder) {
    return KvEmulation::serve(folder).served;
}
