#include "UpdateTest.h"

#include <gmock/gmock.h>

#include <cstdint>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Kind = SessionLog::Kind;

namespace {

class FileTransferTest : public UpdateTest {
protected:
    /// The first line of the transfer of an entry with this file name, as it is shown.
    std::string transferLineOf(const std::string& name) {
        node.element(completeElement(1));
        archive.add(entry(name).board("NODE", 1));
        EXPECT_TRUE(update());
        const std::wstring heading = L"\n\nTransferring files:\n";
        EXPECT_EQ(log.messages()[0], heading);
        return SessionLog::narrow(log.messages()[1] + log.messages()[2]);
    }
};

const std::string heading = "\n\nTransferring files:\n";

} // namespace

TEST_F(FileTransferTest, APhaseWithFileSystemElementsOnlyPrintsNoHeading) {
    node.element(completeElement(1).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    addFile("a.cfg", "a.cfg");
    EXPECT_TRUE(update());
    EXPECT_THAT(log.text(), Not(HasSubstr("Transferring files")));
    EXPECT_THAT(log.callsOf("transferFile"), IsEmpty());
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), IsEmpty());
}

TEST_F(FileTransferTest, TheHeadingComesOncePerPhase) {
    addNodeElement(1, completeElement(1).polls(1), 1);
    addNodeElement(2, completeElement(2).polls(1), 1);
    addNodeElement(3, completeElement(3).polls(1), 2);
    EXPECT_TRUE(update());
    EXPECT_THAT(log.text(), StartsWith(heading + transferLine("node1.bin") + transferLine("node2.bin") + "\nUpdating"));
    EXPECT_THAT(log.text(), HasSubstr("[OK]\n" + heading + transferLine("node3.bin") + "\nUpdating"));
}

TEST_F(FileTransferTest, TwoElementsOfOneEntryShareOneTransfer) {
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1))};
    archive.add(entry("a.bin").board("IO1", 1));
    EXPECT_TRUE(update());
    EXPECT_THAT(states(), ElementsAre(5, 5));
    EXPECT_THAT(log.callsOf("transferFile"), ElementsAre(R"(transferFile HCN[1] ARCHIVE\a.bin)"));
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 IOMODULE[1] 1", "update2 IOMODULE[2] 1"));
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), ElementsAre("deleteRemoteFile HCN[1]"));
    EXPECT_THAT(log.text(), StartsWith(heading + transferLine("a.bin") + "\nUpdating:\n"));
}

TEST_F(FileTransferTest, OneEntryInTwoPhasesIsTransferredAndDeletedInEach) {
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1).polls(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1).polls(1))};
    archive.add(entry("a.bin").board("IO1", 1));
    addBoard(2, completeElement(1).polls(1), 2);
    prepare();
    planOf(1).phase = 1;
    EXPECT_TRUE(run());
    EXPECT_THAT(log.events({Kind::call}),
                ElementsAre("lock HCN[1] 65539", R"(transferFile HCN[1] ARCHIVE\a.bin)", "update2 IOMODULE[1] 1",
                            "updateStatus2 IOMODULE[1] 1", "updateErrors2 IOMODULE[1] 1", "deleteRemoteFile HCN[1]",
                            R"(transferFile HCN[1] ARCHIVE\a.bin)", R"(transferFile HCN[1] ARCHIVE\io2.bin)",
                            "update2 IOMODULE[2] 1", "update2 IOMODULE[3] 1", "updateStatus2 IOMODULE[2] 1",
                            "updateStatus2 IOMODULE[3] 1", "updateErrors2 IOMODULE[2] 1", "updateErrors2 IOMODULE[3] 1",
                            "deleteRemoteFile HCN[1]", "deleteRemoteFile HCN[1]", "updateFinish HCN[1]/CN[1]",
                            "updateFinish HCN[1]", "unlock"));
}

TEST_F(FileTransferTest, FilesAreDeletedInTheOrderOfTheArchive) {
    node.element(completeElement(1)).element(completeElement(2)); // the files are transferred in the other order
    archive.add(entry("second.bin").board("NODE", 2)).add(entry("first.bin").board("NODE", 1));
    addFault(fault("deleteRemoteFile"));
    prepare();
    std::vector<std::string> remaining;
    log.setObserver([&](const std::string& event) {
        if (event == "phase 4294967295") {
            remaining = remoteFiles();
        }
    });
    EXPECT_TRUE(run());
    EXPECT_THAT(log.callsOf("transferFile"),
                ElementsAre(R"(transferFile HCN[1] ARCHIVE\first.bin)", R"(transferFile HCN[1] ARCHIVE\second.bin)"));
    EXPECT_THAT(remaining, ElementsAre("second.bin"));
}

TEST_F(FileTransferTest, AFailedDeletionStaysInTheErrorsAndTheOthersFollow) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    addFault(fault("deleteRemoteFile"));
    EXPECT_TRUE(update());
    EXPECT_THAT(log.callsOf("deleteRemoteFile"),
                ElementsAre("deleteRemoteFile HCN[1] -> status 1, errors 1", "deleteRemoteFile HCN[1]"));
    EXPECT_THAT(textsOf(errors()), ElementsAre("Fault at deleteRemoteFile."));
    EXPECT_THAT(log.text(), EndsWith("\nResults:\n\n    Update completed successfully!\n"));
}

TEST_F(FileTransferTest, OnlyFilesThatWereTransferredAreDeleted) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    addNodeElement(3, completeElement(3).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    addFault(fault("transferFile").occurrence(2));
    EXPECT_FALSE(update());
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), ElementsAre("deleteRemoteFile HCN[1]"));
}

// Failed transfers.

TEST_F(FileTransferTest, AFailedTransferFailsItsElementOnly) {
    addNodeElement(1, completeElement(1, "One"));
    addNodeElement(2, completeElement(2, "Two"));
    addFault(fault("transferFile"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 5));
    EXPECT_THAT(log.text(), StartsWith(heading + transferLine("node1.bin", "[ERROR]") + transferLine("node2.bin") +
                                       "\nUpdating:\n        NODE, Two"));
    EXPECT_THAT(textsOf(*element(0).errorLists[callErrors]), ElementsAre("Fault at transferFile."));
    EXPECT_THAT(textsOf(*element(0).errorLists[targetErrors]), IsEmpty());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 2"));
}

TEST_F(FileTransferTest, AFailedTransferIsTriedAgainForTheNextElementOfTheEntry) {
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1))};
    archive.add(entry("a.bin").board("IO1", 1));
    addFault(fault("transferFile"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 5, 5));
    EXPECT_THAT(log.text(),
                StartsWith(heading + transferLine("a.bin", "[ERROR]") + transferLine("a.bin") + "\nUpdating:\n"));
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 IOMODULE[2] 1", "update2 IOMODULE[3] 1"));
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), ElementsAre("deleteRemoteFile HCN[1]"));
}

TEST_F(FileTransferTest, AFailedTransferIsToldToTheCallbackAfterItsVerdict) {
    addNodeElement(1, completeElement(1));
    addFault(fault("transferFile"));
    EXPECT_FALSE(update());
    EXPECT_THAT(log.events(),
                ElementsAre("lock HCN[1] 65539", "phase 0", said("\n\nTransferring files:\n"),
                            said("        node1.bin                                       "),
                            R"(transferFile HCN[1] ARCHIVE\node1.bin -> status 1, errors 1)", said("[ERROR]\n"),
                            "elementError 0", testing::_, testing::_, "sleep 200000", testing::_, said("[ERROR]\n"),
                            "phase 4294967295", "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]", "unlock",
                            said("\nResults:\n"), said("    ERROR: NODE, Firmware:\n"),
                            said("       ERROR 0x2fff (reported by Host PC)"), said(":\n"),
                            said("         Fault at transferFile.\n"), said("\n    Update failed!\n")));
}

TEST_F(FileTransferTest, ATransferWithAnErrorHasFailedWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("transferFile").status(0));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), IsEmpty());
}

TEST_F(FileTransferTest, ATransferWithoutAnErrorHasSucceededWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("transferFile").status(7).noErrors());
    EXPECT_FALSE(update());
    EXPECT_THAT(log.text(), StartsWith(heading + transferLine("node1.bin")));
    // The target knows no such file, of course.
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1 -> status 1, errors 1"));
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), ElementsAre("deleteRemoteFile HCN[1] -> status 1, errors 1"));
    expectedBadReleases = 1;
}

// The line of a file.

TEST_F(FileTransferTest, ANameOf46CharactersFillsItsColumns) {
    const std::string name(46, 'a');
    EXPECT_EQ(transferLineOf(name), "        " + name + R"(  [OK]\n)");
}

TEST_F(FileTransferTest, AShorterNameIsFilledUpTo46Columns) {
    EXPECT_EQ(transferLineOf(std::string(45, 'a')), "        " + std::string(45, 'a') + R"(   [OK]\n)");
}

TEST_F(FileTransferTest, ALongerNamePushesTheResultToTheRight) {
    const std::string name(60, 'a');
    EXPECT_EQ(transferLineOf(name), "        " + name + R"(  [OK]\n)");
}

TEST_F(FileTransferTest, TheColumnsOfANameCountWideCharactersNotBytes) {
    EXPECT_EQ(transferLineOf("\xC3\xBC.bin"), "        <U+00FC>.bin" + std::string(46 - 5 + 2, ' ') + R"([OK]\n)");
}
