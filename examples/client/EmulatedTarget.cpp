#include "EmulatedTarget.h"

#include <KvEmulation.h>

bool serveEmulatedTarget(const std::string& folder) {
    return KvEmulation::serve(folder).served;
}
