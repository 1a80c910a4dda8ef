#include "PrivateFolder.h"
#include "FolderTree.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(PrivateFolder, LastsAsLongAsTheObject) {
    std::string reason;
    std::unique_ptr<KvCPrivateFolder> folder = KvCPrivateFolder::create(reason);
    ASSERT_NE(folder, nullptr) << reason;
    const fs::path path = folder->path();
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_GT(folder->freeSpace(), 0U);
    EXPECT_NE(folder->createFile("sub/deep/a"), nullptr);
    EXPECT_TRUE(fs::is_regular_file(path / "sub" / "deep" / "a"));
    folder.reset();
    EXPECT_FALSE(fs::exists(path.parent_path()));
}

TEST(PrivateFolder, AFileIsCreatedOnce) {
    std::string reason;
    const std::unique_ptr<KvCPrivateFolder> folder = KvCPrivateFolder::create(reason);
    ASSERT_NE(folder, nullptr) << reason;
    EXPECT_NE(folder->createFile("a"), nullptr);
    EXPECT_EQ(folder->createFile("a"), nullptr);
    EXPECT_EQ(folder->createFile("a/b"), nullptr);
}

TEST(FolderTree, ListsWhatIsBelowAFolder) {
    const ScratchFolder folder;
    static_cast<void>(folder.write("b", "12"));
    static_cast<void>(folder.write("sub/deep/a", "1"));
    fs::create_directory(folder.path() / "empty");
    const auto entries = entriesBelow(folder.path().wstring());
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 2U);
    EXPECT_EQ(entries->at(0).name, "b");
    EXPECT_EQ(entries->at(0).size, 2U);
    EXPECT_EQ(entries->at(1).name, "sub/deep/a");
    EXPECT_TRUE(entries->at(1).isRegularFile);
    EXPECT_FALSE(entriesBelow((folder.path() / "missing").wstring()));
}

TEST(FolderTree, ATreeIsRemovedWithoutFollowingLinks) {
    const ScratchFolder folder;
    const ScratchFolder elsewhere;
    static_cast<void>(folder.write("tree/sub/a", "1"));
    static_cast<void>(elsewhere.write("kept", "1"));
    std::error_code fault;
    fs::create_directory_symlink(elsewhere.path(), folder.path() / "tree" / "link", fault);
    if (!fault) {
        const auto entries = entriesBelow((folder.path() / "tree").wstring());
        ASSERT_TRUE(entries);
        ASSERT_EQ(entries->size(), 2U);
        EXPECT_EQ(entries->at(0).name, "link");
        EXPECT_FALSE(entries->at(0).isRegularFile);
    }
    removeTree(folder.path() / "tree");
    EXPECT_FALSE(fs::exists(folder.path() / "tree"));
    EXPECT_TRUE(fs::exists(elsewhere.path() / "kept"));
}

} // namespace
