#include "EmulatedTarget.h"

bool serveEmulatedTarget(const std::string& /*folder*/) {
    return false;
}
