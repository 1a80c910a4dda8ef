#include "Network.h"

#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

// Sockets need no service here.
bool startSockets() {
    return true;
}

void stopSockets() {}

bool resolveHostName(const std::string& name, std::uint32_t& address) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* results = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &results) != 0) {
        return false;
    }
    sockaddr_in first{};
    std::memcpy(&first, results->ai_addr, sizeof first);
    address = first.sin_addr.s_addr;
    freeaddrinfo(results);
    return true;
}
