#include "EntryProperties.h"

#include <string>
#include <string_view>

namespace {

constexpr std::array<std::string_view, propertyCount> keys = {
    "name",       "sequence",          "featureLevel",      "boards",  "boardType",     "boardVariant", "boardId", "id",
    "targetPath", "hwCompatibilityId", "swCompatibilityId", "version", "checksumCrc32", "mode"};

} // namespace

const char* propertyKey(KvEProperty property) {
    // Views of whole literals, which end with a zero.
    return keys[static_cast<std::size_t>(property)].data();
}

KvCVersion versionOf(KvNJson::jsonView text) {
    const std::string whole(text.get_string());
    // The version's own reading would end at a zero character and overlook the rest.
    return whole.find('\0') == std::string::npos ? KvCVersion(whole.c_str()) : KvCVersion();
}

KvCEntryProperties::KvCEntryProperties(KvNJson::jsonView object) {
    if (!object.is_object()) {
        return;
    }
    const std::size_t memberCount = object.size();
    for (std::size_t member = 0; member < memberCount; ++member) {
        const std::string_view key = object.key(member);
        for (std::size_t property = 0; property < keys.size(); ++property) {
            if (key == keys[property]) {
                values_[property] = object.at(member);
                break;
            }
        }
    }
}
