#pragma once

#include "Faults.h"
#include "ItemDescription.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What target.json says about an emulated target.
struct TargetDescription {
    /// Bytes in network order; an address that is given several times stands for as many devices.
    std::vector<std::uint32_t> addresses;
    /// When not 0, what every host interface operation returns.
    std::int32_t serviceStatus = 0;
    /// How many device list sessions find no device after a reset.
    std::uint32_t rebootLookups = 0;
    /// Never null.
    std::unique_ptr<ItemDescription> inventory;
    std::vector<Fault> faults;
};

/// How many bytes of text clients may show of a description: `mostShownTextPerByte` for each byte of the description,
/// or `shownTextAlwaysAllowed` if that is more. Tables show each element in a line as long as the longest, with the
/// names of the items above the element.
inline constexpr std::size_t mostShownTextPerByte = 16;
inline constexpr std::size_t shownTextAlwaysAllowed = std::size_t{16} << 20U;

/// Reads a description. Null when it is refused: then `reason` is "JSON PATH: what was expected", or the line and
/// column of what is no JSON.
[[nodiscard]] std::unique_ptr<TargetDescription> readTargetDescription(std::string text, std::string& reason);
