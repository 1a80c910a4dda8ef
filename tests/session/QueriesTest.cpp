#include "FailingMemory.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <ostream>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

class QueriesTest : public SessionTest {
protected:
    /// The one element of a target whose only element is this one.
    KvTUpdateElementInfo onlyElement(const ItemBuilder& element) {
        node.element(element);
        EXPECT_EQ(prepare(showUpdatePlan), 0U);
        const std::vector<KvTUpdateElementInfo> elements = updateElements();
        EXPECT_EQ(elements.size(), 1U);
        return elements.empty() ? KvTUpdateElementInfo{} : elements[0];
    }
};

} // namespace

TEST_F(QueriesTest, EveryFieldOfAnElementIsFilled) {
    hasNode = false;
    target.add(item("BACKPLANE")
                   .parameter("PRODUCT/UNITNAME", "Unit")
                   .parameter("UNITNAME", "Instance")
                   .parameter("RACKNAME", "Rack")
                   .add(board("IOMODULE", "QB7001", 0x02000457)
                            .parameter("PRODUCT/SLOT_COUNT", std::uint64_t(2))
                            .parameter("SLOT", std::uint64_t(5))
                            .parameter("PRODUCT/NAME", "Board")
                            .parameter("PRODUCT/VARIANT", "V")
                            .element(completeElement(3, "First"))
                            .element(completeElement(4, "UserFirmware")
                                         .parameter("VERSION", "3.5.2")
                                         .parameter("CUSTOM", std::uint64_t(7)))));
    archive.add(entry("other.bin").board("OTHER", 1).sequence(1));
    archive.add(entry("a.bin").board("QB7001", 3).sequence(2).variant("V"));
    archive.add(entry("b.bin").board("QB7001", 4).sequence(9).variant("V").version("23.2a12").checksum(77));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    const std::vector<KvTUpdateElementInfo> elements = updateElements();
    ASSERT_EQ(elements.size(), 2U);
    const KvTUpdateElementInfo& element = elements[1];
    EXPECT_EQ(element.index, 1U);
    EXPECT_EQ(element.boardType, L"QB7001");
    EXPECT_EQ(element.serialNumber, 0x02000457U);
    EXPECT_EQ(element.boardName, L"Board (V)");
    EXPECT_EQ(element.unitPath, L"Unit: Rack / Instance");
    EXPECT_EQ(element.slot, 5U);
    EXPECT_EQ(element.slotCount, 2U);
    EXPECT_EQ(element.displayName, L"Board (V), SN 1111(2), Firmware");
    EXPECT_EQ(element.typeName, L"Firmware");
    EXPECT_FALSE(element.isFileSystemElement);
    EXPECT_TRUE(element.valid);
    EXPECT_TRUE(element.active);
    EXPECT_EQ(element.installedVersion, L"3.5.2");
    EXPECT_EQ(element.custom, 1U);
    EXPECT_EQ(element.phase, 1U);
    EXPECT_EQ(element.hasArchiveFile, 1U);
    EXPECT_EQ(element.archiveFileIndex, 2U);
    EXPECT_EQ(element.availableVersion, L"23.2a12");
    EXPECT_TRUE(element.checksumMismatch);
    EXPECT_FALSE(element.disabled);
    EXPECT_EQ(elements[0].index, 0U);
    EXPECT_EQ(elements[0].custom, 0U);
    EXPECT_EQ(elements[0].phase, 0U);
}

TEST_F(QueriesTest, AnElementWithoutAnEntryHasNothingAvailable) {
    const KvTUpdateElementInfo element = onlyElement(completeElement(1));
    EXPECT_EQ(element.hasArchiveFile, 0U);
    EXPECT_EQ(element.archiveFileIndex, none);
    EXPECT_EQ(element.availableVersion, L"");
    EXPECT_FALSE(element.checksumMismatch);
    EXPECT_EQ(element.phase, 0U);
    EXPECT_FALSE(element.disabled);
}

TEST_F(QueriesTest, FlagsThatAreNotSetAreFalse) {
    const KvTUpdateElementInfo element =
        onlyElement(completeElement(1).parameter("VALID", std::uint64_t(0)).parameter("ACTIVE", std::uint64_t(0)));
    EXPECT_FALSE(element.valid);
    EXPECT_FALSE(element.active);
}

TEST_F(QueriesTest, AnInstalledVersionOfZerosIsEmpty) {
    EXPECT_EQ(onlyElement(completeElement(1).parameter("VERSION", "0.0")).installedVersion, L"");
}

TEST_F(QueriesTest, AnAvailableVersionOfZerosIsEmpty) {
    archive.add(entry("a.bin").board("NODE", 1).noVersion());
    EXPECT_EQ(onlyElement(completeElement(1)).availableVersion, L"");
}

TEST_F(QueriesTest, EqualChecksumsAreNoMismatch) {
    archive.add(entry("a.bin").board("NODE", 1).checksum(1));
    EXPECT_FALSE(onlyElement(completeElement(1)).checksumMismatch);
}

TEST_F(QueriesTest, AnElementWithoutChecksumMismatchesAsIfItWereZero) {
    node.element(completeElementWithoutChecksum(1)).element(completeElementWithoutChecksum(2));
    archive.add(entry("a.bin").board("NODE", 1).checksum(1)).add(entry("b.bin").board("NODE", 2).checksum(0));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    const std::vector<KvTUpdateElementInfo> elements = updateElements();
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_TRUE(elements[0].checksumMismatch);
    EXPECT_FALSE(elements[1].checksumMismatch);
}

TEST_F(QueriesTest, AnElementThatIsUpToDateIsDisabled) {
    archive.add(entry("a.bin").board("NODE", 1).version("1.0").checksum(1));
    EXPECT_TRUE(onlyElement(completeElement(1)).disabled);
}

TEST_F(QueriesTest, TextsAreConvertedFromUtf8) {
    node.parameter("PRODUCT/NAME", "B\xC3\xBC");
    const KvTUpdateElementInfo element = onlyElement(completeElement(1, "E\xE2\x82\xAC"));
    EXPECT_EQ(element.boardName, L"B\u00FC");
    EXPECT_EQ(element.displayName, L"B\u00FC, E\u20AC");
    EXPECT_EQ(element.typeName, L"E\u20AC");
}

struct UnitCase {
    const char* name;
    const char* instance;
    const char* rack;
    const wchar_t* expected;

    friend void PrintTo(const UnitCase& row, std::ostream* stream) { *stream << row.name; }
};

class UnitPathTest : public QueriesTest, public testing::WithParamInterface<UnitCase> {};

TEST_P(UnitPathTest, NamesTheUnitItsRackAndItsInstance) {
    node.parameter("PRODUCT/UNITNAME", "Unit")
        .parameter("UNITNAME", GetParam().instance)
        .parameter("RACKNAME", GetParam().rack);
    EXPECT_EQ(onlyElement(completeElement(1)).unitPath, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Names, UnitPathTest,
                         testing::Values(UnitCase{"Both", "Instance", "Rack", L"Unit: Rack / Instance"},
                                         UnitCase{"Neither", "", "", L"Unit"},
                                         UnitCase{"RackOnly", "", "Rack", L"Unit: Rack"},
                                         UnitCase{"InstanceOnly", "Instance", "", L"Unit: Instance"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(QueriesTest, AnElementWithoutAUnitHasAnEmptyUnitPath) {
    EXPECT_EQ(onlyElement(completeElement(1)).unitPath, L"");
}

TEST_F(QueriesTest, FilesOfTheTargetsFileSystemComeLast) {
    node.element(completeElement(1));
    addFile("a.cfg", "cfg/a.cfg");
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    const std::vector<KvTUpdateElementInfo> elements = updateElements();
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_TRUE(elements[1].isFileSystemElement);
    EXPECT_EQ(elements[1].index, 1U);
    EXPECT_EQ(elements[1].displayName, L"NODE, Updatable file (a.cfg)");
    EXPECT_EQ(elements[1].installedVersion, L"");
    EXPECT_FALSE(elements[1].valid);
}

TEST_F(QueriesTest, WithoutElementsTheArrayIsNull) {
    EXPECT_EQ(prepare(connectOnly), 0U);
    KvTUpdateElementInfo dummy;
    KvTUpdateElementInfo* elements = &dummy;
    std::uint32_t count = 99;
    session().getUpdateElements(elements, count);
    EXPECT_EQ(elements, nullptr);
    EXPECT_EQ(count, 0U);
}

TEST_F(QueriesTest, WithoutEntriesTheArrayIsNull) {
    EXPECT_EQ(prepare(showArchiveContent), 0U);
    KvTArchiveFileInfo dummy;
    KvTArchiveFileInfo* files = &dummy;
    std::uint32_t count = 99;
    session().getArchiveFiles(files, count);
    EXPECT_EQ(files, nullptr);
    EXPECT_EQ(count, 0U);
}

TEST_F(QueriesTest, BeforePrepareTheArraysAreNull) {
    KvTUpdateElementInfo element;
    KvTUpdateElementInfo* elements = &element;
    std::uint32_t count = 99;
    session().getUpdateElements(elements, count);
    EXPECT_EQ(elements, nullptr);
    EXPECT_EQ(count, 0U);
    KvTArchiveFileInfo file;
    KvTArchiveFileInfo* files = &file;
    count = 99;
    session().getArchiveFiles(files, count);
    EXPECT_EQ(files, nullptr);
    EXPECT_EQ(count, 0U);
}

TEST_F(QueriesTest, ArchiveFilesComeInTheOrderOfTheDescription) {
    archive.add(entry("z\xC3\xBC.bin").board("NODE", 1).version("23.2.1b3.1"));
    archive.add(entry("a.bin").board("NODE", 2).noVersion());
    EXPECT_EQ(prepare(showArchiveContent), 0U);
    const std::vector<KvTArchiveFileInfo> files = archiveFiles();
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].name, "z\xC3\xBC.bin");
    EXPECT_EQ(files[0].version, "23.2.1b3.1");
    EXPECT_EQ(files[1].name, "a.bin");
    EXPECT_EQ(files[1].version, "0.0");
}

TEST_F(QueriesTest, QueriesPrintNothing) {
    addNodeElement(1, completeElement(1));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    log.clear();
    static_cast<void>(updateElements());
    static_cast<void>(archiveFiles());
    std::array<std::wstring, 5> texts;
    session().getArchiveInfo(texts[0], texts[1], texts[2], texts[3], texts[4]);
    session().disableUpdateElement(0);
    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_EQ(texts[0], L"Archive");
    ASSERT_EQ(updateElements().size(), 1U);
    EXPECT_TRUE(updateElements()[0].disabled);
}

// Leaving elements out.

TEST_F(QueriesTest, ADisabledElementShowsAndIsNotUpdated) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    EXPECT_EQ(prepare(performUpdate), 0U);
    session().disableUpdateElement(1);
    EXPECT_FALSE(updateElements()[0].disabled);
    EXPECT_TRUE(updateElements()[1].disabled);
    log.clear();
    EXPECT_TRUE(run());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1"));
}

TEST_F(QueriesTest, AnIndexPastTheEndDisablesNothing) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    EXPECT_EQ(prepare(performUpdate), 0U);
    log.clear();
    for (const std::uint32_t index : {2U, 3U, none}) {
        session().disableUpdateElement(index);
    }
    EXPECT_THAT(log.events(), IsEmpty());
    for (const KvTUpdateElementInfo& element : updateElements()) {
        EXPECT_FALSE(element.disabled);
    }
}

TEST_F(QueriesTest, WithoutElementsThereIsNothingToDisable) {
    session().disableUpdateElement(0);
    EXPECT_THAT(updateElements(), IsEmpty());
}

// The archive's info.

TEST_F(QueriesTest, ArchiveInfoIsFilledInItsOrder) {
    EXPECT_EQ(prepare(showArchiveVersion), 0U);
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session().getArchiveInfo(name, version, product, format, variant);
    EXPECT_THAT((std::vector{name, version, product, format, variant}),
                ElementsAre(L"Archive", L"23.2.1", L"Product", L"1.0", L"Variant"));
}

TEST_F(QueriesTest, ArchiveInfoBeforeTheArchiveWasReadIsThatOfNoArchive) {
    std::wstring name = L"?";
    std::wstring version = L"?";
    std::wstring product = L"?";
    std::wstring format = L"?";
    std::wstring variant = L"?";
    session().getArchiveInfo(name, version, product, format, variant);
    EXPECT_THAT((std::vector{name, version, product, format, variant}), ElementsAre(L"", L"0.0", L"", L"0.0", L""));
}

// Exhausted memory.

TEST_F(QueriesTest, ExhaustedMemoryMakesAQueryOfElementsYieldNone) {
    const std::string longName(100, 'a');
    addNodeElement(1, completeElement(1, longName));
    addNodeElement(2, completeElement(2, longName));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        KvTUpdateElementInfo dummy;
        KvTUpdateElementInfo* elements = &dummy;
        std::uint32_t count = 99;
        const std::ptrdiff_t before = FailingMemory::blocksInUse();
        {
            const FailingMemory failing(number);
            session().getUpdateElements(elements, count);
            struck = FailingMemory::hasStruck();
        }
        EXPECT_EQ(elements == nullptr, struck) << number;
        EXPECT_EQ(count, struck ? 0U : 2U) << number;
        delete[] elements;
        EXPECT_EQ(FailingMemory::blocksInUse(), before) << number;
    }
    EXPECT_GT(number, 5U);
}

TEST_F(QueriesTest, ExhaustedMemoryMakesAQueryOfFilesYieldNone) {
    archive.add(entry(std::string(100, 'a')).board("NODE", 1));
    EXPECT_EQ(prepare(showArchiveContent), 0U);
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        KvTArchiveFileInfo dummy;
        KvTArchiveFileInfo* files = &dummy;
        std::uint32_t count = 99;
        const std::ptrdiff_t before = FailingMemory::blocksInUse();
        {
            const FailingMemory failing(number);
            session().getArchiveFiles(files, count);
            struck = FailingMemory::hasStruck();
        }
        EXPECT_EQ(files == nullptr, struck) << number;
        EXPECT_EQ(count, struck ? 0U : 1U) << number;
        delete[] files;
        EXPECT_EQ(FailingMemory::blocksInUse(), before) << number;
    }
    EXPECT_GT(number, 2U);
}

TEST_F(QueriesTest, ExhaustedMemoryDoesNotLeaveTheQueryOfTheInfo) {
    archive.info("archiveName", std::string(100, 'a'));
    EXPECT_EQ(prepare(showArchiveContent), 0U);
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        std::array<std::wstring, 5> texts;
        const FailingMemory failing(number);
        EXPECT_NO_THROW(session().getArchiveInfo(texts[0], texts[1], texts[2], texts[3], texts[4]));
        struck = FailingMemory::hasStruck();
    }
    EXPECT_GT(number, 2U);
}
