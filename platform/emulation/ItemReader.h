#pragma once

#include "ItemDescription.h"
#include "JsonPlace.h"

#include <memory>
#include <optional>
#include <string_view>

/// Reads an item and everything below it as the root of an inventory; null when it is refused.
[[nodiscard]] std::unique_ptr<ItemDescription> readRootItem(const JsonPlace& place);

/// The address that `text` (`HCN[1]/UPDATE_INFO[1]`) names; a component without an instance means instance 1. Nothing
/// for anything else; the components need not exist anywhere.
[[nodiscard]] std::optional<KvCInventoryAddress> parseAddress(std::string_view text);
