#include "EntryProperties.h"

#include <string>
#include <string_view>

namespace {

constexpr std::array<const char*, propertyCount> keys = {
    "name",       "sequence",          "featureLevel",      "boards",  "boardType",     "boardVariant", "boardId", "id",
    "targetPath", "hwCompatibilityId", "swCompatibilityId", "version", "checksumCrc32", "mode"};

} // namespace

const char* propertyKey(KvEProperty property) {
    // cppcheck-suppress CastIntegerToAddressAtReturn ; it takes the texts for numbers
    return keys[static_cast<std::size_t>(property)];
}

KvCVersion versionOf(KvNJson::jsonView text) {
    const std::string whole(text.get_string());
    // The version's own reading would end at a zero character and overlook the rest.
    return whole.find('\0') == std::string::npos ? KvCVersion(whole.c_str()) : KvCVersion();
}

EntryProperties::EntryProperties(KvNJson::jsonView object) {
    if (!object.is_object()) {
        return;
    }
    for (std::size_t member = 0; member < object.size(); ++member) {
        const std::string_view key = object.key(member);
        for (std::size_t property = 0; property < keys.size(); ++property) {
            if (key == keys[property]) {
                values_[property] = object.at(member);
                break;
            }
        }
    }
}
