#pragma once

#include "KvCString.h"

#include <cstdint>

/// A serial number without the sub-number in its upper 8 bits.
[[nodiscard]] constexpr std::uint32_t withoutSubNumber(std::uint32_t serialNumber) {
    return serialNumber & 0xFFFFFF;
}

/// Builds the names by which an element is shown. `typeName`: the kind of image ("Firmware", "FPGA", ...), or the
/// element's own name when it is of no known kind. `displayName`: board, serial number and type name.
void makeElementNames(const KvCString& boardName, const KvCString& boardType, std::uint32_t serialNumber,
                      const KvCString& elementName, KvCString& typeName, KvCString& displayName);
