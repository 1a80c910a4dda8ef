#pragma once

#include <cstddef>
#include <string>

/// "1 item", "2 items".
[[nodiscard]] inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
