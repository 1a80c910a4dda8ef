#pragma once

#include "Files.h"

#include <cstdint>
#include <string>

// Opening the files of an archive that are read whole, and why one was not opened.

/// Size in bytes of the largest description that is read. A million entries take less than half of it.
inline constexpr std::uint64_t largestDescription = std::uint64_t{256} << 20U;

/// Opens the description at `path` for reading; null if it cannot be opened, is not a regular file or is larger than
/// largestDescription.
[[nodiscard]] FileStream openDescription(const std::wstring& path);

/// Why openDescription() does not open what is at `path`: "a pipe, not a regular file" or "larger than 256 MiB, the
/// most that is read". Empty if kind and size are not the reason.
[[nodiscard]] std::string faultOfDescription(const std::wstring& path);

/// What is at `path` if its kind keeps it from being read: "a pipe, not a regular file". Empty for a regular file and
/// for what is missing.
[[nodiscard]] std::string faultOfKind(const std::wstring& path);
