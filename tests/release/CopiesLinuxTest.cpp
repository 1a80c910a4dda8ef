// Private copies that cannot be made.

#include "ReleaseCheck.h"
#include "ScratchFolder.h"
#include "SmallFilesLinux.h"
#include "Timestamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

constexpr rlim_t mostBytes = 8192;

class CopiesLinuxTest : public testing::Test {
protected:
    CopiesLinuxTest() {
        manifest_.created = *momentOf("2026-11-22T10:15:01Z");
        add("a.kfw", "firmware");
        add("b.kbs", std::string(mostBytes + 1, 'b'));
        add("c.kbs", std::string(std::size_t{1} << 20U, 'c'));
        static_cast<void>(folder_.write("manifest.json", textOf(manifest_)));
    }
    [[nodiscard]] std::wstring path() const { return folder_.path().wstring(); }

private:
    void add(const std::string& name, const std::string& content) {
        static_cast<void>(folder_.write(name, content));
        manifest_.files.push_back({name, content.size(), sha256Of(bytesOf(content))});
    }

    ScratchFolder folder_;
    KvTManifest manifest_;
};

} // namespace

// What the last bytes of a file are refused for shows when the copy is closed.
TEST_F(CopiesLinuxTest, ThatTheDiskDoesNotTakeAreRefusedByTheirNames) {
    KvCReleaseCheck check(path(), {});
    ASSERT_TRUE(check.open());
    ASSERT_TRUE(check.makeCopies());
    const SmallFiles full(mostBytes);
    EXPECT_FALSE(check.take({"a.kfw", "b.kbs", "c.kbs"}));
    EXPECT_THAT(check.faults(), ElementsAre("'b.kbs' cannot be copied", "'c.kbs' cannot be copied"));
}

TEST_F(CopiesLinuxTest, AreMadeOnce) {
    KvCReleaseCheck check(path(), {});
    ASSERT_TRUE(check.open());
    ASSERT_TRUE(check.makeCopies());
    std::filesystem::create_directory(std::filesystem::path(check.folderOfCopies()) / "a.kfw");
    EXPECT_FALSE(check.take({"a.kfw"}));
    EXPECT_THAT(check.faults(), ElementsAre("'a.kfw' cannot be copied"));
}
