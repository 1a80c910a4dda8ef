#include "Crypto.h"

#include <gtest/gtest.h>

namespace {

// Those of FIPS 180-4's examples.

TEST(Digest, OfPiecesIsThatOfTheWhole) {
    constexpr std::string_view text = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    constexpr std::string_view expected = "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1";
    EXPECT_EQ(hexOf(sha256Of(bytesOf(text))), expected);
    for (std::size_t size = 1; size <= text.size(); ++size) {
        KvCSha256 digest;
        for (std::size_t begin = 0; begin < text.size(); begin += size) {
            digest.add(bytesOf(text.substr(begin, size)));
        }
        EXPECT_EQ(hexOf(digest.digest()), expected);
        EXPECT_EQ(hexOf(digest.digest()), expected) << "asked twice";
    }
}

TEST(Digest, OfNothingIsOne) {
    EXPECT_EQ(hexOf(KvCSha256().digest()), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hexOf(sha512Of({})), "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
                                   "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e");
}

TEST(Digest, Sha512IsThatOfTheStandard) {
    EXPECT_EQ(hexOf(sha512Of(bytesOf("abc"))), "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                                               "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
}

} // namespace
