#include "TargetDescription.h"

#include "DescriptionReaders.h"
#include "IpV4Text.h"
#include "JsonDocument.h"
#include "KvNInventoryIDs.h"

#include <limits>
#include <utility>

namespace {

bool readIpAddress(const JsonPlace& place, std::vector<std::uint32_t>& addresses) {
    std::string text;
    if (!JsonValues::readText(place, text)) {
        return false;
    }
    const auto address = parseIpV4(text);
    if (!address) {
        return place.refuse(JsonValues::quoted(text) +
                            " is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are expected");
    }
    addresses.push_back(*address);
    return true;
}

bool readIpAddresses(const JsonPlace& place, TargetDescription& target) {
    return readItems(place, [&target](const JsonPlace& item) { return readIpAddress(item, target.addresses); });
}

bool readServiceStatus(const JsonPlace& place, TargetDescription& target) {
    std::int64_t status = 0;
    if (!JsonValues::readInteger(place, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max(), status)) {
        return false;
    }
    target.serviceStatus = static_cast<std::int32_t>(status);
    return true;
}

bool readRebootLookups(const JsonPlace& place, TargetDescription& target) {
    return JsonValues::readUnsigned32(place, target.rebootLookups);
}

bool readInventory(const JsonPlace& place, TargetDescription& target) {
    target.inventory = readRootItem(place);
    return target.inventory != nullptr;
}

bool readFaultList(const JsonPlace& place, TargetDescription& target) {
    return readFaults(place, target.faults);
}

constexpr std::array<JsonMemberRule<TargetDescription>, 5> targetRules{{
    {"addresses", readIpAddresses},
    {"serviceStatus", readServiceStatus},
    {"rebootLookups", readRebootLookups},
    {"inventory", readInventory},
    {"faults", readFaultList},
}};

} // namespace

std::unique_ptr<TargetDescription> readTargetDescription(std::string text, std::string& reason) {
    auto target = std::make_unique<TargetDescription>();
    if (!readDocument(std::move(text), targetRules, *target, reason)) {
        return nullptr;
    }
    if (target->inventory == nullptr) {
        target->inventory = std::make_unique<ItemDescription>(nullptr, KvNInventoryIDs::ROOT.getCategory(), 1);
    }
    return target;
}
