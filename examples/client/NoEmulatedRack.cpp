#include "EmulatedRack.h"

bool serveEmulatedRack(const std::string& /*folder*/) {
    return false;
}
