// Files and folders that the user has no right to read.

#include "KvReleases.h"
#include "OrdinaryUserLinux.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace KvNReflasher;
using testing::ElementsAre;

class ForbiddenFiles : public testing::Test {
protected:
    ForbiddenFiles() {
        static_cast<void>(folder_.write("archive.json", R"({"info": {"formatVersion": "1.0", "archiveVersion": "1.2",
            "productName": "P", "archiveName": "N"}, "files": []})"));
        static_cast<void>(folder_.write("a.kfw", "firmware"));
        static_cast<void>(folder_.write("sub/b.kfw", "firmware"));
        static_cast<void>(folder_.write("manifest.json", seal().manifest));
    }
    void TearDown() override { std::filesystem::permissions(folder_.path() / "sub", std::filesystem::perms::all); }

    [[nodiscard]] std::wstring path() const { return folder_.path().wstring(); }
    [[nodiscard]] KvTSealing seal() const { return sealArchive({path(), L"archive.json", 0}); }
    [[nodiscard]] std::vector<std::string> pack() const {
        return packArchive(
            path(), [](std::string_view, void*) { return true; }, nullptr);
    }
    void forbid(const char* name) const {
        std::filesystem::permissions(folder_.path() / name, std::filesystem::perms::none);
    }

private:
    ScratchFolder folder_;
    OrdinaryUser user_;
};

TEST_F(ForbiddenFiles, AreNeitherSealedNorPackedNorDrafted) {
    EXPECT_THAT(pack(), testing::IsEmpty());
    forbid("a.kfw");
    EXPECT_THAT(seal().faults, ElementsAre("'a.kfw' cannot be read"));
    EXPECT_THAT(pack(), ElementsAre("'a.kfw' cannot be read"));
    EXPECT_THAT(draftArchive(path()).faults, ElementsAre("'a.kfw' cannot be read"));
}

TEST_F(ForbiddenFiles, MayBeInAFolder) {
    forbid("sub");
    EXPECT_THAT(seal().faults, ElementsAre("the archive folder cannot be listed"));
    EXPECT_THAT(pack(), ElementsAre("the archive folder cannot be listed"));
}

} // namespace
