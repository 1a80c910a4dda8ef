#pragma once

#include "Crypto.h"
#include "SshKey.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The purpose that a signature of a manifest states, so that one made for something else does not count.
inline constexpr std::string_view signatureNamespace = "kvreflash-archive";

/// The longest file of signatures that is read, in bytes.
inline constexpr std::size_t mostSignatureBytes = 65536;

/// A signature for signatureNamespace that was read and is still to be verified.
class KvCSshSignature {
public:
    /// Reads a signature without its armour. Nothing, with a `reason`, if it is none, or one for another purpose.
    [[nodiscard]] static std::optional<KvCSshSignature> parse(KvTBytes blob, std::string& reason);

    [[nodiscard]] const KvCSshKey& key() const { return key_; }
    /// True only if the holder of the key has signed `message`.
    [[nodiscard]] bool verifies(KvTBytes message) const;

private:
    /// Of the message, which is signed in its place.
    enum class Digest : std::uint8_t { sha256, sha512 };

    KvCSshSignature(KvCSshKey key, Digest digest, KvTBytes value)
        : key_(std::move(key)), digest_(digest), value_(value.begin(), value.end()) {}

    KvCSshKey key_;
    Digest digest_;
    std::vector<std::uint8_t> value_;
};

/// Reads the file of signatures beside a message: blocks as `ssh-keygen -Y sign` writes them, one after the other, and
/// nothing else. Nothing, with a `reason`, if there is no block, or if any block is not a signature for
/// signatureNamespace. Whether the signatures hold is still to be asked.
[[nodiscard]] std::optional<std::vector<KvCSshSignature>> readSignatures(std::string_view blocks, std::string& reason);

/// The keys that they state, in their order.
[[nodiscard]] std::vector<KvCSshKey> keysOf(const std::vector<KvCSshSignature>& signatures);

/// Why not all signatures are of `message`; empty if they are. Those by the key `first`, if there is one, are verified
/// before the others: what others have added is not calculated with if they do not hold.
[[nodiscard]] std::string whyNotSigned(const std::vector<KvCSshSignature>& signatures, KvTBytes message,
                                       const KvCSshKey* first = nullptr);

/// Reads the file of signatures beside `message` and verifies all of them. Returns the keys of the signers, in the
/// order of the blocks; nothing, with a `reason`, unless all signatures hold.
[[nodiscard]] std::optional<std::vector<KvCSshKey>> signersOf(std::string_view blocks, KvTBytes message,
                                                              std::string& reason);
