#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

/// The moment of "2026-11-22T10:15:00Z" (RFC 3339, UTC, whole seconds); nothing for any other text.
[[nodiscard]] std::optional<std::chrono::sys_seconds> momentOf(std::string_view text);

/// The text that momentOf() reads.
[[nodiscard]] std::string textOfMoment(std::chrono::sys_seconds moment);

/// The moment of a date or a time as files of signers write it: "20261122", "202611221015" or "20261122101500", of the
/// machine's time zone or, with a "Z" behind it, UTC. Nothing for any other text.
[[nodiscard]] std::optional<std::chrono::sys_seconds> momentOfSigner(std::string_view text);
