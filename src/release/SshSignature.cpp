#include "SshSignature.h"

#include "Base64.h"
#include "ShownText.h"
#include "SshReader.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr std::string_view beginLine = "-----BEGIN SSH SIGNATURE-----\n";
constexpr std::string_view endLine = "-----END SSH SIGNATURE-----\n";
constexpr std::string_view magic = "SSHSIG";
constexpr std::uint32_t formatVersion = 1;
constexpr std::string_view sha256Name = "sha256";
constexpr std::string_view sha512Name = "sha512";

/// The beginning of messages on the signature with this index.
std::string numberOf(std::size_t index) {
    return "signature " + std::to_string(index + 1) + ": ";
}

void appendField(std::vector<std::uint8_t>& bytes, KvTBytes field) {
    constexpr unsigned bitsOfByte = 8;
    constexpr unsigned highestShift = 24;
    const auto size = static_cast<std::uint32_t>(field.size());
    for (unsigned shift = highestShift + bitsOfByte; shift > 0; shift -= bitsOfByte) {
        bytes.push_back(static_cast<std::uint8_t>(size >> (shift - bitsOfByte)));
    }
    bytes.insert(bytes.end(), field.begin(), field.end());
}

/// The fields of a signature without its armour.
struct Fields {
    KvTBytes key;
    std::string_view purpose;
    std::string_view reserved;
    std::string_view digest;
    KvTBytes value;
};

std::optional<Fields> readFields(KvTBytes blob, std::string& reason) {
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
    const auto digest = reader.text();
    const auto value = reader.string();
    if (!key || !purpose || !reserved || !digest || !value) {
        reason = "it ends too early";
        return std::nullopt;
    }
    if (!reader.isAtEnd()) {
        reason = "bytes follow it";
        return std::nullopt;
    }
    return Fields{*key, *purpose, *reserved, *digest, *value};
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

std::optional<KvCSshSignature> KvCSshSignature::parse(KvTBytes blob, std::string& reason) {
    const std::optional<Fields> fields = readFields(blob, reason);
    if (!fields) {
        return std::nullopt;
    }
    if (!fields->reserved.empty()) {
        reason = "its reserved field is not empty";
        return std::nullopt;
    }
    if (fields->purpose != signatureNamespace) {
        reason = std::string("it was made for ").append(shownInQuotes(fields->purpose)) + " and not for '" +
                 std::string(signatureNamespace) + "'";
        return std::nullopt;
    }
    std::optional<KvCSshKey> key = KvCSshKey::parse(fields->key, reason);
    if (!key) {
        return std::nullopt;
    }
    if (fields->digest != sha512Name && fields->digest != sha256Name) {
        reason = std::string("its digest ").append(shownInQuotes(fields->digest)) + " is not taken";
        return std::nullopt;
    }
    const Digest digest = fields->digest == sha512Name ? Digest::sha512 : Digest::sha256;
    return KvCSshSignature(std::move(*key), digest, fields->value);
}

bool KvCSshSignature::verifies(KvTBytes message) const {
    std::vector<std::uint8_t> signedBytes(magic.begin(), magic.end());
    appendField(signedBytes, bytesOf(signatureNamespace));
    appendField(signedBytes, {}); // reserved
    if (digest_ == Digest::sha512) {
        appendField(signedBytes, bytesOf(sha512Name));
        appendField(signedBytes, sha512Of(message));
    } else {
        appendField(signedBytes, bytesOf(sha256Name));
        appendField(signedBytes, sha256Of(message));
    }
    return key_.verifies(signedBytes, value_);
}

std::optional<std::vector<KvCSshSignature>> readSignatures(std::string_view blocks, std::string& reason) {
    std::vector<KvCSshSignature> signatures;
    if (blocks.empty()) {
        reason = "it is empty";
        return std::nullopt;
    }
    while (!blocks.empty()) {
        const std::string number = numberOf(signatures.size());
        const std::optional<std::vector<std::uint8_t>> blob = takeBlock(blocks);
        if (!blob) {
            reason = number + "it is not a block of an SSH signature and nothing else";
            return std::nullopt;
        }
        std::string why;
        std::optional<KvCSshSignature> signature = KvCSshSignature::parse(*blob, why);
        if (!signature) {
            reason = number + why;
            return std::nullopt;
        }
        signatures.push_back(std::move(*signature));
    }
    return signatures;
}

std::vector<KvCSshKey> keysOf(const std::vector<KvCSshSignature>& signatures) {
    std::vector<KvCSshKey> keys;
    std::transform(signatures.begin(), signatures.end(), std::back_inserter(keys),
                   [](const KvCSshSignature& signature) { return signature.key(); });
    return keys;
}

std::string whyNotSigned(const std::vector<KvCSshSignature>& signatures, KvTBytes message, const KvCSshKey* first) {
    for (const bool isTurnOfFirst : {true, false}) {
        for (std::size_t index = 0; index < signatures.size(); ++index) {
            const KvCSshSignature& signature = signatures[index];
            const bool isOfFirst = first != nullptr && signature.key() == *first;
            if (isOfFirst == isTurnOfFirst && !signature.verifies(message)) {
                return numberOf(index) + "the key " + signature.key().fingerprint() + " has not signed this manifest";
            }
        }
    }
    return {};
}

std::optional<std::vector<KvCSshKey>> signersOf(std::string_view blocks, KvTBytes message, std::string& reason) {
    const std::optional<std::vector<KvCSshSignature>> signatures = readSignatures(blocks, reason);
    if (!signatures) {
        return std::nullopt;
    }
    reason = whyNotSigned(*signatures, message);
    if (!reason.empty()) {
        return std::nullopt;
    }
    return keysOf(*signatures);
}
