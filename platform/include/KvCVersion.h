#pragma once

#include "KvCString.h"
#include "KvPlatformExport.h"

#include <compare>
#include <cstdint>

/// A release version of six components: major, minor, maintenance, service pack build (8 bits each), service pack
/// number and patch level (16 bits each). A build of 1 is an alpha, 2 a beta, 0 a release.
///
/// Text: `MAJ[.MIN[.MAI]]`, then `aSPN` or `bSPN` with an optional `.PLV`, or an optional `.SPN[.PLV]` for a release;
/// any other build is written as `#` and the decimal 64-bit number. A text that is none of these, or a component out
/// of its range, gives the version whose components are all 0.
///
/// Order: major, minor, maintenance; then alpha < beta < other builds by number < release; then service pack number
/// and patch level.
class KV_PLATFORM_API KvCVersion {
public:
    /// All components 0.
    constexpr KvCVersion() noexcept = default;
    /// A version of these components.
    constexpr KvCVersion(std::uint8_t major, std::uint8_t minor, std::uint8_t maintenance,
                         std::uint8_t servicePackBuild, std::uint16_t servicePackNumber,
                         std::uint16_t patchLevel) noexcept
        : major_(major), minor_(minor), maintenance_(maintenance), servicePackBuild_(servicePackBuild),
          servicePackNumber_(servicePackNumber), patchLevel_(patchLevel) {}
    /// Parses `text` (see above); null counts as the empty text.
    explicit KvCVersion(const char* text) noexcept;

    /// Major release.
    [[nodiscard]] constexpr std::uint8_t getMar() const noexcept { return major_; }
    /// Minor release.
    [[nodiscard]] constexpr std::uint8_t getMir() const noexcept { return minor_; }
    /// Maintenance (micro) release.
    [[nodiscard]] constexpr std::uint8_t getMai() const noexcept { return maintenance_; }
    /// Service pack build: 0 release, 1 alpha, 2 beta.
    [[nodiscard]] constexpr std::uint8_t getSpb() const noexcept { return servicePackBuild_; }
    /// Service pack number.
    [[nodiscard]] constexpr std::uint16_t getSpn() const noexcept { return servicePackNumber_; }
    /// Patch level.
    [[nodiscard]] constexpr std::uint16_t getPlv() const noexcept { return patchLevel_; }

    /// The printed form: `MAJ.MIN`; `.MAI` when it is not 0 or, in a release, when a later number follows; then the
    /// alpha or beta part, or `.SPN`, `.PLV` up to the last one that is not 0.
    [[nodiscard]] KvCString getAsString() const;
    /// The components as one number, most significant first: MAJ, MIN, MAI, SPB (8 bits each), SPN, PLV (16 bits each).
    [[nodiscard]] std::uint64_t getAsULong64() const noexcept;
    /// The inverse of getAsULong64().
    void setByULong64(std::uint64_t number) noexcept;

    /// Equal when all components are.
    friend constexpr bool operator==(const KvCVersion&, const KvCVersion&) noexcept = default;
    /// The order told above.
    friend KV_PLATFORM_API std::strong_ordering operator<=>(const KvCVersion& a, const KvCVersion& b) noexcept;

private:
    std::uint8_t major_ = 0;
    std::uint8_t minor_ = 0;
    std::uint8_t maintenance_ = 0;
    std::uint8_t servicePackBuild_ = 0;
    std::uint16_t servicePackNumber_ = 0;
    std::uint16_t patchLevel_ = 0;
};
