#pragma once

#include <string>

/// The bytes of a session's message, as the system's library makes messages.
[[nodiscard]] std::string messageBytes(const std::wstring& message);

/// The same for a given library. If it has decoded the narrow texts (decodesNarrowText()), the message is encoded as
/// UTF-8, a surrogate pair as one character and what is no character as U+FFFD. Otherwise narrow texts stand in the
/// message one byte per character: characters up to U+00FF that, taken as bytes, are one well-formed UTF-8 character
/// become these bytes; every other character is encoded.
[[nodiscard]] std::string messageBytes(const std::wstring& message, bool narrowTextIsDecoded);
