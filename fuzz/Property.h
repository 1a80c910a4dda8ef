#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program when a property of what is fuzzed does not hold, in every type of build. `property` says in a
/// sentence what should hold.
inline void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "Broken property: %s\n", property);
        std::abort();
    }
}
