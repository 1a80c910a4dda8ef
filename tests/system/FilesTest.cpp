#include "Files.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

std::string contentOf(std::FILE* file) {
    std::string result;
    std::array<char, 64> piece{};
    while (const std::size_t length = std::fread(piece.data(), 1, piece.size(), file)) {
        result.append(piece.data(), length);
    }
    return result;
}

/// Half of a character pair, which is no text on any system.
std::wstring illFormed() {
    return {L'a', static_cast<wchar_t>(0xD800), L'b'};
}

class FilesTest : public testing::Test {
protected:
    /// The path of `name` below the test's folder.
    [[nodiscard]] std::wstring path(const std::string& name) const { return (folder_.path() / name).wstring(); }
    /// A name that needs characters of every length in UTF-8.
    [[nodiscard]] std::wstring foreignPath() const { return folder_.path().wstring() + L"/\u00E4\u4E2D\U0001F600.bin"; }
    [[nodiscard]] std::wstring written(const std::string& name, std::string_view content) const {
        static_cast<void>(folder_.write(name, content));
        return path(name);
    }
    [[nodiscard]] std::wstring madeFolder(const std::string& name) const {
        std::filesystem::create_directories(folder_.path() / name);
        return path(name);
    }
    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }

private:
    ScratchFolder folder_;
};

} // namespace

TEST_F(FilesTest, AFileIsReadAsItsBytes) {
    const std::string content = "a\r\nb\n\x1A\0c\xFF"s;
    const FileStream file = openForReading(written("data", content));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(contentOf(file.get()), content);
}

TEST_F(FilesTest, WhatIsMissingCannotBeReadAndIsNotCreated) {
    EXPECT_EQ(openForReading(path("missing")), nullptr);
    EXPECT_EQ(openForReading(path("no folder") + L"\\missing"), nullptr);
    EXPECT_EQ(openForReading(L""), nullptr);
    EXPECT_FALSE(folder().has("missing"));
}

TEST_F(FilesTest, AFolderCannotBeRead) {
    const std::wstring name = madeFolder("sub");
    for (const std::wstring& path : {name, name + L"\\"}) {
        EXPECT_EQ(openForReading(path), nullptr);
        EXPECT_EQ(otherKindOf(path), "a folder");
    }
    EXPECT_EQ(openForWriting(name), nullptr);
}

TEST_F(FilesTest, ARegularFileIsOfNoOtherKindAndWhatIsMissingNeither) {
    const std::wstring file = written("data", "");
    for (const std::wstring& name : {file, path("missing"), path("no folder") + L"\\missing", L""s, illFormed()}) {
        EXPECT_EQ(otherKindOf(name), "") << testing::PrintToString(name);
    }
}

TEST_F(FilesTest, TheSizeOfAnOpenFileIsThatOfTheFile) {
    for (const std::string& content : {""s, "a\r\nb"s, std::string(100000, 'x')}) {
        const FileStream file = openForReading(written("data", content));
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(sizeOfOpenFile(*file), content.size());
    }
}

TEST_F(FilesTest, TheBeginningOfAFileIsReadAsFarAsItGoes) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"", ""s}, {"a\r\n"s, "a\r\n"s}, {"abcd", "abcd"}, {"abcde", "abcd"}, {std::string(9999, 'x'), "xxxx"}};
    for (const auto& [content, expected] : rows) {
        std::array<std::uint8_t, 4> beginning{};
        const std::optional<std::size_t> size = readBeginning(written("data", content), beginning);
        ASSERT_EQ(size, expected.size());
        EXPECT_EQ(std::string(beginning.begin(), beginning.begin() + static_cast<std::ptrdiff_t>(*size)), expected);
    }
    std::array<std::uint8_t, 4> beginning{};
    EXPECT_EQ(readBeginning(folder().path().wstring() + L"\\missing", beginning), std::nullopt);
    EXPECT_EQ(readBeginning(folder().path().wstring(), beginning), std::nullopt);
}

TEST_F(FilesTest, ABackslashSeparatesAsASlashDoes) {
    static_cast<void>(written("sub/deep/data", "12345"));
    for (const wchar_t* below :
         {L"\\sub\\deep\\data", L"/sub\\deep/data", L"\\sub/deep\\data", L"\\sub\\.\\deep\\data"}) {
        const std::wstring name = folder().path().wstring() + below;
        EXPECT_NE(openForReading(name), nullptr) << testing::PrintToString(name);
        EXPECT_TRUE(pathExists(name));
        EXPECT_TRUE(hasFileAttributes(name));
        EXPECT_EQ(sizeOfFileCreatedIfMissing(name), 5U);
    }
    EXPECT_NE(openForWriting(folder().path().wstring() + L"\\sub\\new"), nullptr);
    EXPECT_TRUE(folder().has("sub/new"));
}

TEST_F(FilesTest, NamesMayHoldAnyCharacters) {
    {
        const FileStream file = openForWriting(foreignPath());
        ASSERT_NE(file, nullptr);
        std::fputs("abc", file.get());
    }
    const FileStream file = openForReading(foreignPath());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(contentOf(file.get()), "abc");
    EXPECT_TRUE(pathExists(foreignPath()));
    EXPECT_TRUE(hasFileAttributes(foreignPath()));
    EXPECT_EQ(sizeOfFileCreatedIfMissing(foreignPath()), 3U);
}

TEST_F(FilesTest, ANameThatIsNoTextNamesNoFile) {
    EXPECT_EQ(openForReading(illFormed()), nullptr);
    EXPECT_FALSE(pathExists(illFormed()));
    EXPECT_FALSE(hasFileAttributes(illFormed()));
}

TEST_F(FilesTest, WritingCreatesAFileOfTheBytesGiven) {
    const std::string content = "a\r\nb\n\x1A\0c\xFF"s;
    {
        const FileStream file = openForWriting(path("new"));
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(std::fwrite(content.data(), 1, content.size(), file.get()), content.size());
    }
    EXPECT_EQ(folder().read("new"), content);
}

TEST_F(FilesTest, WritingEmptiesAnExistingFileAtOnce) {
    const FileStream file = openForWriting(written("old", "content"));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(folder().read("old"), "");
    EXPECT_TRUE(folder().has("old"));
}

TEST_F(FilesTest, NothingIsWrittenIntoAFolderThatDoesNotExist) {
    EXPECT_EQ(openForWriting(path("no folder") + L"\\new"), nullptr);
    EXPECT_EQ(openForWriting(L""), nullptr);
    EXPECT_FALSE(folder().has("no folder"));
}

TEST_F(FilesTest, FilesAndFoldersExist) {
    const std::wstring file = written("data", "");
    const std::wstring sub = madeFolder("sub");
    for (const std::wstring& name : {file, sub}) {
        EXPECT_TRUE(pathExists(name));
        EXPECT_TRUE(hasFileAttributes(name));
    }
}

TEST_F(FilesTest, WhatIsMissingDoesNotExist) {
    const std::wstring file = written("data", "");
    for (const std::wstring& name : {path("missing"), path("no folder") + L"\\missing", file + L"\\below", L""s}) {
        EXPECT_FALSE(pathExists(name)) << testing::PrintToString(name);
        EXPECT_FALSE(hasFileAttributes(name)) << testing::PrintToString(name);
    }
    EXPECT_FALSE(folder().has("missing"));
}

TEST_F(FilesTest, TheSizeIsCountedInBytesAndTheFileStaysAsItIs) {
    EXPECT_EQ(sizeOfFileCreatedIfMissing(written("data", "a\r\nb")), 4U);
    EXPECT_EQ(folder().read("data"), "a\r\nb");
    EXPECT_EQ(sizeOfFileCreatedIfMissing(written("empty", "")), 0U);
}

TEST_F(FilesTest, ASizeBeyond32BitsIsToldWhole) {
    const std::wstring name = written("large", "");
    constexpr std::uint64_t size = 0x100000003ULL;
    std::error_code error;
    std::filesystem::resize_file(name, size, error);
    if (error) {
        GTEST_SKIP() << "no room for a large file: " << error.message();
    }
    EXPECT_EQ(sizeOfFileCreatedIfMissing(name), size);
}

TEST_F(FilesTest, AskingForTheSizeCreatesAMissingFile) {
    EXPECT_EQ(sizeOfFileCreatedIfMissing(path("missing")), 0U);
    EXPECT_TRUE(folder().has("missing"));
    EXPECT_EQ(folder().read("missing"), "");
}

TEST_F(FilesTest, TheSizeOfWhatCannotBeOpenedIsZero) {
    EXPECT_EQ(sizeOfFileCreatedIfMissing(path("no folder") + L"\\missing"), 0U);
    EXPECT_EQ(sizeOfFileCreatedIfMissing(madeFolder("sub")), 0U);
    EXPECT_EQ(sizeOfFileCreatedIfMissing(L""), 0U);
    EXPECT_FALSE(folder().has("no folder"));
}

TEST_F(FilesTest, NothingIsLeftOpen) {
    const std::wstring file = written("data", "abc");
    const std::wstring sub = madeFolder("sub");
    const auto nextDescriptor = [&] { return fileno(openForReading(file).get()); };
    const int before = nextDescriptor();
    static_cast<void>(openForWriting(file));
    static_cast<void>(openForReading(sub));
    static_cast<void>(sizeOfFileCreatedIfMissing(file));
    static_cast<void>(sizeOfFileCreatedIfMissing(sub));
    static_cast<void>(sizeOfFileCreatedIfMissing(path("new")));
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(FilesTest, AResolvedPathIsAbsoluteAndWithoutDots) {
    const std::string file = resolvedPath(written("sub/data", "1"));
    const std::string top = resolvedPath(folder().path().wstring());
    EXPECT_EQ(file, top + "/sub/data");
    EXPECT_TRUE(std::filesystem::path(top).is_absolute()) << top;
    for (const wchar_t* below : {L"/sub/data", L"\\sub\\data", L"/./sub//data", L"/sub/../sub\\.\\data"}) {
        EXPECT_EQ(resolvedPath(folder().path().wstring() + below), file) << testing::PrintToString(below);
    }
    for (const wchar_t* below : {L"", L"/", L"\\", L"/sub/.."}) {
        EXPECT_EQ(resolvedPath(folder().path().wstring() + below), top) << testing::PrintToString(below);
    }
}

TEST_F(FilesTest, APathWithAnyCharactersIsResolvedToUtf8) {
    EXPECT_EQ(openForReading(foreignPath()), nullptr);
    (void)openForWriting(foreignPath());
    EXPECT_EQ(resolvedPath(foreignPath()),
              resolvedPath(folder().path().wstring()) + "/\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80.bin");
}

TEST_F(FilesTest, WhatDoesNotExistHasNoResolvedPath) {
    for (const std::wstring& missing : {path("missing"), path("missing/data"), std::wstring(), illFormed()}) {
        EXPECT_EQ(resolvedPath(missing), "") << testing::PrintToString(missing);
        EXPECT_FALSE(isLink(missing));
    }
}

TEST_F(FilesTest, LinksAreKnownAndResolved) {
    const std::string file = resolvedPath(written("sub/data", "1"));
    std::error_code failed;
    std::filesystem::create_symlink("sub/data", folder().path() / "link", failed);
    std::filesystem::create_symlink("nowhere", folder().path() / "dangling", failed);
    EXPECT_FALSE(isLink(path("sub/data")));
    EXPECT_FALSE(isLink(path("sub")));
    if (failed) {
        GTEST_SKIP() << "No links here.";
    }
    EXPECT_TRUE(isLink(path("link")));
    EXPECT_EQ(resolvedPath(path("link")), file);
    EXPECT_TRUE(isLink(path("dangling")));
    EXPECT_EQ(resolvedPath(path("dangling")), "");
}
