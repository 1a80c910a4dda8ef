#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The texts of the identifiers of KvNInventoryIDs.
namespace InventoryNames {

/// The name of an identifier; empty when there is none.
[[nodiscard]] std::string_view nameOf(std::uint32_t identifier);
/// The identifier of an item ("HCN"); nothing for an unknown name or the name of a parameter.
[[nodiscard]] std::optional<std::uint32_t> itemIdentifier(std::string_view name);

/// The identifiers of a parameter path.
struct ParameterPath {
    /// 0: none.
    std::uint32_t group = 0;
    std::uint32_t parameter = 0;
};
/// Those of a path ("PRODUCT/BOARD_TYPE", "SLOT"): one parameter name, or the group PRODUCT and one; nothing for
/// anything else.
[[nodiscard]] std::optional<ParameterPath> parameterPath(std::string_view path);

} // namespace InventoryNames
