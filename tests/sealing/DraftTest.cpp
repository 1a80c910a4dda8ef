#include "KvNJson.h"
#include "KvReleases.h"
#include "ScratchFolder.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace KvNReflasher;
using testing::IsEmpty;

TEST(Draft, OfAPlainFileHasItsChecksumAndGaps) {
    const ScratchFolder folder;
    static_cast<void>(folder.write("network.ini", "123456789"));
    const KvTDraft draft = draftArchive(folder.path().wstring());
    EXPECT_EQ(draft.fileCount, 1U);
    EXPECT_THAT(draft.faults, IsEmpty());
    const KvNJson::json description = KvNJson::json::parse(draft.description);
    const KvNJson::jsonView entry = description.view().find("files").at(0);
    EXPECT_EQ(entry.find("name").get_string(), "network.ini");
    EXPECT_EQ(entry.find("checksumCrc32").get_unsigned(), 0xCBF43926U);
    EXPECT_EQ(entry.find("targetPath").get_string(), "<path on the target>");
    EXPECT_TRUE(entry.find("version").is_null());
    EXPECT_FALSE(entry.contains("id"));
}

TEST(Draft, ListsTheFilesOfTheFolderInOrder) {
    const ScratchFolder folder;
    for (const char* name : {"b", "a", "manifest.json", "manifest.json.sig", "sub/c"}) {
        static_cast<void>(folder.write(name, ""));
    }
    const KvTDraft draft = draftArchive(folder.path().wstring());
    EXPECT_EQ(draft.fileCount, 2U);
    EXPECT_LT(draft.description.find("\"name\": \"a\""), draft.description.find("\"name\": \"b\""));
    EXPECT_EQ(draftArchive(folder.path().wstring() + L"\\missing").fileCount, 0U);
}

} // namespace
