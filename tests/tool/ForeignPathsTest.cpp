#include "ForeignPaths.h"

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(LeavesTargetRoot, PathsBelowTheRootStayInside) {
    for (const char* path : {"", "a.cfg", "cfg/a.cfg", "/a.cfg", "//a.cfg", "./a.cfg", "cfg/../a.cfg", "a/b/../../c",
                             "..a", "a..", "...", "C:/a.cfg", R"(cfg\..\a.cfg)", "a\n../b", "\x1b[2J"}) {
        EXPECT_FALSE(leavesTargetRoot(path)) << path;
    }
}

TEST(LeavesTargetRoot, PathsThatClimbOverTheRootLeaveIt) {
    for (const char* path : {"..", "../a.cfg", "/../a.cfg", "cfg/../../a.cfg", "./../a", "cfg/..//../a", R"(..\a.cfg)",
                             R"(cfg\..\..\a.cfg)", R"(cfg/..\../a.cfg)", "../cfdrive/a.cfg", "a/../.."}) {
        EXPECT_TRUE(leavesTargetRoot(path)) << path;
    }
}

TEST(LeavesTargetRoot, WhatStandsBehindAZeroCharacterDoesNotCount) {
    EXPECT_FALSE(leavesTargetRoot(std::string_view("a\0/../../b", 10)));
    EXPECT_TRUE(leavesTargetRoot(std::string_view("..\0a", 4)));
}

class LeavesArchiveFolder : public testing::Test {
protected:
    LeavesArchiveFolder() {
        folder_.write("archive/sub/a.bin", "");
        folder_.write("outside.bin", "");
    }
    [[nodiscard]] bool leaves(std::string_view name) const {
        return leavesArchiveFolder((folder_.path() / "archive").wstring(), name);
    }

    ScratchFolder folder_;
};

TEST_F(LeavesArchiveFolder, NamesInTheFolderAndBelowStayInside) {
    for (const char* name :
         {"", "a.bin", "missing.bin", "sub/a.bin", R"(sub\a.bin)", "sub/../a.bin", "./a.bin", "/a.bin", "/etc/passwd",
          "..a", "missing/../a.bin", "../archive/a.bin", R"(..\archive\a.bin)"}) {
        EXPECT_FALSE(leaves(name)) << name;
    }
}

TEST_F(LeavesArchiveFolder, NamesThatClimbOutOfTheFolderLeaveIt) {
    for (const char* name : {"..", "../outside.bin", R"(..\outside.bin)", "sub/../../outside.bin", "/../outside.bin",
                             "missing/../../outside.bin", "../archive2/a.bin", "../missing/a.bin"}) {
        EXPECT_TRUE(leaves(name)) << name;
    }
}

TEST_F(LeavesArchiveFolder, WhatStandsBehindAZeroCharacterDoesNotCount) {
    EXPECT_FALSE(leaves(std::string_view("a.bin\0/../../b", 14)));
    EXPECT_TRUE(leaves(std::string_view("../outside.bin\0a", 16)));
    EXPECT_TRUE(leaves(std::string_view("..\0a", 4)));
}

TEST_F(LeavesArchiveFolder, LinksAreFollowed) {
    std::error_code failed;
    std::filesystem::create_symlink("../outside.bin", folder_.path() / "archive" / "out", failed);
    std::filesystem::create_symlink("sub/a.bin", folder_.path() / "archive" / "in", failed);
    if (failed) {
        GTEST_SKIP() << "No links here.";
    }
    EXPECT_TRUE(leaves("out"));
    EXPECT_FALSE(leaves("in"));
}

TEST(ForeignPaths, AnUpdateWarnsOfEachBeforeItBegins) {
    ArchiveFolder archive;
    archive.add(entry("node.bin").board("QB4120", 1));
    archive.add(entry("../outside.bin").board("QB4120", 2));
    archive.add(entry("a.cfg").target("QB4120", "../../etc/a.cfg"));
    archive.add(entry("b.cfg").target("QB4120", "cfg/b.cfg"));
    archive.write();
    TargetBuilder target;
    target.add(completeBoard("HCN", "QB4120", 2815).element(completeElement(1, "UserFirmware")));
    const std::string rack = target.write();
    const std::vector<std::string> line{"-a", archive.folder().text(), "-t", "127.0.0.1", "--emulate", rack};
    const auto run = [&](const char* command) {
        std::vector<std::string> arguments{command};
        arguments.insert(arguments.end(), line.begin(), line.end());
        return runCaptured(arguments);
    };
    EXPECT_EQ(
        run("update").errors,
        "kvreflash: warning: file entry 1 reads \"../outside.bin\", which is outside the archive folder\n"
        "kvreflash: warning: file entry 2 writes \"../../etc/a.cfg\", which is outside the target's file system\n");
    EXPECT_EQ(run("plan").errors, "");
}

TEST(ForeignPaths, EachTargetPathOfTheBoardsIsLookedAtOnce) {
    const ScratchFolder folder;
    folder.write("archive.json",
                 R"({"info": {"formatVersion": "1.0", "archiveVersion": "1.0", "productName": "P", "archiveName": "N"},
        "files": [{"name": "a", "sequence": 0, "version": "1.0", "checksumCrc32": 1, "boards": [
            {"boardType": "A", "targetPath": "../x"}, {"boardType": "B", "targetPath": "../x"},
            {"boardType": "C", "targetPath": "../y"}, {"boardType": "D", "targetPath": "z"}]}]})");
    KvNReflasher::KvTOptions options{};
    options.archiveFolder = folder.path().wstring();
    options.descriptionFileName = L"archive.json";
    EXPECT_THAT(foreignPathsOfArchive(options), ElementsAre(HasSubstr("\"../x\""), HasSubstr("\"../y\"")));
}

TEST(ForeignPaths, AnArchiveThatCannotBeReadHasNone) {
    const ScratchFolder folder;
    KvNReflasher::KvTOptions options{};
    options.archiveFolder = folder.path().wstring();
    options.descriptionFileName = L"archive.json";
    EXPECT_THAT(foreignPathsOfArchive(options), IsEmpty());
}

} // namespace
