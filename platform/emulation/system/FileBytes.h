#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Called with the bytes copied so far.
using CopyProgress = std::function<void(std::uint64_t done)>;

/// Takes the next bytes of a file.
using ByteSink = std::function<bool(std::string_view bytes)>;

/// Hands the bytes from the position of `file` to its end to `sink`, piece by piece. False when they cannot be read or
/// `sink` returned false.
[[nodiscard]] bool forEachPiece(std::FILE* file, const ByteSink& sink);

/// The bytes from the position of `file` to its end; nothing when they cannot be read or are more than `limit`. Memory
/// is taken at once for as many as are `expected`.
[[nodiscard]] std::optional<std::string> readBytes(std::FILE& file, std::size_t limit, std::size_t expected = 0);

/// Appends the rest of `from` to `to`, tells `progress`, which may be empty, after each piece, and flushes. The number
/// of bytes; nothing when one of the files failed.
[[nodiscard]] std::optional<std::uint64_t> copyBytes(std::FILE& from, std::FILE& to, const CopyProgress& progress);
