#pragma once

#include "StateRecords.h"

#include <cstdio>
#include <optional>

/// What an update file installs: a firmware image sets version and checksum from its header, an FPGA bitstream the
/// checksum from its header, an inventory tree file both as far as it has them, any other file, and a bitstream whose
/// header has no checksum, the CRC-32 of its bytes. Nothing when the file, which stands at its begin, cannot be read.
[[nodiscard]] std::optional<InstalledValues> readUpdateFileContents(std::FILE& file);
