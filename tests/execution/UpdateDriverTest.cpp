#include "UpdateTest.h"

#include "KvNInventoryIDs.h"
#include "MessageBytes.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <ostream>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = SessionLog::Kind;

namespace {

class UpdateDriverTest : public UpdateTest {
protected:
    std::vector<std::string> calls() { return log.events({Kind::call}); }
    std::vector<std::string> callsAndNotifications() { return log.events({Kind::call, Kind::notification}); }
};

const std::string succeeded = "\nResults:\n\n    Update completed successfully!\n";

} // namespace

TEST_F(UpdateDriverTest, EveryCallNotificationMessageAndPauseComesInItsOrder) {
    addNodeElement(1, completeElement(1, "One").polls(2), 10);
    addBoard(1, completeElement(1, "Two").polls(1), 20);
    addFile("c.cfg", "cfg/c.cfg", 20);
    prepare();
    options.noProgress = true; // the spinner's place depends on what ran before
    EXPECT_TRUE(run());
    close();
    EXPECT_THAT(
        log.events(),
        ElementsAre(
            "lock HCN[1] 65539", "phase 0", said("\n\nTransferring files:\n"),
            said("        node1.bin                                       "),
            R"(transferFile HCN[1] ARCHIVE\node1.bin)", said("[OK]\n"), said("\nUpdating:\n"),
            said("        NODE, One"), said("                                       "), "update2 HCN[1] 1", said("\n"),
            "sleep 500000", "updateStatus2 HCN[1] 1", "progress 50", "sleep 200000", "updateStatus2 HCN[1] 1",
            "progress 100", "sleep 200000", "progress 100", "sleep 200000", "updateErrors2 HCN[1] 1", said("[OK]\n"),
            // The second phase.
            "deleteRemoteFile HCN[1]", "phase 1", said("\n\nTransferring files:\n"),
            said("        io1.bin                                         "), R"(transferFile HCN[1] ARCHIVE\io1.bin)",
            said("[OK]\n"), said("\nUpdating:\n"), said("        IO1, Two"),
            said("                                        "), "update2 IOMODULE[1] 1", said("\n"), "sleep 500000",
            said("        NODE, Updatable file (c.cfg)"), said("                    "), "KvHIM_createFilter",
            "KvHIM_setFilterParameter 8", "KvHIM_setFilterParameter 9", "KvHIM_setFilterParameter 6",
            "KvHIM_applyFilter", "KvHIM_getDeviceList -> status 21, errors 1", "KvHIM_getDeviceList",
            "KvHIM_deleteFilter", "KvHIM_createDeviceHandle", "KvHIM_createFTClientHandle",
            "KvHIM_makeDir /mnt/cn/cfdrive cfg", "KvHIM_putFileU /mnt/cn/cfdrive/cfg c.cfg.tmp",
            "KvHIM_renameFile /mnt/cn/cfdrive/cfg c.cfg", "KvHIM_deleteFTClientHandle", said("\n"),
            "updateStatus2 IOMODULE[1] 1", "progress 100", "sleep 200000", "progress 100", "sleep 200000",
            "updateErrors2 IOMODULE[1] 1", said("[OK]\n"), "deleteRemoteFile HCN[1]",
            // The end.
            "phase 4294967295", "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]", "unlock", said("\nResults:\n"),
            said("\n    Update completed successfully!\n"),
            // The direct writer's device handle goes before the inventory's root handle.
            "KvHIM_deleteDeviceHandle", "deleteRootHandle"));
}

TEST_F(UpdateDriverTest, APlanWithoutPhasesLocksFinishesUnlocksAndPrintsTheResults) {
    EXPECT_TRUE(update());
    EXPECT_THAT(log.events(),
                ElementsAre("lock HCN[1] 65539", "phase 4294967295", "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]",
                            "unlock", said("\nResults:\n"), said("\n    Update completed successfully!\n")));
}

TEST_F(UpdateDriverTest, WithoutAnHcnTheCnIsLockedFinishedAndGivenTheFiles) {
    hasNode = false;
    addBoard(1, completeElement(1).polls(1));
    EXPECT_TRUE(update());
    EXPECT_THAT(calls(),
                ElementsAre("lock CN[1] 65539", R"(transferFile CN[1] ARCHIVE\io1.bin)", "update2 IOMODULE[1] 1",
                            "updateStatus2 IOMODULE[1] 1", "updateErrors2 IOMODULE[1] 1", "deleteRemoteFile CN[1]",
                            "updateFinish CN[1]", "unlock"));
}

TEST_F(UpdateDriverTest, WithoutACnOnlyTheHcnIsFinished) {
    hasCn = false;
    EXPECT_TRUE(update());
    EXPECT_THAT(calls(), ElementsAre("lock HCN[1] 65539", "updateFinish HCN[1]", "unlock"));
}

TEST_F(UpdateDriverTest, WithNeitherHcnNorCnTheRunEndsAtOnceWithoutAWord) {
    hasNode = false;
    hasCn = false;
    addBoard(1, completeElement(1));
    EXPECT_FALSE(update());
    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(UpdateDriverTest, WithNeitherHcnNorCnTheVerboseRunSaysSo) {
    hasNode = false;
    hasCn = false;
    prepare();
    options.verbose = true;
    EXPECT_FALSE(run());
    EXPECT_THAT(log.events(), ElementsAre(said("ERROR: Cannot lock target system! No HCN or CN found!\n")));
}

TEST_F(UpdateDriverTest, AFailedLockEndsTheRunBeforeAnythingElse) {
    addNodeElement(1, completeElement(1));
    node.element(completeElement(2, "Unsupported"));
    addFault(fault("lock"));
    EXPECT_FALSE(update());
    EXPECT_THAT(log.events(), ElementsAre("lock HCN[1] 65539 -> status 1, errors 1"));
    EXPECT_THAT(textsOf(errors()), ElementsAre("Fault at lock."));
}

TEST_F(UpdateDriverTest, AFailedLockIsToldWithItsAddressWhenVerbose) {
    addFault(fault("lock"));
    prepare();
    options.verbose = true;
    EXPECT_FALSE(run());
    EXPECT_THAT(log.events({Kind::message}), ElementsAre(said("ERROR: Cannot lock target system (HCN[1])!\n")));
}

TEST_F(UpdateDriverTest, AFailedLockOfTheCnIsToldWithItsWholeAddress) {
    hasNode = false;
    hasCn = false;
    boards.push_back(completeBoard("NETC", "NET", 0).add(item("CN")));
    addFault(fault("lock"));
    prepare();
    options.verbose = true;
    EXPECT_FALSE(run());
    EXPECT_THAT(log.events({Kind::message}), ElementsAre(said("ERROR: Cannot lock target system (NETC[1]/CN[1])!\n")));
}

TEST_F(UpdateDriverTest, ALockWithAnErrorHasFailedWhateverItsStatus) {
    addFault(fault("lock").status(0));
    EXPECT_FALSE(update());
    EXPECT_THAT(calls(), ElementsAre("lock HCN[1] 65539 -> status 0, errors 1"));
}

TEST_F(UpdateDriverTest, ALockWithoutAnErrorHasSucceededWhateverItsStatus) {
    addFault(fault("lock").status(7).noErrors());
    EXPECT_TRUE(update());
    EXPECT_THAT(callsAndNotifications(),
                ElementsAre("lock HCN[1] 65539 -> status 7, errors 0", "phase 4294967295",
                            "updateFinish HCN[1]/CN[1] -> status 1, errors 1",
                            "updateFinish HCN[1] -> status 1, errors 1", "unlock -> status 1, errors 1"));
    expectedBadReleases = 1;
}

TEST_F(UpdateDriverTest, TheLockOfAnotherOwnerIsAnErrorThatStays) {
    prepare();
    KvCErrorManager* const manager = KvCErrorManager::getInstance();
    KvCErrorList* const list = manager->createErrorList(0, 1, 20, 5, 300);
    KvCInventoryRootHandle* root = nullptr;
    void* lock = nullptr;
    KvCInventoryManager& inventory = *KvCInventoryManager::getInstance();
    inventory.createRootHandleByIpAddressList(*list, "127.0.0.1", root);
    inventory.lock(*list, root, KvNInventoryIDs::HCN, 0x10003, lock);
    EXPECT_FALSE(run());
    EXPECT_EQ(errors().getErrorCode(0), 0x2002U);
    inventory.unlock(*list, lock);
    inventory.deleteRootHandle(*list, root);
    EXPECT_EQ(list->getErrorCount(), 0U);
    manager->deleteErrorList(list);
}

TEST_F(UpdateDriverTest, TheListsOfElementsLeftAloneComeAfterTheLockAndBeforeTheFirstPhase) {
    node.element(completeElement(1, "Unsupported"));
    node.element(completeElement(2, "Current"));
    archive.add(entry("b.bin").board("NODE", 2).version("1.0").checksum(1));
    EXPECT_TRUE(update());
    EXPECT_THAT(log.events(),
                ElementsAre("lock HCN[1] 65539", said("\nUnsupported update elements (will be ignored):\n"),
                            said("        NODE, Unsupported\n"), said("\n"),
                            said("\nNo update is required for these elements:\n"), said("        NODE, Current\n"),
                            "phase 4294967295", "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]", "unlock",
                            said("\nResults:\n"), said("\n    Update completed successfully!\n")));
    EXPECT_THAT(states(), ElementsAre(0, 0));
}

TEST_F(UpdateDriverTest, EnabledElementsWithAnEntryAreUpdatedAndNoOthers) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    node.element(completeElement(3));
    prepare();
    planOf(1).disabled = true;
    for (std::size_t index = 0; index < 3; ++index) {
        runOf(index).updateState = updateCancelled;
    }
    EXPECT_TRUE(run());
    EXPECT_THAT(states(), ElementsAre(5, 0, 0));
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1"));
}

TEST_F(UpdateDriverTest, AllPhasesAreToldInAscendingOrderEvenWhenNothingIsLeftOfOne) {
    addNodeElement(1, completeElement(1).polls(1), 5);
    addNodeElement(2, completeElement(2).polls(1), 7);
    addNodeElement(3, completeElement(3).polls(1), 0xFFFFFFFF);
    prepare();
    planOf(1).disabled = true;
    EXPECT_TRUE(run());
    EXPECT_THAT(log.notificationsOf("phase"), ElementsAre("phase 0", "phase 1", "phase 2", "phase 4294967295"));
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1", "update2 HCN[1] 3"));
}

TEST_F(UpdateDriverTest, APhaseTakesItsElementsInTheOrderOfTheElementList) {
    addBoard(1, completeElement(1).polls(1));
    addNodeElement(2, completeElement(2).polls(1));
    addNodeElement(1, completeElement(1).polls(1));
    EXPECT_TRUE(update());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 2", "update2 HCN[1] 1", "update2 IOMODULE[1] 1"));
    EXPECT_THAT(log.callsOf("transferFile"),
                ElementsAre(R"(transferFile HCN[1] ARCHIVE\node2.bin)", R"(transferFile HCN[1] ARCHIVE\node1.bin)",
                            R"(transferFile HCN[1] ARCHIVE\io1.bin)"));
}

TEST_F(UpdateDriverTest, AnElementThatFailedEarlierIsNotCollectedByItsPhase) {
    addNodeElement(1, completeElement(1, "One"), 1);
    addBoard(1, completeElement(1, "Two"), 2);
    prepare();
    log.setObserver([this](const std::string& event) {
        if (event == "phase 1") {
            runOf(1).updateState = updateFailed;
        }
    });
    EXPECT_FALSE(run());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1"));
    EXPECT_THAT(log.text(), testing::EndsWith("\nResults:\n    ERROR: IO1, Two:\n\n    Update failed!\n"));
}

// Update files that are missing.

TEST_F(UpdateDriverTest, AMissingUpdateFileLeavesItsElementOutAndMakesTheUpdateIncomplete) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    archive.removeFile("node1.bin");
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(0, 5));
    EXPECT_TRUE(readArchive().files()[0].fileMissing);
    EXPECT_FALSE(readArchive().files()[1].fileMissing);
    EXPECT_THAT(log.notificationsOf("elementError"), IsEmpty());
    EXPECT_THAT(calls(),
                ElementsAre("lock HCN[1] 65539", R"(transferFile HCN[1] ARCHIVE\node2.bin)", "update2 HCN[1] 2",
                            "updateStatus2 HCN[1] 2", "updateErrors2 HCN[1] 2", "deleteRemoteFile HCN[1]",
                            "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]", "unlock"));
    EXPECT_THAT(log.text(), StartsWith("\nNODE, One cannot be updated. Update file node1.bin not found!\n"
                                       "\n\nTransferring files:\n"));
    EXPECT_THAT(log.text(),
                testing::EndsWith("\nResults:\n\n    Update incomplete due to missing files in the source folder!\n"));
}

TEST_F(UpdateDriverTest, AMissingFileSharedByTwoElementsIsToldForEach) {
    addNodeElement(1, completeElement(1, "One"));
    node.element(completeElement(1, "Twin"));
    archive.removeFile("node1.bin");
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(0, 0));
    EXPECT_EQ(log.text(), "\nNODE, One cannot be updated. Update file node1.bin not found!\n"
                          "\nNODE, Twin cannot be updated. Update file node1.bin not found!\n"
                          "\nResults:\n\n    Update incomplete due to missing files in the source folder!\n");
    EXPECT_THAT(log.events({Kind::pause}), IsEmpty());
    EXPECT_THAT(log.notificationsOf("progress"), IsEmpty());
}

TEST_F(UpdateDriverTest, AMissingFileOfTheTargetsFileSystemIsNotWritten) {
    node.element(completeElement(1).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    addFile("a.cfg", "a.cfg");
    archive.removeFile("a.cfg");
    EXPECT_FALSE(update());
    EXPECT_THAT(log.text(),
                testing::HasSubstr("\nNODE, Updatable file cannot be updated. Update file a.cfg not found!\n"));
    EXPECT_THAT(log.callsOf("KvHIM_putFileU"), IsEmpty());
    EXPECT_FALSE(archive.folder().has("a.cfg"));
}

TEST_F(UpdateDriverTest, FilesAreLookedForWhenTheirPhaseBegins) {
    addNodeElement(1, completeElement(1, "One").polls(1), 1);
    addNodeElement(2, completeElement(2, "Two").polls(1), 2);
    prepare();
    log.setObserver([this](const std::string& event) {
        if (event == "phase 1") {
            archive.removeFile("node2.bin");
        }
    });
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(5, 0));
    const std::vector<std::string> events = log.events({Kind::notification, Kind::message});
    const auto phase = std::find(events.begin(), events.end(), "phase 1");
    ASSERT_NE(phase, events.end());
    EXPECT_EQ(*std::next(phase), said("\nNODE, Two cannot be updated. Update file node2.bin not found!\n"));
}

TEST_F(UpdateDriverTest, AMissingFileOfAnEarlyPhaseIsStillRememberedInTheVerdict) {
    addNodeElement(1, completeElement(1).polls(1), 1);
    addNodeElement(2, completeElement(2).polls(1), 2);
    archive.removeFile("node1.bin");
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(0, 5));
    EXPECT_THAT(log.text(), testing::EndsWith("\n    Update incomplete due to missing files in the source folder!\n"));
}

TEST_F(UpdateDriverTest, ANameThatIsNotAsciiIsShownInWideCharactersWhenTheFileIsMissing) {
    node.element(completeElement(1, "\xC3\xA9"));
    archive.addWithoutFile(entry("\xC3\xBC.bin").board("NODE", 1));
    EXPECT_FALSE(update());
    EXPECT_EQ(log.events({Kind::message})[0], said("\nNODE, " + SessionLog::narrow(inMessage("\xC3\xA9")) +
                                                   " cannot be updated. Update file <U+00FC>.bin not found!\n"));
}

TEST_F(UpdateDriverTest, AFolderInPlaceOfAnUpdateFileIsNotMissing) {
    node.element(completeElement(1));
    archive.addWithoutFile(entry("a.bin").board("NODE", 1));
    std::filesystem::create_directory(archive.folder().path() / "a.bin");
    EXPECT_FALSE(update());
    EXPECT_THAT(log.text(), StartsWith("\n\nTransferring files:\n" + transferLine("a.bin", "[ERROR]")));
}

// The end of the run.

TEST_F(UpdateDriverTest, ErrorsOfFinishingAreDroppedInSilence) {
    addFault(fault("updateFinish").occurrence(0));
    prepare();
    options.verbose = true;
    EXPECT_TRUE(run());
    EXPECT_THAT(calls(), ElementsAre("lock HCN[1] 65539", "updateFinish HCN[1]/CN[1] -> status 1, errors 1",
                                     "updateFinish HCN[1] -> status 1, errors 1", "unlock"));
    EXPECT_EQ(log.text(), succeeded);
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

struct UnlockCase {
    const char* name;
    FaultBuilder fault;
    bool verbose;
    const char* printed;
    std::uint32_t errorCount;

    friend void PrintTo(const UnlockCase& row, std::ostream* stream) { *stream << row.name; }
};

class UnlockTest : public UpdateDriverTest, public testing::WithParamInterface<UnlockCase> {};

TEST_P(UnlockTest, IsJudgedByTheErrorCountAndOtherwiseIgnored) {
    addFault(GetParam().fault);
    prepare();
    options.verbose = GetParam().verbose;
    EXPECT_TRUE(run());
    EXPECT_EQ(log.text(), GetParam().printed + succeeded);
    EXPECT_EQ(errors().getErrorCount(), GetParam().errorCount);
}

INSTANTIATE_TEST_SUITE_P(
    Unlock, UnlockTest,
    testing::Values(UnlockCase{"FailsVerbose", fault("unlock"), true, "ERROR: Cannot unlock target system!\n", 1},
                    UnlockCase{"FailsInSilence", fault("unlock"), false, "", 1},
                    UnlockCase{"ErrorWithStatusZero", fault("unlock").status(0), true,
                               "ERROR: Cannot unlock target system!\n", 1},
                    UnlockCase{"StatusWithoutError", fault("unlock").status(7).noErrors(), true, "", 0}),
    [](const auto& row) { return row.param.name; });

TEST_F(UpdateDriverTest, ASecondRunStartsAnew) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    prepare();
    EXPECT_TRUE(run());
    const std::vector<std::string> first = calls();
    log.clear();
    EXPECT_TRUE(run());
    EXPECT_EQ(calls(), first);
    EXPECT_THAT(states(), ElementsAre(5));
}

TEST_F(UpdateDriverTest, WithoutCallbacksTheUpdateIsTheSame) {
    addNodeElement(1, completeElement(1, "One").finalState(3));
    addNodeElement(2, completeElement(2, "Two"), 2);
    withoutNotifications();
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 4));
    EXPECT_THAT(log.events({Kind::notification}), IsEmpty());
}
