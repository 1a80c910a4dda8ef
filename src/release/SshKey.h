#pragma once

#include "Crypto.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Kinds of keys whose signatures are taken.
enum class KvEKeyKind : std::uint8_t { ed25519, ecdsaP256, rsa };

/// A public key as SSH writes it (RFC 4253, section 6.6; RFC 5656; RFC 8709).
class KvCSshKey {
public:
    /// The key of these bytes; nothing, with a `reason`, for a kind that is not taken, an RSA key of less than 3072
    /// bits, and what is not a key.
    [[nodiscard]] static std::optional<KvCSshKey> parse(KvTBytes blob, std::string& reason);
    /// The key of a kind and its base64, as key files write it.
    [[nodiscard]] static std::optional<KvCSshKey> parse(std::string_view kind, std::string_view base64,
                                                        std::string& reason);

    [[nodiscard]] KvEKeyKind kind() const { return kind_; }
    /// The name of its kind, such as "ssh-ed25519".
    [[nodiscard]] std::string_view kindName() const;
    /// As tools for keys show it: "SHA256:" and the digest in base64 without padding.
    [[nodiscard]] std::string fingerprint() const;

    /// True only if `signature`, as SSH writes it, is this key's signature of `message`.
    [[nodiscard]] bool verifies(KvTBytes message, KvTBytes signature) const;

    friend bool operator==(const KvCSshKey& a, const KvCSshKey& b) { return a.blob_ == b.blob_; }

private:
    KvCSshKey(KvEKeyKind kind, KvTBytes blob) : kind_(kind), blob_(blob.begin(), blob.end()) {}

    KvEKeyKind kind_;
    std::vector<std::uint8_t> blob_;
};
