#pragma once

#include <string>

/// The bytes of a session's message. Narrow texts stand in a message one byte per character: characters up to U+00FF
/// that, taken as bytes, are one well-formed UTF-8 character become these bytes; every other character is encoded as
/// UTF-8, a surrogate pair as one and what is no character as U+FFFD.
[[nodiscard]] std::string messageBytes(const std::wstring& message);
