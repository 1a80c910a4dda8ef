#pragma once

#include <cstdint>
#include <system_error>

/// What is not a regular file, as the reason why it is not opened. (A folder and a link have errors of their own in the
/// standard library.)
enum class OtherKind : std::uint8_t { pipe = 1, socket, device };

template <>
struct std::is_error_code_enum<OtherKind> : std::true_type {};

/// Its message is such as "It is a pipe, not a regular file".
[[nodiscard]] std::error_code make_error_code(OtherKind kind) noexcept;
