#include "DescriptionReaders.h"

#include <limits>
#include <string>
#include <utility>

namespace {

template <std::uint32_t KvTErrorEntry::*field>
bool readNumber(const JsonPlace& place, KvTErrorEntry& entry) {
    return JsonValues::readUnsigned32(place, entry.*field);
}

template <std::string KvTErrorEntry::*field>
bool readString(const JsonPlace& place, KvTErrorEntry& entry) {
    return JsonValues::readText(place, entry.*field);
}

bool readTimeStamp(const JsonPlace& place, KvTErrorEntry& entry) {
    return JsonValues::readUnsigned(place, 0, std::numeric_limits<std::uint64_t>::max(), entry.timeStamp);
}

constexpr std::array<JsonMemberRule<KvTErrorEntry>, 8> entryRules{{
    {"code", readNumber<&KvTErrorEntry::code>},
    {"text", readString<&KvTErrorEntry::text>},
    {"originNode", readNumber<&KvTErrorEntry::originNode>},
    {"timeStamp", readTimeStamp},
    {"mainModule", readNumber<&KvTErrorEntry::mainModule>},
    {"subModule", readNumber<&KvTErrorEntry::subModule>},
    {"function", readString<&KvTErrorEntry::function>},
    {"line", readNumber<&KvTErrorEntry::line>},
}};

bool readEntry(const JsonPlace& place, std::vector<KvTErrorEntry>& entries) {
    KvTErrorEntry entry;
    if (!readMembers(place, entryRules, entry)) {
        return false;
    }
    for (const char* const key : {"code", "text"}) {
        if (!place.value().contains(key)) {
            return place.refuse(std::string("the key ") + key + " is missing");
        }
    }
    entries.push_back(std::move(entry));
    return true;
}

} // namespace

bool readErrorEntries(const JsonPlace& place, std::vector<KvTErrorEntry>& entries) {
    entries.clear();
    return readItems(place, [&entries](const JsonPlace& item) { return readEntry(item, entries); });
}
