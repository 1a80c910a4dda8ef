#include "SshReader.h"

#include <algorithm>

bool KvCSshReader::takes(std::string_view text) {
    const KvTBytes expected = bytesOf(text);
    if (rest_.size() < expected.size() || !std::equal(expected.begin(), expected.end(), rest_.begin())) {
        return false;
    }
    rest_ = rest_.subspan(expected.size());
    return true;
}

std::optional<std::uint32_t> KvCSshReader::number() {
    constexpr std::size_t size = 4;
    constexpr unsigned bitsOfByte = 8;
    if (rest_.size() < size) {
        rest_ = {};
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (const std::uint8_t byte : rest_.first(size)) {
        value = (value << bitsOfByte) | byte;
    }
    rest_ = rest_.subspan(size);
    return value;
}

std::optional<KvTBytes> KvCSshReader::string() {
    const std::optional<std::uint32_t> size = number();
    if (!size || *size > rest_.size()) {
        rest_ = {};
        return std::nullopt;
    }
    const KvTBytes value = rest_.first(*size);
    rest_ = rest_.subspan(*size);
    return value;
}

std::optional<std::string_view> KvCSshReader::text() {
    const std::optional<KvTBytes> bytes = string();
    if (!bytes) {
        return std::nullopt;
    }
    return std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

std::optional<KvTBytes> KvCSshReader::positiveNumber() {
    constexpr std::uint8_t signBit = 0x80;
    const std::optional<KvTBytes> bytes = string();
    if (!bytes || bytes->empty()) {
        return std::nullopt;
    }
    const bool isPadded = bytes->front() == 0;
    const KvTBytes value = bytes->subspan(isPadded ? 1 : 0);
    if (value.empty() || value.front() == 0 || ((value.front() & signBit) != 0) != isPadded) {
        return std::nullopt;
    }
    return value;
}
