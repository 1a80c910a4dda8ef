#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Closes a stream at the end of its scope.
struct KvTFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileStream = std::unique_ptr<std::FILE, KvTFileCloser>;

// Paths are wide texts; off Windows a "\" separates like a "/".

/// Opens a regular file for binary reading; null when that is not possible. Anything else, such as a folder, a pipe or
/// a device, cannot be opened, and nothing waits for it.
[[nodiscard]] FileStream openForReading(const std::wstring& path);

/// Reads the first bytes of the regular file at `path` into `beginning`. Returns how many it has read, fewer than
/// `beginning` has if the file is shorter; nothing if the file cannot be opened, see openForReading(), or read.
[[nodiscard]] std::optional<std::size_t> readBeginning(const std::wstring& path, std::span<std::uint8_t> beginning);

/// Reads on at this byte of an open file; false when that is not possible.
[[nodiscard]] bool seekTo(std::FILE& file, std::uint64_t offset);

/// Size of an open file in bytes; 0 when it is not known.
[[nodiscard]] std::uint64_t sizeOfOpenFile(std::FILE& file);

/// What exists at `path`, or what a link there leads to, if that is not a regular file: "a folder", "a pipe", "a
/// socket" or "a device". Empty for a regular file and for what cannot be looked at. Nothing is opened for reading.
[[nodiscard]] std::string_view otherKindOf(const std::wstring& path);

/// Creates a file for binary writing, emptying an existing one; null when that is not possible.
[[nodiscard]] FileStream openForWriting(const std::wstring& path);

/// True when something of this name exists.
[[nodiscard]] bool pathExists(const std::wstring& path);

/// True only when it is known that nothing of this name exists, a link that leads nowhere included.
[[nodiscard]] bool isAbsent(const std::wstring& path);

/// True when the attributes of `path` can be read.
[[nodiscard]] bool hasFileAttributes(const std::wstring& path);

/// True when `path` itself, and not what it leads to, is a link.
[[nodiscard]] bool isLink(const std::wstring& path);

/// The absolute path of what exists at `path`, without links, "." and "..", separated by "/". UTF-8; off Windows the
/// bytes that the system has. Empty when nothing exists there or it cannot be looked at.
[[nodiscard]] std::string resolvedPath(const std::wstring& path);

/// Size of a regular file in bytes; a file that is missing is created empty. 0 when it cannot be opened or is of
/// another kind, for which nothing waits.
[[nodiscard]] std::uint64_t sizeOfFileCreatedIfMissing(const std::wstring& path);
