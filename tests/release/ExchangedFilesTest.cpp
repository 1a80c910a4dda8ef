// Archives that change after they were opened.

#include "Package.h"
#include "ScratchFolder.h"
#include "SealedFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::Field;

TEST(ExchangedFiles, AFolderThatIsGoneCannotBeListed) {
    const ScratchFolder folder;
    KvCSealedFolder stored((folder.path() / "gone").wstring());
    EXPECT_THAT(stored.differencesFrom({}),
                ElementsAre(Field(&KvTStoredDifference::fault, "the archive folder cannot be listed")));
}

TEST(ExchangedFiles, AFileThatThePackageDoesNotHaveCannotBeRead) {
    const ScratchFolder folder;
    static_cast<void>(folder.write("a.kva", std::string(2048, '\0')));
    KvCPackage package(openForReading((folder.path() / "a.kva").wstring()));
    std::string reason;
    EXPECT_FALSE(package.read(
        {.name = "a", .size = 1}, [](KvTBytes) { return true; }, reason));
    EXPECT_EQ(reason, "cannot be read");
}

} // namespace
