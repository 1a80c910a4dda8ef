#include "AllowedSigners.h"

#include "Signatures.h"
#include "Timestamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* now = "2026-11-22T00:00:00Z";

/// What the only line is worth: "principals" and why it is not trusted, or why it was refused.
std::string valueOf(const std::string& line, const char* created = now) {
    const KvCAllowedSigners signers(line);
    if (signers.signers().size() + signers.refusedLines().size() != 1) {
        return "not one line";
    }
    if (!signers.refusedLines().empty()) {
        return signers.refusedLines().front();
    }
    const KvTAllowedSigner& signer = signers.signers().front();
    const std::string why = signer.whyNotTrusted(*momentOf(created));
    return signer.principals + (why.empty() ? "" : ": " + why);
}

TEST(AllowedSigners, ALineNamesWhoHasAKey) {
    EXPECT_EQ(valueOf("release@korvel " + ed25519Key), "release@korvel");
    EXPECT_EQ(valueOf("a,b@c " + ecdsaKey + " a comment \"with quotes"), "a,b@c");
    EXPECT_EQ(valueOf("\"some body\" " + rsaKey + "\r\n"), "some body");
    EXPECT_EQ(valueOf("\t release@korvel \t" + ed25519Key + "\n"), "release@korvel");
}

TEST(AllowedSigners, CommentsAndEmptyLinesCountAsLines) {
    const KvCAllowedSigners signers("# who\n\n  \t\na " + ed25519Key + "\nb\nc " + rsaKey);
    ASSERT_EQ(signers.signers().size(), 2U);
    EXPECT_EQ(signers.signers()[1].principals, "c");
    EXPECT_THAT(signers.refusedLines(), ElementsAre("line 5: it is not a list of signers, a kind of key and a key"));
    EXPECT_THAT(KvCAllowedSigners("").signers(), IsEmpty());
}

TEST(AllowedSigners, MayBeLimitedToPurposes) {
    for (const char* list : {"kvreflash-archive", "*", "file,kvreflash-archive", "kvreflash-*", "k?reflash-archive",
                             "*archive", "*flash*", "!file,kv*", "**"}) {
        EXPECT_EQ(valueOf("me namespaces=\"" + std::string(list) + "\" " + ed25519Key), "me") << list;
    }
    for (const char* list : {"file", "", "kvreflash", "kvreflash-archive2", "KVREFLASH-ARCHIVE", "*,!kvreflash-archive",
                             "!kvreflash-archive,*", "?", "kvreflash-*x", "!*"}) {
        EXPECT_EQ(valueOf("me namespaces=\"" + std::string(list) + "\" " + ed25519Key),
                  "me: may not sign for 'kvreflash-archive'")
            << list;
    }
}

TEST(AllowedSigners, MayBeLimitedInTime) {
    const std::string line = R"(me valid-after="20260101Z",valid-before="20270101Z" )" + ed25519Key;
    EXPECT_EQ(valueOf(line), "me");
    EXPECT_EQ(valueOf(line, "2026-01-01T00:00:00Z"), "me");
    EXPECT_EQ(valueOf(line, "2025-12-31T23:59:59Z"), "me: may sign after 2026-01-01T00:00:00Z only");
    EXPECT_EQ(valueOf(line, "2027-01-01T00:00:00Z"), "me");
    EXPECT_EQ(valueOf(line, "2027-01-01T00:00:01Z"), "me: may sign before 2027-01-01T00:00:00Z only");
}

TEST(AllowedSigners, WithoutATimeOnlyThePurposeCounts) {
    const KvCAllowedSigners signers("old valid-before=\"20200101Z\" " + ed25519Key + "\nother namespaces=\"file\" " +
                                    ed25519Key);
    EXPECT_EQ(signers.signers().at(0).whyNotTrusted(std::nullopt), "");
    EXPECT_EQ(signers.signers().at(1).whyNotTrusted(std::nullopt), "may not sign for 'kvreflash-archive'");
}

TEST(AllowedSigners, OddLinesLetNobodySign) {
    EXPECT_EQ(valueOf("me\r# comment " + ed25519Key), "line 1: it has a control character");
    EXPECT_EQ(valueOf(std::string("m\0e ", 4) + ed25519Key), "line 1: it has a control character");
    for (const char* first : {"\"\"", "valid-before=\"20200101Z\"", "namespaces=\"file\"", "cert-authority",
                              "CERT-AUTHORITY", R"(namespaces="file",valid-after="20200101")"}) {
        EXPECT_EQ(valueOf(first + (" " + ed25519Key)), "line 1: it names nobody") << first;
    }
    EXPECT_EQ(valueOf("\uFEFFme " + ed25519Key),
              "line 1: its signers have characters that do not show as what they are");
    EXPECT_EQ(valueOf("*,!me " + ed25519Key), "line 1: its signers hold a '!', which leaves nobody out here");
    EXPECT_EQ(valueOf("me namespaces=\"*\", " + ed25519Key),
              "line 1: its option '' is not known, stands twice or has no value in quotes");
    EXPECT_EQ(valueOf("me namespaces=\"*\",,valid-after=\"20200101\" " + ed25519Key),
              "line 1: its option '' is not known, stands twice or has no value in quotes");
}

TEST(AllowedSigners, OptionsAreWordsInAnyCase) {
    EXPECT_EQ(valueOf("me NameSpaces=\"kvreflash-archive\",VALID-AFTER=\"20200101\" " + ed25519Key), "me");
}

TEST(AllowedSigners, WhatIsNotUnderstoodLetsNobodySign) {
    const std::string unknown = "' is not known, stands twice or has no value in quotes";
    EXPECT_EQ(valueOf("me cert-authority " + ed25519Key), "line 1: keys of certificate authorities are not taken");
    EXPECT_EQ(valueOf("me CERT-AUTHORITY,namespaces=\"*\" " + ed25519Key),
              "line 1: keys of certificate authorities are not taken");
    EXPECT_EQ(valueOf("me no-such=\"x\" " + ed25519Key), "line 1: its option 'no-such=\"x\"" + unknown);
    EXPECT_EQ(valueOf("me namespaces=* " + ed25519Key), "line 1: its option 'namespaces=*" + unknown);
    EXPECT_EQ(valueOf("me namespaces=\"a\",namespaces=\"*\" " + ed25519Key),
              "line 1: its option 'namespaces=\"*\"" + unknown);
    EXPECT_EQ(valueOf("me valid-after=\"soon\" " + ed25519Key), "line 1: 'soon' is not a time for valid-after");
    EXPECT_EQ(valueOf("me no-such " + ed25519Key), "line 1: the key is not base64");
    EXPECT_EQ(valueOf("me ssh-ed25519"), "line 1: it has no key");
    EXPECT_EQ(valueOf("me ssh-ed25519 AAAA!"), "line 1: the key is not base64");
    EXPECT_EQ(valueOf("me ssh-ed25519 AAAA"), "line 1: it is not a key");
    EXPECT_EQ(valueOf("me ssh-rsa" + ed25519Key.substr(ed25519Key.find(' '))),
              "line 1: the key is not of the kind 'ssh-rsa'");
    EXPECT_EQ(valueOf("me " + shortRsaKey),
              "line 1: RSA keys of 2048 bits are not taken: they must have 3072 to 16384");
    EXPECT_EQ(valueOf("me " + otherCurveKey), "line 1: keys of the kind 'ecdsa-sha2-nistp384' are not taken");
    EXPECT_EQ(valueOf("me \"ssh-ed25519"), "line 1: it is not a list of signers, a kind of key and a key");
    EXPECT_EQ(valueOf("me"), "line 1: it is not a list of signers, a kind of key and a key");
}

TEST(AllowedSigners, LongPatternsTakeNoTime) {
    const std::string pattern(20000, '*');
    EXPECT_EQ(valueOf("me namespaces=\"" + pattern + "x\" " + ed25519Key), "me: may not sign for 'kvreflash-archive'");
}

} // namespace
