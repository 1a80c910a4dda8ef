#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// What the regular file at `path` (as of Files.h) holds; nothing if it cannot be opened or read, or holds more than
/// `most` bytes.
[[nodiscard]] std::optional<std::string> textOfFile(const std::wstring& path, std::uint64_t most);
