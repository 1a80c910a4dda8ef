#include "Clock.h"
#include "InventoryManagerStandIn.h"
#include "UpdateTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <vector>

using testing::Each;
using testing::ElementsAre;

namespace {

using Call = InventoryManagerStandIn::Call;

/// Updates a target through a stand-in of the inventory manager, which sees what no target can tell of its calls.
class UpdateCallsTest : public UpdateTest {
protected:
    void SetUp() override {
        UpdateTest::SetUp();
        manager().forget();
        zone_.emplace("TZ", "KVE-5:30");
        tzset();
    }
    void TearDown() override {
        zone_.reset();
        tzset();
        UpdateTest::TearDown();
    }

    static InventoryManagerStandIn& manager() { return InventoryManagerStandIn::instance(); }
    /// The error lists that the calls of one operation were given.
    static std::vector<const KvCErrorListPool*> listsOf(const std::string& operation) {
        std::vector<const KvCErrorListPool*> lists;
        for (const Call& call : manager().callsOf(operation)) {
            lists.push_back(call.errors);
        }
        return lists;
    }
    /// How many error lists existed at the first call of an operation.
    static std::uint32_t heldListsAt(const std::string& operation) {
        const std::vector<Call> calls = manager().callsOf(operation);
        return calls.empty() ? 0 : calls.front().errorLists;
    }

private:
    std::optional<EnvironmentVariable> zone_;
};

} // namespace

TEST_F(UpdateCallsTest, AnUpdateMakesTheseCallsWithTheseArguments) {
    addBoard(1, completeElement(1));
    EXPECT_TRUE(update());
    EXPECT_THAT(manager().texts(),
                ElementsAre("lock root HCN[1] " + std::to_string(0x10003),
                            "transferFile root HCN[1] lock io1.bin null null", "update2 root IOMODULE[1] lock 1 file1",
                            "updateStatus2 root IOMODULE[1] 1", "updateErrors2 root IOMODULE[1] lock 1",
                            "deleteRemoteFile root HCN[1] lock file1", "updateFinish root HCN[1]/CN[1] lock",
                            "updateFinish root HCN[1] lock", "unlock lock"));
}

TEST_F(UpdateCallsTest, AWatchedFileThatChangesDuringItsTransferIsNoticed) {
    addBoard(1, completeElement(1));
    addBoard(2, completeElement(1));
    prepare();
    fileWatch().watch(element(0).archiveFileIndex);
    fileWatch().watch(element(1).archiveFileIndex);
    manager().setVisitor([this](const std::string& operation) {
        if (operation == "transferFile") {
            archive.folder().write("io1.bin", "other");
        }
    });
    EXPECT_TRUE(run());
    EXPECT_TRUE(element(0).fileChanged);
    EXPECT_FALSE(element(1).fileChanged);
}

TEST_F(UpdateCallsTest, TheTimeStampOfAnUpdateIsTheLocalTime) {
    addNodeElement(1, completeElement(1), 1);
    addNodeElement(2, completeElement(2), 2);
    const std::uint64_t before = localTimeSeconds();
    EXPECT_TRUE(update());
    const std::uint64_t after = localTimeSeconds();
    EXPECT_EQ(manager().timeStamps().size(), 2U);
    EXPECT_THAT(manager().timeStamps(), Each(testing::AllOf(testing::Ge(before), testing::Le(after))));
}

TEST_F(UpdateCallsTest, EveryFileIsNamedAsItsOwnTransferToldIt) {
    node.element(completeElement(1)).element(completeElement(2)); // the files are transferred in the other order
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1))};
    archive.add(entry("second.bin").board("NODE", 2)).add(entry("first.bin").board("NODE", 1));
    archive.add(entry("third.bin").board("IO1", 1));
    EXPECT_TRUE(update());
    EXPECT_THAT(manager().textsOf("transferFile"), ElementsAre("transferFile root HCN[1] lock first.bin null null",
                                                               "transferFile root HCN[1] lock second.bin null null",
                                                               "transferFile root HCN[1] lock third.bin null null"));
    EXPECT_THAT(manager().textsOf("update2"),
                ElementsAre("update2 root HCN[1] lock 1 file1", "update2 root HCN[1] lock 2 file2",
                            "update2 root IOMODULE[1] lock 1 file3"));
    EXPECT_THAT(manager().textsOf("deleteRemoteFile"),
                ElementsAre("deleteRemoteFile root HCN[1] lock file2", "deleteRemoteFile root HCN[1] lock file1",
                            "deleteRemoteFile root HCN[1] lock file3"));
}

TEST_F(UpdateCallsTest, ElementsOfOneEntryShareItsFileWithinAPhaseOnly) {
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1))};
    archive.add(entry("a.bin").board("IO1", 1));
    addBoard(2, completeElement(1), 2);
    prepare();
    planOf(2).phase = 1;
    EXPECT_TRUE(run());
    EXPECT_THAT(manager().textsOf("update2"),
                ElementsAre("update2 root IOMODULE[1] lock 1 file1", "update2 root IOMODULE[2] lock 1 file1",
                            "update2 root IOMODULE[3] lock 1 file2", "update2 root IOMODULE[4] lock 1 file3"));
    EXPECT_THAT(manager().textsOf("deleteRemoteFile"),
                ElementsAre("deleteRemoteFile root HCN[1] lock file1", "deleteRemoteFile root HCN[1] lock file2",
                            "deleteRemoteFile root HCN[1] lock file3"));
}

TEST_F(UpdateCallsTest, WhatBelongsToAnElementIsCollectedInItsFirstList) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    EXPECT_TRUE(update());
    const std::vector<const KvCErrorListPool*> own{element(0).errorLists[callErrors].get(),
                                                   element(1).errorLists[callErrors].get()};
    for (const char* operation : {"transferFile", "update2", "updateStatus2", "updateErrors2"}) {
        EXPECT_EQ(listsOf(operation), own) << operation;
    }
}

TEST_F(UpdateCallsTest, WhatTheTargetReportsOfAnElementIsCollectedInItsSecondList) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    EXPECT_TRUE(update());
    const std::vector<Call> calls = manager().callsOf("updateErrors2");
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].targetErrors, element(0).errorLists[targetErrors].get());
    EXPECT_EQ(calls[1].targetErrors, element(1).errorLists[targetErrors].get());
}

TEST_F(UpdateCallsTest, WhatBelongsToTheTargetIsCollectedInTheListOfTheSession) {
    addNodeElement(1, completeElement(1));
    EXPECT_TRUE(update());
    for (const char* operation : {"lock", "deleteRemoteFile", "unlock"}) {
        EXPECT_THAT(listsOf(operation), ElementsAre(&errors())) << operation;
    }
}

TEST_F(UpdateCallsTest, TheEndOfTheUpdateHasAListOfItsOwnThatIsGoneBeforeTheUnlock) {
    addNodeElement(1, completeElement(1));
    EXPECT_TRUE(update());
    const std::vector<const KvCErrorListPool*> lists = listsOf("updateFinish");
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_EQ(lists[0], lists[1]);
    EXPECT_NE(lists[0], &errors());
    EXPECT_EQ(heldListsAt("updateFinish"), heldListsAt("lock") + 1);
    EXPECT_EQ(heldListsAt("unlock"), heldListsAt("lock"));
}
