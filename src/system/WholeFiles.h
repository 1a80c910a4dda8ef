#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

/// The content of the regular file at `path` (as of Files.h); nothing if it cannot be opened or read, or has more than
/// `most` bytes.
[[nodiscard]] std::optional<std::string> textOfFile(const std::wstring& path, std::uint64_t most);

/// Takes the next bytes of a file; false ends the reading.
using KvTPieceSink = std::function<bool(std::span<const std::uint8_t> piece)>;

/// Hands what the regular file at `path` holds to `sink`, piece by piece. False if it cannot be opened or read to its
/// end, or if `sink` has ended the reading.
[[nodiscard]] bool readInPieces(const std::wstring& path, const KvTPieceSink& sink);
