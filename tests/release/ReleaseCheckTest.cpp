#include "ReleaseCheck.h"

#include "ScratchFolder.h"
#include "Signatures.h"
#include "Timestamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace KvNReflasher;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* created = "2026-11-22T10:15:01Z";

/// An archive in a folder, with its manifest.
class SealedArchive {
public:
    SealedArchive() {
        add("archive.json", "{}");
        add("a.kfw", "firmware");
        add("sub/b.kbs", std::string(300000, 'b'));
        seal();
    }

    void add(const std::string& name, const std::string& content) {
        static_cast<void>(folder_.write(name, content));
        manifest_.files.push_back({name, content.size(), sha256Of(bytesOf(content))});
    }
    void seal() {
        manifest_.created = *momentOf(created);
        static_cast<void>(folder_.write("manifest.json", textOf(manifest_)));
    }
    void write(const std::string& name, const std::string& content) const {
        static_cast<void>(folder_.write(name, content));
    }
    void remove(const std::string& name) const { std::filesystem::remove(folder_.path() / name); }
    [[nodiscard]] std::wstring path() const { return folder_.path().wstring(); }
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }
    [[nodiscard]] const KvTManifest& manifest() const { return manifest_; }
    [[nodiscard]] std::string manifestText() const { return folder_.read("manifest.json"); }

private:
    ScratchFolder folder_;
    KvTManifest manifest_;
};

/// The faults that a look at the whole archive finds.
std::vector<std::string> faultsOf(const std::wstring& archive, const KvTReleaseOptions& options = {}) {
    KvCReleaseCheck check(archive, options);
    if (check.open() && check.isSealed()) {
        const bool isWhole = check.takeRest();
        EXPECT_EQ(isWhole, check.faults().empty());
    }
    return check.faults();
}

TEST(ReleaseCheck, AnArchiveIsWhatItsManifestSays) {
    const SealedArchive archive;
    KvCReleaseCheck check(archive.path(), {});
    ASSERT_TRUE(check.open());
    EXPECT_TRUE(check.isSealed());
    EXPECT_FALSE(check.isPackage());
    EXPECT_TRUE(check.takeRest());
    EXPECT_EQ(check.release().seal, KvESeal::sealed);
    EXPECT_EQ(check.release().manifestDigest, hexOf(sha256Of(bytesOf(archive.manifestText()))));
    EXPECT_EQ(check.release().created, created);
    EXPECT_EQ(check.release().keyFingerprint, "");
    EXPECT_EQ(check.folderOfCopies(), L"");
}

TEST(ReleaseCheck, AllThatDiffersIsNamedAtOnce) {
    const SealedArchive archive;
    archive.remove("a.kfw");
    archive.write("sub/b.kbs", "short");
    archive.write("archive.json", "[]");
    archive.write("more.txt", "");
    archive.write("sub/deep/more.txt", "x");
    EXPECT_THAT(faultsOf(archive.path()),
                UnorderedElementsAre("'a.kfw' is missing", "'sub/b.kbs' has 5 bytes and not 300000",
                                     "'more.txt' is additional", "'sub/deep/more.txt' is additional",
                                     "'archive.json' was changed"));
}

TEST(ReleaseCheck, NamesThatTheManifestDoesNotHaveAreRefused) {
    const SealedArchive archive;
    KvCReleaseCheck check(archive.path(), {});
    ASSERT_TRUE(check.open());
    EXPECT_TRUE(check.lists({"archive.json", "sub/b.kbs", R"(sub\b.kbs)"}));
    EXPECT_FALSE(check.lists({"../archive.json", "./a.kfw", "A.KFW", "sub//b.kbs", "a\nb"}));
    EXPECT_THAT(check.faults(),
                UnorderedElementsAre("'../archive.json' is not in its manifest", "'./a.kfw' is not in its manifest",
                                     "'A.KFW' is not in its manifest", "'sub//b.kbs' is not in its manifest",
                                     R"('a\x0Ab' is not in its manifest)"));
}

TEST(ReleaseCheck, FilesInNoFolderAreKnownByTheirNames) {
    const SealedArchive archive;
    KvCReleaseCheck check(archive.path(), {});
    ASSERT_TRUE(check.open());
    EXPECT_THAT(check.topFiles(), ElementsAre("a.kfw", "archive.json"));
}

TEST(ReleaseCheck, ASealThatIsALinkIsRefused) {
    const SealedArchive archive;
    const ScratchFolder elsewhere;
    std::filesystem::rename(archive.folder() / "manifest.json", elsewhere.path() / "manifest.json");
    std::error_code fault;
    std::filesystem::create_symlink(elsewhere.path() / "manifest.json", archive.folder() / "manifest.json", fault);
    if (fault) {
        GTEST_SKIP() << "there are no links here";
    }
    EXPECT_THAT(faultsOf(archive.path()), ElementsAre("the manifest cannot be read: it is a link, not a regular file"));
}

TEST(ReleaseCheck, AFileOfTheSameSizeWithAnotherContentWasChanged) {
    const SealedArchive archive;
    archive.write("a.kfw", "firmwarf");
    std::string content(300000, 'b');
    content.back() = 'c';
    archive.write("sub/b.kbs", content);
    EXPECT_THAT(faultsOf(archive.path()), ElementsAre("'a.kfw' was changed", "'sub/b.kbs' was changed"));
}

TEST(ReleaseCheck, AManifestThatCannotBeReadIsNoManifestLess) {
    const SealedArchive archive;
    archive.write("manifest.json", "{}");
    EXPECT_THAT(faultsOf(archive.path()),
                ElementsAre("the manifest is not valid: its format is not 'kvreflash.manifest'"));
    archive.remove("manifest.json");
    std::filesystem::create_directory(archive.folder() / "manifest.json");
    EXPECT_THAT(faultsOf(archive.path()),
                ElementsAre("the manifest cannot be read: it is a folder, not a regular file"));
}

TEST(ReleaseCheck, AnArchiveWithoutManifestIsAcceptedWhereNobodyIsTrusted) {
    const ScratchFolder folder;
    static_cast<void>(folder.write("archive.json", "{}"));
    KvCReleaseCheck check(folder.path().wstring(), {});
    EXPECT_TRUE(check.open());
    EXPECT_FALSE(check.isSealed());
    EXPECT_EQ(check.release().seal, KvESeal::none);
    EXPECT_FALSE(check.release().isUnsealedAccepted);
}

TEST(ReleaseCheck, SignaturesWithoutManifestAreRefused) {
    const SealedArchive archive;
    archive.remove("manifest.json");
    archive.write("manifest.json.sig", ed25519Signature);
    EXPECT_THAT(faultsOf(archive.path()), ElementsAre("it has signatures and no manifest"));
}

TEST(ReleaseCheck, ASignatureOfAnotherManifestIsRefusedWhoeverIsTrusted) {
    const SealedArchive archive;
    archive.write("manifest.json.sig", ed25519Signature);
    const std::vector<std::string> faults = faultsOf(archive.path());
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_TRUE(faults.front().starts_with("the signature does not hold: signature 1: the key SHA256:"));
    archive.write("manifest.json.sig", "");
    EXPECT_THAT(faultsOf(archive.path()), ElementsAre("the signature does not hold: it is empty"));
}

class TrustedTest : public testing::Test {
protected:
    TrustedTest() {
        static_cast<void>(trust_.write("allowed_signers", "me " + ed25519Key + "\n"));
        options_.trustFolder = trust_.path().wstring();
    }
    [[nodiscard]] const ScratchFolder& trust() const { return trust_; }
    [[nodiscard]] KvTReleaseOptions& options() { return options_; }

private:
    ScratchFolder trust_;
    KvTReleaseOptions options_;
};

TEST_F(TrustedTest, WhatIsNotSealedOrNotSignedIsRefusedUnlessThatIsAccepted) {
    const SealedArchive sealed;
    const ScratchFolder plain;
    static_cast<void>(plain.write("archive.json", "{}"));
    EXPECT_THAT(faultsOf(sealed.path(), options()),
                ElementsAre("it is not signed, and only archives of signers who are trusted are accepted"));
    EXPECT_THAT(faultsOf(plain.path().wstring(), options()),
                ElementsAre("it is not sealed, and only archives of signers who are trusted are accepted"));
    options().acceptUnsealed = true;
    for (const std::wstring& archive : {sealed.path(), plain.path().wstring()}) {
        KvCReleaseCheck check(archive, options());
        EXPECT_TRUE(check.open());
        EXPECT_TRUE(check.release().isUnsealedAccepted);
    }
}

TEST_F(TrustedTest, WhatIsThereMustHoldAllTheSame) {
    options().acceptUnsealed = true;
    const SealedArchive archive;
    archive.write("a.kfw", "firmwarf");
    EXPECT_THAT(faultsOf(archive.path(), options()), ElementsAre("'a.kfw' was changed"));
    archive.write("manifest.json.sig", "x");
    EXPECT_THAT(faultsOf(archive.path(), options()),
                ElementsAre("the signature does not hold: signature 1: it is not a block of an SSH signature and "
                            "nothing else"));
}

TEST_F(TrustedTest, NothingThatAStrangerHasWrittenIsLookedInto) {
    const SealedArchive archive;
    archive.write("manifest.json", "not JSON");
    EXPECT_THAT(faultsOf(archive.path(), options()),
                ElementsAre("it is not signed, and only archives of signers who are trusted are accepted"));
    archive.write("manifest.json.sig", ecdsaSignature);
    const std::vector<std::string> faults = faultsOf(archive.path(), options());
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_TRUE(faults.front().starts_with("it is not signed by anybody who is trusted: the signer SHA256:"))
        << faults.front();
}

TEST_F(TrustedTest, AnArchiveThatIsNotThereIsCalledThat) {
    const ScratchFolder nothing;
    EXPECT_THAT(faultsOf((nothing.path() / "none").wstring(), options()),
                ElementsAre("there is no such folder or package"));
}

TEST_F(TrustedTest, ARevokedManifestIsRefusedEvenUnsigned) {
    options().acceptUnsealed = true;
    const SealedArchive archive;
    static_cast<void>(trust().write("revoked", hexOf(sha256Of(bytesOf(archive.manifestText()))) + "\n"));
    EXPECT_THAT(faultsOf(archive.path(), options()), ElementsAre("its manifest was revoked"));
}

TEST_F(TrustedTest, ABrokenTrustFolderRefusesEverything) {
    options().acceptUnsealed = true;
    std::filesystem::remove(trust().path() / "allowed_signers");
    const SealedArchive archive;
    EXPECT_THAT(faultsOf(archive.path(), options()), ElementsAre("the trust folder '" + trust().text() +
                                                                 "' cannot be used: its file allowed_signers cannot "
                                                                 "be read"));
}

TEST(ReleaseCheck, CopiesAreMadeWhileTheFilesAreRead) {
    const SealedArchive archive;
    std::filesystem::path copies;
    {
        KvCReleaseCheck check(archive.path(), {});
        ASSERT_TRUE(check.open());
        ASSERT_TRUE(check.makeCopies());
        copies = check.folderOfCopies();
        EXPECT_TRUE(check.take({"archive.json"}));
        EXPECT_TRUE(std::filesystem::exists(copies / "archive.json"));
        EXPECT_FALSE(std::filesystem::exists(copies / "sub"));
        // What is exchanged from now on changes nothing, or is noticed.
        archive.write("archive.json", "[]");
        EXPECT_TRUE(check.take({R"(sub\b.kbs)", "sub/b.kbs"}));
        EXPECT_TRUE(check.takeRest());
        EXPECT_EQ(std::filesystem::file_size(copies / "sub" / "b.kbs"), 300000U);
        EXPECT_FALSE(std::filesystem::exists(copies / "a.kfw"));
    }
    EXPECT_FALSE(std::filesystem::exists(copies));
}

TEST(ReleaseCheck, AChangedFileIsNotCopiedUnnoticed) {
    const SealedArchive archive;
    KvCReleaseCheck check(archive.path(), {});
    ASSERT_TRUE(check.open());
    ASSERT_TRUE(check.makeCopies());
    archive.write("archive.json", "[]");
    EXPECT_FALSE(check.take({"archive.json"}));
    archive.remove("a.kfw");
    EXPECT_FALSE(check.takeRest());
    EXPECT_THAT(check.faults(), ElementsAre("'archive.json' was changed", "'a.kfw' cannot be read"));
}

} // namespace
