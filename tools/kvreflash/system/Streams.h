#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string_view>

/// True if `stream` is shown on a terminal.
[[nodiscard]] bool isTerminal(std::FILE* stream);

/// True if the C runtime's wide output writes every character; false if it drops some.
[[nodiscard]] bool writesAnyWideText();

/// Creates a file for binary writing and empties an existing one. Returns null, with errno, if that is not possible;
/// ENXIO if it is a pipe that nobody reads: this does not wait for a reader.
[[nodiscard]] std::FILE* createFile(const std::filesystem::path& path);

/// The descriptor below a stream; negative if there is none.
[[nodiscard]] int descriptorOf(std::FILE* stream);

/// True if writing to it may have to wait until somebody reads.
[[nodiscard]] bool waitsForReader(int descriptor);

/// Writes all bytes, however long it takes. Returns false, with errno, if some could not be written.
[[nodiscard]] bool writeBytes(int descriptor, std::string_view bytes);

/// Writes what can be written without waiting for a reader, and returns how many bytes that were: 0 also if it failed,
/// or if this system cannot know.
[[nodiscard]] std::size_t writeWithoutWaiting(int descriptor, std::string_view bytes);

/// Signals that are sent to the process do not arrive on the calling thread from now on.
void keepSignalsFromThread();
