#include "KvNJson.h"
#include "KvReleases.h"
#include "ScratchFolder.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace KvNReflasher;
using testing::ElementsAre;
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
}

TEST(Draft, OfAFolderThatIsNotThereIsAFault) {
    const ScratchFolder folder;
    EXPECT_THAT(draftArchive((folder.path() / "missing").wstring()).faults, ElementsAre("the folder cannot be listed"));
}

TEST(Draft, ListsWhatAHeaderAllowsAndNothingThatItLeavesOut) {
    const ScratchFolder folder;
    const std::string image = firmwareImage(KvCVersion("1.0"), 5);
    static_cast<void>(folder.write("1.kfw", image));
    static_cast<void>(folder.write("2.kfw", withHardwareIds(withSoftwareIds(image, 7, 7), 2, 4)));
    static_cast<void>(folder.write("3.kfw", withHardwareIds(image, 1, 64)));
    static_cast<void>(folder.write("4.kfw", withHardwareIds(image, 1, 65)));
    const KvNJson::json description = KvNJson::json::parse(draftArchive(folder.path().wstring()).description);
    const KvNJson::jsonView entries = description.view().find("files");
    const KvNJson::jsonView plain = entries.at(0);
    EXPECT_EQ(plain.find("version").get_string(), "1.0");
    EXPECT_EQ(plain.find("checksumCrc32").get_unsigned(), 5U);
    EXPECT_EQ(plain.find("id").get_string(), "<number of the element>");
    EXPECT_FALSE(plain.contains("hwCompatibilityId"));
    EXPECT_FALSE(plain.contains("swCompatibilityId"));
    EXPECT_EQ(entries.at(1).find("hwCompatibilityId").size(), 3U);
    EXPECT_EQ(entries.at(1).find("hwCompatibilityId").at(2).get_unsigned(), 4U);
    EXPECT_EQ(entries.at(1).find("swCompatibilityId").get_unsigned(), 7U);
    EXPECT_EQ(entries.at(2).find("hwCompatibilityId").size(), 64U);
    EXPECT_EQ(entries.at(3).find("hwCompatibilityId").get_string(), "<identifiers>");
}

} // namespace
