#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

// The wide printf family: "%s" takes a wide text, "%hs" a narrow one; a null text shows as "(null)". A narrow text goes
// into wide text one character per byte. Results count characters (bytes of narrow texts); -1 on failure.

/// Length of the formatted text, without the terminating zero.
[[nodiscard]] int countFormatted(const wchar_t* format, std::va_list arguments);

/// Writes the formatted text and a terminating zero into `buffer` of `size` characters, which must hold both.
int formatIntoBuffer(wchar_t* buffer, std::size_t size, const wchar_t* format, std::va_list arguments);

/// Writes the formatted text to `stream`, without flushing it. Off Windows the stream is written as bytes: one that the
/// program has used for wide characters takes nothing, which is a failure.
int writeFormatted(std::FILE* stream, const wchar_t* format, std::va_list arguments);
