#include "TargetFixture.h"

#include "KvCDirectFileWriter.h"
#include "KvEmulation.h"
#include "MessageBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view content = "net = 10.0.0.0/8\n";

} // namespace

/// Writes the file a.cfg of an archive to an emulated target.
class DirectFileWriteTest : public TargetTest {
protected:
    void SetUp() override {
        TargetTest::SetUp();
        options.archiveFolder = archive.path().wstring();
        archive.write("a.cfg", content);
        writer.emplace(options, access);
    }
    void TearDown() override {
        EXPECT_EQ(KvEmulation::ledger().errorLists, 0U);
        EXPECT_EQ(KvEmulation::ledger().transferClients, 0U);
        writer.reset();
        EXPECT_EQ(errors().getErrorCount(), 0U);
        EXPECT_EQ(printed(), L"");
        TargetTest::TearDown();
    }

    bool write(const char* targetPath, const char* name = "a.cfg") {
        KvTArchiveFile entry;
        entry.name = name;
        return writer->writeFileToTarget(entry, targetPath, told);
    }
    /// Begins anew with what is on the target, and another fault.
    void beginAnewWith(const FaultBuilder& fault) {
        writer.reset();
        KvEmulation::reset();
        serveWith(fault);
        writer.emplace(options, access);
    }
    /// Writes to config/a.cfg on a target with one fault.
    bool writeWith(const FaultBuilder& fault) {
        serveWith(fault);
        return write("config/a.cfg");
    }
    [[nodiscard]] std::string onTarget(const std::string& path) const {
        return target.folder().read("state/cfdrive/" + path);
    }
    /// Everything in the target's file system.
    [[nodiscard]] std::vector<std::string> listOfTarget() const {
        const std::string root = "state/cfdrive/";
        std::vector<std::string> paths;
        for (const std::string& path : target.folder().list()) {
            if (path.starts_with(root)) {
                paths.push_back(path.substr(root.size()));
            }
        }
        return paths;
    }

    ScratchFolder archive;
    std::optional<KvCDirectFileWriter> writer;
    std::vector<std::wstring> told{L"of before"};
};

TEST_F(DirectFileWriteTest, AFileGetsIntoItsPlaceWithItsFolders) {
    serve();
    EXPECT_TRUE(write("config/net/a.cfg"));
    EXPECT_THAT(told, IsEmpty());
    EXPECT_THAT(listOfTarget(), ElementsAre("config", "config/net", "config/net/a.cfg"));
    EXPECT_EQ(onTarget("config/net/a.cfg"), content);
}

TEST_F(DirectFileWriteTest, VerboseTellsEveryFolderThatWasCreatedAndTheFile) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("config/net/a.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Directory /mnt/cn/cfdrive/config created.\n",
                                  L"Directory /mnt/cn/cfdrive/config/net created.\n",
                                  L"Successfully written /mnt/cn/cfdrive/config/net/a.cfg.\n"));
}

TEST_F(DirectFileWriteTest, AFolderThatExistsIsNeitherAFaultNorTold) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("config/net/a.cfg"));
    EXPECT_TRUE(write("config/other/b.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Directory /mnt/cn/cfdrive/config/other created.\n",
                                  L"Successfully written /mnt/cn/cfdrive/config/other/b.cfg.\n"));
    EXPECT_TRUE(write("config/other/b.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Successfully written /mnt/cn/cfdrive/config/other/b.cfg.\n"));
}

TEST_F(DirectFileWriteTest, AFolderIsToldAsThePathHasIt) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("/config//net/a.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Directory /mnt/cn/cfdrive//config created.\n",
                                  L"Directory /mnt/cn/cfdrive//config//net created.\n",
                                  L"Successfully written /mnt/cn/cfdrive//config//net/a.cfg.\n"));
    EXPECT_EQ(onTarget("config/net/a.cfg"), content);
}

TEST_F(DirectFileWriteTest, PathsWithEmptyComponentsLeadToTheSameFile) {
    serve();
    for (const char* path : {"x/a.cfg", "/x/a.cfg", "//x/a.cfg", "x//a.cfg", "///x///a.cfg"}) {
        EXPECT_TRUE(write(path)) << path;
        EXPECT_THAT(listOfTarget(), ElementsAre("x", "x/a.cfg")) << path;
        std::filesystem::remove_all(target.folder().path() / "state");
    }
}

TEST_F(DirectFileWriteTest, APathWithoutAFolderCreatesNone) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_THAT(listOfTarget(), ElementsAre("a.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Successfully written /mnt/cn/cfdrive/a.cfg.\n"));
}

TEST_F(DirectFileWriteTest, AFileOnTheTargetIsReplaced) {
    serve();
    EXPECT_TRUE(write("a.cfg"));
    archive.write("a.cfg", "new");
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_THAT(listOfTarget(), ElementsAre("a.cfg"));
    EXPECT_EQ(onTarget("a.cfg"), "new");
}

TEST_F(DirectFileWriteTest, NamesAreUtf8) {
    options.verbose = true;
    serve();
    archive.write("gr\xC3\xB6\xC3\x9F"
                  "e.cfg",
                  "12345");
    EXPECT_TRUE(write("\xC3\xA4/b.cfg", "gr\xC3\xB6\xC3\x9F"
                                        "e.cfg"));
    EXPECT_EQ(onTarget("\xC3\xA4/b.cfg"), "12345");
    const std::wstring folder = L"/mnt/cn/cfdrive/" + inMessage("\xC3\xA4");
    EXPECT_THAT(told,
                ElementsAre(L"Directory " + folder + L" created.\n", L"Successfully written " + folder + L"/b.cfg.\n"));
}

TEST_F(DirectFileWriteTest, AFileInAFolderOfTheArchiveIsWritten) {
    serve();
    archive.write("sub/b.cfg", "12345");
    EXPECT_TRUE(write("b.cfg", "sub/b.cfg"));
    EXPECT_EQ(onTarget("b.cfg"), "12345");
}

TEST_F(DirectFileWriteTest, AnEmptyFileIsWritten) {
    serve();
    archive.write("a.cfg", "");
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_EQ(onTarget("a.cfg"), "");
}

TEST_F(DirectFileWriteTest, AMissingLocalFileIsCreatedEmptyAndSoWritten) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("config/m.cfg", "missing.cfg"));
    EXPECT_TRUE(archive.has("missing.cfg"));
    EXPECT_EQ(archive.read("missing.cfg"), "");
    EXPECT_EQ(onTarget("config/m.cfg"), "");
    EXPECT_EQ(told.back(), L"Successfully written /mnt/cn/cfdrive/config/m.cfg.\n");
}

TEST_F(DirectFileWriteTest, ALocalFileThatCannotBeReadFails) {
    serve();
    std::filesystem::create_directory(archive.path() / "folder");
    EXPECT_FALSE(write("a.cfg", "folder"));
    EXPECT_THAT(told, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot transfer file to target "
                                  L"device. Status: -1\n"));
    EXPECT_FALSE(write("a.cfg", "no/such/folder/b.cfg"));
    EXPECT_THAT(told, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot transfer file to target "
                                  L"device. Status: -1\n"));
    EXPECT_THAT(listOfTarget(), IsEmpty());
}

TEST_F(DirectFileWriteTest, AFileKnownToBeMissingFailsInSilence) {
    options.verbose = true;
    serve();
    KvTArchiveFile entry;
    entry.name = "missing.cfg";
    entry.fileMissing = true;
    EXPECT_FALSE(writer->writeFileToTarget(entry, "config/a.cfg", told));
    EXPECT_THAT(told, IsEmpty());
    EXPECT_FALSE(archive.has("missing.cfg"));
    EXPECT_FALSE(target.folder().has("state"));
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 0U);
}

TEST_F(DirectFileWriteTest, APathWithoutAFileNameFailsInTheRename) {
    serve();
    EXPECT_FALSE(write("config/"));
    EXPECT_THAT(told, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/config/ failed. Cannot rename temporary file. "
                                  L"Status: -1\n"));
    EXPECT_FALSE(write(""));
    EXPECT_THAT(told,
                ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/ failed. Cannot rename temporary file. Status: -1\n"));
    EXPECT_THAT(listOfTarget(), ElementsAre(".tmp", "config", "config/.tmp"));
}

TEST_F(DirectFileWriteTest, APathThatTheTargetRefusesFails) {
    serve();
    EXPECT_FALSE(write("../a.cfg"));
    EXPECT_THAT(told, ElementsAre(L"ERROR: Writing /mnt/cn/cfdrive/../a.cfg failed. Cannot transfer file to target "
                                  L"device. Status: -1\n"));
}

TEST_F(DirectFileWriteTest, EachFaultHasItsMessage) {
    struct Row {
        FaultBuilder fault;
        const wchar_t* message = nullptr;
    };
    const std::wstring beginning = L"ERROR: Writing /mnt/cn/cfdrive/config/a.cfg failed. ";
    const std::array rows = {
        Row{fault("KvHIM_createFilter").status(33), L"Cannot create device handle.\n"},
        Row{fault("KvHIM_getDeviceList"), L"Cannot create device handle.\n"},
        Row{fault("KvHIM_deleteFilter"), L"Cannot create device handle.\n"},
        Row{fault("KvHIM_createDeviceHandle"), L"Cannot create device handle.\n"},
        Row{fault("KvHIM_createFTClientHandle"), L"Cannot create FT client handle.\n"},
        Row{fault("KvHIM_createFTClientHandle").noErrors(), L"Cannot create FT client handle.\n"},
        Row{fault("KvHIM_putFileU"), L"Cannot transfer file to target device. Status: -1\n"},
        // A negative result, too few bytes, too many bytes, an error beside the right number of bytes.
        Row{fault("KvHIM_putFileU").status(-7).noErrors(), L"Cannot transfer file to target device. Status: -7\n"},
        Row{fault("KvHIM_putFileU").status(16).noErrors(), L"Cannot transfer file to target device. Status: 16\n"},
        Row{fault("KvHIM_putFileU").status(0).noErrors(), L"Cannot transfer file to target device. Status: 0\n"},
        Row{fault("KvHIM_putFileU").status(18).noErrors(), L"Cannot transfer file to target device. Status: 18\n"},
        Row{fault("KvHIM_putFileU").status(17), L"Cannot transfer file to target device. Status: 17\n"},
        Row{fault("KvHIM_renameFile"), L"Cannot rename temporary file. Status: -1\n"},
        Row{fault("KvHIM_renameFile").status(-9).noErrors(), L"Cannot rename temporary file. Status: -9\n"},
        Row{fault("KvHIM_renameFile").status(0), L"Cannot rename temporary file. Status: 0\n"},
        Row{fault("KvHIM_renameFile").status(3), L"Cannot rename temporary file. Status: 3\n"},
    };
    ASSERT_EQ(content.size(), 17U);
    for (const Row& row : rows) {
        writer.reset();
        KvEmulation::reset();
        TargetBuilder faulty;
        faulty.add(row.fault);
        static_cast<void>(faulty.serve());
        writer.emplace(options, access);
        EXPECT_FALSE(write("config/a.cfg"));
        EXPECT_THAT(told, ElementsAre(beginning + row.message));
        EXPECT_EQ(KvEmulation::ledger().transferClients, 0U);
        EXPECT_EQ(KvEmulation::ledger().errorLists, 0U);
        EXPECT_EQ(errors().getErrorCount(), 0U);
    }
}

TEST_F(DirectFileWriteTest, AFaultHasTheSameOneMessageWhenVerbose) {
    options.verbose = true;
    EXPECT_FALSE(writeWith(fault("KvHIM_putFileU")));
    EXPECT_THAT(told, ElementsAre(L"Directory /mnt/cn/cfdrive/config created.\n",
                                  L"ERROR: Writing /mnt/cn/cfdrive/config/a.cfg failed. Cannot transfer file to target "
                                  L"device. Status: -1\n"));
}

TEST_F(DirectFileWriteTest, AClientThatCannotBeGivenBackFailsTheWriteAndNamesThePathAsGiven) {
    options.verbose = true;
    EXPECT_FALSE(writeWith(fault("KvHIM_deleteFTClientHandle")));
    EXPECT_THAT(told, ElementsAre(L"Directory /mnt/cn/cfdrive/config created.\n",
                                  L"ERROR: Cannot delete FT client handle after writing config/a.cfg.\n"));
    EXPECT_EQ(onTarget("config/a.cfg"), content);
}

TEST_F(DirectFileWriteTest, AClientIsGivenBackByItsStatusAlone) {
    EXPECT_TRUE(writeWith(fault("KvHIM_deleteFTClientHandle").status(0)));
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(DirectFileWriteTest, ARenameThatReportsNoErrorAndNothingNegativeSucceeds) {
    EXPECT_TRUE(writeWith(fault("KvHIM_renameFile").status(5).noErrors()));
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(DirectFileWriteTest, AFolderThatCannotBeCreatedIsNoFaultByItself) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(write("config/b.cfg"));
    beginAnewWith(fault("KvHIM_makeDir").status(99));
    EXPECT_TRUE(write("config/a.cfg"));
    EXPECT_THAT(told, ElementsAre(L"Successfully written /mnt/cn/cfdrive/config/a.cfg.\n"));
}

TEST_F(DirectFileWriteTest, AFailedRenameLeavesTheTemporaryFile) {
    EXPECT_FALSE(writeWith(fault("KvHIM_renameFile")));
    EXPECT_THAT(listOfTarget(), ElementsAre("config", "config/a.cfg.tmp"));
    EXPECT_EQ(onTarget("config/a.cfg.tmp"), content);
    EXPECT_TRUE(write("config/a.cfg"));
    EXPECT_THAT(listOfTarget(), ElementsAre("config", "config/a.cfg"));
}

TEST_F(DirectFileWriteTest, AFailedTransferLeavesTheFileOfBefore) {
    serve();
    EXPECT_TRUE(write("a.cfg"));
    archive.write("a.cfg", "new");
    beginAnewWith(fault("KvHIM_putFileU").status(2).noErrors());
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_EQ(onTarget("a.cfg"), content);
}

TEST_F(DirectFileWriteTest, TheDeviceIsLookedUpOnce) {
    serveWith(fault("KvHIM_createFilter").occurrence(2));
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_TRUE(write("b.cfg"));
    EXPECT_TRUE(write("c.cfg"));
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 1U);
    EXPECT_THAT(listOfTarget(), ElementsAre("a.cfg", "b.cfg", "c.cfg"));
}

TEST_F(DirectFileWriteTest, AFailedLookupIsTriedAgainByTheNextWrite) {
    EXPECT_FALSE(writeWith(fault("KvHIM_createDeviceHandle")));
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 0U);
    EXPECT_TRUE(write("config/a.cfg"));
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 1U);
}

TEST_F(DirectFileWriteTest, AFailedWriteKeepsTheDeviceForTheNext) {
    target.add(fault("KvHIM_createFilter").occurrence(2));
    serveWith(fault("KvHIM_putFileU"));
    EXPECT_FALSE(write("a.cfg"));
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 1U);
    EXPECT_TRUE(write("a.cfg"));
}

TEST_F(DirectFileWriteTest, ErrorsOfAWriteReachNeitherTheMasterListNorTheNextWrite) {
    EXPECT_FALSE(writeWith(fault("KvHIM_renameFile")));
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_TRUE(write("config/a.cfg"));
}

TEST_F(DirectFileWriteTest, TheLookupLeavesTheMasterListAlone) {
    errors().addError({});
    serve();
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_EQ(errors().getErrorCount(), 1U);
    errors().reset();
}

TEST_F(DirectFileWriteTest, TheDeviceIsGivenBackAtTheEnd) {
    serveWith(fault("KvHIM_deleteDeviceHandle"));
    EXPECT_TRUE(write("a.cfg"));
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 1U);
    writer.reset();
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    EXPECT_EQ(errors().getErrorCount(), 0U);
}
