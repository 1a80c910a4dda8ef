#include "PathTexts.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using enum ShellSyntax;

struct PathRow {
    const char* path;
    const char* posix;
    const char* windows;
};

TEST(QuotedPath, IsOneWordForTheShell) {
    for (const PathRow& row :
         {PathRow{"rack", "'rack'", "\"rack\""}, PathRow{"", "''", "\"\""},
          PathRow{"my rack", "'my rack'", "\"my rack\""}, PathRow{"it's $HOME", R"('it'\''s $HOME')", "\"it's $HOME\""},
          PathRow{"a\\b\\", R"('a\b\')", R"("a\b\\")"}, PathRow{"\\", R"('\')", R"("\\")"},
          PathRow{"gr\xC3\xBCn", "'gr\xC3\xBCn'", "\"gr\xC3\xBCn\""}, PathRow{"a&b%c", "'a&b%c'", "\"a&b%c\""}}) {
        EXPECT_EQ(quotedPath(row.path, posix), row.posix);
        EXPECT_EQ(quotedPath(row.path, windows), row.windows);
    }
}

TEST(QuotedPath, WhatCannotBeSeenIsWrittenByItsBytes) {
    EXPECT_EQ(quotedPath("a\nb", posix), "$'a\\x0Ab'");
    EXPECT_EQ(quotedPath("it's\\\x1B", posix), "$'it\\'s\\\\\\x1B'");
    EXPECT_EQ(quotedPath("\xFF", posix), "$'\\xFF'");
    // NOLINTNEXTLINE(misc-misleading-bidirectional): such a character is what has to be shown
    EXPECT_EQ(quotedPath("\xE2\x80\xAE", posix), "$'\\xE2\\x80\\xAE'");
}

TEST(ShellWord, IsQuotedOnlyIfItHasToBe) {
    for (const PathRow& row :
         {PathRow{"rack", "rack", "rack"}, PathRow{"", "''", "\"\""},
          PathRow{"/a/b-1_2.json", "/a/b-1_2.json", "/a/b-1_2.json"}, PathRow{"Z:\\a\\b", "'Z:\\a\\b'", "Z:\\a\\b"},
          PathRow{"a b", "'a b'", "\"a b\""}, PathRow{"~", "'~'", "~"}, PathRow{"a;b", "'a;b'", "\"a;b\""},
          PathRow{"a,b", "a,b", "\"a,b\""}, PathRow{"*", "'*'", "\"*\""},
          PathRow{"\xC3\xBC", "\xC3\xBC", "\xC3\xBC"}}) {
        EXPECT_EQ(shellWord(row.path, posix), row.posix);
        EXPECT_EQ(shellWord(row.path, windows), row.windows);
    }
    EXPECT_EQ(shellWord("a\nb", posix), "$'a\\x0Ab'");
}

TEST(ArchivePath, HasTheSeparatorOfTheSystem) {
    EXPECT_EQ(archivePath("a\\b/c", posix), "a/b/c");
    EXPECT_EQ(archivePath("a\\b/c", windows), "a\\b/c");
}

TEST(PastablePath, ReplacesTheLibrarysPathOfTheDescription) {
    const std::string sentence = "Cannot open archive description file a\\b.json";
    EXPECT_EQ(withPastablePath(sentence, "a", "b.json", posix), "Cannot open archive description file a/b.json");
    EXPECT_EQ(withPastablePath(sentence, "a", "b.json", windows), sentence);
    EXPECT_EQ(withPastablePath("The archive description file my a\\b is corrupt.", "my a", "b", posix),
              "The archive description file 'my a/b' is corrupt.");
    EXPECT_EQ(withPastablePath("The archive description file my a\\b is corrupt.", "my a", "b", windows),
              "The archive description file \"my a\\b\" is corrupt.");
}

TEST(PastablePath, ReplacesAPathBetweenQuotes) {
    const std::string sentence = "Cannot read checksum from update file. 'a\\it's\\c.bin' not found.";
    EXPECT_EQ(withPastablePath(sentence, "a", "b.json", posix),
              "Cannot read checksum from update file. 'a/it'\\''s/c.bin' not found.");
    EXPECT_EQ(withPastablePath(sentence, "a", "b.json", windows),
              "Cannot read checksum from update file. \"a\\it's\\c.bin\" not found.");
}

TEST(PastablePath, LeavesOtherSentencesAlone) {
    for (const char* sentence : {"", "the target 'a' is not accessible", "'a\\", "File entry 1 is invalid."}) {
        EXPECT_EQ(withPastablePath(sentence, "a", "b.json", posix), sentence);
    }
}

} // namespace
