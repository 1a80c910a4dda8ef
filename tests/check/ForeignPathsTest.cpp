#include "ForeignPaths.h"

#include "CheckFixture.h"
#include "Files.h"
#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <system_error>

namespace {

using testing::ElementsAre;
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
    for (const char* name :
         {"..", "../outside.bin", R"(..\outside.bin)", "sub/../../outside.bin", "/../outside.bin",
          "missing/../../outside.bin", "missing/./../../outside.bin", "../archive2/a.bin", "../missing/a.bin"}) {
        EXPECT_TRUE(leaves(name)) << name;
    }
}

TEST_F(LeavesArchiveFolder, AFolderThatIsMissingIsJudgedByItsText) {
    const std::wstring missing = L"no such folder/archive";
    for (const char* name : {"a.bin", "../archive/a.bin", "sub/../a.bin", "../../no such folder/archive/a.bin"}) {
        EXPECT_FALSE(leavesArchiveFolder(missing, name)) << name;
    }
    for (const char* name : {"..", "../a.bin", "../../a.bin", "../../../no such folder/archive/a.bin",
                             "../../../../no such folder/archive/a.bin"}) {
        EXPECT_TRUE(leavesArchiveFolder(missing, name)) << name;
    }
}

TEST_F(LeavesArchiveFolder, NothingLeavesTheRoot) {
    for (const wchar_t* root : {L"", L"/.", L"\\."}) {
        for (const char* name : {"a.bin", "..", "../a.bin", "no such folder/../../a.bin"}) {
            EXPECT_FALSE(leavesArchiveFolder(root, name)) << name;
        }
    }
}

TEST_F(LeavesArchiveFolder, AboveTheRootIsTheRoot) {
    std::string up = "missing/..";
    for (unsigned levels = 0; levels < 40; ++levels) {
        up += "/..";
    }
    const std::string root = resolvedPath(folder_.path().wstring());
    EXPECT_TRUE(leaves(up + "/" + root + "/outside.bin"));
    if (!root.starts_with("/")) {
        GTEST_SKIP() << "Its path begins with a drive.";
    }
    EXPECT_FALSE(leaves(up + "/" + root + "/archive/a.bin"));
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

/// What an archive of these entries leads to outside.
class ForeignPaths : public CheckTest {
protected:
    std::vector<std::string> of(const ArchiveBuilder& description) {
        folder().write("archive.json", description.text());
        const KvCMessageCapture messages;
        KvCFirmwareArchive archive(messages.writer(), options());
        isRead_ = archive.readDescriptionFile();
        // What was read counts, not what the file says now.
        std::filesystem::remove(folder().path() / "archive.json");
        std::vector<std::string> paths;
        for (const KvNReflasher::KvTForeignPath& path : foreignPathsOf(archive)) {
            paths.push_back(std::to_string(path.descriptionIndex) + (path.isRead ? " reads " : " writes ") + path.path);
        }
        return paths;
    }
    [[nodiscard]] bool isRead() const { return isRead_; }

    static ObjectText file(const char* targetPath) { return goodEntry().remove("id").set("targetPath", targetPath); }

private:
    bool isRead_ = false;
};

TEST_F(ForeignPaths, PathsThatStayWhereTheyBelongAreNone) {
    EXPECT_THAT(of(ArchiveBuilder().entry(goodEntry()).entry(file("\"cfg/a.cfg\""))), IsEmpty());
    EXPECT_TRUE(isRead());
}

TEST_F(ForeignPaths, EachIsListedWithItsPositionInTheDescription) {
    EXPECT_THAT(of(ArchiveBuilder()
                       .entry(R"({"featureLevel": 3, "name": "../new.bin"})")
                       .entry(goodEntry().set("name", "\"../outside.bin\""))
                       .entry(goodEntry())
                       .entry(file("\"../../etc/a.cfg\"").set("name", "\"../b.cfg\""))),
                ElementsAre("1 reads ../outside.bin", "3 reads ../b.cfg", "3 writes ../../etc/a.cfg"));
}

TEST_F(ForeignPaths, EachTargetPathOfTheBoardsIsListedOnce) {
    const ObjectText entry =
        entryWithBoards(R"({"boardType": "A", "targetPath": "../x"}, {"boardType": "B", "targetPath": "../x"}, )"
                        R"({"boardType": "C", "targetPath": "../y"}, {"boardType": "D", "targetPath": "z"})");
    EXPECT_THAT(of(ArchiveBuilder().entry(entry).entry(file("\"../x\""))),
                ElementsAre("0 writes ../x", "0 writes ../y", "1 writes ../x"));
}

TEST_F(ForeignPaths, ATargetPathOfTheEntryCountsBesideThoseOfItsBoards) {
    const ObjectText entry = entryWithBoards(R"({"boardType": "A", "targetPath": "../x"}, {"boardType": "B"})");
    EXPECT_THAT(of(ArchiveBuilder().entry(ObjectText(entry).set("targetPath", "\"../all\""))),
                ElementsAre("0 writes ../all", "0 writes ../x"));
}

TEST_F(ForeignPaths, APathIsListedAsItIsWritten) {
    EXPECT_THAT(of(ArchiveBuilder().entry(goodEntry().set("name", R"("..\\sub/../gr\u00FCn.bin")"))),
                ElementsAre("0 reads ..\\sub/../gr\xC3\xBCn.bin"));
}

TEST_F(ForeignPaths, OfAnArchiveThatIsRefusedTheAcceptedEntriesCount) {
    EXPECT_THAT(of(ArchiveBuilder().entry(goodEntry().set("name", "\"../x\"")).entry("{}").entry(file("\"../y\""))),
                ElementsAre("0 reads ../x"));
    EXPECT_FALSE(isRead());
}

} // namespace
