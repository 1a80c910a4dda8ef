#include "ItemAddressText.h"

#include "InventoryNames.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <system_error>
#include <utility>

namespace {

std::optional<KvCInventoryAddress> parseComponent(std::string_view text) {
    const std::size_t bracket = text.find('[');
    const auto identifier = InventoryNames::itemIdentifier(text.substr(0, bracket));
    if (!identifier || bracket == std::string_view::npos) {
        return identifier ? std::optional(KvCInventoryAddress(*identifier)) : std::nullopt;
    }
    std::uint32_t instance = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + bracket + 1, end, instance);
    if (error != std::errc() || std::string_view(stop, static_cast<std::size_t>(end - stop)) != "]" || instance == 0) {
        return std::nullopt;
    }
    return KvCInventoryAddress(*identifier, instance);
}

} // namespace

std::string itemAddressText(const KvCInventoryAddress& address) {
    return std::string(address.toString().view());
}

std::optional<KvCInventoryAddress> parseItemAddress(std::string_view text) {
    KvCInventoryAddress address;
    for (;;) {
        const std::size_t slash = text.find('/');
        const auto component = parseComponent(text.substr(0, slash));
        if (!component) {
            return std::nullopt;
        }
        address = std::move(address) / *component;
        if (slash == std::string_view::npos) {
            return address;
        }
        text.remove_prefix(slash + 1);
    }
}
