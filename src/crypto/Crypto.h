#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

// Digests and signatures, by libgcrypt. Operations that need memory throw std::bad_alloc if it is exhausted.

using KvTBytes = std::span<const std::uint8_t>;

/// A SHA-256 digest (FIPS 180-4).
using KvTSha256 = std::array<std::uint8_t, 32>;
/// A SHA-512 digest (FIPS 180-4).
using KvTSha512 = std::array<std::uint8_t, 64>;

/// The SHA-256 of bytes that come in pieces.
class KvCSha256 {
public:
    KvCSha256();
    KvCSha256(const KvCSha256&) = delete;
    KvCSha256& operator=(const KvCSha256&) = delete;
    ~KvCSha256();

    void add(KvTBytes bytes);
    /// Returns the digest of all bytes. add() must not be called after it.
    [[nodiscard]] KvTSha256 digest();

private:
    struct State;
    std::unique_ptr<State> state_;
};

[[nodiscard]] KvTSha256 sha256Of(KvTBytes bytes);
[[nodiscard]] KvTSha512 sha512Of(KvTBytes bytes);

/// The bytes as two lower case hexadecimal digits each.
[[nodiscard]] std::string hexOf(KvTBytes bytes);

/// The bytes of a text.
[[nodiscard]] inline KvTBytes bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Each returns true only if `signature` is a signature of `message` by the holder of the key.

/// Ed25519 (RFC 8032): a key of 32 bytes, a signature of 64. Keys that anybody could sign for, and signatures that are
/// not written in the one way that RFC 8032 allows, do not count.
[[nodiscard]] bool verifiesEd25519(KvTBytes key, KvTBytes message, KvTBytes signature);
/// ECDSA over NIST P-256 with SHA-256 (FIPS 186-4): `point` is the key, not compressed, 65 bytes; `r` and `s` are the
/// numbers of the signature, most significant byte first.
[[nodiscard]] bool verifiesEcdsaP256(KvTBytes point, KvTBytes message, KvTBytes r, KvTBytes s);
/// RSASSA-PKCS1-v1_5 with SHA-512 (RFC 8017): `modulus` and `exponent` are the key, most significant byte first; the
/// signature is as long as the modulus.
[[nodiscard]] bool verifiesRsaSha512(KvTBytes modulus, KvTBytes exponent, KvTBytes message, KvTBytes signature);
