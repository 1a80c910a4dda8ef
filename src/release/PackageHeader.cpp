#include "PackageHeader.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace {

struct Field {
    std::size_t offset;
    std::size_t size;
};

constexpr Field nameField{0, 100};
constexpr Field modeField{100, 8};
constexpr Field userField{108, 8};
constexpr Field groupField{116, 8};
constexpr Field sizeField{124, 12};
constexpr Field timeField{136, 12};
constexpr Field checksumField{148, 8};
constexpr std::size_t typeOffset = 156;
constexpr char regularFile = '0';
constexpr Field magicField{257, 8};
constexpr Field majorField{329, 8};
constexpr Field minorField{337, 8};

void put(KvTPackageHeader& header, const Field& field, std::string_view text) {
    std::copy_n(text.begin(), std::min(text.size(), field.size), header.begin() + field.offset);
}

/// Octal digits and a zero byte fill the field.
void putNumber(KvTPackageHeader& header, const Field& field, std::uint64_t number) {
    std::array<char, 24> digits{};
    std::snprintf(digits.data(), digits.size(), "%0*llo", static_cast<int>(field.size - 1),
                  static_cast<unsigned long long>(number));
    put(header, field, digits.data());
}

/// The sum of all bytes, the checksum itself taken for blanks.
unsigned checksumOf(const KvTPackageHeader& header) {
    return std::accumulate(header.begin(), header.end(), 0U,
                           [](unsigned sum, char byte) { return sum + static_cast<unsigned char>(byte); });
}

/// The number that putNumber() has written; digits that are none give any.
std::uint64_t numberAt(const KvTPackageHeader& header, const Field& field) {
    std::uint64_t number = 0;
    for (std::size_t index = 0; index + 1 < field.size; ++index) {
        number = number * 8 + static_cast<std::uint64_t>((header[field.offset + index] - '0') & 7);
    }
    return number;
}

} // namespace

KvTPackageHeader headerOf(const KvTPackedFile& file) {
    constexpr std::uint64_t readableByAll = 0644;
    KvTPackageHeader header{};
    put(header, nameField, file.name);
    putNumber(header, modeField, readableByAll);
    putNumber(header, userField, 0);
    putNumber(header, groupField, 0);
    putNumber(header, sizeField, file.size);
    putNumber(header, timeField, static_cast<std::uint64_t>(file.time.time_since_epoch().count()));
    put(header, checksumField, "        ");
    header[typeOffset] = regularFile;
    put(header, magicField, std::string_view("ustar\00000", magicField.size));
    putNumber(header, majorField, 0);
    putNumber(header, minorField, 0);
    std::array<char, 9> checksum{};
    std::snprintf(checksum.data(), checksum.size(), "%06o", checksumOf(header));
    put(header, checksumField, std::string_view(checksum.data(), checksumField.size - 1));
    return header;
}

std::optional<KvTPackedFile> readHeader(const KvTPackageHeader& header) {
    const std::string_view name(header.data(), nameField.size);
    KvTPackedFile file{std::string(name.substr(0, name.find('\0'))), numberAt(header, sizeField),
                       std::chrono::sys_seconds(std::chrono::seconds(numberAt(header, timeField)))};
    return headerOf(file) == header ? std::optional(std::move(file)) : std::nullopt;
}
