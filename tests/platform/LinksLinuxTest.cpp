// Links in the folder of a target: nothing outside it is reached through them.

#include "TargetFixtures.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(TargetState, AStateThatIsALinkIsNotWrittenThrough) {
    serveElement(updateElement(1));
    const ScratchFolder outside;
    fs::create_directory_symlink(outside.path(), target.folder().path() / "state");
    openRoot();
    EXPECT_NE(tryLock(), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    EXPECT_NE(KvHIM_FORCE_resetDevice(errors(), openDevice(), 0), 0);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    EXPECT_THAT(outside.list(), IsEmpty());
}

TEST_F(TargetState, ALinkInPlaceOfAStateFileIsNotWrittenThrough) {
    serveElement(updateElement(1));
    const ScratchFolder outside;
    outside.write("secret", "secret");
    const fs::path elements = target.folder().path() / "state" / "elements";
    fs::create_directories(elements);
    const std::string name = fs::path(elementFile).filename().string();
    fs::create_symlink(outside.path() / "secret", elements / name);
    fs::create_symlink(outside.path() / "secret", elements / (name + ".tmp"));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    EXPECT_EQ(outside.read("secret"), "secret");
    EXPECT_EQ(scanElement(element).version, "2.0");
}

TEST_F(TargetState, AStateFileThatCannotBeReadStaysInPlace) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    const fs::path file = target.folder().path() / elementFile;
    fs::create_directories(file.parent_path());
    // The first can be opened, but its first byte cannot be read; the second cannot even be opened.
    for (const fs::path& unreadable : {fs::path("/proc/self/mem"), file}) {
        fs::create_symlink(unreadable, file);
        Status status;
        EXPECT_NE(tryQuery(1, status), 0U) << unreadable;
        EXPECT_THAT(takeErrorTexts(), ElementsAre(StartsWith("Cannot read \""))) << unreadable;
        EXPECT_TRUE(fs::is_symlink(file)) << unreadable;
        fs::remove(file);
    }
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
}

TEST_F(TargetState, ALinkInPlaceOfTheLockIsRefused) {
    serveElement(updateElement(1));
    const ScratchFolder outside;
    fs::create_directory(target.folder().path() / "state");
    fs::create_symlink(outside.path() / "new", target.folder().path() / "state" / "lock");
    openRoot();
    EXPECT_NE(tryLock(), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    EXPECT_THAT(outside.list(), IsEmpty());
}

TEST_F(TargetFiles, NoLinkIsEverFollowed) {
    const ScratchFolder outside;
    outside.write("secret", "secret");
    EXPECT_EQ(put(top, "a"), 7);
    fs::create_directory_symlink(outside.path(), onDisk("folder"));
    fs::create_symlink(outside.path() / "secret", onDisk("file"));
    fs::create_symlink(outside.path() / "new", onDisk("dangling"));
    EXPECT_NE(makeDir("/mnt/cn/cfdrive/folder", "b"), 0);
    EXPECT_NE(makeDir(top, "folder"), 0);
    EXPECT_EQ(put("/mnt/cn/cfdrive/folder", "secret"), -1);
    EXPECT_EQ(put(top, "file"), -1);
    EXPECT_EQ(put(top, "dangling"), -1);
    EXPECT_LT(rename(top, "file", "b"), 0);
    EXPECT_LT(rename(top, "a", "file"), 0);
    EXPECT_LT(rename("/mnt/cn/cfdrive/folder", "secret", "b"), 0);
    EXPECT_THAT(takeErrorCodes(), AllOf(SizeIs(8), Each(EmulationErrorCodes::fileAccess)));
    EXPECT_THAT(outside.list(), ElementsAre("secret"));
    EXPECT_EQ(outside.read("secret"), "secret");
}

TEST_F(TargetFiles, ARootFolderThatIsALinkIsRefused) {
    const ScratchFolder outside;
    fs::create_directory(target.folder().path() / "state");
    fs::create_directory_symlink(outside.path(), target.folder().path() / "state" / "cfdrive");
    EXPECT_EQ(put(top, "a"), -1);
    EXPECT_NE(makeDir(top, "a"), 0);
    EXPECT_THAT(takeErrorCodes(), SizeIs(2));
    EXPECT_THAT(outside.list(), IsEmpty());
}

} // namespace
