#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Parameter values that an installation sets; what is absent stays as it is.
struct InstalledValues {
    std::optional<std::string> version;
    std::optional<std::uint32_t> checksum;
    /// VALID and ACTIVE become 1.
    bool isActivated = false;

    /// Takes over what `newer` sets.
    void add(const InstalledValues& newer);

    friend bool operator==(const InstalledValues&, const InstalledValues&) = default;
};

/// What was installed into one element since its description was written.
struct ElementState {
    /// Text of the element's address.
    std::string address;
    InstalledValues installed;
    /// What shows once the target's reset count is no longer `pendingResets`.
    std::optional<InstalledValues> pending;
    std::uint64_t pendingResets = 0;

    /// What shows when the target has been reset `resets` times.
    [[nodiscard]] InstalledValues valuesAfter(std::uint64_t resets) const;
    /// Installs at once.
    void install(const InstalledValues& values, std::uint64_t resets);
    /// Installs with the next reset.
    void installAtReset(const InstalledValues& values, std::uint64_t resets);
};

/// The traces of a target's resets.
struct ResetCounters {
    std::uint64_t resets = 0;
    /// Device list sessions that still shall not find the target.
    std::uint32_t hiddenLookups = 0;
};

/// The texts of state files and back; nothing for a text that is not such a record.
/// @{
[[nodiscard]] std::string textOf(const ElementState& state);
[[nodiscard]] std::string textOf(const ResetCounters& counters);
[[nodiscard]] std::optional<ElementState> parseElementState(std::string_view text);
[[nodiscard]] std::optional<ResetCounters> parseResetCounters(std::string_view text);
/// @}
