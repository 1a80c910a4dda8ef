// The update of elements: the lock, transferred files, and how started updates go.

#include "EmulationTest.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace KvNInventoryIDs;

class UpdateLock : public EmulationTest {
protected:
    void SetUp() override {
        EmulationTest::SetUp();
        target.add(item("HCN").element(updateElement(1)));
        target.serve();
        openRoot();
    }
    TargetBuilder target;
};

TEST_F(UpdateLock, CanBeHeldOnceOnly) {
    lock();
    EXPECT_EQ(KvEmulation::ledger().locks, 1U);
    void* const first = lockHandle;
    void* second = nullptr;
    EXPECT_NE(manager().lock(errors(), root, HCN, 0x10003, second), 0U);
    EXPECT_EQ(second, nullptr);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::targetLocked));
    unlock();
    EXPECT_EQ(KvEmulation::ledger().locks, 0U);
    lock();
    EXPECT_NE(lockHandle, first);
}

TEST_F(UpdateLock, NeedsAnItemOfTheTarget) {
    boardAddress = CN;
    EXPECT_NE(tryLock(), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("The target has no item CN[1]."));
    boardAddress = ROOT;
    lock();
}

TEST_F(UpdateLock, ADeadHandleIsAnError) {
    lock();
    void* const dead = lockHandle;
    unlock();
    EXPECT_NE(manager().unlock(errors(), dead), 0U);
    EXPECT_NE(manager().unlock(errors(), nullptr), 0U);
    EXPECT_NE(manager().updateFinish(errors(), root, HCN, dead), 0U);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(3), Each(EmulationErrorCodes::wrongHandle)));
    EXPECT_EQ(KvEmulation::ledger().badReleases, 2U);
    closeRoot();
    KvEmulation::reset();
}

TEST_F(UpdateLock, IsForItsOwnTargetOnly) {
    TargetBuilder other;
    other.address("10.0.0.1").add(item("HCN")).serve();
    lock();
    KvCInventoryRootHandle* otherRoot = nullptr;
    EXPECT_EQ(manager().createRootHandleByIpAddressList(errors(), "10.0.0.1", otherRoot), 0U);
    EXPECT_NE(manager().updateFinish(errors(), otherRoot, HCN, lockHandle), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle));
    EXPECT_EQ(manager().deleteRootHandle(errors(), otherRoot), 0U);
}

TEST_F(UpdateLock, OutlivesTheRootHandleItWasTakenWith) {
    lock();
    closeRoot();
    EXPECT_EQ(KvEmulation::ledger().locks, 1U);
    openRoot();
    EXPECT_EQ(manager().updateFinish(errors(), root, HCN, lockHandle), 0U);
}

TEST_F(UpdateLock, EndsWithAReset) {
    lock();
    lockHandle = nullptr;
    root = nullptr;
    KvEmulation::reset();
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    static_cast<void>(target.serveAgain());
    openRoot();
    lock();
}

TEST_F(UpdateLock, UpdateFinishNeedsAnItemOfTheTarget) {
    lock();
    EXPECT_NE(manager().updateFinish(errors(), root, CN, lockHandle), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound));
    EXPECT_EQ(manager().updateFinish(errors(), root, HCN, lockHandle), 0U);
}

class TransferredFile : public UpdateLock {
protected:
    [[nodiscard]] std::size_t filesOnTarget() const {
        std::size_t count = 0;
        for (const std::string& name : target.folder().list()) {
            count += name.rfind("state/transferred/", 0) == 0 ? 1 : 0;
        }
        return count;
    }
    std::uint32_t remove(const RemoteFile& file) {
        return manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file);
    }
};

TEST_F(TransferredFile, LastsUntilItIsDeleted) {
    lock();
    const RemoteFile first = transfer("one");
    const RemoteFile second = transfer("two");
    EXPECT_FALSE(first.path == second.path);
    EXPECT_EQ(first.node, "HCN[1]");
    EXPECT_EQ(filesOnTarget(), 2U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 2U);
    EXPECT_EQ(remove(first), 0U);
    EXPECT_EQ(filesOnTarget(), 1U);
    EXPECT_EQ(remove(second), 0U);
    EXPECT_EQ(filesOnTarget(), 0U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
}

TEST_F(TransferredFile, EndsWithTheLock) {
    lock();
    const RemoteFile file = transfer("one");
    unlock();
    EXPECT_EQ(filesOnTarget(), 0U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
    lock();
    EXPECT_NE(tryUpdate(1, file), 0U) << "a later lock does not bring it back";
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle));
}

TEST_F(TransferredFile, ASecondDeletionIsAnErrorAndCounted) {
    lock();
    const RemoteFile file = transfer("one");
    EXPECT_EQ(remove(file), 0U);
    EXPECT_NE(remove(file), 0U);
    EXPECT_NE(remove(RemoteFile()), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle, EmulationErrorCodes::wrongHandle));
    EXPECT_EQ(KvEmulation::ledger().badReleases, 2U);
    unlock();
    closeRoot();
    KvEmulation::reset();
}

TEST_F(TransferredFile, NeedsTheLockAndAnItem) {
    const std::string path = files.write("a", "b");
    RemoteFile file;
    EXPECT_NE(manager().transferFile(errors(), root, HCN, nullptr, wide(path).c_str(), nullptr, nullptr, file), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle));
    lock();
    EXPECT_NE(manager().transferFile(errors(), root, CN, lockHandle, wide(path).c_str(), nullptr, nullptr, file), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound));
    EXPECT_TRUE(file.path.isEmpty());
}

TEST_F(TransferredFile, ALocalFileThatCannotBeReadIsAnError) {
    lock();
    RemoteFile file;
    for (const std::string& path : {files.text() + "/none", files.text(), std::string()}) {
        EXPECT_NE(manager().transferFile(errors(), root, HCN, lockHandle, wide(path).c_str(), nullptr, nullptr, file),
                  0U)
            << path;
    }
    EXPECT_NE(manager().transferFile(errors(), root, HCN, lockHandle, nullptr, nullptr, nullptr, file), 0U);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(4), Each(EmulationErrorCodes::fileAccess)));
    EXPECT_EQ(filesOnTarget(), 0U);
}

TEST_F(TransferredFile, ALocalPathMayBeWrittenWithBackslashesAndAnyCharacter) {
    lock();
    files.write("Gr\xC3\xB6\xC3\x9F\x65 \xF0\x9F\x9A\x80/a.bin", "content");
    RemoteFile file;
    const std::wstring path = wide(files.text()) + L"\\Gr\u00F6\u00DFe \U0001F680\\a.bin";
    EXPECT_EQ(manager().transferFile(errors(), root, HCN, lockHandle, path.c_str(), nullptr, nullptr, file), 0U);
}

TEST_F(TransferredFile, TellsItsProgress) {
    lock();
    const std::string content(200000, 'x');
    const std::string path = files.write("a", content);
    struct Seen {
        std::uint64_t done = 0;
        std::uint64_t total = 0;
        int calls = 0;
    } seen;
    const auto progress = [](std::uint64_t done, std::uint64_t total, void* context) {
        auto& told = *static_cast<Seen*>(context);
        EXPECT_GT(done, told.done);
        told = {done, total, told.calls + 1};
    };
    RemoteFile file;
    EXPECT_EQ(manager().transferFile(errors(), root, HCN, lockHandle, wide(path).c_str(), progress, &seen, file), 0U);
    EXPECT_EQ(seen.done, content.size());
    EXPECT_EQ(seen.total, content.size());
    EXPECT_GT(seen.calls, 1);
}

class Update : public EmulationTest {
protected:
    void begin(const ItemBuilder& element) {
        target.add(item("HCN").element(element));
        target.serve();
        openRoot();
        lock();
        file = transfer("content");
    }
    std::uint32_t readErrors(std::uint32_t elementId, std::vector<std::uint32_t>& codes) {
        KvCErrorList* const list = KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300);
        const std::uint32_t status = manager().updateErrors2(errors(), root, HCN, lockHandle, elementId, *list);
        for (std::uint32_t index = 0; index < list->getNumberOfUsedEntries(); ++index) {
            codes.push_back(list->getErrorCode(index));
        }
        KvCErrorManager::getInstance()->deleteErrorList(list);
        return status;
    }
    TargetBuilder target;
    RemoteFile file;
};

TEST_F(Update, TakesThreeQueriesUnlessTheDescriptionSaysOtherwise) {
    begin(updateElement(1));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{1, 1, 3}));
    EXPECT_EQ(query(1), (Status{1, 2, 3}));
    EXPECT_EQ(query(1), (Status{2, 3, 3}));
}

TEST_F(Update, CanBeOverAtTheFirstQuery) {
    begin(updateElement(1).polls(1).finalState(9));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{9, 1, 1}));
}

TEST_F(Update, AnswersItsListOfProgressesBeforeTheFinalState) {
    begin(updateElement(1).polls(9).progress({{0, 0}, {10, 7}}).finalState(0));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{1, 0, 0}));
    EXPECT_EQ(query(1), (Status{1, 10, 7}));
    EXPECT_EQ(query(1), (Status{0, 3, 3}));
}

TEST_F(Update, AnEmptyListOfProgressesMeansOneQuery) {
    begin(updateElement(1).progress({}));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
}

TEST_F(Update, WithTheFinalStateOneNeverEnds) {
    begin(updateElement(1).polls(2).finalState(1));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{1, 1, 2}));
    for (int count = 0; count < 50; ++count) {
        EXPECT_EQ(query(1), (Status{1, 2, 2}));
    }
    EXPECT_NE(tryUpdate(1, file), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
}

TEST_F(Update, AFinishedOneKeepsItsAnswerUntilTheNext) {
    begin(updateElement(1).polls(2));
    startUpdate(1, file);
    query(1);
    EXPECT_EQ(query(1), (Status{2, 2, 2}));
    EXPECT_EQ(query(1), (Status{2, 2, 2}));
    startUpdate(1, file);
    EXPECT_EQ(query(1), (Status{1, 1, 2}));
    EXPECT_EQ(query(1), (Status{2, 2, 2}));
}

TEST_F(Update, IsRefusedWhileTheElementIsUpdating) {
    begin(updateElement(1));
    startUpdate(1, file);
    query(1);
    EXPECT_NE(tryUpdate(1, file), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1] is being updated already."));
    EXPECT_EQ(query(1), (Status{1, 2, 3}));
}

TEST_F(Update, AQueryOfOneThatWasNotStartedIsAnErrorAndLeavesTheValues) {
    begin(updateElement(1));
    Status status{7, 8, 9};
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_EQ(status, (Status{7, 8, 9}));
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    EXPECT_NE(tryQuery(2, status), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound));
    boardAddress = CN;
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound));
    EXPECT_EQ(status, (Status{7, 8, 9}));
}

TEST_F(Update, EndsWithTheLock) {
    begin(updateElement(1));
    startUpdate(1, file);
    unlock();
    Status status;
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    lock();
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    EXPECT_EQ(update(1, "content"), 2U);
}

TEST_F(Update, NeedsAnElementOfTheBoard) {
    target.add(item("CN").element(updateElement(5)));
    begin(updateElement(1));
    EXPECT_NE(tryUpdate(5, file), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("HCN[1] has no element with the ID 5."));
    boardAddress = CN[2];
    EXPECT_NE(tryUpdate(5, file), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("The target has no item CN[2]."));
    boardAddress = CN;
    startUpdate(5, file);
}

TEST_F(Update, OfAnIdThatSeveralElementsHaveIsRefused) {
    target.add(item("CN").element(updateElement(5)).element(updateElement(5)));
    begin(updateElement(1));
    boardAddress = CN;
    EXPECT_NE(tryUpdate(5, file), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("CN[1] has several elements with the ID 5."));
}

TEST_F(Update, OfAnIdThatAFileSystemElementHasTooIsThatOfTheUpdateElement) {
    target.add(item("CN").element(fileSystemElement(5, "a")).element(updateElement(5)));
    begin(updateElement(1));
    boardAddress = CN;
    EXPECT_EQ(update(5, firmwareImage(KvCVersion("2.0"), 3)), 2U);
    EXPECT_EQ(scanElement(CN / UPDATE_INFO / UPDATE_ELEMENT).checksum, 3U);
    EXPECT_EQ(scanElement(CN / UPDATE_INFO / FILESYSTEM_ELEMENT).checksum, 1U);
}

TEST_F(Update, OfAnIdThatTwoFileSystemElementsHaveTooIsThatOfTheUpdateElement) {
    target.add(
        item("CN").element(fileSystemElement(5, "a")).element(fileSystemElement(5, "b")).element(updateElement(5)));
    begin(updateElement(1));
    boardAddress = CN;
    EXPECT_EQ(update(5, firmwareImage(KvCVersion("2.0"), 3)), 2U);
    EXPECT_EQ(scanElement(CN / UPDATE_INFO / UPDATE_ELEMENT).checksum, 3U);
}

TEST_F(Update, AnElementOutsideAnUpdateInfoItemCannotBeUpdated) {
    target.add(item("CN").add(updateElement(5)));
    begin(updateElement(1));
    boardAddress = CN;
    EXPECT_NE(tryUpdate(5, file), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound));
}

TEST_F(Update, AnElementRightBelowTheRootsUpdateInfoBelongsToTheRoot) {
    target.root(item("HCN").element(updateElement(5)));
    target.serve();
    openRoot();
    boardAddress = ROOT;
    lock();
    EXPECT_EQ(update(5, firmwareImage(KvCVersion("2.0"), 3)), 2U);
    EXPECT_EQ(scanElement(UPDATE_INFO / UPDATE_ELEMENT).checksum, 3U);
}

TEST_F(Update, NeedsTheLockAndATransferredFile) {
    begin(updateElement(1));
    EXPECT_NE(manager().update2(errors(), root, HCN, nullptr, 1, file, 0), 0U);
    EXPECT_NE(manager().update2(errors(), nullptr, HCN, lockHandle, 1, file, 0), 0U);
    EXPECT_NE(tryUpdate(1, RemoteFile()), 0U);
    EXPECT_EQ(manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file), 0U);
    EXPECT_NE(tryUpdate(1, file), 0U);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(4), Each(EmulationErrorCodes::wrongHandle)));
}

TEST_F(Update, SeveralElementsUpdateAtTheSameTimeFromOneFile) {
    target.add(item("CN").element(updateElement(1)).element(updateElement(2).polls(1)));
    begin(updateElement(1));
    startUpdate(1, file);
    boardAddress = CN;
    startUpdate(1, file);
    startUpdate(2, file);
    EXPECT_EQ(query(1), (Status{1, 1, 3}));
    EXPECT_EQ(query(2), (Status{2, 1, 1}));
    boardAddress = HCN;
    EXPECT_EQ(query(1), (Status{1, 1, 3}));
}

TEST_F(Update, AFinishedOneReportsItsErrors) {
    begin(updateElement(1).polls(1).reports(0x1111, "first").reports(0x2222, "second"));
    startUpdate(1, file);
    std::vector<std::uint32_t> codes;
    EXPECT_NE(readErrors(1, codes), 0U) << "it is running";
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    query(1);
    EXPECT_EQ(readErrors(1, codes), 0U);
    EXPECT_THAT(codes, ElementsAre(0x1111U, 0x2222U));
    EXPECT_EQ(readErrors(1, codes), 0U);
    EXPECT_THAT(codes, SizeIs(4));
}

TEST_F(Update, ASuccessfulOneReportsNothing) {
    begin(updateElement(1).polls(1));
    startUpdate(1, file);
    query(1);
    std::vector<std::uint32_t> codes;
    EXPECT_EQ(readErrors(1, codes), 0U);
    EXPECT_THAT(codes, IsEmpty());
}

TEST_F(Update, ErrorsOfOneThatWasNotStartedAreAnError) {
    begin(updateElement(1));
    std::vector<std::uint32_t> codes;
    EXPECT_NE(readErrors(1, codes), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    EXPECT_THAT(codes, IsEmpty());
}

TEST_F(Update, ReportedErrorsHaveEverythingThatTheDescriptionGives) {
    target.write(R"({"addresses": ["127.0.0.1"], "inventory": {"id": "ROOT", "items": [{"id": "HCN", "items": [
        {"id": "UPDATE_INFO", "items": [{"id": "UPDATE_ELEMENT", "parameters": {"ID": 1}, "update": {"polls": 1,
        "errors": [{"code": 1, "text": "a", "originNode": 2, "timeStamp": 18446744073709551615, "mainModule": 3,
                    "subModule": 4, "function": "f", "line": 5}, {"code": 6, "text": ""}]}}]}]}]}})");
    static_cast<void>(target.serveAgain());
    openRoot();
    lock();
    startUpdate(1, transfer("a"));
    query(1);
    EXPECT_EQ(manager().updateErrors2(errors(), root, HCN, lockHandle, 1, errors()), 0U);
    ASSERT_EQ(errors().getErrorCount(), 2U);
    EXPECT_EQ(errors().getErrorCode(0), 1U);
    EXPECT_STREQ(errors().getErrorText(0), "a");
    EXPECT_EQ(errors().getOriginNode(0), 2U);
    EXPECT_EQ(errors().getTimeStamp(0), 18446744073709551615U);
    EXPECT_EQ(errors().getMainModuleNumber(0), 3U);
    EXPECT_EQ(errors().getSubModuleNumber(0), 4U);
    EXPECT_STREQ(errors().getFunctionName(0), "f");
    EXPECT_EQ(errors().getLineNumber(0), 5U);
    EXPECT_EQ(errors().getErrorCode(1), 6U);
    EXPECT_EQ(errors().getOriginNode(1), 0U);
    EXPECT_EQ(errors().getTimeStamp(1), 0U);
    EXPECT_EQ(errors().getFunctionName(1), nullptr);
    errors().reset();
}

} // namespace
