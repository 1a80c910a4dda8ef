#include "KvCVersion.h"
#include "ToolRack.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A processor board whose element is what the archive says, and boards beside it.
class VerifyCommand : public ToolRack {
protected:
    VerifyCommand() {
        node.element(completeElement(1, "One"));
        archive.add(entry("node1.bin").board("NODE", 1).version("1.0").checksum(1));
    }

    /// A board "IO" with this element, which `entry` is for.
    void addBoard(const ItemBuilder& element, EntryBuilder entry) {
        boards.push_back(completeBoard("IOMODULE", "IO", 8).element(element));
        archive.add(entry.board("IO", 1));
    }

    /// Verifies; the exit code must be this one. Returns what was printed.
    std::string verified(int exitCode, const std::vector<std::string>& options = {}) {
        const ToolRun done = run("verify", options);
        EXPECT_EQ(exitCode, done.exitCode) << done.output << done.errors;
        errors = done.errors;
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(rack()) / "state")) << "the target was touched";
        return done.output;
    }

    std::string errors;
};

TEST_F(VerifyCommand, ATargetThatIsWhatTheArchiveSaysIsAsExpected) {
    EXPECT_THAT(verified(0), EndsWith("\n\nVerification: 1 as expected\n"));
    EXPECT_EQ("", errors);
}

TEST_F(VerifyCommand, AnotherVersionDiffers) {
    addBoard(completeElement(1, "Two"), entry("io.bin").version("2.0").checksum(1));
    EXPECT_THAT(verified(6),
                EndsWith("\n"
                         "No. | Update element | Expected | Found | Expected checksum | Found checksum | Result \n"
                         "--------------------------------------------------------------------------------------\n"
                         "1   | IO, SN 8, Two  | 2.0      | 1.0   | 1                 | 1              | differs\n"
                         "\n"
                         "Verification: 1 as expected, 1 differs\n"));
    EXPECT_EQ("kvreflash: the target does not report what it should: 1 different\n", errors);
}

TEST_F(VerifyCommand, AnotherChecksumAndWhatIsNotActiveDiffer) {
    addBoard(completeElement(1, "Two").parameter("ACTIVE", std::uint64_t(0)),
             entry("io.bin").version("1.0").checksum(7));
    EXPECT_THAT(verified(6), AllOf(HasSubstr("| 7                 | 1              | differs, not active\n"),
                                   EndsWith("Verification: 1 as expected, 1 differs\n")));
}

TEST_F(VerifyCommand, ElementsWithoutEntryAreListedAndDecideNothing) {
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElement(1, "Two")));
    EXPECT_THAT(verified(0), EndsWith("\nThe archive has no entry for these elements:\n"
                                      "        IO, SN 8, Two\n"
                                      "\nVerification: 1 as expected\n"));
}

TEST_F(VerifyCommand, AnUnsupportedTargetFails) {
    node.element(completeElement(2, "Two"));
    EXPECT_THAT(verified(2), AllOf(HasSubstr("        NODE, SN 7, Two\n"), EndsWith("Verification: 1 as expected\n")));
    EXPECT_THAT(errors, AllOf(HasSubstr("not support the target"), EndsWith("'NODE, SN 7, Two'\n")));
}

TEST_F(VerifyCommand, ANewerVersionMeetsAnUpgradeAndAnOlderOneDoesNot) {
    addBoard(completeElement(1, "Two").parameter("VERSION", "3.0"), entry("io.bin").version("2.0").mode("upgrade"));
    EXPECT_THAT(verified(0), EndsWith("Verification: 2 as expected\n"));
}

TEST_F(VerifyCommand, AnOlderVersionDoesNotMeetAnUpgrade) {
    addBoard(completeElement(1, "Two"), entry("io.bin").version("2.0").mode("upgrade"));
    EXPECT_THAT(verified(6), EndsWith("Verification: 1 as expected, 1 differs\n"));
}

/// A file that the target reports the checksum 0 of is taken for up to date by a plan.
TEST_F(VerifyCommand, WhatReportsTheChecksum0IsLeftByAPlanAndNotByForce) {
    addBoard(completeElement(1, "Two").parameter("CHECKSUM_CRC32", std::uint64_t(0)),
             entry("io.bin").version("1.0").checksum(2));
    archive.folder().write("io.bin", firmwareImage(KvCVersion("1.0"), 2));
    EXPECT_THAT(verified(6), EndsWith("'IO, SN 8, Two' reports the checksum 0: a plan leaves it, and update --force "
                                      "installs it.\n"
                                      "\nVerification: 1 as expected, 1 differs\n"));
    EXPECT_THAT(run("update").output, Not(HasSubstr("Updating:")));
    EXPECT_EQ(6, run("verify").exitCode);
    EXPECT_THAT(run("update", {"--force", "-b", "IO"}).output, HasSubstr("Updating:"));
    EXPECT_EQ(0, run("verify").exitCode);
}

TEST_F(VerifyCommand, WhatCannotBeComparedIsNotJudgedAndIsNoFaultBesideOthers) {
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElementWithoutChecksum(1)));
    archive.add(entry("io.bin").board("IO", 1).noVersion());
    EXPECT_THAT(verified(0),
                AllOf(HasSubstr("| not judged\n"), EndsWith("Verification: 1 as expected, 1 not judged\n")));
}

TEST_F(VerifyCommand, IfNothingCanBeComparedItFails) {
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElementWithoutChecksum(1)));
    archive.add(entry("io.bin").board("IO", 1).noVersion());
    EXPECT_THAT(verified(6, {"-b", "IO"}), EndsWith("Verification: 0 as expected, 1 not judged\n"));
    EXPECT_THAT(errors, EndsWith(": 1 not judged\n"));
}

TEST_F(VerifyCommand, FilesThatTheInventoryDoesNotListNeverCount) {
    archive.add(entry("a.cfg").target("NODE", "cfg/a.cfg"));
    EXPECT_THAT(verified(0), EndsWith("| not listed\n\nVerification: 1 as expected, 1 not listed\n"));
}

TEST_F(VerifyCommand, CustomElementsAreLeftOutOnRequest) {
    addBoard(completeElement(1, "Two").parameter("CUSTOM", std::uint64_t(1)), entry("io.bin"));
    EXPECT_THAT(verified(6), EndsWith("Verification: 1 as expected, 1 differs\n"));
    EXPECT_THAT(verified(0, {"--skip-custom"}), EndsWith("Verification: 1 as expected\n"));
}

TEST_F(VerifyCommand, FiltersAndTheOtherKindOfElementsChooseWhatIsJudged) {
    addBoard(completeElement(1, "Two"), entry("io.bin"));
    boards.back().element(completeElement(2, "Settings")
                              .parameter("CONFIGURATION", std::uint64_t(1))
                              .parameter("ACTIVE", std::uint64_t(0)));
    archive.add(entry("settings.bin").board("IO", 2).version("1.0").checksum(1));
    EXPECT_THAT(verified(0, {"-b", "NODE"}), EndsWith("Verification: 1 as expected\n"));
    EXPECT_THAT(verified(6, {"-e", "Two"}), EndsWith("Verification: 0 as expected, 1 differs\n"));
    EXPECT_THAT(verified(0, {"--configuration"}), EndsWith("Verification: 1 as expected\n"))
        << "nobody asks whether a configuration element is active";
}

TEST_F(VerifyCommand, FiltersThatLetNothingThroughFail) {
    verified(8, {"-s", "99"});
    EXPECT_EQ("kvreflash: no element of the target passes the filters; --serial-number: nothing has '99'\n", errors);
}

TEST_F(VerifyCommand, ARefusedArchiveAndATargetThatIsNotThereFail) {
    EXPECT_THAT(verified(3, {"-d", "none.json"}), HasSubstr("ERROR: Failed to read firmware archive.\n"));
    EXPECT_THAT(errors, Not(IsEmpty()));
    const ToolRun missing =
        runCaptured({"verify", "-a", archive.folder().text(), "-t", "127.0.0.9", "--emulate", rack()});
    EXPECT_EQ(4, missing.exitCode);
    EXPECT_THAT(missing.errors, EndsWith("is not accessible\n"));
}

TEST_F(VerifyCommand, AnErrorOfTheScanFailsAlthoughAllIsAsExpected) {
    boards.push_back(board("IOMODULE", "IO", 8).element(updateElement(1, "Incomplete")));
    EXPECT_THAT(verified(1), AllOf(HasSubstr("\nReported errors:\n"), EndsWith("Verification: 1 as expected\n")));
    EXPECT_THAT(errors, HasSubstr(" reported\n"));
}

TEST_F(VerifyCommand, TheDocumentAndTheReportHaveTheVerdicts) {
    addBoard(completeElement(1, "Two"), entry("io.bin"));
    const ScratchFolder reports;
    const std::string output = verified(6, {"--json", "--report", reports.text() + "/report.html"});
    EXPECT_THAT(errors, HasSubstr("Verification: 1 as expected, 1 differs\n"));
    const KvNJson::json document = KvNJson::json::parse(output);
    EXPECT_EQ("verification", document.view().find("failure").get_string());
    const KvNJson::jsonView elements = document.view().find("elements");
    ASSERT_EQ(2U, elements.size());
    EXPECT_EQ("as-expected", elements.at(0).find("verification").get_string());
    EXPECT_EQ("differs", elements.at(1).find("verification").get_string());
    EXPECT_EQ("1.0", elements.at(1).find("after").find("version").get_string());
    EXPECT_EQ(1U, document.view().find("verificationCounts").find("differs").get_unsigned());
    EXPECT_THAT(reports.read("report.html"), AllOf(HasSubstr("Verification of 127.0.0.1"), HasSubstr("Not as expected"),
                                                   HasSubstr("class=\"fault\">differs")));
}

/// How often the target is scanned.
TEST_F(VerifyCommand, TheTargetIsScannedOnceAndAnotherTimeForAVerificationOfAnUpdate) {
    addBoard(completeElement(1, "Two"), entry("io.bin"));
    archive.folder().write("io.bin", firmwareImage(KvCVersion("2.0"), 2));
    const ScratchFolder scratch;
    const auto scansOf = [&](const std::string& command, const std::vector<std::string>& options) {
        const std::string name = command + std::to_string(options.size());
        const EnvironmentVariable trace{"KV_TRACE", scratch.text() + "/" + name};
        EXPECT_NE(64, run(command, options).exitCode);
        const std::string calls = scratch.read(name);
        std::size_t count = 0;
        for (std::size_t place = 0; (place = calls.find("\"scan\"", place)) != std::string::npos; ++place) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(1U, scansOf("verify", {}));
    EXPECT_EQ(1U, scansOf("plan", {"--report", scratch.text() + "/plan.json"}));
    EXPECT_EQ(1U, scansOf("explain", {"-b", "IO", "-s", "8", "-e", "Two"}));
    EXPECT_EQ(1U, scansOf("update", {"--preflight", "--disable", "1"}));
    EXPECT_EQ(2U, scansOf("update", {"--preflight", "--verify", "--report", scratch.text() + "/update.json"}));
}

} // namespace
