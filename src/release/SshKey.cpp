#include "SshKey.h"

#include "Base64.h"
#include "ShownText.h"
#include "SshReader.h"

#include <algorithm>
#include <array>
#include <bit>

namespace {

constexpr std::string_view curveName = "nistp256";
constexpr std::size_t leastRsaBits = 3072;
/// More is a way to keep a verifier busy.
constexpr std::size_t mostRsaBits = 16384;

struct KindName {
    KvEKeyKind kind;
    /// Of the key, and of its signatures.
    std::string_view key;
    std::string_view signature;
};

constexpr std::array<KindName, 3> kinds{{
    {KvEKeyKind::ed25519, "ssh-ed25519", "ssh-ed25519"},
    {KvEKeyKind::ecdsaP256, "ecdsa-sha2-nistp256", "ecdsa-sha2-nistp256"},
    {KvEKeyKind::rsa, "ssh-rsa", "rsa-sha2-512"},
}};

const KindName& namesOf(KvEKeyKind kind) {
    return *std::find_if(kinds.begin(), kinds.end(), [&](const KindName& row) { return row.kind == kind; });
}

std::size_t bitsOf(KvTBytes number) {
    constexpr std::size_t bitsOfByte = 8;
    return number.empty() ? 0 : (number.size() - 1) * bitsOfByte + std::bit_width(number.front());
}

/// An exponent of 1 lets anybody sign, an even one nobody, and a long one keeps a verifier busy.
bool isSoundExponent(KvTBytes exponent) {
    constexpr std::size_t mostBits = 64;
    return bitsOf(exponent) > 1 && bitsOf(exponent) <= mostBits && (exponent.back() & 1U) != 0;
}

/// The numbers of a key, behind the name of its kind. An elliptic curve has only the first one.
struct KeyParts {
    KvTBytes first;
    KvTBytes second;
};

/// The parts of a key of a kind that comes next in `reader`; nothing if it is not one, or if something follows it.
std::optional<KeyParts> readParts(KvEKeyKind kind, KvCSshReader& reader) {
    constexpr std::size_t ed25519Size = 32;
    constexpr std::size_t pointSize = 65;
    constexpr std::uint8_t notCompressed = 4;
    std::optional<KvTBytes> first;
    std::optional<KvTBytes> second = KvTBytes();
    bool isSound = true;
    switch (kind) {
    case KvEKeyKind::ed25519:
        first = reader.string();
        isSound = first && first->size() == ed25519Size;
        break;
    case KvEKeyKind::ecdsaP256:
        isSound = reader.text() == curveName;
        first = reader.string();
        isSound = isSound && first && first->size() == pointSize && first->front() == notCompressed;
        break;
    case KvEKeyKind::rsa:
        second = reader.positiveNumber(); // the exponent
        first = reader.positiveNumber();
        isSound = second && isSoundExponent(*second);
        break;
    }
    if (!isSound || !first || !second || !reader.isAtEnd()) {
        return std::nullopt;
    }
    return KeyParts{*first, *second};
}

/// A key whose kind has been read.
KeyParts partsOf(KvEKeyKind kind, KvTBytes blob) {
    KvCSshReader reader(blob);
    (void)reader.string();
    return readParts(kind, reader).value_or(KeyParts());
}

bool verifiesEcdsa(KvTBytes point, KvTBytes message, KvTBytes signature) {
    KvCSshReader reader(signature);
    const std::optional<KvTBytes> r = reader.positiveNumber();
    const std::optional<KvTBytes> s = reader.positiveNumber();
    return r && s && reader.isAtEnd() && verifiesEcdsaP256(point, message, *r, *s);
}

} // namespace

std::optional<KvCSshKey> KvCSshKey::parse(KvTBytes blob, std::string& reason) {
    KvCSshReader reader(blob);
    const std::optional<std::string_view> name = reader.text();
    const auto* const row =
        std::find_if(kinds.begin(), kinds.end(), [&](const KindName& known) { return name == known.key; });
    if (!name || row == kinds.end()) {
        reason =
            name ? std::string("keys of the kind ").append(shownInQuotes(*name)) + " are not taken" : "it is not a key";
        return std::nullopt;
    }
    const std::optional<KeyParts> parts = readParts(row->kind, reader);
    if (!parts) {
        reason = "it is not a key of the kind '" + std::string(row->key) + "'";
        return std::nullopt;
    }
    if (row->kind == KvEKeyKind::rsa && (bitsOf(parts->first) < leastRsaBits || bitsOf(parts->first) > mostRsaBits)) {
        reason =
            "RSA keys of " + std::to_string(bitsOf(parts->first)) + " bits are not taken: they must have 3072 to 16384";
        return std::nullopt;
    }
    return KvCSshKey(row->kind, blob);
}

std::optional<KvCSshKey> KvCSshKey::parse(std::string_view kind, std::string_view base64, std::string& reason) {
    const std::optional<std::vector<std::uint8_t>> blob = bytesOfBase64(base64);
    if (!blob) {
        reason = "the key is not base64";
        return std::nullopt;
    }
    std::optional<KvCSshKey> key = parse(*blob, reason);
    if (key && key->kindName() != kind) {
        reason = std::string("the key is not of the kind ").append(shownInQuotes(kind));
        return std::nullopt;
    }
    return key;
}

std::string_view KvCSshKey::kindName() const {
    return namesOf(kind_).key;
}

std::string KvCSshKey::fingerprint() const {
    const KvTSha256 digest = sha256Of(blob_);
    std::string text = "SHA256:" + base64Of({digest.begin(), digest.end()});
    text.pop_back(); // the padding
    return text;
}

bool KvCSshKey::verifies(KvTBytes message, KvTBytes signature) const {
    KvCSshReader reader(signature);
    const bool isOfKind = reader.text() == namesOf(kind_).signature;
    const std::optional<KvTBytes> value = reader.string();
    if (!isOfKind || !value || !reader.isAtEnd()) {
        return false;
    }
    const KeyParts parts = partsOf(kind_, blob_);
    switch (kind_) {
    case KvEKeyKind::ed25519:
        return verifiesEd25519(parts.first, message, *value);
    case KvEKeyKind::ecdsaP256:
        return verifiesEcdsa(parts.first, message, *value);
    case KvEKeyKind::rsa:
        return verifiesRsaSha512(parts.first, parts.second, message, *value);
    }
    return false;
}
