#include "EntryProperties.h"

namespace {

constexpr std::array<std::string_view, propertyCount> keys = {
    "name",       "sequence",          "featureLevel",      "boards",  "boardType",     "boardVariant", "boardId", "id",
    "targetPath", "hwCompatibilityId", "swCompatibilityId", "version", "checksumCrc32", "mode"};

} // namespace

std::string_view propertyKey(KvEProperty property) {
    return keys[static_cast<std::size_t>(property)];
}

EntryProperties::EntryProperties(KvNJson::jsonView object) {
    if (!object.is_object()) {
        return;
    }
    for (std::size_t member = 0; member < object.size(); ++member) {
        const std::string_view key = object.key(member);
        for (std::size_t property = 0; property < keys.size(); ++property) {
            if (keys[property] == key) {
                values_[property] = object.at(member);
                break;
            }
        }
    }
}
