#include "SshSignature.h"

#include "Signatures.h"

#include <gtest/gtest.h>

namespace {

/// The fingerprints of the signers; otherwise why there are none.
std::string signers(std::string_view blocks, std::string_view text = signedText) {
    std::string reason;
    const std::optional<std::vector<KvCSshKey>> keys = signersOf(blocks, bytesOf(text), reason);
    std::string result = keys ? "" : "refused: " + reason;
    for (const KvCSshKey& key : keys.value_or(std::vector<KvCSshKey>())) {
        result += std::string(key.kindName()) + " ";
    }
    return result;
}

TEST(SshSignature, HoldsOfEachKindOfKey) {
    EXPECT_EQ(signers(ed25519Signature), "ssh-ed25519 ");
    EXPECT_EQ(signers(ed25519Sha256Signature), "ssh-ed25519 ");
    EXPECT_EQ(signers(ecdsaSignature), "ecdsa-sha2-nistp256 ");
    EXPECT_EQ(signers(rsaSignature), "ssh-rsa ");
}

TEST(SshSignature, OfSeveralSignersHoldsIfAllDo) {
    EXPECT_EQ(signers(ed25519Signature + ecdsaSignature + rsaSignature), "ssh-ed25519 ecdsa-sha2-nistp256 ssh-rsa ");
    EXPECT_EQ(signers(ed25519Signature + otherPurposeSignature),
              "refused: signature 2: it was made for 'file' and not for 'kvreflash-archive'");
    EXPECT_EQ(signers(shortRsaSignature + ed25519Signature),
              "refused: signature 1: RSA keys of 2048 bits are not taken: they must have 3072 to 16384");
}

TEST(SshSignature, OfTheTrustedKeyIsVerifiedFirst) {
    std::string reason;
    const auto signatures = readSignatures(ecdsaSignature + rsaSignature + ed25519Signature, reason);
    ASSERT_TRUE(signatures) << reason;
    const std::vector<KvCSshKey> keys = keysOf(*signatures);
    EXPECT_EQ(whyNotSigned(*signatures, bytesOf(signedText), &keys[2]), "");
    EXPECT_TRUE(whyNotSigned(*signatures, bytesOf("other")).starts_with("signature 1: "));
    EXPECT_TRUE(whyNotSigned(*signatures, bytesOf("other"), &keys[2]).starts_with("signature 3: "));
}

TEST(SshSignature, OfAnotherTextDoesNotHold) {
    for (const std::string& signature : {ed25519Signature, ecdsaSignature, rsaSignature}) {
        EXPECT_TRUE(signers(signature, "A manifest!\n").starts_with("refused: signature 1: the key SHA256:"));
        EXPECT_TRUE(signers(signature, "").ends_with("has not signed this manifest"));
    }
}

TEST(SshSignature, OfAnotherKindOrForAnotherPurposeIsRefused) {
    EXPECT_EQ(signers(otherPurposeSignature),
              "refused: signature 1: it was made for 'file' and not for 'kvreflash-archive'");
    EXPECT_EQ(signers(otherCurveSignature),
              "refused: signature 1: keys of the kind 'ecdsa-sha2-nistp384' are not taken");
}

TEST(SshSignature, NoneIsNone) {
    EXPECT_EQ(signers(""), "refused: it is empty");
    EXPECT_EQ(signers("\n"), "refused: signature 1: it is not a block of an SSH signature and nothing else");
}

TEST(SshSignature, NothingStandsBesideTheBlocks) {
    const std::string other = "it is not a block of an SSH signature and nothing else";
    EXPECT_EQ(signers(ed25519Signature + "\n"), "refused: signature 2: " + other);
    EXPECT_EQ(signers(ed25519Signature + "x"), "refused: signature 2: " + other);
    EXPECT_EQ(signers("x" + ed25519Signature), "refused: signature 1: " + other);
    EXPECT_EQ(signers(ed25519Signature + "-----BEGIN SSH SIGNATURE-----\n"), "refused: signature 2: " + other);
    EXPECT_EQ(signers(ed25519Signature + "\n" + ecdsaSignature), "refused: signature 2: " + other);
}

/// What becomes of a signature when each of its bytes is changed, removed or doubled: never one that holds.
void expectEveryByteCounts(const std::string& signature) {
    for (std::size_t index = 0; index < signature.size(); ++index) {
        for (const int bit : {0x01, 0x02, 0x20}) {
            std::string changed = signature;
            changed[index] = static_cast<char>(changed[index] ^ bit);
            EXPECT_TRUE(signers(changed).starts_with("refused: ")) << index << " changed by " << bit;
        }
        std::string removed = signature;
        removed.erase(index, 1);
        EXPECT_TRUE(signers(removed).starts_with("refused: ")) << index << " removed";
        std::string doubled = signature;
        doubled.insert(index, 1, signature[index]);
        EXPECT_TRUE(signers(doubled).starts_with("refused: ")) << index << " doubled";
    }
}

TEST(SshSignature, EveryByteOfItCounts) {
    expectEveryByteCounts(ed25519Signature);
    expectEveryByteCounts(ecdsaSignature);
}

TEST(SshSignature, EveryByteOfALongOneCounts) {
    expectEveryByteCounts(rsaSignature);
}

} // namespace
