#include "KvReleases.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace KvNReflasher;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* description =
    R"({"info": {"formatVersion": "1.0", "archiveVersion": "1.2", "productName": "P", "archiveName": "N"}, "files": []})";

class SealingTest : public testing::Test {
protected:
    SealingTest() {
        write("archive.json", description);
        write("a.kfw", "firmware");
    }
    void write(const std::string& name, const std::string& content) const {
        static_cast<void>(folder_.write(name, content));
    }
    [[nodiscard]] KvTSealing seal(std::int64_t created = 1790000000) const {
        return sealArchive({folder_.path().wstring(), L"archive.json", created});
    }
    /// The package; the faults otherwise.
    [[nodiscard]] std::string pack(std::vector<std::string>& faults, std::size_t most = 1U << 20U) const {
        struct Taken {
            std::string bytes;
            std::size_t most;
        } taken{{}, most};
        faults = packArchive(
            folder_.path().wstring(),
            [](std::string_view bytes, void* context) {
                auto& all = *static_cast<Taken*>(context);
                all.bytes += bytes;
                return all.bytes.size() <= all.most;
            },
            &taken);
        return taken.bytes;
    }

    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }

private:
    ScratchFolder folder_;
};

TEST_F(SealingTest, AManifestIsThatOfTheFilesAndTheDescription) {
    const KvTSealing sealing = seal();
    EXPECT_TRUE(sealing.verdict.isSuccess());
    EXPECT_EQ(sealing.fileCount, 2U);
    EXPECT_EQ(sealing.size, 8 + std::string(description).size());
    EXPECT_THAT(sealing.manifest, HasSubstr(R"("created": "2026-09-21T14:13:20Z")"));
    EXPECT_THAT(sealing.manifest, HasSubstr(R"("archiveVersion": "1.2")"));
    EXPECT_EQ(sealing.manifestDigest.size(), 64U);
    EXPECT_FALSE(sealing.isUnchanged);
}

TEST_F(SealingTest, WhatHasNotChangedKeepsItsTime) {
    write("manifest.json", seal().manifest);
    EXPECT_TRUE(seal(1800000000).isUnchanged);
    EXPECT_EQ(seal(1800000000).manifest, seal().manifest);
    write("a.kfw", "firmwarE");
    EXPECT_FALSE(seal(1800000000).isUnchanged);
    EXPECT_THAT(seal(1800000000).manifest, HasSubstr(R"("created": "2027-01-15T08:00:00Z")"));
}

TEST_F(SealingTest, FaultsAreNamedAtOnce) {
    write(std::string(101, 'x'), "");
    write(std::string(102, 'y'), "");
    write("archive.json", "{");
    const KvTSealing sealing = seal();
    EXPECT_EQ(sealing.verdict.failure, KvEFailure::archive);
    EXPECT_EQ(sealing.faults.size(), 3U);
    EXPECT_EQ(sealing.manifest, "");
}

TEST_F(SealingTest, WhateverTheDescriptionNamesMustBeThere) {
    write(
        "archive.json",
        R"({"info": {"formatVersion": "1.0", "archiveVersion": "1.2", "productName": "P", "archiveName": "N"}, "files": [
              {"name": "../b.kfw", "sequence": 1, "boardType": "B", "id": 1, "checksumCrc32": 1},
              {"name": "A.kfw", "sequence": 1, "boardType": "B", "id": 2, "checksumCrc32": 1},
              {"name": "a.kfw", "sequence": 1, "boardType": "B", "id": 3, "checksumCrc32": 1}]})");
    EXPECT_THAT(seal().faults,
                ElementsAre("'../b.kfw' is not a file of the archive", "'A.kfw' is not a file of the archive"));
}

TEST_F(SealingTest, ADescriptionElsewhereIsNotThatOfTheArchive) {
    const ScratchFolder other;
    static_cast<void>(other.write("archive.json", description));
    const std::wstring name = L"../" + other.path().filename().wstring() + L"/archive.json";
    EXPECT_EQ(sealArchive({folder().path().wstring(), name, 0}).faults.size(), 1U);
}

TEST_F(SealingTest, ATimeThatNoPackageCanHoldIsRefused) {
    EXPECT_TRUE(seal(8589934591).verdict.isSuccess());
    for (const std::int64_t time : {std::int64_t{8589934592}, std::int64_t{-1}, INT64_MAX, INT64_MIN}) {
        EXPECT_THAT(seal(time).faults, ElementsAre("its time is not from 1970 to 2242-03-16T12:56:31Z")) << time;
    }
}

TEST_F(SealingTest, ASignatureThatDoesNotHoldIsNotPacked) {
    write("manifest.json", seal().manifest);
    write("manifest.json.sig", "signature");
    std::vector<std::string> faults;
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre("the signature does not hold: signature 1: it is not a block of an SSH signature "
                                    "and nothing else"));
}

TEST_F(SealingTest, WhatIsNotAManifestOrNotASignatureIsNotPacked) {
    std::vector<std::string> faults;
    write("manifest.json", "[]");
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre(StartsWith("the manifest is not valid: ")));
    write("manifest.json", seal().manifest);
    std::filesystem::create_directory(folder().path() / "manifest.json.sig");
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre(StartsWith("the signature cannot be read: ")));
}

TEST_F(SealingTest, APackageHasWholeBlocks) {
    write("manifest.json", seal().manifest);
    std::vector<std::string> faults;
    const std::string package = pack(faults);
    EXPECT_THAT(faults, IsEmpty());
    EXPECT_EQ(package.size() % 512, 0U);
    EXPECT_TRUE(package.starts_with("manifest.json"));
    EXPECT_EQ(package.substr(package.size() - 1024), std::string(1024, '\0'));
}

TEST_F(SealingTest, WhatIsNotAsSealedIsNotPacked) {
    std::vector<std::string> faults;
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre("it is not sealed"));
    write("manifest.json", seal().manifest);
    write("a.kfw", "firmwarE");
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre("'a.kfw' was changed"));
    write("a.kfw", "firmware, longer");
    write("b.kfw", "");
    static_cast<void>(pack(faults));
    EXPECT_THAT(faults, ElementsAre("'a.kfw' has 16 bytes and not 8", "'b.kfw' is additional"));
}

TEST_F(SealingTest, PackingEndsWhenNothingMoreIsTaken) {
    write("manifest.json", seal().manifest);
    std::vector<std::string> faults;
    const std::string begun = pack(faults, 600);
    EXPECT_THAT(faults, IsEmpty());
    EXPECT_LT(begun.size(), pack(faults).size());
}

} // namespace
