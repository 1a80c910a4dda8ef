#include "Crypto.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOfHex(std::string_view digits) {
    constexpr int base = 16;
    Bytes bytes;
    for (std::size_t index = 0; index < digits.size(); index += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(digits.substr(index, 2)), nullptr, base)));
    }
    return bytes;
}

Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The first test vector of RFC 8032, section 7.1: a signature of nothing.
const Bytes key = bytesOfHex("d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a");
const Bytes firstHalf = bytesOfHex("e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e06522490155");
const Bytes secondHalf = bytesOfHex("5fb8821590a33bacc61e39701cf9b46bd25bf5f0595bbe24655141438e7a100b");

TEST(Ed25519, AGoodSignatureHolds) {
    EXPECT_TRUE(verifiesEd25519(key, {}, joined(firstHalf, secondHalf)));
    EXPECT_FALSE(verifiesEd25519(key, bytesOf("x"), joined(firstHalf, secondHalf)));
}

TEST(Ed25519, OtherSizesDoNotHold) {
    EXPECT_FALSE(verifiesEd25519(key, {}, {}));
    EXPECT_FALSE(verifiesEd25519(key, {}, firstHalf));
    EXPECT_FALSE(verifiesEd25519({}, {}, joined(firstHalf, secondHalf)));
}

TEST(Ed25519, TheSameSignatureWrittenInAnotherWayDoesNotHold) {
    // The second half and the order of the base point.
    const Bytes larger = bytesOfHex("4c8c7872aa064e049dbb3013fbf29380d25bf5f0595bbe24655141438e7a101b");
    EXPECT_FALSE(verifiesEd25519(key, {}, joined(firstHalf, larger)));
    EXPECT_FALSE(verifiesEd25519(key, {}, joined(firstHalf, Bytes(32, 0xFF))));
}

// libgcrypt ends the process for some of these, and takes a signature of zeros for a good one of others.
TEST(Ed25519, KeysThatAnybodyCouldSignForDoNotCount) {
    for (const char* point : {"0100000000000000000000000000000000000000000000000000000000000000",
                              "0100000000000000000000000000000000000000000000000000000000000080",
                              "0000000000000000000000000000000000000000000000000000000000000000",
                              "0000000000000000000000000000000000000000000000000000000000000080",
                              "0200000000000000000000000000000000000000000000000000000000000000",
                              "0300000000000000000000000000000000000000000000000000000000000000",
                              "0000000000000000000000000000000000000000000000800000000000000000",
                              "26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc05",
                              "26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc85",
                              "c7176a703d4dd84fba3c0b760d10670f2a2053fa2c39ccc64ec7fd7792ac037a",
                              "c7176a703d4dd84fba3c0b760d10670f2a2053fa2c39ccc64ec7fd7792ac03fa",
                              "ecffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                              "edffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                              "eeffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                              "ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff"}) {
        const Bytes weak = bytesOfHex(point);
        EXPECT_FALSE(verifiesEd25519(weak, bytesOf("any"), joined(weak, Bytes(32, 0)))) << point;
        EXPECT_FALSE(verifiesEd25519(weak, bytesOf("any"), Bytes(64, 0))) << point;
    }
}

TEST(EcdsaP256, NumbersOutOfRangeDoNotHold) {
    Bytes point(65, 0);
    point.front() = 4;
    EXPECT_FALSE(verifiesEcdsaP256(point, bytesOf("any"), Bytes(32, 0), Bytes(32, 0)));
    EXPECT_FALSE(verifiesEcdsaP256(point, bytesOf("any"), {}, {}));
    EXPECT_FALSE(verifiesEcdsaP256(Bytes(65, 4), bytesOf("any"), Bytes(1, 1), Bytes(1, 1)));
    EXPECT_FALSE(verifiesEcdsaP256(Bytes(33, 2), bytesOf("any"), Bytes(1, 1), Bytes(1, 1)));
}

TEST(Rsa, ASignatureIsAsLongAsTheModulusAndLessThanIt) {
    Bytes modulus(384, 0xC5);
    const Bytes exponent{1, 0, 1};
    for (const Bytes& signature : {Bytes(), Bytes(383, 1), Bytes(385, 0), Bytes(384, 0), modulus, Bytes(384, 0xFF)}) {
        EXPECT_FALSE(verifiesRsaSha512(modulus, exponent, bytesOf("any"), signature)) << signature.size();
    }
}

} // namespace
