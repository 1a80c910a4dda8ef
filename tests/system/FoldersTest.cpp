#include "Folders.h"

#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Folders, FilesAreListedInTheOrderOfTheirNames) {
    const ScratchFolder folder;
    EXPECT_THAT(filesOfFolder(folder.path().wstring()), IsEmpty());
    for (const char* name : {"b.bin", "a.bin", ".hidden", "B.txt", "gr\xC3\xBC\xC3\x9F"}) {
        folder.write(name, "content");
    }
    folder.write("folder/inside.bin", "content");
    EXPECT_THAT(filesOfFolder(folder.path().wstring()),
                ElementsAre(".hidden", "B.txt", "a.bin", "b.bin", "gr\xC3\xBC\xC3\x9F"));
    EXPECT_THAT(filesOfFolder(folder.path().wstring() + L"\\folder"), ElementsAre("inside.bin"));
    EXPECT_THAT(filesOfFolder(folder.path().wstring() + L"/folder/"), ElementsAre("inside.bin"));
}

TEST(Folders, WhatCannotBeListedHasNoFiles) {
    const ScratchFolder folder;
    folder.write("file", "content");
    EXPECT_THAT(filesOfFolder(folder.path().wstring() + L"/missing"), IsEmpty());
    EXPECT_THAT(filesOfFolder(folder.path().wstring() + L"/file"), IsEmpty());
}

} // namespace
