#pragma once

#include "KvCVersion.h"
#include "KvNJson.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The keys of a file entry, or of an element of its "boards", that the system knows.
enum class KvEProperty : std::uint8_t {
    name,
    sequence,
    featureLevel,
    boards,
    boardType,
    boardVariant,
    boardId,
    id,
    targetPath,
    hwCompatibilityId,
    swCompatibilityId,
    version,
    checksumCrc32,
    mode
};

/// Behind the last one.
inline constexpr std::size_t propertyCount = static_cast<std::size_t>(KvEProperty::mode) + 1;

/// The key of a property as the description writes it.
[[nodiscard]] const char* propertyKey(KvEProperty property);

/// Calls `visit` with each item of an array, or with a value that is none.
template <typename Visit>
void forEachScalar(KvNJson::jsonView value, Visit&& visit) {
    if (!value.is_array()) {
        visit(value);
        return;
    }
    for (std::size_t index = 0; index < value.size(); ++index) {
        visit(value.at(index));
    }
}

/// The version that a string value of the description tells; the zero version when it tells none.
[[nodiscard]] KvCVersion versionOf(KvNJson::jsonView text);

/// The values of the known properties of one entry object, found in one pass over its members.
class KvCEntryProperties {
public:
    /// `object` must outlive this record; anything but an object has none of the properties.
    explicit KvCEntryProperties(KvNJson::jsonView object);

    [[nodiscard]] bool has(KvEProperty property) const { return (*this)[property].is_valid(); }
    /// Looks at nothing when the object has no such key.
    [[nodiscard]] KvNJson::jsonView operator[](KvEProperty property) const {
        return values_[static_cast<std::size_t>(property)];
    }

private:
    std::array<KvNJson::jsonView, propertyCount> values_{};
};
