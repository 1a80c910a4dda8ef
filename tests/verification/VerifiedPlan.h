#pragma once

#include "KvISession.h"

#include <cstdint>
#include <optional>
#include <string>

// Plans of one element, made with few words, and what the target reports of it.

/// A release version of this text.
[[nodiscard]] KvNReflasher::KvTVersion versionOf(const std::string& text);

/// What a target reports. An empty version is none, "0.0" one that states nothing.
[[nodiscard]] KvNReflasher::KvTInstalled reports(const std::string& version,
                                                 std::optional<std::uint32_t> checksum = std::nullopt,
                                                 std::optional<bool> valid = std::nullopt,
                                                 std::optional<bool> active = std::nullopt);

/// An entry of an archive. An empty version is none.
[[nodiscard]] KvNReflasher::KvTArchiveEntry offers(const std::string& version,
                                                   std::optional<std::uint32_t> checksum = std::nullopt);
/// The same of the mode upgrade.
[[nodiscard]] KvNReflasher::KvTArchiveEntry upgradesTo(const std::string& version,
                                                       std::optional<std::uint32_t> checksum = std::nullopt);

/// A plan with one listed element, which is updated for its version.
[[nodiscard]] KvNReflasher::KvTPlan planOf(const KvNReflasher::KvTArchiveEntry& entry,
                                           const KvNReflasher::KvTInstalled& installed);

/// Adds another element of this kind to the plan.
KvNReflasher::KvTPlannedElement& addElement(KvNReflasher::KvTPlan& plan, const KvNReflasher::KvTArchiveEntry& entry,
                                            const KvNReflasher::KvTInstalled& installed);

/// How KvEVerified is shown when a test fails.
[[nodiscard]] std::string nameOf(KvNReflasher::KvEVerified result);
