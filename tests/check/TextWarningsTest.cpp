#include "CheckFixture.h"

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;

class CheckTexts : public CheckTest {
protected:
    /// What is said of the texts of an entry. It is refused, so that nobody opens files of these names.
    std::vector<KvTFinding> warningsOn(ObjectText entry) {
        std::vector<KvTFinding> findings = check(ArchiveBuilder().entry(entry.set("mode", "\"wrong\"")).text());
        std::erase_if(findings, [](const KvTFinding& finding) {
            return finding.code != "reserved-name" && finding.code != "unportable-name" &&
                   finding.code != "hidden-character";
        });
        return findings;
    }
    std::string codesOfName(const std::string& name) {
        return codesOf(warningsOn(goodEntry().set("name", joined("\"", name, "\""))));
    }
    std::string codesOfTargetPath(const std::string& path) {
        return codesOf(warningsOn(goodEntry().remove("id").set("targetPath", joined("\"", path, "\""))));
    }
};

TEST_F(CheckTexts, ANameThatWindowsTakesForADeviceIsAWarning) {
    for (const char* name : {"CON", "prn", "AUX", "nul", "COM1", "com0", "LPT9", "nul.bin", "aux.tar.gz", "Com1.ini",
                             "con .bin", "CONIN$", "sub/nul.bin"}) {
        EXPECT_EQ("reserved-name", codesOfName(name)) << name;
    }
    for (const char* name : {"console.bin", "nul1.bin", "com.bin", "com10.bin", "comx", "lpt", "a.nul", "a.con", "1"}) {
        EXPECT_EQ("", codesOfName(name)) << name;
    }
    const std::vector<KvTFinding> findings = warningsOn(goodEntry().set("name", "\"aux.ini\""));
    ASSERT_EQ(1U, findings.size());
    const KvTFinding& finding = findings.front();
    EXPECT_EQ(KvESeverity::warning, finding.severity);
    EXPECT_EQ("$.files[0].name", finding.path);
    EXPECT_EQ("Windows takes \"aux.ini\" for a device.", finding.message);
}

TEST_F(CheckTexts, ANameThatWindowsCannotHaveIsAWarning) {
    for (const char* name : {"a.", "a ", "a.bin.", "a<b", "a>b", "a:b", "a\\\"b", "a|b", "a?b", "a*b", "sub /a"}) {
        EXPECT_EQ("unportable-name", codesOfName(name)) << name;
    }
    for (const char* name : {" a", ".a", "a b", "a..b", "sub/./a", "a'b", "a&b", "gr\u00F6\u00DFe.bin"}) {
        EXPECT_EQ("", codesOfName(name)) << name;
    }
    EXPECT_EQ("Windows cannot have a file called \"a.\".", warningsOn(goodEntry().set("name", "\"a.\"")).at(0).message);
}

TEST_F(CheckTexts, ThePartsOfATargetPathAreNamesToo) {
    EXPECT_EQ("reserved-name", codesOfTargetPath("cfg/nul/x.ini"));
    EXPECT_EQ("unportable-name", codesOfTargetPath("cfg./x.ini"));
    EXPECT_EQ("reserved-name unportable-name", codesOfTargetPath("aux:"));
    EXPECT_EQ("", codesOfTargetPath("./cfg/x.ini"));
    const std::string board = R"({"boardType": "QB", "targetPath": "cfg/com1"})";
    EXPECT_EQ("$.files[0].boards[0].targetPath",
              onlyFinding(ArchiveBuilder().entry(entryWithBoards(board)).text()).path);
}

TEST_F(CheckTexts, ACharacterThatDoesNotShowIsAWarning) {
    // NOLINTBEGIN(misc-misleading-bidirectional): such a character is one of those that hide
    for (const char* character : {"\\u0000", "\\u0001", "\\n",     "\\r",     "\\t",     "\\u001f", "\\u007f",
                                  "\\u0080", "\\u009f", "\\u061c", "\\u180e", "\\u200b", "\\u200f", "\\u2028",
                                  "\\u202a", "\\u202e", "\\u2060", "\\u2066", "\\u2069", "\\ufeff", "\xE2\x80\xAE"}) {
        EXPECT_EQ("hidden-character", codesOfName(joined("a", character, "b.bin"))) << character;
    }
    // NOLINTEND(misc-misleading-bidirectional)
    for (const char* character : {" ", "~", "\\u00a0", "\\u00e4", "\\u061b", "\\u200a", "\\u2010", "\\u2027", "\\u202f",
                                  "\\u2070", "\\ud83d\\ude00"}) {
        EXPECT_EQ("", codesOfName(joined("a", character, "b.bin"))) << character;
    }
}

TEST_F(CheckTexts, TheCharacterIsNamedAndNotWritten) {
    const KvTFinding finding =
        onlyFinding(ArchiveBuilder().info("productName", R"("QB\u202e9999")").entry(goodEntry()).text());
    EXPECT_EQ("hidden-character", finding.code);
    EXPECT_EQ("$.info.productName", finding.path);
    EXPECT_EQ("The text of \"productName\" has the character U+202E, which does not show as what it is.",
              finding.message);
}

TEST_F(CheckTexts, EachTextThatIsShownOrComparedIsLookedAt) {
    for (const char* key : {"productName", "archiveVariant", "archiveName"}) {
        EXPECT_EQ(std::string("$.info.") + key,
                  onlyFinding(ArchiveBuilder().info(key, "\"A\\rB\"").entry(goodEntry()).text()).path);
    }
    const auto pathOf = [this](const ObjectText& entry) {
        return onlyFinding(ArchiveBuilder().entry(entry).text()).path;
    };
    EXPECT_EQ("$.files[0].boardType", pathOf(goodEntry().set("boardType", "\"Q\\u200bB\"")));
    EXPECT_EQ("$.files[0].boardVariant[1]", pathOf(goodEntry().set("boardVariant", "[null, \"A\\u0007\"]")));
    EXPECT_EQ("$.files[0].targetPath", pathOf(goodEntry().remove("id").set("targetPath", "\"a\\u202eb\"")));
    EXPECT_EQ("$.files[0].boards[0].boardType", pathOf(entryWithBoards(R"({"boardType": "Q\u200bB", "id": 1})")));
    EXPECT_EQ("", codes(ArchiveBuilder().entry(goodEntry().set("comment", "\"a\\nb\"")).text()));
}

TEST_F(CheckTexts, AnEntryForNewerToolsIsNotLookedAt) {
    const std::string text =
        ArchiveBuilder().entry(R"({"featureLevel": 3, "name": "nul\u0000", "targetPath": "com1"})").text();
    EXPECT_EQ("entry-skipped", codes(text));
}

} // namespace
