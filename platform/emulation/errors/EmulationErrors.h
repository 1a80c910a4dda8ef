#pragma once

#include "KvCErrorManager.h"

#include <cstdint>
#include <string>
#include <utility>

/// Codes of the errors that the emulation itself reports.
namespace EmulationErrors {

/// A parameter value is missing or of another type.
inline constexpr std::uint32_t valueUnusable = 0x2001;
/// Another owner holds the target's lock.
inline constexpr std::uint32_t targetLocked = 0x2002;
/// There is no such item, element or device.
inline constexpr std::uint32_t notFound = 0x2003;
/// A file cannot be read or written.
inline constexpr std::uint32_t fileAccess = 0x2004;
/// The caller's buffer is too small (device list).
inline constexpr std::uint32_t bufferTooSmall = 0x2005;
/// A text is not an IPv4 address.
inline constexpr std::uint32_t notAnIpV4Address = 0x2006;
/// A file is not an inventory tree file.
inline constexpr std::uint32_t notAnInventoryTree = 0x2007;
/// A lock or handle is missing, dead or of another kind.
inline constexpr std::uint32_t wrongHandle = 0x2008;
/// An element is already updating, or its update was not started.
inline constexpr std::uint32_t wrongUpdateState = 0x2009;
/// There was no memory for the operation, or for the error itself.
inline constexpr std::uint32_t memoryExhausted = 0x200A;
/// What a fault reports that names no errors of its own.
inline constexpr std::uint32_t fault = 0x2FFF;

} // namespace EmulationErrors

/// An error of the emulation itself. It has no time stamp: what a target answers does not depend on when it is asked.
[[nodiscard]] inline KvTErrorEntry emulationError(std::uint32_t code, std::string text) {
    KvTErrorEntry entry;
    entry.code = code;
    entry.text = std::move(text);
    return entry;
}

/// Says that memory is exhausted, and needs none itself: strings keep a text as short in themselves.
[[nodiscard]] inline KvTErrorEntry memoryExhaustedError() {
    return emulationError(EmulationErrors::memoryExhausted, "Out of memory.");
}
