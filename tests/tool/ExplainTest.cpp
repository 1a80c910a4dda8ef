#include "ExplanationText.h"
#include "KvCVersion.h"
#include "ToolRack.h"

#include <gmock/gmock.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class Explain : public ToolRack {
protected:
    /// The explanation of all elements, or of one.
    [[nodiscard]] std::string text(const std::vector<std::string>& options = {}) {
        const ToolRun result = run("explain", options);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.errors);
        return result.output;
    }
    [[nodiscard]] KvNJson::json document(std::vector<std::string> options = {}) {
        options.emplace_back("--json");
        const ToolRun result = run("explain", options);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_THAT(result.errors, HasSubstr("Korvel Device Update Tool"));
        return KvNJson::json::parse(result.output);
    }
    /// The record of the element of this position.
    static KvNJson::jsonView element(const KvNJson::json& document, std::size_t index) {
        return document.view().find("elements").at(index);
    }
};

TEST_F(Explain, TellsTheChosenEntryTheDecisionAndThePhase) {
    addNodeElement(1, "One");
    EXPECT_THAT(text(), EndsWith("0  NODE, SN 7, One\n"
                                 "    board        NODE, variant none, ID 0\n"
                                 "    element      ID 1, name One, hardware compatibility 0, software compatibility 0\n"
                                 "    installed    1.0 (1.0.0), checksum 1\n"
                                 "    entries      0 node1.bin: chosen\n"
                                 "    available    2.0 (2.0.0), checksum 2\n"
                                 "    result       update: the version differs\n"
                                 "                 update: the checksum differs\n"
                                 "    phase        0\n"
                                 "\n"));
}

TEST_F(Explain, TellsOfEachTriedEntryTheFirstTestThatFailsWithBothValues) {
    archive.add(entry("variant.bin").board("NODE", 1).variant("B"));
    archive.add(entry("other.bin").board("OTHER", 1));
    archive.add(entry("file.bin").target("NODE", "/a"));
    archive.add(entry("id.bin").board("NODE", 2));
    node.element(completeElement(1, "One"));
    EXPECT_THAT(
        text(),
        HasSubstr("    entries      0 variant.bin: board-variant fails: the archive says \"B\", the element has none\n"
                  "                 2 file.bin: addressing fails: the archive says \"targetPath\", the element "
                  "has \"id\"\n"
                  "                 3 id.bin: id fails: the archive says 2, the element has 1\n"
                  "                 1 for other board types\n"
                  "    result       no update: the archive has no entry for it\n"
                  "\n"));
    const KvNJson::json explained = document();
    const KvNJson::jsonView tried = element(explained, 0).find("triedEntries");
    ASSERT_EQ(3U, tried.size());
    EXPECT_EQ("board-variant", tried.at(0).find("failedTest").get_string());
    EXPECT_EQ("B", tried.at(0).find("archiveValue").get_string());
    EXPECT_TRUE(tried.at(0).find("elementValue").is_null());
    EXPECT_EQ(3U, tried.at(2).find("index").get_unsigned());
    EXPECT_EQ(2U, tried.at(2).find("archiveValue").get_unsigned());
    EXPECT_EQ(1U, tried.at(2).find("elementValue").get_unsigned());
    EXPECT_EQ(1U, element(explained, 0).find("entriesForOtherBoardTypes").get_unsigned());
    EXPECT_TRUE(element(explained, 0).find("entry").is_null());
    EXPECT_EQ("leave", element(explained, 0).find("decision").get_string());
    EXPECT_EQ("no-entry", element(explained, 0).find("reasons").at(0).get_string());
}

TEST_F(Explain, EntriesBehindTheChosenOneAreNotTried) {
    addNodeElement(1, "One");
    archive.add(entry("later.bin").board("NODE", 1));
    EXPECT_THAT(text(), Not(HasSubstr("later.bin")));
}

TEST_F(Explain, ManyFailedEntriesAreToldForAnElementThatIsAskedForAlone) {
    for (std::uint32_t id = 1; id <= 13; ++id) {
        archive.add(entry("e" + std::to_string(id) + ".bin").board("NODE", 100 + id));
    }
    node.element(completeElement(1, "One"));
    EXPECT_THAT(text(), HasSubstr("9 e10.bin: id fails: the archive says 110, the element has 1\n"
                                  "                 ... and 3 more that fail\n"));
    EXPECT_THAT(text({"0"}), HasSubstr("12 e13.bin: id fails: the archive says 113, the element has 1\n"));
}

TEST_F(Explain, TheNameThatTheElementFilterTakesIsToldOfItemsOfTheInventory) {
    node.element(completeElement(1, "UserFirmware"));
    archive.add(entry("a.cfg").target("NODE", "cfg/a.cfg"));
    EXPECT_THAT(text({"0"}), HasSubstr("ID 1, name UserFirmware, "));
    EXPECT_THAT(text({"1"}), Not(HasSubstr(", name ")));
    const KvNJson::json explained = document({"-e", "UserFirmware"});
    EXPECT_EQ("UserFirmware", element(explained, 0).find("name").get_string());
    EXPECT_EQ("", element(explained, 1).find("address").get_string());
}

TEST_F(Explain, AnElementIsAskedForByItsNumberOrByOneOfItsNames) {
    addNodeElement(1, "One");
    addNodeElement(2, "Two");
    for (const char* name : {"1", "Two", "NODE, SN 7, Two"}) {
        const std::string output = text({name});
        EXPECT_THAT(output, HasSubstr("1  NODE, SN 7, Two\n")) << name;
        EXPECT_THAT(output, Not(HasSubstr("One"))) << name;
    }
    const ToolRun missing = run("explain", {"Three"});
    EXPECT_EQ(8, missing.exitCode);
    EXPECT_EQ("kvreflash: the target has no element 'Three', or a filter hides it\n", missing.errors);
}

TEST_F(Explain, WhatLeavesAnElementOutIsTold) {
    archive.add(entry("node1.bin").board("NODE", 1).version("1.0").checksum(1));
    node.element(completeElement(1, "One").parameter("CUSTOM", std::uint64_t(1)));
    boards.push_back(completeBoard("IOMODULE", "FPGA_TP1", 8).element(completeElement(1, "Fpga")));
    EXPECT_THAT(text(), HasSubstr("    result       no update: it is up to date\n\n"));
    EXPECT_THAT(text({"--skip-custom"}),
                HasSubstr("    result       no update: it is up to date\n"
                          "                 no update: custom elements are left out (--skip-custom)\n\n"));
    EXPECT_THAT(text({"--force", "0"}),
                HasSubstr("    result       update: it is up to date, and the update is forced\n    phase        0\n"));
    EXPECT_THAT(text({"1"}), HasSubstr("no update: the target has no QB5150 or QB5170 that carries it\n"));
    const KvNJson::json explained = document({"--skip-custom"});
    const KvNJson::jsonView reasons = element(explained, 0).find("reasons");
    ASSERT_EQ(2U, reasons.size());
    EXPECT_EQ("up-to-date", reasons.at(0).get_string());
    EXPECT_EQ("custom-left-out", reasons.at(1).get_string());
    EXPECT_TRUE(element(explained, 0).find("phase").is_null());
}

TEST_F(Explain, WhatAFilterHidesIsToldWithTheFilter) {
    addNodeElement(1, "One");
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElement(1, "Two")));
    boards.push_back(completeBoard("IOMODULE", "IO", 9)
                         .element(completeElement(1, "Settings").parameter("CONFIGURATION", std::uint64_t(1))));
    EXPECT_THAT(text(),
                EndsWith("Not looked at:\n"
                         "\n"
                         "   IO, SN 9, Settings (IOMODULE[2]/UPDATE_INFO[1]/UPDATE_ELEMENT[1])\n"
                         "                 --configuration decides whether configuration elements or all others "
                         "are looked at\n"));
    const KvNJson::json explained = document({"-b", "NODE", "-s", "7", "-e", "One"});
    EXPECT_EQ(1U, explained.view().find("elements").size());
    const KvNJson::jsonView hidden = explained.view().find("hiddenElements");
    ASSERT_EQ(2U, hidden.size());
    EXPECT_EQ("IO, SN 8, Two", hidden.at(0).find("displayName").get_string());
    ASSERT_EQ(3U, hidden.at(0).find("hiddenBy").size());
    EXPECT_EQ("board-type-filter", hidden.at(0).find("hiddenBy").at(0).get_string());
    EXPECT_EQ("serial-number-filter", hidden.at(0).find("hiddenBy").at(1).get_string());
    EXPECT_EQ("element-name-filter", hidden.at(0).find("hiddenBy").at(2).get_string());
    ASSERT_EQ(4U, hidden.at(1).find("hiddenBy").size());
    EXPECT_EQ("configuration", hidden.at(1).find("hiddenBy").at(0).get_string());
}

TEST_F(Explain, WhatFiltersHideIsToldAlthoughTheyLetNothingThrough) {
    addNodeElement(1, "One");
    const ToolRun result = run("explain", {"-b", "OTHER"});
    EXPECT_EQ(8, result.exitCode);
    EXPECT_THAT(result.output,
                HasSubstr("Not looked at:\n\n   NODE, SN 7, One (HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1])\n"
                          "                 its board type is not in --board-type\n"));
    EXPECT_EQ("kvreflash: no element of the target passes the filters; --board-type: nothing has 'OTHER'\n",
              result.errors);
}

TEST_F(Explain, WithoutAPlanTheSessionsMessagesAreErrors) {
    addNodeElement(1, "One");
    const ToolRun result = run("explain", {"-d", "none.json"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_THAT(result.errors, HasSubstr("ERROR: Failed to read firmware archive.\nkvreflash: "));
}

TEST_F(Explain, ErrorsOfTheScanAreToldAndFail) {
    addNodeElement(1, "One");
    boards.push_back(board("IOMODULE", "IO", 8).element(updateElement(1, "Incomplete")));
    const ToolRun result = run("explain");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.errors, HasSubstr("kvreflash: ERROR 0x2001 (Host PC): There is no parameter "));
    EXPECT_THAT(result.errors,
                EndsWith("kvreflash: errors were reported, so that the explanation may be incomplete\n"));
    EXPECT_THAT(result.output, HasSubstr("0  NODE, SN 7, One\n"));
}

TEST_F(Explain, NamesOfTheTargetEndNoLine) {
    node.element(completeElement(1, "One\nresult\tup to date"));
    archive.addWithoutFile(entry("a\nb.bin").board("NODE", 1)); // not every system has such names
    EXPECT_THAT(text(), HasSubstr("0  NODE, SN 7, One\\x0Aresult\\x09up to date\n"));
    EXPECT_THAT(text(), HasSubstr("0 a\\x0Ab.bin: chosen\n"));
}

TEST_F(Explain, AFileOfTheTargetTellsItsPath) {
    node.element(completeElement(1, "One"));
    archive.add(entry("a.cfg").target("NODE", "cfg/a.cfg"));
    EXPECT_THAT(text({"1"}), HasSubstr("    element      target path cfg/a.cfg, hardware compatibility 0"));
}

/// As the session hands over a version; nothing for the zero version.
std::optional<KvNReflasher::KvTVersion> versionValue(const KvCVersion& version) {
    const std::uint64_t number = version.getAsULong64();
    return number != 0 ? std::optional(KvNReflasher::KvTVersion{number, std::string(version.getAsString().view())})
                       : std::nullopt;
}

TEST(ExplainedVersion, IsReadInWords) {
    const std::vector<std::pair<const char*, const char*>> versions{
        {"23.2a12", "23.2a12 (23.2.0 alpha 12)"},
        {"3.5.2", "3.5.2"},
        {"5", "5.0 (5.0.0)"},
        {"23.2.1b3.1", "23.2.1b3.1 (23.2.1 beta 3 patch level 1)"},
        {"3.5.0.4", "3.5.0.4 (3.5.0 service pack 4)"},
        {"nonsense", "---"}};
    for (const auto& [text, read] : versions) {
        EXPECT_EQ(read, versionText(versionValue(KvCVersion(text))));
    }
    EXPECT_THAT(versionText(versionValue(KvCVersion(1, 2, 3, 9, 4, 0))), EndsWith(" (1.2.3 build 9 4)"));
}

} // namespace
