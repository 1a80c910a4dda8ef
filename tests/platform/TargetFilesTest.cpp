// The file system that a target shows as /mnt/cn/cfdrive.

#include "TargetFixtures.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace KvNInventoryIDs;

TEST_F(TargetFiles, AFileIsWrittenAndRenamedIntoPlace) {
    EXPECT_EQ(makeDir(top, "config"), 0);
    EXPECT_EQ(makeDir("/mnt/cn/cfdrive/config", "net"), 0);
    EXPECT_EQ(put("/mnt/cn/cfdrive/config/net", "a.cfg.tmp", "hello"), 5);
    EXPECT_EQ(rename("/mnt/cn/cfdrive/config/net", "a.cfg.tmp", "a.cfg"), 0);
    EXPECT_EQ(content("config/net/a.cfg"), "hello");
    EXPECT_FALSE(has("config/net/a.cfg.tmp"));
}

TEST_F(TargetFiles, TheRootFolderIsAlwaysThere) {
    EXPECT_EQ(put(top, "a", ""), 0);
    EXPECT_EQ(content("a"), "");
}

TEST_F(TargetFiles, EmptyComponentsAreIgnored) {
    EXPECT_EQ(makeDir("//mnt//cn/cfdrive//", "config"), 0);
    EXPECT_EQ(put("/mnt/cn/cfdrive//config/", "a"), 7);
    EXPECT_EQ(content("config/a"), "content");
}

TEST_F(TargetFiles, WritingReplacesWhatIsThere) {
    EXPECT_EQ(put(top, "a", "a long content"), 14);
    EXPECT_EQ(put(top, "a", "short"), 5);
    EXPECT_EQ(content("a"), "short");
    EXPECT_EQ(put(top, "b", "other"), 5);
    EXPECT_EQ(rename(top, "b", "a"), 0);
    EXPECT_EQ(content("a"), "other");
    EXPECT_FALSE(has("b"));
}

TEST_F(TargetFiles, AnExistingFolderOrAnEmptyNameCannotBeMade) {
    EXPECT_EQ(makeDir(top, "config"), 0);
    EXPECT_NE(makeDir(top, "config"), 0);
    EXPECT_NE(makeDir(top, ""), 0);
    EXPECT_NE(makeDir(top, "."), 0);
    EXPECT_NE(makeDir(top, "a/b"), 0);
    EXPECT_NE(KvHIM_makeDir(errors(), nullptr, client, nullptr, nullptr), 0);
    EXPECT_EQ(put(top, "file"), 7);
    EXPECT_NE(makeDir(top, "file"), 0);
    EXPECT_NE(makeDir("/mnt/cn/cfdrive/file", "a"), 0);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(7), Each(EmulationErrorCodes::fileAccess)));
}

TEST_F(TargetFiles, AFolderThatDoesNotExistIsNotWrittenInto) {
    EXPECT_EQ(put("/mnt/cn/cfdrive/none", "a"), -1);
    EXPECT_NE(makeDir("/mnt/cn/cfdrive/none", "a"), 0);
    EXPECT_LT(rename("/mnt/cn/cfdrive/none", "a", "b"), 0);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(3), Each(EmulationErrorCodes::fileAccess)));
    EXPECT_FALSE(has("none"));
}

TEST_F(TargetFiles, AFolderIsNoFile) {
    EXPECT_EQ(makeDir(top, "config"), 0);
    EXPECT_EQ(put(top, "a"), 7);
    EXPECT_EQ(put(top, "config"), -1);
    EXPECT_LT(rename(top, "config", "other"), 0);
    EXPECT_LT(rename(top, "a", "config"), 0);
    EXPECT_LT(rename(top, "none", "other"), 0);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(4), Each(EmulationErrorCodes::fileAccess)));
    EXPECT_TRUE(has("a"));
}

TEST_F(TargetFiles, PathsOutsideTheRootFolderAreRefused) {
    const std::vector<std::string> before = target.folder().list();
    for (const char* const folder :
         {"", "/", "/mnt", "/mnt/cn", "/mnt/cn/cfdrive2", "mnt/cn/cfdrive", "/tmp", "/mnt/cn/cfdrive/..",
          "/mnt/cn/cfdrive/../cfdrive", "/mnt/../mnt/cn/cfdrive", "/mnt/cn/cfdrive/a\\b",
          "/mnt/cn/cfdrive/c:", "/mnt/cn/cfdrive/\n", "/mnt/cn/cfdrive/\x7F"}) {
        EXPECT_NE(makeDir(folder, "a"), 0) << folder;
        EXPECT_EQ(put(folder, "a"), -1) << folder;
        EXPECT_LT(rename(folder, "a", "b"), 0) << folder;
        EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(3), Each(EmulationErrorCodes::fileAccess))) << folder;
    }
    EXPECT_EQ(target.folder().list(), before);
}

TEST_F(TargetFiles, NamesThatCouldMeanAnotherPlaceAreRefused) {
    EXPECT_EQ(put(top, "a"), 7);
    const std::vector<std::string> before = target.folder().list();
    for (const char* const name :
         {"", ".", "..", "../a", "a/b", "/a", "a\\b", "..\\a", "c:", "c:a", "a\tb", "\x1B[m"}) {
        EXPECT_NE(makeDir(top, name), 0) << name;
        EXPECT_EQ(put(top, name), -1) << name;
        EXPECT_LT(rename(top, "a", name), 0) << name;
        EXPECT_LT(rename(top, name, "b"), 0) << name;
        EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(4), Each(EmulationErrorCodes::fileAccess))) << name;
    }
    EXPECT_EQ(target.folder().list(), before);
}

TEST_F(TargetFiles, NamesInOtherScriptsAreNames) {
    EXPECT_EQ(put(top, "Gr\xC3\xB6\xC3\x9F\x65 \xF0\x9F\x9A\x80"), 7);
    EXPECT_EQ(put(top, "...a"), 7);
    EXPECT_TRUE(has("Gr\xC3\xB6\xC3\x9F\x65 \xF0\x9F\x9A\x80"));
}

TEST_F(TargetFiles, AnOverlongNameIsAnError) {
    EXPECT_NE(makeDir(top, std::string(1000, 'a')), 0);
    EXPECT_EQ(put(top, std::string(1000, 'a')), -1);
    EXPECT_THAT(takeErrorCodes(), SizeIs(2));
}

TEST_F(TargetFiles, ASecondNameOfAFileOutsideIsReplacedNotWrittenThrough) {
    const ScratchFolder outside;
    outside.write("secret", "secret");
    EXPECT_EQ(put(top, "a"), 7);
    fs::create_hard_link(outside.path() / "secret", onDisk("b"));
    EXPECT_EQ(put(top, "b"), 7);
    EXPECT_EQ(outside.read("secret"), "secret");
    EXPECT_EQ(content("b"), "content");
}

TEST_F(TargetFiles, ALocalFileThatCannotBeReadIsAnError) {
    const std::wstring none = wide(files.text() + "/none");
    const std::wstring folder = wide(files.text());
    for (const wchar_t* const local : {none.c_str(), folder.c_str(), L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, client, local, top, "a", nullptr, nullptr), -1);
    }
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(4), Each(EmulationErrorCodes::fileAccess)));
    EXPECT_FALSE(has("a"));
}

TEST_F(TargetFiles, WritingTellsItsProgress) {
    const std::wstring local = wide(files.write("local", std::string(100000, 'x')));
    std::int64_t told = 0;
    const auto progress = [](std::int64_t done, std::int64_t total, void* context) {
        EXPECT_EQ(total, 100000);
        *static_cast<std::int64_t*>(context) = done;
    };
    EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, client, local.c_str(), top, "a", progress, &told), 100000);
    EXPECT_EQ(told, 100000);
}

TEST_F(TargetFiles, AFileRenamedIntoPlaceSetsTheChecksumOfItsElement) {
    EXPECT_EQ(put(top, "b.tmp", "123456789"), 9);
    EXPECT_EQ(put(top, "b.cfg", "not yet"), 7);
    EXPECT_EQ(scanElement(HCN / UPDATE_INFO / FILESYSTEM_ELEMENT[2]).checksum, 1U);
    EXPECT_EQ(rename("/mnt/cn/cfdrive/", "b.tmp", "b.cfg"), 0);
    EXPECT_EQ(scanElement(HCN / UPDATE_INFO / FILESYSTEM_ELEMENT[2]).checksum, 0xCBF43926U);
    EXPECT_EQ(scanElement(HCN / UPDATE_INFO / FILESYSTEM_ELEMENT[1]).checksum, 1U);
}

TEST_F(TargetFiles, TheChecksumOfARenamedFileIsFoundAsThatOfAnUpdateAndNothingElseIsSet) {
    client = nullptr;
    device = nullptr;
    KvEmulation::reset();
    TargetBuilder other;
    other.add(item("HCN").element(fileSystemElement(1, "//config//a.cfg")
                                      .parameter("VERSION", "1.0")
                                      .parameter("VALID", std::uint64_t(0))
                                      .parameter("ACTIVE", std::uint64_t(0))));
    other.serve();
    openTransferClient();
    EXPECT_EQ(makeDir(top, "config"), 0);
    const std::string image = firmwareImage(KvCVersion("2.0"), 22);
    EXPECT_EQ(put("/mnt/cn/cfdrive/config", "x", image), static_cast<std::int64_t>(image.size()));
    EXPECT_EQ(rename("/mnt/cn/cfdrive/config", "x", "a.cfg"), 0);
    const Shown shown = scanElement(HCN / UPDATE_INFO / FILESYSTEM_ELEMENT);
    EXPECT_EQ(shown.checksum, 22U);
    EXPECT_EQ(shown.version, "1.0");
    EXPECT_EQ(shown.valid, 0);
    EXPECT_EQ(shown.active, 0);
}

TEST_F(TargetFiles, ManyFilesInDeepFoldersAreNoTrouble) {
    std::string folder = top;
    for (int depth = 0; depth < 60; ++depth) {
        ASSERT_EQ(makeDir(folder, "folder"), 0);
        folder += "/folder";
        ASSERT_EQ(put(folder, "file"), 7);
    }
    EXPECT_THAT(target.folder().list(), Contains(testing::EndsWith("/folder/folder/file")));
}

TEST_F(TargetFiles, AClientOutlivesItsDeviceHandle) {
    EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
    device = nullptr;
    EXPECT_EQ(put(top, "a"), 7);
}

} // namespace
