#include "FileNames.h"

#include <gtest/gtest.h>

namespace {

TEST(FileNames, ThatEverySystemTakesForTheSameFileAreSafe) {
    for (const char* name : {"a", "a.b", "firmware.kfw", "sub/firmware.kfw", "a/b/c/d", ".hidden", "a b",
                             "\u00FCber.kfw", "NULL", "com", "COM10", "auxiliary.ini", "a..b", "...a", "sub.d/x"}) {
        EXPECT_EQ(whyUnsafe(name), "") << name;
    }
    EXPECT_EQ(whyUnsafe(std::string(255, 'x')), "");
}

TEST(FileNames, ThatDifferInCaseOnlyAreFoldedToTheSame) {
    EXPECT_EQ(foldedCaseOf("Sub/FILE.Kfw"), "sub/file.kfw");
    EXPECT_EQ(foldedCaseOf("\u00C4\u0410\u0158"), "\u00E4\u0430\u0159");
    EXPECT_EQ(foldedCaseOf("\u03C3"), foldedCaseOf("\u03C2")); // the sigma at the end of a word
    EXPECT_EQ(foldedCaseOf("\U00010400"), "\U00010428");
    EXPECT_NE(foldedCaseOf("\u00E4"), foldedCaseOf("a"));
    EXPECT_EQ(foldedCaseOf("1_\u4E2D"), "1_\u4E2D");
    EXPECT_EQ(foldedCaseOf("A\xFF\xC3"), "a\xFF\xC3");
    EXPECT_EQ(foldedCaseOf(""), "");
}

TEST(FileNames, ThatLeadElsewhereOrAreNotTheSameEverywhereAreNotSafe) {
    struct Row {
        std::string name;
        std::string why;
    };
    const Row rows[] = {{"", "it has a folder without a name"},
                        {"/a", "it has a folder without a name"},
                        {"a/", "it has a folder without a name"},
                        {"a//b", "it has a folder without a name"},
                        {".", "it has the folder '.'"},
                        {"..", "it has the folder '..'"},
                        {"../a", "it has the folder '..'"},
                        {"a/../../b", "it has the folder '..'"},
                        {"a/./b", "it has the folder '.'"},
                        {R"(a\b)", R"(it has a "\")"},
                        {R"(..\a)", R"(it has a "\")"},
                        {"C:", "Windows cannot have a file called 'C:'"},
                        {"C:a", "Windows cannot have a file called 'C:a'"},
                        {"C:/a", "Windows cannot have a file called 'C:'"},
                        {"a:stream", "Windows cannot have a file called 'a:stream'"},
                        {"a.", "Windows cannot have a file called 'a.'"},
                        {"a /b", "Windows cannot have a file called 'a '"},
                        {"a*", "Windows cannot have a file called 'a*'"},
                        {"NUL", "Windows takes 'NUL' for a device"},
                        {"sub/com1.kfw", "Windows takes 'com1.kfw' for a device"},
                        {"clock$", "Windows takes 'clock$' for a device"},
                        {"COM\u00B9.txt", "Windows takes 'COM\u00B9.txt' for a device"},
                        {"lpt\u00B3", "Windows takes 'lpt\u00B3' for a device"},
                        {"aux.ini", "Windows takes 'aux.ini' for a device"},
                        {"a\nb", "it has the character U+000A, which does not show as what it is"},
                        // NOLINTNEXTLINE(misc-misleading-bidirectional): such a character is not safe
                        {"a\u202Eb", "it has the character U+202E, which does not show as what it is"},
                        {"a\xFF", "it is not UTF-8"},
                        {"\xC3", "it is not UTF-8"},
                        {std::string("a\0b", 3), "it has the character U+0000, which does not show as what it is"},
                        {std::string(256, 'x'), "a part of it is longer than 255 bytes"}};
    for (const Row& row : rows) {
        EXPECT_EQ(whyUnsafe(row.name), row.why) << testing::PrintToString(row.name);
    }
}

} // namespace
