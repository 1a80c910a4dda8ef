#pragma once

#include "KvTOptions.h"

#include <cstdint>
#include <string>
#include <vector>

/// What keeps an element of the target out of the session.
enum class KvEHiddenBy : std::uint8_t {
    boardTypeFilter,
    serialNumberFilter,
    elementNameFilter,
    /// The session looks at elements of the other kind: configuration elements, or all others.
    configuration
};

/// An element of the target that the session does not look at.
struct KvTHiddenElement {
    std::string displayName;
    /// Of the inventory item.
    std::string address;
    std::vector<KvEHiddenBy> hiddenBy;
};

/// The elements that a session with these options does not see, in the order of the target. Asks the target once for
/// each filter. Empty when the target cannot be scanned.
[[nodiscard]] std::vector<KvTHiddenElement> hiddenElements(const KvNReflasher::KvTOptions& options);
