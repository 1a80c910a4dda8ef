#pragma once

#include "KvTOutcome.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Values as the tool's tables and lists show them; unknownText for nothing.

/// Shown for what is not known.
inline constexpr const char* unknownText = "---";

[[nodiscard]] std::string versionCell(const std::optional<KvNReflasher::KvTVersion>& version);
[[nodiscard]] std::string checksumCell(const std::optional<std::uint32_t>& checksum);

/// The number of an error in the base in which the library prints it: "ERROR 0x2fff".
[[nodiscard]] std::string codeText(const KvNReflasher::KvTErrorInfo& error);
/// Who has reported it: "S/N 2815", or "Host PC".
[[nodiscard]] std::string originText(const KvNReflasher::KvTErrorInfo& error);
/// An error in one line, such as "ERROR 0x2fff (Host PC): Fault at scan."
[[nodiscard]] std::string errorText(const KvNReflasher::KvTErrorInfo& error);

/// The errors of a look under a heading; empty if there are none.
[[nodiscard]] std::string errorsText(const std::vector<KvNReflasher::KvTErrorInfo>& errors);
