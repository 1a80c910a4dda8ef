#include "NetworkStandIn.h"

#include "Network.h"

NetworkStandIn& NetworkStandIn::instance() {
    static NetworkStandIn network;
    return network;
}

bool startSockets() {
    NetworkStandIn& network = NetworkStandIn::instance();
    network.calls.emplace_back("start");
    return network.starts;
}

void stopSockets() {
    NetworkStandIn::instance().calls.emplace_back("stop");
}

bool resolveHostName(const std::string& name, std::uint32_t& address) {
    NetworkStandIn& network = NetworkStandIn::instance();
    network.calls.push_back("resolve " + name);
    address = network.address.value_or(address);
    return network.address.has_value();
}
