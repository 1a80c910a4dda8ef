#include "SshSignature.h"

#include "Base64.h"
#include "SshReader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

constexpr std::string_view beginLine = "-----BEGIN SSH SIGNATURE-----\n";
constexpr std::string_view endLine = "-----END SSH SIGNATURE-----\n";
constexpr std::string_view magic = "SSHSIG";
constexpr std::uint32_t formatVersion = 1;

void appendField(std::vector<std::uint8_t>& bytes, KvTBytes field) {
    constexpr unsigned bitsOfByte = 8;
    constexpr unsigned highestShift = 24;
    const auto size = static_cast<std::uint32_t>(field.size());
    for (unsigned shift = highestShift + bitsOfByte; shift > 0; shift -= bitsOfByte) {
        bytes.push_back(static_cast<std::uint8_t>(size >> (shift - bitsOfByte)));
    }
    bytes.insert(bytes.end(), field.begin(), field.end());
}

/// A signature without its armour.
struct Signature {
    KvTBytes key;
    std::string_view purpose;
    std::string_view reserved;
    std::string_view hash;
    KvTBytes value;
};

std::optional<Signature> readSignature(KvTBytes blob, std::string& reason) {
    KvCSshReader reader(blob);
    if (!reader.takes(magic)) {
        reason = "it is not an SSH signature";
        return std::nullopt;
    }
    if (reader.number() != formatVersion) {
        reason = "its format has another version than 1";
        return std::nullopt;
    }
    const auto key = reader.string();
    const auto purpose = reader.text();
    const auto reserved = reader.text();
    const auto hash = reader.text();
    const auto value = reader.string();
    if (!key || !purpose || !reserved || !hash || !value) {
        reason = "it ends too early";
        return std::nullopt;
    }
    if (!reader.isAtEnd()) {
        reason = "bytes follow it";
        return std::nullopt;
    }
    return Signature{*key, *purpose, *reserved, *hash, *value};
}

/// What the signer has signed in place of `message`; nothing if the digest is not known.
std::optional<std::vector<std::uint8_t>> signedBytesOf(const Signature& signature, KvTBytes message) {
    std::vector<std::uint8_t> bytes(magic.begin(), magic.end());
    appendField(bytes, bytesOf(signature.purpose));
    appendField(bytes, bytesOf(signature.reserved));
    appendField(bytes, bytesOf(signature.hash));
    if (signature.hash == "sha512") {
        appendField(bytes, sha512Of(message));
    } else if (signature.hash == "sha256") {
        appendField(bytes, sha256Of(message));
    } else {
        return std::nullopt;
    }
    return bytes;
}

/// The key that has signed; nothing, with a `reason`, if the signature does not hold.
std::optional<KvCSshKey> signerOf(KvTBytes blob, KvTBytes message, std::string& reason) {
    const std::optional<Signature> signature = readSignature(blob, reason);
    if (!signature) {
        return std::nullopt;
    }
    if (signature->purpose != signatureNamespace || !signature->reserved.empty()) {
        reason = "it was made for '" + std::string(signature->purpose) + "' and not for '" +
                 std::string(signatureNamespace) + "'";
        return std::nullopt;
    }
    std::optional<KvCSshKey> key = KvCSshKey::parse(signature->key, reason);
    if (!key) {
        return std::nullopt;
    }
    const std::optional<std::vector<std::uint8_t>> signedBytes = signedBytesOf(*signature, message);
    if (!signedBytes) {
        reason = "its digest '" + std::string(signature->hash) + "' is not taken";
        return std::nullopt;
    }
    if (!key->verifies(*signedBytes, signature->value)) {
        reason = "the key " + key->fingerprint() + " has not signed this manifest";
        return std::nullopt;
    }
    return key;
}

/// Takes the first block from `text`: its bytes; nothing if it does not begin with a block, written as the tool that
/// signs writes it.
std::optional<std::vector<std::uint8_t>> takeBlock(std::string_view& text) {
    constexpr std::size_t lineSize = 70;
    if (!text.starts_with(beginLine)) {
        return std::nullopt;
    }
    std::string_view rest = text.substr(beginLine.size());
    std::string base64;
    while (!rest.starts_with(endLine)) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        const bool isLast = rest.starts_with(endLine);
        if (line.empty() || line.size() > lineSize || (line.size() < lineSize && !isLast) || rest.empty()) {
            return std::nullopt;
        }
        base64 += line;
    }
    text = rest.substr(endLine.size());
    return bytesOfBase64(base64);
}

} // namespace

std::optional<std::vector<KvCSshKey>> signersOf(std::string_view blocks, KvTBytes message, std::string& reason) {
    std::vector<KvCSshKey> signers;
    if (blocks.empty()) {
        reason = "it is empty";
        return std::nullopt;
    }
    while (!blocks.empty()) {
        const std::string number = "signature " + std::to_string(signers.size() + 1) + ": ";
        const std::optional<std::vector<std::uint8_t>> blob = takeBlock(blocks);
        if (!blob) {
            reason = number + "it is not a block of an SSH signature and nothing else";
            return std::nullopt;
        }
        std::string why;
        std::optional<KvCSshKey> signer = signerOf(*blob, message, why);
        if (!signer) {
            reason = number + why;
            return std::nullopt;
        }
        signers.push_back(std::move(*signer));
    }
    return signers;
}
