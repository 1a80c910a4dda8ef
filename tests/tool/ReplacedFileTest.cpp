#include "ReplacedFile.h"

#include "PathTexts.h"
#include "ScratchFolder.h"
#include "UserFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace {

using ReplacedNames = std::vector<std::string>;

/// Opens a file that can be replaced.
void openFile(ReplacedFile& file, const std::filesystem::path& path) {
    ASSERT_EQ(file.open(path), 0) << path;
    ASSERT_TRUE(file.isOpen());
}

TEST(ReplacedFile, AppearsWhole) {
    const ScratchFolder folder;
    ReplacedFile file;
    openFile(file, folder.path() / "r.json");
    EXPECT_FALSE(folder.has("r.json"));
    EXPECT_EQ(file.commit("the report"), 0);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(folder.read("r.json"), "the report");
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
}

TEST(ReplacedFile, TakesAnEmptyContentAndOneBeyondWhatIsReserved) {
    const ScratchFolder folder;
    for (const std::string& content : {std::string(), std::string((3U << 20U) + 1, 'x')}) {
        ReplacedFile file;
        openFile(file, folder.path() / "r.json");
        EXPECT_EQ(file.commit(content), 0);
        EXPECT_TRUE(folder.read("r.json") == content) << content.size();
    }
}

TEST(ReplacedFile, StaysAsItWasUntilItIsReplaced) {
    const ScratchFolder folder;
    folder.write("r.json", "of an earlier update, and longer");
    ReplacedFile file;
    openFile(file, folder.path() / "r.json");
    EXPECT_EQ(folder.read("r.json"), "of an earlier update, and longer");
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("r.json"), "new");
}

TEST(ReplacedFile, StaysAsItWasWhenNothingBecomesOfIt) {
    const ScratchFolder folder;
    folder.write("r.json", "earlier");
    {
        ReplacedFile file;
        openFile(file, folder.path() / "r.json");
        EXPECT_EQ(folder.list().size(), 2U);
    }
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
    ReplacedFile file;
    openFile(file, folder.path() / "r.json");
    file.discard();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
    EXPECT_EQ(folder.read("r.json"), "earlier");
    EXPECT_EQ(file.commit("late"), EBADF);
}

TEST(ReplacedFile, LeavesAloneWhatSomebodyElseHasBesideIt) {
    const ScratchFolder folder;
    folder.write("r.json.new", "somebody's");
    ReplacedFile file;
    openFile(file, folder.path() / "r.json");
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("r.json.new"), "somebody's");
    EXPECT_EQ(folder.list(), (ReplacedNames{"r.json", "r.json.new"}));
}

TEST(ReplacedFile, OfSeveralTheLastOneWinsWhole) {
    const ScratchFolder folder;
    ReplacedFile first;
    ReplacedFile second;
    openFile(first, folder.path() / "r.json");
    openFile(second, folder.path() / "r.json");
    EXPECT_EQ(second.commit(std::string(5000, '2')), 0);
    EXPECT_EQ(folder.read("r.json"), std::string(5000, '2'));
    EXPECT_EQ(first.commit("1"), 0);
    EXPECT_EQ(folder.read("r.json"), "1");
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
}

TEST(ReplacedFile, MayBeHandedOn) {
    const ScratchFolder folder;
    ReplacedFile opened;
    openFile(opened, folder.path() / "r.json");
    ReplacedFile file(std::move(opened));
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("r.json"), "new");
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
}

TEST(ReplacedFile, MayHaveANameOfAnyAlphabet) {
    const ScratchFolder folder;
    folder.write("gr\xC3\xBCn/other", "");
    ReplacedFile file;
    openFile(file, filePath(folder.text() + "/gr\xC3\xBCn/\xE2\x82\xAC.json"));
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("gr\xC3\xBCn/\xE2\x82\xAC.json"), "new");
}

TEST(ReplacedFile, IsRefusedWhereItCannotBe) {
    const ScratchFolder folder;
    folder.write("folder/file", "");
    const struct {
        std::string path;
        int error;
    } rows[] = {{folder.text() + "/missing/r.json", ENOENT},
                {folder.text() + "/folder", EISDIR},
                {folder.text() + "/missing/", ENOENT},
                {"", ENOENT},
                {folder.text() + "/" + std::string(256, 'x'), ENAMETOOLONG}};
    for (const auto& row : rows) {
        ReplacedFile file;
        EXPECT_EQ(file.open(filePath(row.path)), row.error) << row.path;
        EXPECT_FALSE(file.isOpen());
    }
    ReplacedFile file;
    EXPECT_NE(file.open(folder.path() / "folder" / "file" / "r.json"), 0);
    EXPECT_EQ(folder.list(), (ReplacedNames{"folder", "folder/file"}));
}

TEST(ReplacedFile, LeavesNothingWhenItCannotBeReplacedAnyMore) {
    const ScratchFolder folder;
    folder.write("aside/inside", "");
    ReplacedFile file;
    openFile(file, folder.path() / "r.json");
    std::filesystem::rename(folder.path() / "aside", folder.path() / "r.json");
    EXPECT_NE(file.commit("new"), 0) << "a folder has taken its place";
    EXPECT_EQ(folder.list(), (ReplacedNames{"r.json", "r.json/inside"}));
}

TEST(ReplacedFile, IsRemovedBeforeTheProcessEndsWithoutDestructors) {
    const ScratchFolder folder;
    folder.write("r.json", "earlier");
    ReplacedFile first;
    ReplacedFile second;
    openFile(first, folder.path() / "r.json");
    openFile(second, folder.path() / "other.json");
    removeTemporaryFiles();
    first.discard();
    second.discard();
    EXPECT_EQ(folder.list(), ReplacedNames{"r.json"});
    EXPECT_EQ(folder.read("r.json"), "earlier");
}

TEST(FileFailure, StatesWhyInWords) {
    const ScratchFolder folder;
    EXPECT_EQ(fileFailure("cannot write", folder.text() + "/r.json", ENOSPC),
              "cannot write " + quotedPath(folder.text() + "/r.json") + ": " + std::generic_category().message(ENOSPC));
    EXPECT_EQ(fileFailure("cannot write", folder.text(), EACCES),
              "cannot write " + quotedPath(folder.text()) + ": " + std::generic_category().message(EISDIR));
    EXPECT_EQ(fileFailure("cannot create", "pipe", ENXIO), "cannot create " + quotedPath("pipe") + ": nobody reads it");
}

} // namespace
