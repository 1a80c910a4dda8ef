#pragma once

#include "KvCInventoryAddress.h"

#include <optional>
#include <string>
#include <string_view>

/// Returns the text of `address`: HCN[1]/UPDATE_INFO[1].
[[nodiscard]] std::string itemAddressText(const KvCInventoryAddress& address);
/// Returns the address that `text` ("HCN[1]/UPDATE_INFO[1]") names; a component without an instance means instance 1.
/// Nothing for any other text. Items of the address need not exist.
[[nodiscard]] std::optional<KvCInventoryAddress> parseItemAddress(std::string_view text);
