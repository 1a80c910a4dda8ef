#include "TrustFolder.h"

#include "ScratchFolder.h"
#include "Signatures.h"
#include "Timestamp.h"

#include <gtest/gtest.h>

namespace {

KvCSshKey keyOf(const std::string& line) {
    std::string reason;
    const std::size_t blank = line.find(' ');
    return *KvCSshKey::parse(line.substr(0, blank), line.substr(blank + 1), reason);
}

class TrustFolderTest : public testing::Test {
protected:
    void allow(const std::string& text) { static_cast<void>(folder_.write("allowed_signers", text)); }
    void revoke(const std::string& text) { static_cast<void>(folder_.write("revoked", text)); }
    [[nodiscard]] std::optional<KvCTrustFolder> read() {
        reason_.clear();
        return KvCTrustFolder::read(folder_.path().wstring(), reason_);
    }
    /// Who of the signers is trusted; otherwise why nobody is.
    [[nodiscard]] std::string trusted(const std::vector<std::string>& keys) {
        const std::optional<KvCTrustFolder> trust = read();
        if (!trust) {
            return reason_;
        }
        std::vector<KvCSshKey> signers;
        signers.reserve(keys.size());
        for (const std::string& key : keys) {
            signers.push_back(keyOf(key));
        }
        std::string reason;
        const KvTAllowedSigner* const signer = trust->trustedOf(signers, *momentOf("2026-11-22T00:00:00Z"), reason);
        return signer != nullptr ? signer->principals : reason;
    }
    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }
    [[nodiscard]] const std::string& reason() const { return reason_; }

private:
    ScratchFolder folder_;
    std::string reason_;
};

TEST_F(TrustFolderTest, TrustsWhomItLists) {
    allow("first " + ed25519Key + "\nsecond " + rsaKey + "\n");
    EXPECT_EQ(trusted({ed25519Key}), "first");
    EXPECT_EQ(trusted({rsaKey}), "second");
    EXPECT_EQ(trusted({ecdsaKey, rsaKey}), "second");
    EXPECT_EQ(trusted({rsaKey, ed25519Key}), "second");
    EXPECT_EQ(trusted({ecdsaKey}), "the signer " + keyOf(ecdsaKey).fingerprint() + " is not among the allowed signers");
}

TEST_F(TrustFolderTest, AnyLineOfAKeyThatHoldsCounts) {
    allow("old valid-before=\"20200101Z\" " + ed25519Key + "\nnew valid-after=\"20200101Z\" " + ed25519Key + "\n");
    EXPECT_EQ(trusted({ed25519Key}), "new");
}

TEST_F(TrustFolderTest, SaysWhyALineDoesNotCount) {
    allow("old valid-before=\"20200101Z\" " + ed25519Key + "\nme cert-authority " + ed25519Key + "\n");
    EXPECT_EQ(trusted({ed25519Key}), "the signer " + keyOf(ed25519Key).fingerprint() +
                                         " (old) may sign before 2020-01-01T00:00:00Z only; allowed_signers, line 2: "
                                         "keys of certificate authorities are not taken");
}

TEST_F(TrustFolderTest, ARevokedKeyDoesNotCount) {
    allow("first " + ed25519Key + "\nsecond " + rsaKey + "\n");
    const std::string fingerprint = keyOf(ed25519Key).fingerprint();
    for (const std::string& line : {ed25519Key, ed25519Key + " me", "  " + fingerprint + "  ", fingerprint + "\r\n"}) {
        revoke("# stolen\n\n" + line);
        EXPECT_EQ(trusted({ed25519Key}), "the signer " + fingerprint + " was revoked") << line;
        EXPECT_EQ(trusted({ed25519Key, rsaKey}), "second");
    }
}

TEST_F(TrustFolderTest, ARevokedManifestDoesNotCount) {
    allow("first " + ed25519Key + "\n");
    const KvTSha256 digest = sha256Of(bytesOf("text"));
    revoke(hexOf(digest) + "\n");
    EXPECT_TRUE(read()->revokes(digest));
    EXPECT_FALSE(read()->revokes(sha256Of(bytesOf("other"))));
    EXPECT_EQ(trusted({ed25519Key}), "first");
}

TEST_F(TrustFolderTest, ThatIsBrokenCannotBeUsed) {
    EXPECT_FALSE(read());
    EXPECT_EQ(reason(), "its file allowed_signers cannot be read");
    std::filesystem::create_directory(folder().path() / "allowed_signers");
    EXPECT_FALSE(read());
    std::filesystem::remove(folder().path() / "allowed_signers");
    allow("first " + ed25519Key + "\n");
    EXPECT_TRUE(read());
    std::filesystem::create_directory(folder().path() / "revoked");
    EXPECT_FALSE(read());
    EXPECT_EQ(reason(), "its file revoked cannot be read");
    std::filesystem::remove(folder().path() / "revoked");
    for (const char* line : {"x", "SHA256:abc", "SHA256:!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!",
                             "ssh-ed25519 AAAA", "0123456789abcdef"}) {
        revoke("\n" + std::string(line) + "\n");
        EXPECT_FALSE(read());
        EXPECT_TRUE(reason().starts_with("its file revoked is not understood, line 2: it is neither a public key nor a "
                                         "fingerprint nor the SHA-256 of a manifest: "))
            << reason();
    }
}

TEST_F(TrustFolderTest, LineEndsOfOtherSystemsHideNothing) {
    allow("first " + ed25519Key + "\n");
    revoke("# stolen\r" + keyOf(ed25519Key).fingerprint() + "\r");
    EXPECT_FALSE(read());
    EXPECT_EQ(reason(), "its file revoked is not understood, line 1: it has a control character");
    revoke("# a comment\r\n\t \r\n  " + keyOf(ed25519Key).fingerprint() + " \r\n");
    EXPECT_TRUE(read()) << reason();
}

TEST_F(TrustFolderTest, MayTrustNobody) {
    allow("");
    EXPECT_EQ(trusted({ed25519Key}),
              "the signer " + keyOf(ed25519Key).fingerprint() + " is not among the allowed signers");
}

} // namespace
