#pragma once

#include "JsonText.h"
#include "KvDocuments.h"

#include <optional>
#include <string>
#include <string_view>

// Plain values as JSON.

namespace KvNReflasher {

[[nodiscard]] inline KvCJsonText textValue(const std::string& text) {
    return std::string_view(text);
}

/// Null for nothing.
template <typename Value>
[[nodiscard]] KvCJsonText valueOrNull(const std::optional<Value>& value) {
    return value ? KvCJsonText(*value) : KvCJsonText();
}

/// The printed form.
[[nodiscard]] inline KvCJsonText versionOrNull(const std::optional<KvTVersion>& version) {
    return version ? textValue(version->text) : KvCJsonText();
}

/// Null for the enumeration's `none`.
template <typename Enumeration>
[[nodiscard]] KvCJsonText codeOrNull(Enumeration value) {
    return value == Enumeration::none ? KvCJsonText() : KvCJsonText(codeOf(value));
}

/// What `toValue` makes of each item, in their order.
template <typename Items, typename ToValue>
[[nodiscard]] KvCJsonText listOf(const Items& items, ToValue&& toValue) {
    KvCJsonText list = KvCJsonText::makeArray();
    for (const auto& item : items) {
        list.append(toValue(item));
    }
    return list;
}

} // namespace KvNReflasher
