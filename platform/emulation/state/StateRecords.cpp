#include "StateRecords.h"

#include "JsonDocument.h"
#include "JsonPlace.h"

#include <limits>
#include <utility>

namespace {

constexpr std::uint64_t highest64 = std::numeric_limits<std::uint64_t>::max();

KvNJson::json documentOf(const InstalledValues& values) {
    KvNJson::json document = KvNJson::json::makeObject();
    if (values.version) {
        document.set("VERSION", std::string_view(*values.version));
    }
    if (values.checksum) {
        document.set("CHECKSUM_CRC32", *values.checksum);
    }
    if (values.isActivated) {
        document.set("ACTIVATED", true);
    }
    return document;
}

bool readVersion(const JsonPlace& place, InstalledValues& values) {
    return JsonValues::readText(place, values.version.emplace());
}

bool readChecksum(const JsonPlace& place, InstalledValues& values) {
    return JsonValues::readUnsigned32(place, values.checksum.emplace());
}

bool readActivated(const JsonPlace& place, InstalledValues& values) {
    if (!place.value().is_boolean()) {
        return place.refuse("true or false is expected");
    }
    values.isActivated = place.value().get_boolean();
    return true;
}

constexpr std::array<JsonMemberRule<InstalledValues>, 3> valueRules{{
    {"VERSION", readVersion},
    {"CHECKSUM_CRC32", readChecksum},
    {"ACTIVATED", readActivated},
}};

bool readAddress(const JsonPlace& place, ElementState& state) {
    return JsonValues::readText(place, state.address);
}

bool readInstalled(const JsonPlace& place, ElementState& state) {
    return readMembers(place, valueRules, state.installed);
}

bool readPending(const JsonPlace& place, ElementState& state) {
    return readMembers(place, valueRules, state.pending.emplace());
}

bool readPendingResets(const JsonPlace& place, ElementState& state) {
    return JsonValues::readUnsigned(place, 0, highest64, state.pendingResets);
}

constexpr std::array<JsonMemberRule<ElementState>, 4> stateRules{{
    {"address", readAddress},
    {"installed", readInstalled},
    {"pending", readPending},
    {"pendingResets", readPendingResets},
}};

bool readResets(const JsonPlace& place, ResetCounters& counters) {
    return JsonValues::readUnsigned(place, 0, highest64, counters.resets);
}

bool readHiddenLookups(const JsonPlace& place, ResetCounters& counters) {
    return JsonValues::readUnsigned32(place, counters.hiddenLookups);
}

constexpr std::array<JsonMemberRule<ResetCounters>, 2> counterRules{{
    {"resets", readResets},
    {"hiddenLookups", readHiddenLookups},
}};

} // namespace

void InstalledValues::add(const InstalledValues& newer) {
    if (newer.version) {
        version = newer.version;
    }
    if (newer.checksum) {
        checksum = newer.checksum;
    }
    isActivated = isActivated || newer.isActivated;
}

InstalledValues ElementState::valuesAfter(std::uint64_t resets) const {
    InstalledValues values = installed;
    if (pending && pendingResets != resets) {
        values.add(*pending);
    }
    return values;
}

void ElementState::install(const InstalledValues& values, std::uint64_t resets) {
    installed = valuesAfter(resets);
    installed.add(values);
    pending.reset();
}

void ElementState::installAtReset(const InstalledValues& values, std::uint64_t resets) {
    if (pendingResets != resets) {
        installed = valuesAfter(resets);
        pending.reset();
    }
    InstalledValues next = pending.value_or(InstalledValues());
    next.add(values);
    pending = std::move(next);
    pendingResets = resets;
}

std::string textOf(const ElementState& state) {
    KvNJson::json document = KvNJson::json::makeObject();
    document.set("address", std::string_view(state.address));
    document.set("installed", documentOf(state.installed));
    if (state.pending) {
        document.set("pending", documentOf(*state.pending));
        document.set("pendingResets", state.pendingResets);
    }
    return document.dump(4, ' ', false, KvNJson::error_handler_t::replace) + "\n";
}

std::optional<ElementState> parseElementState(std::string_view text) {
    std::string reason;
    ElementState state;
    const bool isState = readDocument(std::string(text), stateRules, state, reason) && !state.address.empty();
    return isState ? std::optional(std::move(state)) : std::nullopt;
}

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
