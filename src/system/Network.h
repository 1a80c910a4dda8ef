#pragma once

#include <cstdint>
#include <string>

/// Starts the system's socket service; each success is paired with one stopSockets(). False on failure.
[[nodiscard]] bool startSockets();
void stopSockets();

/// First IPv4 address of a host, its bytes in network order. False when the name cannot be resolved.
[[nodiscard]] bool resolveHostName(const std::string& name, std::uint32_t& address);
