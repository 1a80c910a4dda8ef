#include "ResetCounters.h"

#include "JsonDocument.h"
#include "JsonPlace.h"

#include <limits>

namespace {

bool readResets(const JsonPlace& place, ResetCounters& counters) {
    return JsonValues::readUnsigned(place, 0, std::numeric_limits<std::uint64_t>::max(), counters.resets);
}

bool readHiddenLookups(const JsonPlace& place, ResetCounters& counters) {
    return JsonValues::readUnsigned32(place, counters.hiddenLookups);
}

constexpr std::array<JsonMemberRule<ResetCounters>, 2> counterRules{{
    {"resets", readResets},
    {"hiddenLookups", readHiddenLookups},
}};

} // namespace

std::string textOf(const ResetCounters& counters) {
    KvNJson::json document = KvNJson::json::makeObject();
    document.set("resets", counters.resets);
    document.set("hiddenLookups", counters.hiddenLookups);
    return document.dump(4) + "\n";
}

std::optional<ResetCounters> parseResetCounters(std::string_view text) {
    std::string reason;
    ResetCounters counters;
    return readDocument(std::string(text), counterRules, counters, reason) ? std::optional(counters) : std::nullopt;
}
