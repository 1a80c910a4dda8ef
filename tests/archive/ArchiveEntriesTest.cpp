#include "ArchiveEntries.h"

#include "ArchiveFixture.h"

#include <gmock/gmock.h>

namespace {

using KvNReflasher::KvEEntryMode;
using KvNReflasher::KvTArchiveEntry;
using KvNReflasher::KvTVersion;
using testing::IsEmpty;

TEST(KnownVersion, IsItsNumberAndItsText) {
    EXPECT_EQ(knownVersion(KvCVersion("23.2a12")), (KvTVersion{0x17020001000C0000, "23.2a12"}));
    EXPECT_EQ(knownVersion(KvCVersion("0.0.0.1")), (KvTVersion{0x10000, "0.0.0.1"}));
}

TEST(KnownVersion, IsNothingForTheZeroVersionAndTheOneThatIsNotKnown) {
    EXPECT_EQ(knownVersion(KvCVersion()), std::nullopt);
    EXPECT_EQ(knownVersion(unknownVersion()), std::nullopt);
}

class ArchiveEntries : public ArchiveTest {
protected:
    KvTArchiveEntry entryOf(const ObjectText& entry) {
        EXPECT_TRUE(readDescription(ArchiveBuilder().info("archiveVersion", R"("7.5")").entry(entry)));
        return archiveEntryOf(file(0), 0);
    }
};

TEST_F(ArchiveEntries, AnEntryHasWhatItsDescriptionStates) {
    const KvTArchiveEntry entry = entryOf(goodEntry()
                                              .set("name", "\"gr\xC3\xBCn.bin\"")
                                              .set("version", R"("2.1")")
                                              .set("checksumCrc32", "77")
                                              .set("sequence", "30")
                                              .set("mode", R"("upgrade")"));
    EXPECT_EQ(entry.fileName, "gr\xC3\xBCn.bin");
    EXPECT_EQ(entry.version, (KvTVersion{0x0201000000000000, "2.1"}));
    EXPECT_EQ(entry.checksumCrc32, 77U);
    EXPECT_EQ(entry.sequence, 30U);
    EXPECT_EQ(entry.mode, KvEEntryMode::upgrade);
    EXPECT_EQ(entryOf(goodEntry().set("mode", R"("standard")")).mode, KvEEntryMode::standard);
    EXPECT_EQ(entryOf(goodEntry().remove("mode")).mode, KvEEntryMode::standard);
}

TEST_F(ArchiveEntries, AnEntryWithoutVersionHasThatOfTheArchiveAndOneOfNullHasNone) {
    EXPECT_EQ(entryOf(goodEntry().remove("version")).version->text, "7.5");
    EXPECT_EQ(entryOf(goodEntry().set("version", "null")).version, std::nullopt);
}

TEST_F(ArchiveEntries, AChecksumThatIsNotKnownIsNothing) {
    EXPECT_EQ(entryOf(goodEntry().remove("checksumCrc32")).checksumCrc32, std::nullopt);
    EXPECT_EQ(entryOf(goodEntry().set("checksumCrc32", "4294967294")).checksumCrc32, std::nullopt);
    EXPECT_EQ(entryOf(goodEntry().set("checksumCrc32", "0")).checksumCrc32, 0U);
    EXPECT_EQ(entryOf(goodEntry().set("checksumCrc32", "4294967295")).checksumCrc32, 0xFFFFFFFFU);
}

TEST_F(ArchiveEntries, EachHasItsPositionAmongTheAcceptedOnesAndInTheDescription) {
    EXPECT_TRUE(readDescription(ArchiveBuilder()
                                    .entry(R"({"featureLevel": 3})")
                                    .entry(goodEntry())
                                    .entry(R"({"featureLevel": 3})")
                                    .entry(goodEntry().set("name", "\"b.bin\""))));
    const std::vector<KvTArchiveEntry> entries = archiveEntriesOf(archive().files());
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].fileIndex, 0U);
    EXPECT_EQ(entries[0].descriptionIndex, 1U);
    EXPECT_EQ(entries[1].fileIndex, 1U);
    EXPECT_EQ(entries[1].descriptionIndex, 3U);
    EXPECT_EQ(entries[1].fileName, "b.bin");
    EXPECT_THAT(archiveEntriesOf({}), IsEmpty());
}

TEST_F(ArchiveEntries, TheIdentityIsThatOfTheDescription) {
    EXPECT_TRUE(readDescription(ArchiveBuilder()
                                    .info("formatVersion", R"("1.2")")
                                    .info("archiveVersion", R"("23.2b3")")
                                    .info("productName", R"("Product")")
                                    .info("archiveVariant", R"("Variant")")
                                    .info("archiveName", "\"Gr\xC3\xBCn\"")));
    const KvNReflasher::KvTArchiveIdentity identity = archiveIdentityOf(archive().info());
    EXPECT_EQ(identity.formatVersion, "1.2");
    EXPECT_EQ(identity.archiveVersion, "23.2b3");
    EXPECT_EQ(identity.productName, "Product");
    EXPECT_EQ(identity.archiveVariant, "Variant");
    EXPECT_EQ(identity.archiveName, "Gr\xC3\xBCn");
}

} // namespace
