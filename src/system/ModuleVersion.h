#pragma once

#include <cstdint>
#include <optional>

/// The first three parts of a file version.
struct KvTModuleVersion {
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    std::uint16_t maintenance = 0;
};

/// The file version of this library itself, not of the program that uses it. Nothing when the library's file cannot be
/// determined; all 0 when it carries no version.
[[nodiscard]] std::optional<KvTModuleVersion> readModuleVersion();
