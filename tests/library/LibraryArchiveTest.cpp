#include "ArchiveFolder.h"
#include "KvCErrorManager.h"
#include "KvIArchive.h"
#include "KvReleases.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace KvNReflasher;
using testing::Contains;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

static_assert(std::is_abstract_v<KvIArchive> && std::has_virtual_destructor_v<KvIArchive>);
static_assert(!std::is_copy_constructible_v<KvIArchive> && !std::is_copy_assignable_v<KvIArchive>);
static_assert(sizeof(KvIArchive) == sizeof(void*), "the interface has its table and nothing else");

namespace {

class LibraryArchive : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<const KvIArchive> open(const std::wstring& description = L"archive.json") const {
        return std::unique_ptr<const KvIArchive>(KvIArchive::createInstance(files.wideText(), description));
    }
    [[nodiscard]] KvTArchiveContent content() const {
        files.write();
        return open()->content();
    }
    /// Severity, code and place of each finding.
    [[nodiscard]] static std::vector<std::string> places(const std::vector<KvTFinding>& findings) {
        std::vector<std::string> result;
        result.reserve(findings.size());
        for (const KvTFinding& finding : findings) {
            result.push_back((finding.severity == KvESeverity::error ? "error " : "warning ") + finding.code + " " +
                             std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " + finding.path);
        }
        return result;
    }
    void TearDown() override { EXPECT_EQ(KvCErrorManager::getInstance()->getMasterErrorList().getErrorCount(), 0U); }

    ArchiveFolder files;
};

TEST_F(LibraryArchive, ASealedArchiveIsWhatItsManifestSays) {
    files.add(entry("a.bin").board("QB4120", 1));
    files.folder().write("a.bin", firmwareImage(KvCVersion("2.0"), 2));
    files.write();
    files.folder().write("manifest.json", sealArchive({files.wideText(), L"archive.json", 0}).manifest);
    const std::unique_ptr<const KvIArchive> archive(
        KvIArchive::createInstance(files.wideText(), L"archive.json", KvTReleaseOptions()));
    const KvTArchiveContent accepted = archive->content();
    EXPECT_TRUE(accepted.verdict.isSuccess());
    ASSERT_TRUE(accepted.release);
    EXPECT_EQ(accepted.release->seal, KvESeal::sealed);
    EXPECT_THAT(archive->findings(), IsEmpty());

    files.folder().write("more.bin", "");
    const KvTArchiveContent refused = archive->content();
    EXPECT_EQ(refused.verdict.failure, KvEFailure::archive);
    EXPECT_THAT(refused.verdict.message, EndsWith("'more.bin' is additional"));
    EXPECT_FALSE(refused.release);
    EXPECT_THAT(places(archive->findings()), Contains("error not-accepted 1:1 $"));
}

TEST_F(LibraryArchive, TheContentIsIdentityAndEntries) {
    files.info("archiveVariant", "Variant");
    files.add(entry("a.bin").board("QB4120", 1).version("24.0").checksum(7).sequence(3));
    files.add(entry("b.bin").board("QB4120", 2).noVersion().mode("upgrade"));
    const KvTArchiveContent read = content();
    EXPECT_TRUE(read.verdict.isSuccess());
    EXPECT_EQ(read.verdict.message, "");
    EXPECT_EQ(read.messages, "");
    EXPECT_EQ(read.identity.archiveName, "Archive");
    EXPECT_EQ(read.identity.archiveVersion, "23.2.1");
    EXPECT_EQ(read.identity.productName, "Product");
    EXPECT_EQ(read.identity.formatVersion, "1.0");
    EXPECT_EQ(read.identity.archiveVariant, "Variant");
    ASSERT_EQ(read.entries.size(), 2U);
    EXPECT_EQ(read.entries[0].fileName, "a.bin");
    EXPECT_EQ(read.entries[0].version, (KvTVersion{0x1800000000000000, "24.0"}));
    EXPECT_EQ(read.entries[0].checksumCrc32, 7U);
    EXPECT_EQ(read.entries[0].sequence, 3U);
    EXPECT_EQ(read.entries[0].mode, KvEEntryMode::standard);
    EXPECT_EQ(read.entries[1].fileIndex, 1U);
    EXPECT_EQ(read.entries[1].descriptionIndex, 1U);
    EXPECT_EQ(read.entries[1].version, std::nullopt);
    EXPECT_EQ(read.entries[1].mode, KvEEntryMode::upgrade);
}

TEST_F(LibraryArchive, ChecksumsThatAreLeftOutComeFromTheUpdateFiles) {
    files.add(entry("a.bin").board("QB4120", 1).noChecksum());
    files.folder().write("a.bin", bitstream(77));
    const KvTArchiveContent read = content();
    ASSERT_EQ(read.entries.size(), 1U);
    EXPECT_EQ(read.entries[0].checksumCrc32, 77U);
    EXPECT_EQ(read.messages,
              "1 update files needed to be opened to get parameters not contained in the description file.\n\n");
}

TEST_F(LibraryArchive, ARefusedArchiveSaysWhyInOneLine) {
    files.info("formatVersion", "2.0");
    const KvTArchiveContent read = content();
    EXPECT_EQ(read.verdict.failure, KvEFailure::archive);
    EXPECT_FALSE(read.verdict.isRetryable());
    EXPECT_EQ(read.verdict.message, "This firmware archive cannot be processed by the update tool. Do not use "
                                    "firmware archives with update tools from different Korvel releases.");
    EXPECT_EQ(read.messages, "ERROR: This firmware archive cannot be processed by the update tool.\n"
                             "       Do not use firmware archives with update tools from different Korvel releases.\n"
                             "ERROR: Failed to read firmware archive.\n");
}

TEST_F(LibraryArchive, TheEntriesBeforeTheErrorAreThere) {
    files.add(entry("a.bin").board("QB4120", 1));
    files.add(entry("b.bin").board("QB4120", 2).mode("wrong"));
    const KvTArchiveContent read = content();
    EXPECT_EQ(read.verdict.message, "File entry 1 is invalid. Property \"mode\" is invalid.");
    ASSERT_EQ(read.entries.size(), 1U);
    EXPECT_EQ(read.entries[0].fileName, "a.bin");
}

TEST_F(LibraryArchive, AnArchiveThatIsNotThereIsRefused) {
    const std::unique_ptr<const KvIArchive> archive = open(L"gr\u00FCn.json");
    const KvTArchiveContent read = archive->content();
    EXPECT_EQ(read.verdict.failure, KvEFailure::archive);
    EXPECT_THAT(read.verdict.message, StartsWith("Cannot open archive description file "));
    EXPECT_THAT(read.verdict.message, EndsWith("\\gr\xC3\xBCn.json"));
    EXPECT_THAT(read.entries, IsEmpty());
    EXPECT_THAT(places(archive->findings()), testing::ElementsAre("error description-unreadable 1:1 $"));
}

TEST_F(LibraryArchive, EveryOperationReadsItAnew) {
    const std::unique_ptr<const KvIArchive> archive = open();
    EXPECT_FALSE(archive->content().verdict.isSuccess());
    files.add(entry("a.bin").board("QB4120", 1));
    files.write();
    EXPECT_EQ(archive->content().entries.size(), 1U);
    EXPECT_THAT(archive->findings(), IsEmpty());
    files.removeFile("a.bin");
    EXPECT_THAT(archive->findings(), testing::SizeIs(1));
}

TEST_F(LibraryArchive, AllFindingsAreListedInTheOrderOfTheDescription) {
    files.folder().write("archive.json", R"({
    "files": [
        {"name": "a.bin", "sequence": 1, "boardType": "QB", "id": 1, "checksumCrc32": 2, "mode": "wrong"},
        {"name": "b.bin", "sequence": 1, "boardType": "QB", "id": 2, "checksumCrc32": 2, "sequenz": 1},
        {"name": "c.bin", "sequence": 1, "boardType": "QB", "checksumCrc32": 2}
    ]
})");
    files.folder().write("b.bin", "text");
    const std::vector<KvTFinding> findings = open()->findings();
    EXPECT_THAT(places(findings),
                testing::ElementsAre("error info-missing 1:1 $", "error mode-unknown 3:98 $.files[0].mode",
                                     "warning unknown-key 4:90 $.files[1].sequenz", "error no-address 5:9 $.files[2]"));
    ASSERT_EQ(findings.size(), 4U);
    EXPECT_EQ(findings[1].message, "File entry 0 is invalid. Property \"mode\" is invalid.");
    EXPECT_EQ(findings[1].hint, "Write \"standard\" or \"upgrade\".");
    EXPECT_EQ(findings[2].hint, "Did you mean \"sequence\"?");
}

} // namespace
