#include "KvCVersion.h"

#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

constexpr std::uint8_t releaseBuild = 0;
constexpr std::uint8_t alphaBuild = 1;
constexpr std::uint8_t betaBuild = 2;

/// Begins the text of a version by its 64-bit number.
constexpr char numberMark = '#';

/// Reads a version text from front to back. A step that does not find what it asks for makes the whole text bad.
class Reader {
public:
    explicit Reader(std::string_view text) noexcept : rest_(text) {}

    /// True when all of the text was read and nothing in it was bad.
    [[nodiscard]] bool isComplete() const noexcept { return isGood_ && rest_.empty(); }

    /// Takes `mark` when the text goes on with it.
    bool take(char mark) noexcept {
        if (rest_.empty() || rest_.front() != mark) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    /// A decimal number that fits `Number`.
    template <class Number>
    Number number() noexcept {
        Number value = 0;
        const char* const end = rest_.data() + rest_.size();
        const auto result = std::from_chars(rest_.data(), end, value);
        if (result.ec != std::errc()) {
            isGood_ = false;
            return 0;
        }
        rest_ = std::string_view(result.ptr, static_cast<std::size_t>(end - result.ptr));
        return value;
    }

    /// A number after a dot; 0 when the text does not go on with a dot.
    template <class Number>
    Number numberAfterDot() noexcept {
        return take('.') ? number<Number>() : Number(0);
    }

private:
    std::string_view rest_;
    bool isGood_ = true;
};

/// `MAJ[.MIN[.MAI]]` and what follows it.
KvCVersion readComponents(Reader& reader) noexcept {
    const auto major = reader.number<std::uint8_t>();
    const bool hasMinor = reader.take('.');
    const auto minor = hasMinor ? reader.number<std::uint8_t>() : std::uint8_t(0);
    const bool hasMaintenance = hasMinor && reader.take('.');
    const auto maintenance = hasMaintenance ? reader.number<std::uint8_t>() : std::uint8_t(0);

    std::uint8_t build = releaseBuild;
    std::uint16_t servicePack = 0;
    bool hasServicePack = false;
    if (reader.take('a')) {
        build = alphaBuild;
    } else if (reader.take('b')) {
        build = betaBuild;
    } else {
        hasServicePack = hasMaintenance && reader.take('.');
    }
    if (build != releaseBuild || hasServicePack) {
        hasServicePack = true;
        servicePack = reader.number<std::uint16_t>();
    }
    const auto patchLevel = hasServicePack ? reader.numberAfterDot<std::uint16_t>() : std::uint16_t(0);
    return {major, minor, maintenance, build, servicePack, patchLevel};
}

KvCVersion parse(std::string_view text) noexcept {
    Reader reader(text);
    KvCVersion version;
    if (reader.take(numberMark)) {
        version.setByULong64(reader.number<std::uint64_t>());
    } else {
        version = readComponents(reader);
    }
    return reader.isComplete() ? version : KvCVersion();
}

void appendNumber(std::string& text, char mark, std::uint32_t number) {
    text += mark;
    text += std::to_string(number);
}

/// Place of a build among the builds of one maintenance release: alpha, beta, others by number, release.
unsigned rankOfBuild(std::uint8_t build) noexcept {
    constexpr unsigned afterAllOthers = std::numeric_limits<std::uint8_t>::max() + 1U;
    return build == releaseBuild ? afterAllOthers : build;
}

} // namespace

KvCVersion::KvCVersion(const char* text) noexcept : KvCVersion(parse(text != nullptr ? text : "")) {}

KvCString KvCVersion::getAsString() const {
    if (servicePackBuild_ > betaBuild) {
        std::string number(1, numberMark);
        number += std::to_string(getAsULong64());
        return KvCString(std::move(number));
    }
    const bool isRelease = servicePackBuild_ == releaseBuild;
    const bool hasLaterNumber = servicePackNumber_ != 0 || patchLevel_ != 0;
    std::string text = std::to_string(major_);
    appendNumber(text, '.', minor_);
    if (maintenance_ != 0 || (isRelease && hasLaterNumber)) {
        appendNumber(text, '.', maintenance_);
    }
    if (!isRelease) {
        appendNumber(text, servicePackBuild_ == alphaBuild ? 'a' : 'b', servicePackNumber_);
    } else if (hasLaterNumber) {
        appendNumber(text, '.', servicePackNumber_);
    }
    if (patchLevel_ != 0) {
        appendNumber(text, '.', patchLevel_);
    }
    return KvCString(std::move(text));
}

std::uint64_t KvCVersion::getAsULong64() const noexcept {
    return std::uint64_t(major_) << 56U | std::uint64_t(minor_) << 48U | std::uint64_t(maintenance_) << 40U |
           std::uint64_t(servicePackBuild_) << 32U | std::uint64_t(servicePackNumber_) << 16U | patchLevel_;
}

void KvCVersion::setByULong64(std::uint64_t number) noexcept {
    major_ = static_cast<std::uint8_t>(number >> 56U);
    minor_ = static_cast<std::uint8_t>(number >> 48U);
    maintenance_ = static_cast<std::uint8_t>(number >> 40U);
    servicePackBuild_ = static_cast<std::uint8_t>(number >> 32U);
    servicePackNumber_ = static_cast<std::uint16_t>(number >> 16U);
    patchLevel_ = static_cast<std::uint16_t>(number);
}

std::strong_ordering operator<=>(const KvCVersion& a, const KvCVersion& b) noexcept {
    // The components before the build compare as one number, and so do those after it.
    constexpr std::uint64_t afterBuild = 0xFFFFFFFFU;
    constexpr unsigned beforeBuildShift = 40;
    const std::uint64_t left = a.getAsULong64();
    const std::uint64_t right = b.getAsULong64();
    if (const auto order = left >> beforeBuildShift <=> right >> beforeBuildShift; order != nullptr) {
        return order;
    }
    if (const auto order = rankOfBuild(a.getSpb()) <=> rankOfBuild(b.getSpb()); order != nullptr) {
        return order;
    }
    return (left & afterBuild) <=> (right & afterBuild);
}
