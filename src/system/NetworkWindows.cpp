#include "Network.h"

#include <cstring>
#include <winsock2.h>

namespace {

constexpr WORD socketVersion = 2;

} // namespace

bool startSockets() {
    WSADATA data{};
    return WSAStartup(socketVersion, &data) == 0;
}

void stopSockets() {
    WSACleanup();
}

bool resolveHostName(const std::string& name, std::uint32_t& address) {
    const hostent* host = gethostbyname(name.c_str());
    if (host == nullptr || host->h_addr_list[0] == nullptr) {
        return false;
    }
    std::memcpy(&address, host->h_addr_list[0], sizeof address);
    return true;
}
