#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

// The wide printf family: "%s" takes a wide text, "%hs" a narrow one; a null text shows as "(null)". Results count
// characters (bytes of narrow texts), as widths and precisions do; -1 on failure.

/// How a narrow text goes into a wide text. True: it is decoded from UTF-8, and a byte that belongs to no well-formed
/// character becomes the character of its number; the wide text may be shorter than the result. False: each byte
/// becomes a character.
[[nodiscard]] bool decodesNarrowText();

/// The result of formatting, which writes nothing: characters without the terminating zero.
[[nodiscard]] int countFormatted(const wchar_t* format, std::va_list arguments);

/// Writes the formatted text and a terminating zero into `buffer` of `size` characters, which must hold both.
int formatIntoBuffer(wchar_t* buffer, std::size_t size, const wchar_t* format, std::va_list arguments);

/// Writes the formatted text to `stream`, narrow texts byte for byte, without flushing it. Off Windows the stream is
/// written as bytes: one that the program has used for wide characters takes nothing, which is a failure.
int writeFormatted(std::FILE* stream, const wchar_t* format, std::va_list arguments);
