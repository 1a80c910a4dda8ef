#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Stands in for the system's name resolution in the programs that are linked with it.
struct NetworkStandIn {
    /// Whether the socket service starts.
    bool starts = true;
    /// The address of every host, bytes in network order; nothing: no name can be resolved.
    std::optional<std::uint32_t> address;

    /// What was asked for, in order: "start", "stop", "resolve NAME".
    std::vector<std::string> calls;

    static NetworkStandIn& instance();
};
