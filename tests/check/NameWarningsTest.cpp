#include "CheckFixture.h"

#include <filesystem>

namespace {

using KvNReflasher::KvTFinding;
class CheckNames : public CheckTest {
protected:
    CheckNames() {
        folder().write("sub/b.bin", "content");
        folder().write("A.bin", "content");
    }

    std::string codesOfName(const char* name) {
        return codes(ArchiveBuilder().entry(goodEntry().set("name", joined("\"", name, "\""))).text());
    }
    std::string codesOfTargetPath(const char* path) {
        const ObjectText entry = goodEntry().remove("id").set("targetPath", joined("\"", path, "\""));
        return codes(ArchiveBuilder().entry(entry).text());
    }
};

TEST_F(CheckNames, ANameThatIsAPathIsAWarning) {
    EXPECT_EQ("", codesOfName("a.bin"));
    EXPECT_EQ("name-with-separator", codesOfName("sub/b.bin"));
    EXPECT_EQ("name-with-separator", codesOfName("sub\\\\b.bin"));
}

TEST_F(CheckNames, ANameThatLeadsOutOfTheArchiveFolderIsAWarning) {
    // Nothing outside is looked for.
    EXPECT_EQ("outside-archive", codesOfName("../nowhere.bin"));
    const KvTFinding finding = check(ArchiveBuilder().entry(goodEntry().set("name", "\"sub/../../x\"")).text()).front();
    EXPECT_EQ("outside-archive", finding.code);
    EXPECT_EQ("$.files[0].name", finding.path);
}

TEST_F(CheckNames, NamesThatDifferOnlyInCaseAreAWarning) {
    const auto entryOf = [](const char* name, const char* id) { return goodEntry().set("name", name).set("id", id); };
    const std::string text = ArchiveBuilder()
                                 .entry(entryOf("\"a.bin\"", "1"))
                                 .entry(entryOf("\"a.bin\"", "2"))
                                 .entry(entryOf("\"A.bin\"", "3"))
                                 .text();
    const KvTFinding finding = onlyFinding(text);
    EXPECT_EQ("name-case", finding.code);
    EXPECT_EQ("$.files[2].name", finding.path);
    EXPECT_EQ("The names \"A.bin\" and \"a.bin\" differ only in case.", finding.message);
}

TEST_F(CheckNames, LettersOfAllAlphabetsHaveACase) {
    const std::string text = ArchiveBuilder()
                                 .entry(goodEntry().set("name", "\"\u00FC.bin\"").set("id", "1"))
                                 .entry(goodEntry().set("name", "\"\u00DC.bin\"").set("id", "2"))
                                 .text();
    EXPECT_EQ("update-file-missing name-case update-file-missing", codes(text));
}

TEST_F(CheckNames, TargetPathsThatDifferOnlyInCaseAreAWarning) {
    const auto entryOf = [](const char* boardType, const char* path) {
        return goodEntry().remove("id").set("boardType", boardType).set("targetPath", path);
    };
    const std::string text = ArchiveBuilder()
                                 .entry(entryOf("\"QB\"", "\"etc/x.ini\""))
                                 .entry(entryOf("\"QC\"", "\"etc/x.ini\""))
                                 .entry(entryOf("\"QC\"", "\"etc/X.ini\""))
                                 .text();
    const KvTFinding finding = onlyFinding(text);
    EXPECT_EQ("target-path-case", finding.code);
    EXPECT_EQ("$.files[2].targetPath", finding.path);
    EXPECT_EQ("The target paths \"etc/X.ini\" and \"etc/x.ini\" differ only in case.", finding.message);
}

TEST_F(CheckNames, ATargetPathThatLeavesTheTargetIsAWarning) {
    EXPECT_EQ("", codesOfTargetPath("etc/../x.ini"));
    EXPECT_EQ("outside-target", codesOfTargetPath("etc/../../x.ini"));
    EXPECT_EQ("outside-target", codesOfTargetPath("..\\\\x.ini"));
    const std::string board = R"({"boardType": "QB", "targetPath": "..\\x"})";
    EXPECT_EQ("$.files[0].boards[0].targetPath",
              onlyFinding(ArchiveBuilder().entry(entryWithBoards(board)).text()).path);
}

TEST_F(CheckNames, ATargetPathThatNamesTheRootFolderAgainIsAWarning) {
    for (const char* path : {"/mnt/cn/cfdrive/etc/x.ini", "mnt/cn/cfdrive/x.ini", "/mnt/cn/cfdrive"}) {
        EXPECT_EQ("target-path-with-root", codesOfTargetPath(path)) << path;
    }
    for (const char* path : {"/mnt/cn/cfdrive2/x.ini", "/mnt/x.ini", "etc/mnt/cn/cfdrive/x.ini", "/etc/x.ini"}) {
        EXPECT_EQ("", codesOfTargetPath(path)) << path;
    }
    const ObjectText entry = goodEntry().remove("id").set("targetPath", "\"/mnt/cn/cfdrive/x\"");
    const KvTFinding finding = onlyFinding(ArchiveBuilder().entry(entry).text());
    EXPECT_EQ("The target path \"/mnt/cn/cfdrive/x\" is taken below /mnt/cn/cfdrive.", finding.message);
    EXPECT_EQ("Leave \"/mnt/cn/cfdrive\" out.", finding.hint);
}

TEST_F(CheckNames, ATargetPathWithABackslashIsAWarning) {
    EXPECT_EQ("target-path-separator", codesOfTargetPath("etc\\\\x.ini"));
}

TEST_F(CheckNames, ATargetPathWithoutFileNameIsAWarning) {
    for (const char* path : {"", "/", "etc/"}) {
        EXPECT_EQ("target-path-without-name", codesOfTargetPath(path)) << path;
    }
}

} // namespace
