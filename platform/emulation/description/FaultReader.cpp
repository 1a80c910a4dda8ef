#include "DescriptionReaders.h"
#include "ItemAddressText.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace {

bool readCall(const JsonPlace& place, Fault& fault) {
    std::string name;
    if (!JsonValues::readText(place, name)) {
        return false;
    }
    const auto operation = operationNamed(name);
    if (!operation) {
        return place.refuse("unknown call " + JsonValues::quoted(name));
    }
    fault.operation = *operation;
    return true;
}

bool readAt(const JsonPlace& place, Fault& fault) {
    std::string text;
    if (!JsonValues::readText(place, text)) {
        return false;
    }
    fault.at = parseItemAddress(text);
    return fault.at || place.refuse(JsonValues::quoted(text) + " is not an address like HCN[1]/UPDATE_INFO[1]");
}

bool readId(const JsonPlace& place, Fault& fault) {
    return JsonValues::readUnsigned32(place, fault.id.emplace());
}

bool readOccurrence(const JsonPlace& place, Fault& fault) {
    return JsonValues::readUnsigned32(place, fault.occurrence);
}

bool readErrors(const JsonPlace& place, Fault& fault) {
    return readErrorEntries(place, fault.errors.emplace());
}

bool readStatus(const JsonPlace& place, Fault& fault) {
    // Statuses have 32 bits, signed or unsigned; only a number of written bytes may be longer, which nothing needs.
    return JsonValues::readInteger(place, std::numeric_limits<std::int32_t>::min(),
                                   std::numeric_limits<std::uint32_t>::max(), fault.status.emplace());
}

constexpr std::array<JsonMemberRule<Fault>, 6> faultRules{{
    {"call", readCall},
    {"at", readAt},
    {"id", readId},
    {"occurrence", readOccurrence},
    {"errors", readErrors},
    {"status", readStatus},
}};

bool readFault(const JsonPlace& place, std::vector<Fault>& faults) {
    Fault fault;
    if (!readMembers(place, faultRules, fault)) {
        return false;
    }
    if (!place.value().contains("call")) {
        return place.refuse("the key call is missing");
    }
    faults.push_back(std::move(fault));
    return true;
}

} // namespace

bool readFaults(const JsonPlace& place, std::vector<Fault>& faults) {
    faults.clear();
    return readItems(place, [&faults](const JsonPlace& item) { return readFault(item, faults); });
}
