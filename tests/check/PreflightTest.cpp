#include "Preflight.h"

#include "CheckFixture.h"
#include "MessageCapture.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <optional>

namespace {

using KvNReflasher::KvTPlan;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// A plan whose elements take the entries of these positions and are updated.
KvTPlan planOf(const std::vector<std::uint32_t>& fileIndices) {
    KvTPlan plan;
    for (const std::uint32_t fileIndex : fileIndices) {
        KvNReflasher::KvTPlannedElement& element = plan.elements.emplace_back();
        element.entry.emplace().fileIndex = fileIndex;
        element.decision.update = true;
    }
    return plan;
}

class Preflight : public CheckTest {
protected:
    std::vector<std::string> faultsOf(const ArchiveBuilder& description, const KvTPlan& plan) {
        folder().write("archive.json", description.text());
        const KvCMessageCapture messages;
        KvCFirmwareArchive archive(messages.writer(), options());
        EXPECT_TRUE(archive.readDescriptionFile());
        return preflightFindings(archive, options(), plan);
    }
    /// An entry of version 2.0 and checksum 2.
    static ObjectText entryOf(const char* name) {
        return goodEntry().set("name", joined("\"", name, "\"")).set("version", "\"2.0\"").set("checksumCrc32", "2");
    }
};

std::string image(const char* version, std::uint32_t checksum) {
    return firmwareImage(KvCVersion(version), checksum);
}

struct FileRow {
    const char* name;
    /// The update file; nothing: it is missing.
    std::optional<std::string> bytes;
    /// The entry's version and checksum as JSON texts; empty: left out.
    const char* version;
    const char* checksum;
    std::vector<std::string> faults;

    friend void PrintTo(const FileRow& row, std::ostream* stream) { *stream << row.name; }
};

class PreflightOfAFile : public Preflight, public testing::WithParamInterface<FileRow> {};

TEST_P(PreflightOfAFile, ListsItsFaults) {
    const FileRow& row = GetParam();
    if (row.bytes) {
        folder().write("x.bin", *row.bytes);
    }
    ObjectText entry = entryOf("x.bin");
    for (const auto& [key, value] : {std::pair("version", row.version), std::pair("checksumCrc32", row.checksum)}) {
        entry = *value != '\0' ? entry.set(key, value) : entry.remove(key);
    }
    EXPECT_THAT(faultsOf(ArchiveBuilder().entry(entry), planOf({0})), ElementsAreArray(row.faults));
}

INSTANTIATE_TEST_SUITE_P(
    Files, PreflightOfAFile,
    testing::Values(
        FileRow{"AsDescribed", image("2.0", 2), "\"2.0\"", "2", {}},
        FileRow{"Missing", std::nullopt, "\"2.0\"", "2", {"x.bin: not found"}},
        FileRow{"Empty", "", "\"2.0\"", "2", {"x.bin: it is empty"}},
        FileRow{"EmptyAndNothingDescribed", "", "null", "", {"x.bin: it is empty"}},
        FileRow{"ImageThatEndsWithinItsHeader",
                image("2.0", 2).substr(0, 363),
                "\"2.0\"",
                "2",
                {"x.bin: it ends within its header"}},
        FileRow{"BitstreamThatEndsWithinItsHeader",
                bitstream(2).substr(0, 91),
                "\"2.0\"",
                "2",
                {"x.bin: it ends within its header"}},
        FileRow{"ForOtherHardware",
                withHardwareIds(image("2.0", 2), 1, 3),
                "\"2.0\"",
                "2",
                {"x.bin: it is for the hardware compatibility identifier 1 to 3, the description allows 0"}},
        FileRow{"ForOtherSoftware",
                withSoftwareIds(image("2.0", 2), 5, 5),
                "\"2.0\"",
                "2",
                {"x.bin: it is for the software compatibility identifier 5, the description allows 0"}},
        FileRow{"ForItsHardwareAndMore", withHardwareIds(image("2.0", 2), 0, 3), "\"2.0\"", "2", {}},
        FileRow{"OtherChecksum", image("2.0", 7), "\"2.0\"", "2", {"x.bin: its checksum is 7, the description says 2"}},
        FileRow{"OtherVersion",
                image("2.0.1", 2),
                "\"2.0\"",
                "2",
                {"x.bin: its version is 2.0.1, the description says 2.0"}},
        FileRow{"BothOther",
                image("2.1", 7),
                "\"2.0\"",
                "2",
                {"x.bin: its checksum is 7, the description says 2",
                 "x.bin: its version is 2.1, the description says 2.0"}},
        FileRow{"ChecksumNotDescribed", image("2.0", 7), "\"2.0\"", "", {}},
        FileRow{"ChecksumDescribedAsUnknown", image("2.0", 7), "\"2.0\"", "4294967294", {}},
        FileRow{"VersionDescribedAsNone", image("2.1", 2), "null", "2", {}},
        FileRow{"VersionNotDescribed", image("2.1", 2), "", "2", {}},
        FileRow{"HeaderWithoutVersion", bitstream(2), "\"2.0\"", "2", {}},
        FileRow{"HeaderWithoutVersionAndOtherChecksum",
                bitstream(7),
                "\"2.0\"",
                "2",
                {"x.bin: its checksum is 7, the description says 2"}},
        FileRow{"HeaderWithoutChecksum", bitstream(7, 40), "\"2.0\"", "2", {}},
        FileRow{"WithoutHeader", "content", "\"2.0\"", "2", {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(Preflight, AFileOfASimilarNameIsSuggestedForOneThatIsMissing) {
    folder().write("qb4120-fpga.kbs", "content");
    const ArchiveBuilder description =
        ArchiveBuilder().entry(entryOf("qb4120-fgpa.kbs")).entry(entryOf("qb7001-settings.cfg"));
    EXPECT_THAT(
        faultsOf(description, planOf({0, 1})),
        ElementsAre("qb4120-fgpa.kbs: not found; did you mean \"qb4120-fpga.kbs\"?", "qb7001-settings.cfg: not found"));
}

TEST_F(Preflight, AFolderInPlaceOfAFileCannotBeRead) {
    std::filesystem::create_directory(folder().path() / "x.bin");
    EXPECT_THAT(faultsOf(ArchiveBuilder().entry(entryOf("x.bin")), planOf({0})),
                ElementsAre("x.bin: cannot be read: it is a folder, not a regular file"));
}

TEST_F(Preflight, FilesOfElementsThatAreNotUpdatedAreNotLookedAt) {
    const ArchiveBuilder description = ArchiveBuilder().entry(entryOf("one.bin")).entry(entryOf("two.bin"));
    KvTPlan plan = planOf({0, 1});
    plan.elements[0].decision.update = false;
    EXPECT_THAT(faultsOf(description, plan), ElementsAre("two.bin: not found"));
    plan.elements[1].decision.update = false;
    EXPECT_THAT(faultsOf(description, plan), IsEmpty());
}

TEST_F(Preflight, EachFileIsLookedAtOnceInTheOrderOfTheEntries) {
    const ArchiveBuilder description = ArchiveBuilder().entry(entryOf("one.bin")).entry(entryOf("two.bin"));
    EXPECT_THAT(faultsOf(description, planOf({1, 0, 1, 0})), ElementsAre("one.bin: not found", "two.bin: not found"));
}

TEST_F(Preflight, EntriesAreCountedWithoutThoseThatWereSkipped) {
    EXPECT_THAT(faultsOf(ArchiveBuilder()
                             .entry(R"({"featureLevel": 3, "name": "new.bin"})")
                             .entry(entryOf("one.bin"))
                             .entry(entryOf("two.bin")),
                         planOf({1})),
                ElementsAre("two.bin: not found"));
}

TEST_F(Preflight, AnElementWithoutEntryHasNoFile) {
    KvTPlan plan = planOf({0});
    plan.elements[0].entry.reset();
    EXPECT_THAT(faultsOf(ArchiveBuilder().entry(entryOf("one.bin")), plan), IsEmpty());
}

} // namespace
