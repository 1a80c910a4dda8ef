#pragma once

#include "TargetBuilder.h"

// Boards and elements with every parameter that a scan reads without asking whether it is there, so that scanning them
// collects no error.

[[nodiscard]] inline ItemBuilder completeBoard(std::string_view identifier, std::string_view boardType,
                                               std::uint32_t serialNumber) {
    return board(identifier, boardType, serialNumber).parameter("PRODUCT/SLOT_COUNT", std::uint64_t(0));
}

[[nodiscard]] inline ItemBuilder completeElement(std::uint32_t id, std::string_view name = "Firmware") {
    return updateElement(id, name).parameter("VERSION_HISTORY", "");
}

[[nodiscard]] inline ItemBuilder completeElementWithoutChecksum(std::uint32_t id) {
    return item("UPDATE_ELEMENT")
        .parameter("CONFIGURATION", std::uint64_t(0))
        .parameter("ID", std::uint64_t(id))
        .parameter("NAME", "Firmware")
        .parameter("VERSION", "1.0")
        .parameter("VERSION_HISTORY", "")
        .parameter("VALID", std::uint64_t(1))
        .parameter("ACTIVE", std::uint64_t(1));
}

[[nodiscard]] inline ItemBuilder completeFile(std::uint32_t id, std::string_view location) {
    return fileSystemElement(id, location)
        .parameter("NAME", "File")
        .parameter("VERSION", "1.0")
        .parameter("VERSION_HISTORY", "")
        .parameter("VALID", std::uint64_t(1));
}
