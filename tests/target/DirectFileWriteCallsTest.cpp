#include "HostServiceStandIn.h"
#include "KeptMessages.h"
#include "KvCDirectFileWriter.h"
#include "KvCTargetAccess.h"
#include "KvEmulation.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::ptrdiff_t lookupCalls = 9;

} // namespace

/// Writes files through a host interface that answers as the test says.
class DirectFileWriteCallsTest : public testing::Test {
protected:
    void SetUp() override {
        service().forget();
        master().reset();
        options_.target = L"10.0.0.7";
        options_.archiveFolder = archive_.path().wstring();
        ASSERT_TRUE(access_.resolveTarget());
        archive_.write("a.cfg", "12345");
        service().answer("putFileU", {.status = 5}, 0);
        writer_.emplace(options_, access_);
    }
    void TearDown() override {
        writer_.reset();
        EXPECT_THAT(service().held(), IsEmpty());
        EXPECT_EQ(master().getErrorCount(), 0U);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        KvEmulation::reset();
    }

    static HostServiceStandIn& service() { return HostServiceStandIn::instance(); }
    static KvCErrorListPool& master() { return KvCErrorManager::getInstance()->getMasterErrorList(); }

    bool write(const char* targetPath, const char* name = "a.cfg") {
        KvTArchiveFile entry;
        entry.name = name;
        return writer_->writeFileToTarget(entry, targetPath, messages_);
    }
    /// The calls of one write, without those that look the device up.
    std::vector<std::string> callsOfWrite(const char* targetPath) {
        service().forgetCalls();
        EXPECT_TRUE(write(targetPath));
        std::vector<std::string> calls = service().calls();
        if (calls.front() == "createFilter(1)") {
            calls.erase(calls.begin(), calls.begin() + lookupCalls);
        }
        return calls;
    }
    static std::vector<std::string> lastOperations(std::ptrdiff_t count) {
        const std::vector<std::string> operations = service().operations();
        return {operations.end() - count, operations.end()};
    }
    /// A call as the stand-in shows it.
    static std::string callText(const std::string& operation, const std::string& client,
                                const std::vector<std::string>& texts) {
        std::string text = operation;
        text += "(null, " + client;
        for (const std::string& argument : texts) {
            text += ", '" + argument + "'";
        }
        return text + ")";
    }
    static std::string below(const char* path) { return std::string("/mnt/cn/cfdrive") + path; }
    [[nodiscard]] std::string local() const { return archive_.text() + "/a.cfg"; }

    ScratchFolder archive_;
    KeptMessages printed_;
    KvNReflasher::KvTOptions options_{};
    KvCTargetAccess access_{printed_.writer(), options_, master()};
    std::optional<KvCDirectFileWriter> writer_;
    std::vector<std::wstring> messages_;
};

TEST_F(DirectFileWriteCallsTest, AFileIsWrittenWithTheseCallsInThisOrder) {
    EXPECT_TRUE(write("config/net/a.cfg"));
    EXPECT_THAT(std::vector(service().calls().begin() + lookupCalls, service().calls().end()),
                ElementsAre("createFTClientHandle(device1)", "makeDir(null, client1, '/mnt/cn/cfdrive', 'config')",
                            "makeDir(null, client1, '/mnt/cn/cfdrive/config', 'net')",
                            callText("putFileU", "client1", {local(), "/mnt/cn/cfdrive/config/net", "a.cfg.tmp"}),
                            "renameFile(null, client1, '/mnt/cn/cfdrive/config/net', 'a.cfg.tmp', 'a.cfg')",
                            "deleteFTClientHandle(client1)"));
}

TEST_F(DirectFileWriteCallsTest, EveryCallOfAWriteGetsTheSamePrivateList) {
    EXPECT_TRUE(write("config/a.cfg"));
    const std::set<const KvCErrorListPool*> lists(service().errorLists().begin(), service().errorLists().end());
    EXPECT_EQ(lists.size(), 1U);
    EXPECT_FALSE(lists.contains(&master()));
    EXPECT_THAT(service().held(), ElementsAre("device1"));
}

TEST_F(DirectFileWriteCallsTest, TheFoldersOfThePathAreWalkedFromTheRoot) {
    struct Folder {
        const char* parentBelowRoot;
        const char* name;
    };
    struct Row {
        const char* targetPath;
        std::vector<Folder> created;
        const char* folderBelowRoot;
        const char* temporaryName;
    };
    const std::array rows = {
        // No folder of its own: nothing to create.
        Row{"a.cfg", {}, "", "a.cfg.tmp"},
        Row{"", {}, "", ".tmp"},
        Row{"x\\a.cfg", {}, "", "x\\a.cfg.tmp"},
        Row{"x/a.cfg", {{"", "x"}}, "/x", "a.cfg.tmp"},
        Row{"x/y/z/a.cfg", {{"", "x"}, {"/x", "y"}, {"/x/y", "z"}}, "/x/y/z", "a.cfg.tmp"},
        Row{"x/", {{"", "x"}}, "/x", ".tmp"},
        // Each "/" ends a component, an empty one too.
        Row{"/a.cfg", {{"", ""}}, "/", "a.cfg.tmp"},
        Row{"//a.cfg", {{"", ""}, {"/", ""}}, "//", "a.cfg.tmp"},
        Row{"/x/a.cfg", {{"", ""}, {"/", "x"}}, "//x", "a.cfg.tmp"},
        Row{"x//a.cfg", {{"", "x"}, {"/x", ""}}, "/x/", "a.cfg.tmp"},
        Row{"x//y/a.cfg", {{"", "x"}, {"/x", ""}, {"/x/", "y"}}, "/x//y", "a.cfg.tmp"},
    };
    std::uint32_t number = 0;
    for (const Row& row : rows) {
        const std::string client = "client" + std::to_string(++number);
        std::vector<std::string> expected{"createFTClientHandle(device1)"};
        for (const Folder& folder : row.created) {
            expected.push_back(callText("makeDir", client, {below(folder.parentBelowRoot), folder.name}));
        }
        const std::string folder = below(row.folderBelowRoot);
        expected.push_back(callText("putFileU", client, {local(), folder, row.temporaryName}));
        const std::vector<std::string> calls = callsOfWrite(row.targetPath);
        ASSERT_EQ(calls.size(), expected.size() + 2) << row.targetPath;
        EXPECT_THAT(std::vector(calls.begin(), calls.end() - 2), ElementsAreArray(expected)) << row.targetPath;
    }
}

TEST_F(DirectFileWriteCallsTest, ALaterWriteUsesTheHandleOfTheFirst) {
    EXPECT_TRUE(write("a.cfg"));
    const std::vector<std::string> later = callsOfWrite("b.cfg");
    EXPECT_THAT(later, testing::Each(testing::Not(testing::HasSubstr("createDeviceHandle"))));
    EXPECT_EQ(later.front(), "createFTClientHandle(device1)");
    EXPECT_THAT(service().held(), ElementsAre("device1"));
}

TEST_F(DirectFileWriteCallsTest, ALookupWithoutAHandleFailsAndIsTriedAgain) {
    service().answer("createDeviceHandle", {.leavesHandle = true});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(messages_, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot create device handle.\n"));
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_THAT(service().operations(), testing::Contains("createDeviceHandle").Times(2));
}

TEST_F(DirectFileWriteCallsTest, AFileKnownToBeMissingIsNotAskedFor) {
    KvTArchiveFile entry;
    entry.name = "missing.cfg";
    entry.fileMissing = true;
    messages_ = {L"of before"};
    EXPECT_FALSE(writer_->writeFileToTarget(entry, "x/a.cfg", messages_));
    EXPECT_THAT(messages_, IsEmpty());
    EXPECT_THAT(service().calls(), IsEmpty());
    EXPECT_FALSE(archive_.has("missing.cfg"));
}

TEST_F(DirectFileWriteCallsTest, AClientThatComesWithAFailureIsNone) {
    service().answer("createFTClientHandle", {.status = 5});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(messages_,
                ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot create FT client handle.\n"));
    EXPECT_EQ(service().operations().back(), "createFTClientHandle");
    writer_.reset();
    service().forget();
}

TEST_F(DirectFileWriteCallsTest, AClientIsJudgedByItsStatusAlone) {
    service().answer("createFTClientHandle", {.addsError = true});
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(DirectFileWriteCallsTest, AFolderIsToldByItsStatusAlone) {
    options_.verbose = true;
    const std::wstring written = L"Successfully written /mnt/cn/cfdrive/x/a.cfg.\n";
    service().answer("makeDir", {.addsError = true}, 1);
    EXPECT_TRUE(write("x/a.cfg"));
    EXPECT_THAT(messages_, ElementsAre(L"Directory /mnt/cn/cfdrive/x created.\n", written));
    service().answer("makeDir", {.status = 1}, 2);
    EXPECT_TRUE(write("x/a.cfg"));
    EXPECT_THAT(messages_, ElementsAre(written));
}

TEST_F(DirectFileWriteCallsTest, AMissingLocalFileIsCreatedEmptyAndFailsWhenMoreIsTransferred) {
    EXPECT_FALSE(write("a.cfg", "missing.cfg"));
    EXPECT_THAT(messages_, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot transfer file to target "
                                       L"device. Status: 5\n"));
    EXPECT_THAT(lastOperations(2), ElementsAre("putFileU", "deleteFTClientHandle"));
    ASSERT_TRUE(archive_.has("missing.cfg"));
    EXPECT_EQ(archive_.read("missing.cfg"), "");
}

TEST_F(DirectFileWriteCallsTest, TheTransferredSizeIsComparedInAllItsBits) {
    service().answer("putFileU", {.status = 0x100000005});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(messages_, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot transfer file to target "
                                       L"device. Status: 5\n"));
    EXPECT_THAT(lastOperations(2), ElementsAre("putFileU", "deleteFTClientHandle"));
}

TEST_F(DirectFileWriteCallsTest, AFailedTransferEndsTheWriteAndGivesTheClientBack) {
    service().answer("putFileU", {.status = -1, .addsError = true});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(lastOperations(2), ElementsAre("putFileU", "deleteFTClientHandle"));
}

TEST_F(DirectFileWriteCallsTest, AFailedRenameEndsTheWriteAndGivesTheClientBack) {
    service().answer("renameFile", {.status = -1, .addsError = true});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(lastOperations(2), ElementsAre("renameFile", "deleteFTClientHandle"));
}

TEST_F(DirectFileWriteCallsTest, AClientThatCannotBeGivenBackIsGivenBackOnce) {
    service().answer("deleteFTClientHandle", {.status = 4, .addsError = true});
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_THAT(lastOperations(2), ElementsAre("renameFile", "deleteFTClientHandle"));
}

TEST_F(DirectFileWriteCallsTest, AWriterThatFoundNoDeviceGivesNothingBack) {
    service().answer("createFilter", {.status = 33, .leavesHandle = true});
    EXPECT_FALSE(write("a.cfg"));
    service().forgetCalls();
    writer_.reset();
    EXPECT_THAT(service().calls(), IsEmpty());
}

TEST_F(DirectFileWriteCallsTest, AtTheEndTheDeviceIsGivenBackWithAListThatIsSentAndDeleted) {
    service().answer("deleteDeviceHandle", {.status = 7, .addsError = true});
    EXPECT_TRUE(write("a.cfg"));
    service().forgetCalls();
    writer_.reset();
    EXPECT_THAT(service().calls(), ElementsAre("deleteDeviceHandle(device1)", "sendErrorList(0)"));
    ASSERT_EQ(service().errorLists().size(), 2U);
    EXPECT_EQ(service().errorLists()[0], service().errorLists()[1]);
    EXPECT_NE(service().errorLists()[0], &master());
    EXPECT_THAT(service().held(), IsEmpty());
}

TEST_F(DirectFileWriteCallsTest, WithoutMemoryForAListTheWriterEndsAllTheSame) {
    EXPECT_TRUE(write("a.cfg"));
    service().exhaustErrorLists();
    writer_.reset();
    EXPECT_FALSE(writer_.has_value());
    service().forget();
}
