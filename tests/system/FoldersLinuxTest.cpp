#include "Folders.h"

#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace {

TEST(FoldersLinux, LinksCountAsWhatTheyLeadToAndPipesDoNotCount) {
    const ScratchFolder folder;
    folder.write("file", "content");
    folder.write("folder/inside", "content");
    std::filesystem::create_symlink("file", folder.path() / "to-file");
    std::filesystem::create_symlink("folder", folder.path() / "to-folder");
    std::filesystem::create_symlink("nowhere", folder.path() / "to-nothing");
    ASSERT_EQ(0, mkfifo((folder.text() + "/pipe").c_str(), 0600));
    EXPECT_THAT(filesOfFolder(folder.path().wstring()), testing::ElementsAre("file", "to-file"));
}

} // namespace
