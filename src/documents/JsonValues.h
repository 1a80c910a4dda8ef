#pragma once

#include "KvDocuments.h"
#include "KvNJson.h"

#include <optional>
#include <string>
#include <string_view>

// Plain values as JSON.

namespace KvNReflasher {

[[nodiscard]] inline KvNJson::json textValue(const std::string& text) {
    return std::string_view(text);
}

/// Null for nothing.
template <typename Value>
[[nodiscard]] KvNJson::json valueOrNull(const std::optional<Value>& value) {
    return value ? KvNJson::json(*value) : KvNJson::json();
}

/// The printed form.
[[nodiscard]] inline KvNJson::json versionOrNull(const std::optional<KvTVersion>& version) {
    return version ? textValue(version->text) : KvNJson::json();
}

/// Null for the enumeration's `none`.
template <typename Enumeration>
[[nodiscard]] KvNJson::json codeOrNull(Enumeration value) {
    return value == Enumeration::none ? KvNJson::json() : KvNJson::json(codeOf(value));
}

/// What `toValue` makes of each item, in their order.
template <typename Items, typename ToValue>
[[nodiscard]] KvNJson::json listOf(const Items& items, ToValue&& toValue) {
    KvNJson::json list = KvNJson::json::makeArray();
    for (const auto& item : items) {
        list.append(toValue(item));
    }
    return list;
}

} // namespace KvNReflasher
