#include "InventoryNames.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

/// Names of consecutive identifiers.
template <std::size_t count>
struct NameRange {
    std::uint32_t first;
    std::array<std::string_view, count> names;

    [[nodiscard]] constexpr std::string_view nameOf(std::uint32_t identifier) const {
        return identifier >= first && identifier - first < count ? names[identifier - first] : std::string_view();
    }
    [[nodiscard]] constexpr std::optional<std::uint32_t> identifierOf(std::string_view name) const {
        const auto* const found = std::find(names.begin(), names.end(), name);
        if (found == names.end()) {
            return std::nullopt;
        }
        return first + static_cast<std::uint32_t>(found - names.begin());
    }
};

constexpr NameRange<16> items{1,
                              {"ROOT", "HCN", "CN", "NETC", "BACKPLANE", "NETWORK", "IOROUTER", "ION", "IOMODULE",
                               "PIGGYBACK_MODULE", "SUB_BOARDS", "FBMODULE", "UPDATE_INFO", "UPDATE_ELEMENT",
                               "FILESYSTEM_ELEMENT", "FIRMWARE"}};

constexpr NameRange<1> groups{101, {"PRODUCT"}};

constexpr NameRange<26> parameters{102,
                                   {"BOARD_TYPE",
                                    "VARIANT",
                                    "ID",
                                    "HW_TYPE",
                                    "SERIAL_NUMBER",
                                    "SLOT_COUNT",
                                    "NAME",
                                    "UNITNAME",
                                    "PACKAGE_NAME",
                                    "SLOT",
                                    "RACKNAME",
                                    "CONFIGURATION",
                                    "LOCATION",
                                    "HW_COMPATIBILITY_ID",
                                    "SW_COMPATIBILITY_ID",
                                    "TYPE_ID",
                                    "CUSTOM",
                                    "VALID",
                                    "ACTIVE",
                                    "CHECKSUM_CRC32",
                                    "VERSION",
                                    "VERSION_HISTORY",
                                    "MIN_HW_COMPATIBILITY_ID",
                                    "MAX_HW_COMPATIBILITY_ID",
                                    "MIN_SW_COMPATIBILITY_ID",
                                    "MAX_SW_COMPATIBILITY_ID"}};

} // namespace

std::string_view InventoryNames::nameOf(std::uint32_t identifier) {
    if (const std::string_view item = items.nameOf(identifier); !item.empty()) {
        return item;
    }
    const std::string_view group = groups.nameOf(identifier);
    return group.empty() ? parameters.nameOf(identifier) : group;
}

std::optional<std::uint32_t> InventoryNames::itemIdentifier(std::string_view name) {
    return items.identifierOf(name);
}

std::optional<InventoryNames::ParameterPath> InventoryNames::parameterPath(std::string_view path) {
    ParameterPath result;
    if (const std::size_t slash = path.find('/'); slash != std::string_view::npos) {
        const auto group = groups.identifierOf(path.substr(0, slash));
        if (!group) {
            return std::nullopt;
        }
        result.group = *group;
        path.remove_prefix(slash + 1);
    }
    const auto parameter = parameters.identifierOf(path);
    if (!parameter) {
        return std::nullopt;
    }
    result.parameter = *parameter;
    return result;
}
