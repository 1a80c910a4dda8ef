#include "OtherKindsLinux.h"
#include "Files.h"
#include "ScratchFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>

namespace {

class OtherKinds : public testing::Test {
protected:
    [[nodiscard]] std::filesystem::path path(const char* name = "thing") const { return folder_.path() / name; }
    [[nodiscard]] std::wstring name() const { return path().wstring(); }
    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }

private:
    ScratchFolder folder_;
    Patience patience_;
};

TEST_F(OtherKinds, AreNeitherOpenedNorWaitedFor) {
    for (const OtherKindCase& other : otherKindCases) {
        SCOPED_TRACE(other.about);
        ASSERT_TRUE(other.place(path()));
        std::array<std::uint8_t, 4> beginning{};
        EXPECT_EQ(openForReading(name()), nullptr);
        EXPECT_EQ(readBeginning(name(), beginning), std::nullopt);
        EXPECT_EQ(sizeOfFileCreatedIfMissing(name()), 0U);
        EXPECT_EQ(otherKindOf(name()), other.kind);
        EXPECT_TRUE(pathExists(name()));
        EXPECT_TRUE(hasFileAttributes(name()));
        removeOtherKind(path());
    }
    EXPECT_TRUE(folder().list().empty());
}

TEST_F(OtherKinds, ARegularFileBehindALinkIsOpened) {
    static_cast<void>(folder().write("file", "12345"));
    std::filesystem::create_symlink("file", path());
    const FileStream file = openForReading(name());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(sizeOfOpenFile(*file), 5U);
    EXPECT_EQ(sizeOfFileCreatedIfMissing(name()), 5U);
    EXPECT_EQ(otherKindOf(name()), "");
}

TEST_F(OtherKinds, ADanglingLinkLeadsToAFileThatIsMissing) {
    std::filesystem::create_symlink("file", path());
    EXPECT_EQ(openForReading(name()), nullptr);
    EXPECT_EQ(otherKindOf(name()), "");
    EXPECT_FALSE(folder().has("file"));
    EXPECT_EQ(sizeOfFileCreatedIfMissing(name()), 0U);
    EXPECT_EQ(folder().read("file"), "");
}

TEST_F(OtherKinds, NothingOfThemIsLeftOpen) {
    static_cast<void>(folder().write("file", ""));
    const auto nextDescriptor = [&] { return fileno(openForReading(path("file").wstring()).get()); };
    const int before = nextDescriptor();
    for (const OtherKindCase& other : otherKindCases) {
        ASSERT_TRUE(other.place(path()));
        std::array<std::uint8_t, 4> beginning{};
        static_cast<void>(openForReading(name()));
        static_cast<void>(readBeginning(name(), beginning));
        static_cast<void>(sizeOfFileCreatedIfMissing(name()));
        removeOtherKind(path());
    }
    std::array<std::uint8_t, 4> beginning{};
    EXPECT_EQ(readBeginning(path("file").wstring(), beginning), 0U);
    EXPECT_EQ(nextDescriptor(), before);
}

} // namespace
