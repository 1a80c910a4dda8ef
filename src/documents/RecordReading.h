#pragma once

#include "KvNJson.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"
#include "KvTRelease.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Records as JSON back into values. A member that is missing, or of another kind, gives what a new record has: whoever
// must know whether a text is what was written compares it with what is written of the value.

namespace KvNReflasher {

[[nodiscard]] inline std::string textOf(KvNJson::jsonView value) {
    return value.is_string() ? std::string(value.get_string()) : std::string();
}

[[nodiscard]] inline bool isTrue(KvNJson::jsonView value) {
    return value.is_boolean() && value.get_boolean();
}

/// Nothing for anything but a number that fits.
template <typename Number = std::uint32_t>
[[nodiscard]] std::optional<Number> numberOf(KvNJson::jsonView value) {
    if (!value.is_number_unsigned() || value.get_unsigned() > std::numeric_limits<Number>::max()) {
        return std::nullopt;
    }
    return static_cast<Number>(value.get_unsigned());
}

/// What `toItem` makes of each item; nothing of what is not an array.
template <typename ToItem>
[[nodiscard]] auto itemsOf(KvNJson::jsonView list, ToItem&& toItem) {
    std::vector<decltype(toItem(list))> items;
    const std::size_t size = list.is_array() ? list.size() : 0;
    items.reserve(size);
    for (std::size_t index = 0; index < size; ++index) {
        items.push_back(toItem(list.at(index)));
    }
    return items;
}

/// The value up to `last` whose word it is; nothing if it is none.
template <typename Enumeration>
[[nodiscard]] std::optional<Enumeration> meaningOf(KvNJson::jsonView word, Enumeration last) {
    for (std::size_t value = 0; word.is_string() && value <= static_cast<std::size_t>(last); ++value) {
        if (word.get_string() == codeOf(static_cast<Enumeration>(value))) {
            return static_cast<Enumeration>(value);
        }
    }
    return std::nullopt;
}

[[nodiscard]] KvTInstalled installedOf(KvNJson::jsonView record);
[[nodiscard]] KvTPlannedElement plannedElementOf(KvNJson::jsonView record);
[[nodiscard]] std::optional<KvTArchiveIdentity> identityOf(KvNJson::jsonView record);
[[nodiscard]] std::optional<KvTRelease> releaseOf(KvNJson::jsonView record);
[[nodiscard]] KvTVerdict verdictIn(KvNJson::jsonView record);

} // namespace KvNReflasher
