#include "LockedFile.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

namespace {

class LockedFileTest : public testing::Test {
protected:
    [[nodiscard]] std::wstring path(const char* name) const { return (folder_.path() / name).wstring(); }

    ScratchFolder folder_;
    std::string reason_;
};

TEST_F(LockedFileTest, IsHeldAsLongAsTheObjectLasts) {
    EXPECT_FALSE(KvCLockedFile::isHeld(path("run")));
    auto file = KvCLockedFile::create(path("run"), reason_);
    ASSERT_TRUE(file) << reason_;
    EXPECT_TRUE(KvCLockedFile::isHeld(path("run")));
    EXPECT_FALSE(KvCLockedFile::take(path("run"), reason_));
    EXPECT_EQ(reason_, "");
    file.reset();
    EXPECT_FALSE(KvCLockedFile::isHeld(path("run")));
    EXPECT_TRUE(KvCLockedFile::take(path("run"), reason_)) << reason_;
}

TEST_F(LockedFileTest, IsReadByOthersWhileItGrows) {
    const auto file = KvCLockedFile::create(path("run"), reason_);
    ASSERT_TRUE(file) << reason_;
    EXPECT_EQ(KvCLockedFile::contentOf(path("run"), 100), "");
    EXPECT_TRUE(file->append("one", reason_) && file->append(" two", reason_) && file->flush(reason_)) << reason_;
    EXPECT_EQ(KvCLockedFile::contentOf(path("run"), 100), "one two");
    EXPECT_EQ(KvCLockedFile::contentOf(path("run"), 7), "one two");
    EXPECT_EQ(KvCLockedFile::contentOf(path("run"), 6), std::nullopt);
    EXPECT_EQ(KvCLockedFile::contentOf(path("other"), 6), std::nullopt);
}

TEST_F(LockedFileTest, IsNotCreatedWhereSomethingIs) {
    folder_.write("run", "content");
    EXPECT_FALSE(KvCLockedFile::create(path("run"), reason_));
    EXPECT_NE(reason_, "");
    EXPECT_EQ(folder_.read("run"), "content");
    EXPECT_FALSE(KvCLockedFile::create(folder_.path().wstring(), reason_));
    EXPECT_FALSE(KvCLockedFile::create(path("missing/run"), reason_));
    EXPECT_FALSE(KvCLockedFile::take(path("missing/run"), reason_));
    EXPECT_NE(reason_, "");
}

TEST_F(LockedFileTest, OfBeforeIsContinued) {
    folder_.write("run", "one");
    const auto file = KvCLockedFile::take(path("run"), reason_);
    ASSERT_TRUE(file) << reason_;
    EXPECT_TRUE(file->append(" two", reason_)) << reason_;
    EXPECT_EQ(KvCLockedFile::contentOf(path("run"), 100), "one two");
}

TEST_F(LockedFileTest, IsRemovedOnRequest) {
    auto file = KvCLockedFile::create(path("run"), reason_);
    ASSERT_TRUE(file) << reason_;
    file->remove();
    file.reset();
    EXPECT_FALSE(folder_.has("run"));
    EXPECT_TRUE(removeFile(path("run")));
}

TEST_F(LockedFileTest, FoldersAreMadeAsFarAsTheyAreMissing) {
    EXPECT_EQ(makeFolders(path("a/b/c")), "");
    EXPECT_EQ(makeFolders(path("a/b/c")), "");
    EXPECT_EQ(makeFolders(path("a/d")), "");
    folder_.write("file", "");
    EXPECT_NE(makeFolders(path("file")), "");
    EXPECT_NE(makeFolders(path("file/below")), "");
}

} // namespace
