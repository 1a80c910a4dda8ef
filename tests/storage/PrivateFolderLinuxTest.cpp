#include "EnvironmentVariable.h"
#include "OrdinaryUserLinux.h"
#include "PrivateFolder.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(PrivateFolder, IsForItsUserAlone) {
    std::string reason;
    const std::unique_ptr<KvCPrivateFolder> folder = KvCPrivateFolder::create(reason);
    ASSERT_NE(folder, nullptr) << reason;
    struct stat status {};
    ASSERT_EQ(stat(std::filesystem::path(folder->path()).parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST(PrivateFolder, IsNotMadeWhereOthersMayReplaceIt) {
    const ScratchFolder all;
    const EnvironmentVariable place("TMPDIR", all.text());
    std::string reason;
    for (const mode_t mode : {0777U, 0770U}) {
        ASSERT_EQ(chmod(all.text().c_str(), mode), 0);
        EXPECT_EQ(KvCPrivateFolder::create(reason), nullptr);
        EXPECT_EQ(reason, "others may replace what is in '" + all.text() +
                              "': only its owner may write there, unless it has the sticky bit");
    }
    for (const mode_t mode : {01777U, 0700U, 0755U}) {
        ASSERT_EQ(chmod(all.text().c_str(), mode), 0);
        EXPECT_NE(KvCPrivateFolder::create(reason), nullptr) << reason;
    }
}

TEST(PrivateFolder, WithoutALockIsRemovedWhenItIsOld) {
    namespace fs = std::filesystem;
    const ScratchFolder all;
    const EnvironmentVariable place("TMPDIR", all.text());
    for (const char* name : {"kvreflash-archive-old", "kvreflash-archive-new", "other"}) {
        static_cast<void>(all.write(std::string(name) + "/archive/a", "1"));
    }
    for (const char* name : {"kvreflash-archive-old", "other"}) {
        fs::last_write_time(all.path() / name, fs::file_time_type::clock::now() - std::chrono::hours(2));
    }
    std::string reason;
    EXPECT_NE(KvCPrivateFolder::create(reason), nullptr) << reason;
    EXPECT_FALSE(all.has("kvreflash-archive-old"));
    EXPECT_TRUE(all.has("kvreflash-archive-new/archive/a"));
    EXPECT_TRUE(all.has("other/archive/a"));
}

TEST(PrivateFolder, OfAnotherSessionThatGoesOnStays) {
    std::string reason;
    const std::unique_ptr<KvCPrivateFolder> first = KvCPrivateFolder::create(reason);
    ASSERT_NE(first, nullptr) << reason;
    EXPECT_NE(KvCPrivateFolder::create(reason), nullptr) << reason;
    EXPECT_TRUE(std::filesystem::is_directory(first->path()));
}

TEST(PrivateFolder, IsNotMadeInAFolderOfSomebodyElse) {
    const ScratchFolder all;
    constexpr uid_t nobody = 65534;
    if (chown(all.text().c_str(), nobody, static_cast<gid_t>(-1)) != 0) {
        GTEST_SKIP() << "only root gives folders away";
    }
    const EnvironmentVariable place("TMPDIR", all.text());
    std::string reason;
    EXPECT_EQ(KvCPrivateFolder::create(reason), nullptr);
    EXPECT_TRUE(reason.starts_with("others may replace what is in "));
}

TEST(PrivateFolder, IsNotMadeWhereItsUserMayNotWrite) {
    const ScratchFolder all;
    const EnvironmentVariable place("TMPDIR", all.text());
    const OrdinaryUser user;
    ASSERT_EQ(chmod(all.text().c_str(), 0500), 0);
    std::string reason;
    EXPECT_EQ(KvCPrivateFolder::create(reason), nullptr);
    EXPECT_EQ(reason, "no folder can be made in '" + all.text() + "'");
    ASSERT_EQ(chmod(all.text().c_str(), 0700), 0);
}

} // namespace
