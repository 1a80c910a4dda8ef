#include "ArchivePrintouts.h"
#include "ArchiveFixture.h"
#include "BinaryFile.h"

#include <string>
#include <utility>
#include <vector>

namespace {

class ArchivePrintouts : public ArchiveTest {
protected:
    std::string content() {
        return printed([this] { printArchiveContent(writer(), archive()); });
    }
    std::string versionLine(std::string_view archiveVersion) {
        EXPECT_TRUE(readDescription(ArchiveBuilder().info("archiveVersion", joined("\"", archiveVersion, "\""))));
        return printed([this] { printArchiveVersion(writer(), archive()); });
    }
    /// The board type and id cells of the one entry.
    std::pair<std::string, std::string> cellsOf(const ObjectText& entry) {
        EXPECT_TRUE(readDescription(ArchiveBuilder().entry(entry)));
        const std::string table = content();
        const std::string row = table.substr(table.rfind('\n', table.size() - 2) + 1);
        const auto trimmed = [](std::string cell) {
            cell.erase(cell.find_last_not_of(' ') + 1);
            return cell;
        };
        const std::size_t lastBar = row.rfind(" | ");
        return {trimmed(row.substr(0, row.find(" | "))), trimmed(row.substr(lastBar + 3, row.size() - lastBar - 4))};
    }
};

using Cells = std::pair<std::string, std::string>;

// The content table.

TEST_F(ArchivePrintouts, AnArchiveWithoutEntriesHasAHeadingAndARule) {
    ASSERT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_EQ("BoardType | File | Version | Checksum | Id/TargetPath\n"
              "-----------------------------------------------------\n",
              content());
}

TEST_F(ArchivePrintouts, EveryColumnIsAsWideAsItsLongestCell) {
    ASSERT_TRUE(readDescription(
        ArchiveBuilder()
            .info("archiveVersion", R"("23.2")")
            .entry(
                R"({"name": "frame.bin", "sequence": 2, "boardType": "QB4120", "id": 3, "checksumCrc32": 4294967295})")
            .entry(R"({"name": "io", "sequence": 1, "boardType": ["A", "B", "C-long"], "targetPath": "/opt/data/io.cfg",
                       "version": null, "checksumCrc32": 0})")
            .entry(R"({"name": "x", "sequence": 1, "boardType": "Z", "id": 0, "version": "1.2.3.4.5"})")));
    EXPECT_EQ("BoardType  | File      | Version   | Checksum   | Id/TargetPath   \n"
              "------------------------------------------------------------------\n"
              "QB4120     | frame.bin | 23.2      | 4294967295 | 3               \n"
              "A,B,C-long | io        | ---       | 0          | /opt/data/io.cfg\n"
              "Z          | x         | 1.2.3.4.5 | ---        | 0               \n",
              content());
}

TEST_F(ArchivePrintouts, AMissingFileOpensASixthColumn) {
    EXPECT_FALSE(readArchive(ArchiveBuilder()
                                 .entry(goodEntry().set("name", "\"a\""))
                                 .entry(goodEntry().set("name", "\"b\"").remove("checksumCrc32"))
                                 .entry(goodEntry().set("name", "\"c\""))));
    EXPECT_EQ("BoardType | File | Version | Checksum | Id/TargetPath |               \n"
              "----------------------------------------------------------------------\n"
              "QB        | a    | 23.2.1  | 77       | 5             |               \n"
              "QB        | b    | 23.2.1  | ---      | 5             | [FILE MISSING]\n"
              "QB        | c    | 23.2.1  | 77       | 5             |               \n",
              content());
}

TEST_F(ArchivePrintouts, ChecksumsOfUpdateFilesAreShown) {
    writeFile("image", imageFile(21).bytes());
    writeFile("bits", bitstreamFile(80, 5).bytes());
    ASSERT_TRUE(readArchive(ArchiveBuilder()
                                .entry(goodEntry().set("name", "\"image\"").remove("checksumCrc32"))
                                .entry(goodEntry().set("name", "\"bits\"").remove("checksumCrc32"))));
    EXPECT_EQ("BoardType | File  | Version | Checksum | Id/TargetPath\n"
              "------------------------------------------------------\n"
              "QB        | image | 23.2.1  | 21       | 5            \n"
              "QB        | bits  | 23.2.1  | ---      | 5            \n",
              content());
}

TEST_F(ArchivePrintouts, CharactersBeyondAsciiWidenTheirColumnByTheirBytes) {
    ASSERT_TRUE(readDescription(ArchiveBuilder()
                                    .entry(goodEntry().set("name", "\"\xE2\x82\xAC\xE2\x82\xAC\""))
                                    .entry(goodEntry().set("name", "\"123456\""))));
    EXPECT_EQ("BoardType | File   | Version | Checksum | Id/TargetPath\n"
              "-------------------------------------------------------\n"
              "QB        | \xE2\x82\xAC\xE2\x82\xAC | 23.2.1  | 77       | 5            \n"
              "QB        | 123456 | 23.2.1  | 77       | 5            \n",
              content());
}

TEST_F(ArchivePrintouts, PercentSignsAreShownAsTheyAre) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().set("name", "\"%s%n%hs\""))));
    EXPECT_NE(std::string::npos, content().find("QB        | %s%n%hs | 23.2.1 "));
}

TEST_F(ArchivePrintouts, BoardsAreListedWithTheirIds) {
    EXPECT_EQ(
        Cells("QB4120,QB4140,QB7001", "QB4120,QB4140: 3, QB7001: 4"),
        cellsOf(entryWithBoards(R"({"boardType": ["QB4120", "QB4140"], "id": 3}, {"boardType": "QB7001", "id": 4})")));
}

TEST_F(ArchivePrintouts, BoardsWithoutIdsLeaveTheIdOfTheEntryAlone) {
    EXPECT_EQ(Cells("A,B", "9"), cellsOf(entryWithBoards(R"({"boardType": "A"}, {"boardType": "B"})").set("id", "9")));
    EXPECT_EQ(Cells("A", "/f"), cellsOf(entryWithBoards(R"({"boardType": "A"})").set("targetPath", "\"/f\"")));
}

TEST_F(ArchivePrintouts, TheIdOfTheEntryIsForTheOthers) {
    EXPECT_EQ(Cells("A,B,C", "A: 1, C: 3, others: 9"),
              cellsOf(entryWithBoards(R"({"boardType": "A", "id": 1}, {"boardType": "B"}, {"boardType": "C", "id": 3})")
                          .set("id", "9")));
    EXPECT_EQ(Cells("A,B", "A: /a, others: /f"),
              cellsOf(entryWithBoards(R"({"boardType": "A", "targetPath": "/a"}, {"boardType": "B"})")
                          .set("targetPath", "\"/f\"")));
}

TEST_F(ArchivePrintouts, TargetPathsOfBoardsAreListed) {
    EXPECT_EQ(
        Cells("A,B", "A: /a, B: /b"),
        cellsOf(entryWithBoards(R"({"boardType": "A", "targetPath": "/a"}, {"boardType": "B", "targetPath": "/b"})")));
}

TEST_F(ArchivePrintouts, BoardTypesOfAnEntryAreJoined) {
    EXPECT_EQ(Cells("A", "5"), cellsOf(goodEntry().set("boardType", R"(["A"])")));
    EXPECT_EQ(Cells("A,B,A", "5"), cellsOf(goodEntry().set("boardType", R"(["A", "B", "A"])")));
    EXPECT_EQ(Cells("", "5"), cellsOf(goodEntry().set("boardType", "[]")));
    EXPECT_EQ(Cells(",", "5"), cellsOf(goodEntry().set("boardType", R"(["", ""])")));
    EXPECT_EQ(Cells("", "5"), cellsOf(goodEntry().set("boardType", R"("")")));
}

TEST_F(ArchivePrintouts, ABoardWithoutTypesStillTakesItsPlaceAfterTheFirst) {
    EXPECT_EQ(Cells("A,,B", "A: 1, : 2, B: 3"),
              cellsOf(entryWithBoards(
                  R"({"boardType": "A", "id": 1}, {"boardType": [], "id": 2}, {"boardType": "B", "id": 3})")));
    EXPECT_EQ(Cells("B", ": 1, B: 2"),
              cellsOf(entryWithBoards(R"({"boardType": "", "id": 1}, {"boardType": "B", "id": 2})")));
}

TEST_F(ArchivePrintouts, AnEmptyTargetPathIsAddedAsItIs) {
    EXPECT_EQ(Cells("QB", ""), cellsOf(goodEntry().remove("id").set("targetPath", "\"\"")));
    // What ends in a blank shows in a column that is as wide as the cell.
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(
        entryWithBoards(R"({"boardType": "A", "targetPath": "/a"}, {"boardType": "B"})").set("targetPath", "\"\""))));
    EXPECT_EQ("BoardType | File  | Version | Checksum | Id/TargetPath  \n"
              "--------------------------------------------------------\n"
              "A,B       | a.bin | 23.2.1  | 77       | A: /a, others: \n",
              content());
    ASSERT_TRUE(readDescription(
        ArchiveBuilder().entry(entryWithBoards(R"({"boardType": "A-longer-board", "targetPath": ""})"))));
    EXPECT_EQ("BoardType      | File  | Version | Checksum | Id/TargetPath   \n"
              "--------------------------------------------------------------\n"
              "A-longer-board | a.bin | 23.2.1  | 77       | A-longer-board: \n",
              content());
}

TEST_F(ArchivePrintouts, IdsAreShownWith32Bits) {
    EXPECT_EQ("4294967295", cellsOf(goodEntry().set("id", "4294967295")).second);
    EXPECT_EQ("7", cellsOf(goodEntry().set("id", "4294967303")).second);
}

TEST_F(ArchivePrintouts, RowsKeepTheOrderOfTheDescription) {
    ArchiveBuilder builder;
    std::vector<std::string> names;
    for (int number = 0; number < 2000; ++number) {
        names.push_back("file" + std::to_string(number * 7919 % 2000));
        builder.entry(goodEntry().set("name", joined("\"", names.back(), "\"")));
    }
    ASSERT_TRUE(readDescription(builder));
    const std::string table = content();
    std::size_t place = 0;
    for (const std::string& name : names) {
        place = table.find(joined("| ", name, " "), place);
        ASSERT_NE(std::string::npos, place) << name;
    }
}

// The version line.

TEST_F(ArchivePrintouts, AMaintenanceComponentIsShownAsItIs) {
    EXPECT_EQ("3.5.2\n", versionLine("3.5.2"));
    EXPECT_EQ("3.5.255\n", versionLine("3.5.255"));
    EXPECT_EQ("3.5.9\n", versionLine("3.5.9"));
    EXPECT_EQ("23.2.1b3.1\n", versionLine("23.2.1b3.1"));
    EXPECT_EQ("3.5.2.4\n", versionLine("3.5.2.4"));
    EXPECT_EQ("3.5.2.0.6\n", versionLine("3.5.2.0.6"));
}

TEST_F(ArchivePrintouts, AMaintenanceComponentOf0IsShownInItsPlace) {
    EXPECT_EQ("23.2.0\n", versionLine("23.2"));
    EXPECT_EQ("23.2.0\n", versionLine("23.2.0"));
    EXPECT_EQ("23.0.0\n", versionLine("23"));
    EXPECT_EQ("0.1.0\n", versionLine("0.1"));
    EXPECT_EQ("255.255.0\n", versionLine("255.255"));
    EXPECT_EQ("9.9.0\n", versionLine("9.9"));
}

TEST_F(ArchivePrintouts, AMaintenanceComponentOf0IsShownInTestVersionsToo) {
    EXPECT_EQ("23.2.0a12\n", versionLine("23.2a12"));
    EXPECT_EQ("23.2.0b3\n", versionLine("23.2b3"));
    EXPECT_EQ("23.2.0b3.1\n", versionLine("23.2b3.1"));
    EXPECT_EQ("23.2.0a0\n", versionLine("23.2a0"));
    EXPECT_EQ("23.0.0a9\n", versionLine("23a9"));
}

TEST_F(ArchivePrintouts, AMaintenanceComponentOf0IsShownBeforeAServicePack) {
    EXPECT_EQ("3.5.0.4\n", versionLine("3.5.0.4"));
    EXPECT_EQ("3.5.0.9.9\n", versionLine("3.5.0.9.9"));
    EXPECT_EQ("3.5.0.0.7\n", versionLine("3.5.0.0.7"));
}

TEST_F(ArchivePrintouts, AVersionOfAnUnknownBuildIsShownAsItsNumber) {
    const std::string withoutMaintenance = std::to_string((1ULL << 56U) + (3ULL << 32U));
    EXPECT_EQ("#" + withoutMaintenance + "\n", versionLine("#" + withoutMaintenance));
    const std::string withMaintenance = std::to_string((1ULL << 56U) + (4ULL << 40U) + (3ULL << 32U));
    EXPECT_EQ("#" + withMaintenance + "\n", versionLine("#" + withMaintenance));
}

} // namespace
