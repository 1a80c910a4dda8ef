#pragma once

#include "KvCString.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <string_view>

/// A serial number without the sub-number in its upper 8 bits.
[[nodiscard]] constexpr std::uint32_t withoutSubNumber(std::uint32_t serialNumber) {
    return serialNumber & 0xFFFFFF;
}

/// Builds the names by which an element is shown. `typeName`: the kind of image ("Firmware", "FPGA", ...), or the
/// element's own name when it is of no known kind. `displayName`: board, serial number and type name.
void makeElementNames(const KvCString& boardName, const KvCString& boardType, std::uint32_t serialNumber,
                      const KvCString& elementName, KvCString& typeName, KvCString& displayName);

/// The unit's name, followed by its rack and instance names if it has them, as a text of the kind that `convert` makes
/// of a KvCString.
template <typename Convert>
[[nodiscard]] auto unitPathOf(const KvTUpdateElement& element, Convert convert) {
    auto path = convert(element.unitName);
    const auto append = [&path](std::string_view ascii) { path.insert(path.end(), ascii.begin(), ascii.end()); };
    const bool hasRack = !element.rackName.isEmpty();
    const bool hasInstance = !element.unitInstanceName.isEmpty();
    append(hasRack || hasInstance ? ": " : "");
    path += convert(element.rackName);
    append(hasRack && hasInstance ? " / " : "");
    path += convert(element.unitInstanceName);
    return path;
}
