#pragma once

#include "KvCVersion.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// The bytes of a firmware image of this version and checksum; `kind` is the release kind of its header (10: alpha,
/// 11: beta), beside which the version's own is not used.
[[nodiscard]] std::string firmwareImage(const KvCVersion& version, std::uint32_t checksum, std::uint8_t kind = 0);

/// `image` whose header states the compatibility identifiers from `lowest` to `highest`.
/// @{
[[nodiscard]] std::string withHardwareIds(std::string image, std::uint32_t lowest, std::uint32_t highest);
[[nodiscard]] std::string withSoftwareIds(std::string image, std::uint32_t lowest, std::uint32_t highest);
/// @}

/// The bytes of an FPGA bitstream whose header states `headerSize` and, at its place, `checksum`.
[[nodiscard]] std::string bitstream(std::uint32_t checksum, std::uint32_t headerSize = 92);
