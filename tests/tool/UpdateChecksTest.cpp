#include "KvCVersion.h"
#include "PathTexts.h"
#include "ToolRack.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// Elements of the processor board whose update files are firmware images of version 2.0 and checksum 2, as the
/// description says.
class UpdateChecks : public ToolRack {
protected:
    UpdateChecks() {
        addNodeElement(1, "One");
        addNodeElement(2, "Two");
        writeImage("node1.bin", "2.0", 2);
        writeImage("node2.bin", "2.0", 2);
    }
    void writeImage(const std::string& name, const char* version, std::uint32_t checksum) const {
        archive.folder().write(name, firmwareImage(KvCVersion(version), checksum));
    }
    /// The plan has nothing left to do for the elements, or still all of it.
    void expectInstalled(bool isInstalled) {
        EXPECT_THAT(run("plan").output, HasSubstr(isInstalled ? "| 2 == 2    | Y" : "| 1 != 2    | N"));
    }
};

using Preflight = UpdateChecks;
using Verify = UpdateChecks;

TEST_F(Preflight, AnUpdateOfSoundFilesRuns) {
    const ToolRun result = run("update", {"--preflight"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    expectInstalled(true);
}

/// What a preflight says that refuses to run.
std::string refusal(const std::string& findings, const char* count) {
    return findings + "kvreflash: nothing was touched: the preflight has found " + count + "\n";
}

TEST_F(Preflight, EveryFaultIsToldAndTheRackIsLeftAlone) {
    archive.removeFile("node1.bin");
    writeImage("node2.bin", "2.0.1", 7);
    const ToolRun result = run("update", {"--preflight"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_THAT(result.output, AllOf(Not(HasSubstr("Updating:")), Not(HasSubstr("Transferring"))));
    EXPECT_EQ(refusal("kvreflash: preflight: node1.bin: not found\n"
                      "kvreflash: preflight: node2.bin: its checksum is 7, the description says 2\n"
                      "kvreflash: preflight: node2.bin: its version is 2.0.1, the description says 2.0\n",
                      "3 faults"),
              result.errors);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(rack()) / "state"));
    expectInstalled(false);
}

TEST_F(Preflight, FilesThatAreNotInstalledAreNotLookedAt) {
    archive.removeFile("node1.bin");
    EXPECT_EQ(0, run("update", {"--preflight", "--disable", "0"}).exitCode);
}

TEST_F(Preflight, AFolderInPlaceOfAFileCannotBeRead) {
    archive.removeFile("node1.bin");
    std::filesystem::create_directory(archive.folder().path() / "node1.bin");
    EXPECT_EQ(
        refusal("kvreflash: preflight: node1.bin: cannot be read: it is a folder, not a regular file\n", "1 fault"),
        run("update", {"--preflight"}).errors);
}

TEST_F(Preflight, AVersionThatTheDescriptionDoesNotGiveAndAPlainFileAreNotCompared) {
    archive.add(entry("plain.bin").target("NODE", "cfg/plain.cfg"));
    archive.add(entry("node3.bin").board("NODE", 3).noVersion());
    node.element(completeElement(3, "Three"));
    writeImage("node3.bin", "7.5", 2);
    EXPECT_EQ("", run("update", {"--preflight"}).errors);
}

TEST_F(Preflight, ErrorsOfTheScanDoNotKeepItFromLooking) {
    boards.push_back(board("IOMODULE", "IO", 8).element(updateElement(1, "Incomplete")));
    archive.removeFile("node1.bin");
    const ToolRun result = run("update", {"--preflight"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("kvreflash: preflight: the target reported an error: "),
                                     HasSubstr("kvreflash: preflight: node1.bin: not found\n")));
    expectInstalled(false);
}

TEST_F(Preflight, ErrorsOfTheScanRefuseSoundFilesToo) {
    boards.push_back(board("IOMODULE", "IO", 8).element(updateElement(1, "Incomplete")));
    const ToolRun result = run("update", {"--preflight"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("kvreflash: preflight: the target reported an error: "),
                                     HasSubstr("\nkvreflash: nothing was touched: the preflight has found ")));
    EXPECT_THAT(result.output, Not(HasSubstr("Updating:")));
    expectInstalled(false);
}

/// The plan that is checked is the one that would run: a scan that fails ends both.
TEST_F(Preflight, AScanThatFailsInstallsNothing) {
    target.add(fault("scan"));
    writeImage("node1.bin", "7.5", 2);
    const ToolRun result = run("update", {"--preflight", "--verify"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_THAT(result.output, AllOf(Not(HasSubstr("Updating:")), Not(HasSubstr("Verification:"))));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(rack()) / "state"));
}

TEST_F(Preflight, FindingsAreReported) {
    archive.removeFile("node1.bin");
    const ScratchFolder reports;
    EXPECT_EQ(3, run("update", {"--preflight", "--report", reports.text() + "/report.json"}).exitCode);
    const KvNJson::json report = KvNJson::json::parse(reports.read("report.json"));
    EXPECT_THAT(std::string(report.view().find("messages").get_string()), HasSubstr("preflight: node1.bin: not found"));
    EXPECT_EQ("archive", report.view().find("failure").get_string());
    EXPECT_EQ("not-started", report.view().find("elements").at(0).find("outcome").get_string());
}

TEST_F(Preflight, WithoutAPlanTheSessionTellsWhy) {
    const ToolRun result = run("update", {"--preflight", "-d", "none.json"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("ERROR: Failed to read firmware archive.\n"));
    EXPECT_THAT(result.errors, AllOf(HasSubstr("none.json"), Not(HasSubstr("preflight"))));
}

/// What an update must not do that is refused before the target is touched: exit code, report and last line agree.
class RefusedUpdate : public UpdateChecks {
protected:
    /// Runs an update with these and all other options that look at it; returns what it says.
    std::string refused(const std::vector<std::string>& options) {
        const ScratchFolder reports;
        std::vector<std::string> all{"--verify", "--report", reports.text() + "/report.json"};
        all.insert(all.end(), options.begin(), options.end());
        const ToolRun result = run("update", all);
        EXPECT_EQ(3, result.exitCode);
        EXPECT_THAT(result.output, AllOf(Not(HasSubstr("Updating:")), Not(HasSubstr("Verification:"))));
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(rack()) / "state"));
        const KvNJson::json report = KvNJson::json::parse(reports.read("report.json"));
        EXPECT_EQ("archive", report.view().find("failure").get_string());
        const std::string message(report.view().find("message").get_string());
        EXPECT_THAT(result.errors, EndsWith("\nkvreflash: " + message + "\n"));
        expectInstalled(false);
        return result.errors;
    }
    /// The beginning of a line on the description.
    [[nodiscard]] std::string place(const char* position) const {
        return "kvreflash: check: " + archive.folder().text() + "/archive.json:" + position + ": ";
    }
};

using PreflightRefuses = RefusedUpdate;
using Strict = RefusedUpdate;

TEST_F(PreflightRefuses, AnEmptyFile) {
    archive.folder().write("node1.bin", "");
    EXPECT_EQ(refusal("kvreflash: preflight: node1.bin: it is empty\n", "1 fault"), refused({"--preflight"}));
}

TEST_F(PreflightRefuses, AFileThatEndsWithinItsHeader) {
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("2.0"), 2).substr(0, 100));
    archive.folder().write("node2.bin", bitstream(2).substr(0, 50));
    EXPECT_EQ(refusal("kvreflash: preflight: node1.bin: it ends within its header\n"
                      "kvreflash: preflight: node2.bin: it ends within its header\n",
                      "2 faults"),
              refused({"--preflight"}));
}

TEST_F(PreflightRefuses, AFileForOtherBoards) {
    archive.folder().write("node2.bin", withHardwareIds(firmwareImage(KvCVersion("2.0"), 2), 4, 6));
    EXPECT_EQ(refusal("kvreflash: preflight: node2.bin: it is for the hardware compatibility identifier 4 to 6, the "
                      "description allows 0\n",
                      "1 fault"),
              refused({"--preflight"}));
}

TEST_F(PreflightRefuses, AMissingFileAndNamesTheOneThatWasMeant) {
    archive.removeFile("node2.bin");
    writeImage("mode2.bin", "2.0", 2);
    EXPECT_EQ(refusal("kvreflash: preflight: node2.bin: not found; did you mean \"mode2.bin\"?\n", "1 fault"),
              refused({"--preflight"}));
}

TEST_F(Strict, AnArchiveWithoutFindingsIsInstalled) {
    const ToolRun result = run("update", {"--strict", "--preflight", "--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    expectInstalled(true);
}

TEST_F(Strict, AWarningRefusesTheUpdate) {
    archive.folder().write("left.bin", "content");
    const std::string file = archive.folder().text() + "/archive.json";
    EXPECT_EQ(place("9:14") + "warning: No entry names the file \"left.bin\" of the archive folder. [unnamed-file]\n" +
                  "kvreflash: nothing was touched: " + quotedPath(file) +
                  " has 0 errors, 1 warning, which --strict refuses\n",
              refused({"--strict"}));
}

TEST_F(Strict, WithoutItTheSameArchiveIsInstalled) {
    archive.folder().write("left.bin", "content");
    EXPECT_EQ(0, run("update").exitCode);
    expectInstalled(true);
}

TEST_F(Strict, WhatLeavesTheArchivesFolderOrTheTargetsRootIsRefused) {
    archive.addWithoutFile(entry("../outside.bin").board("NODE", 7));
    archive.add(entry("a.cfg").target("NODE", "../../etc/a.cfg"));
    const std::string errors = refused({"--strict"});
    EXPECT_THAT(errors, AllOf(HasSubstr(" [outside-archive]\n"), HasSubstr(" [outside-target]\n"),
                              EndsWith(" has 0 errors, 2 warnings, which --strict refuses\n")));
}

TEST_F(Strict, AFileThatNoUpdateOfThePlanNeedsIsLookedAtToo) {
    archive.folder().write("other.bin", "");
    archive.addWithoutFile(entry("other.bin").board("OTHER", 1));
    EXPECT_THAT(refused({"--strict", "--preflight"}), HasSubstr("\"other.bin\" is empty. [update-file-empty]\n"));
}

TEST_F(Strict, OfAnArchiveThatTheSessionRefusesItsOwnWordsCount) {
    archive.add(entry("b.bin").board("NODE", 3).mode("wrong"));
    EXPECT_EQ("kvreflash: File entry 2 is invalid. Property \"mode\" is invalid.\n",
              run("update", {"--strict"}).errors);
    EXPECT_EQ(3, run("update", {"--strict"}).exitCode);
}

TEST_F(Strict, TheArchiveComesBeforeATargetThatCannotBeHad) {
    archive.folder().write("left.bin", "content");
    target.add(fault("scan").occurrence(0));
    const ToolRun result = run("update", {"--strict"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_THAT(result.errors, AllOf(HasSubstr(" [unnamed-file]\n"), EndsWith(", which --strict refuses\n")));
    EXPECT_EQ(4, run("update").exitCode);
}

TEST_F(Strict, WithoutAnArchiveThatWasReadTheTargetCounts) {
    const ToolRun result = run("update", {"--strict", "--emulate", "no such folder"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_THAT(result.errors, Not(HasSubstr("--strict")));
}

TEST_F(Strict, TheFindingsAreThoseOfCheck) {
    archive.folder().write("left.bin", "content");
    archive.addWithoutFile(entry("missing.bin").board("NODE", 7));
    const std::string errors = refused({"--strict"});
    const std::string checked = runCaptured({"check", "-a", archive.folder().text()}).output;
    constexpr std::string_view mark = "kvreflash: check: ";
    std::size_t count = 0;
    for (std::size_t begin = errors.find(mark); begin != std::string::npos; ++count) {
        const std::size_t end = errors.find('\n', begin) + 1;
        EXPECT_THAT(checked, HasSubstr(errors.substr(begin + mark.size(), end - begin - mark.size())));
        begin = errors.find(mark, end);
    }
    EXPECT_EQ(2U, count);
    EXPECT_THAT(checked, EndsWith("\n0 errors, 2 warnings\n"));
}

TEST_F(Verify, WhatTheTargetReportsAsExpectedIsCounted) {
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    EXPECT_THAT(result.output, EndsWith("    Update completed successfully!\n\nVerification: 2 as expected\n"));
}

TEST_F(Verify, WhatDiffersIsShownAndFails) {
    writeImage("node2.bin", "2.1", 9);
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(result.output,
                EndsWith("\n"
                         "No. | Update element  | Expected | Found | Expected checksum | Found checksum | Result \n"
                         "---------------------------------------------------------------------------------------\n"
                         "1   | NODE, SN 7, Two | 2.0      | 2.1   | 2                 | 9              | differs\n"
                         "\n"
                         "Verification: 1 as expected, 1 differs\n"));
    EXPECT_EQ("kvreflash: the target does not report what it should: 1 different\n", result.errors);
}

TEST_F(Verify, WhatIsAsBeforeIsUnchangedAndFails) {
    node.element(completeElement(3, "Three").activatedAtReboot());
    archive.add(entry("node3.bin").board("NODE", 3));
    writeImage("node3.bin", "2.0", 2);
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("| unchanged\n\nVerification: 2 as expected, 1 unchanged\n"));
    EXPECT_THAT(result.errors, EndsWith(": 1 unchanged\n"));
}

TEST_F(Verify, FilesThatAreNoElementsAreNotJudged) {
    archive.add(entry("plain.bin").target("NODE", "cfg/plain.cfg"));
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("| not listed\n\nVerification: 2 as expected, 1 not listed\n"));
    EXPECT_THAT(run("update", {"--verify"}).output, EndsWith("Verification: 0 as expected, 1 not listed\n"));
    EXPECT_EQ(0, run("update", {"--verify"}).exitCode) << "files alone never count";
}

TEST_F(Verify, AFailedUpdateIsLookedAtAndKeepsItsClass) {
    archive.removeFile("node1.bin");
    writeImage("node2.bin", "2.1", 9);
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("Verification: 0 as expected, 1 differs\n"));
    EXPECT_THAT(result.errors, HasSubstr("missing"));
    EXPECT_THAT(result.errors, Not(HasSubstr("does not report")));
}

TEST_F(Verify, ARefusedLockIsLookedAtAndNothingCountsAsUpdated) {
    target.add(fault("lock"));
    const ScratchFolder reports;
    const ToolRun result = run("update", {"--verify", "--report", reports.text() + "/report.json"});
    EXPECT_EQ(5, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("Verification: 0 as expected\n"));
    const std::string report = reports.read("report.json");
    EXPECT_THAT(report, AllOf(HasSubstr("\"failure\": \"locked\""), HasSubstr("\"outcome\": \"not-started\"")));
    EXPECT_THAT(report, AllOf(Not(HasSubstr("\"updated\"")), HasSubstr("\"as-expected\": 0")));
}

TEST_F(Verify, AFailedLookFails) {
    target.add(fault("scan").occurrence(2));
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(result.output, HasSubstr("    Update completed successfully!\n\n"
                                         "Verification: the target cannot be looked at: "));
    EXPECT_THAT(result.output, EndsWith("Errors of the look:\n       ERROR 0x2fff (Host PC): Fault at scan.\n"));
    EXPECT_THAT(result.errors, HasSubstr("kvreflash: the target could not be looked at: "));
}

TEST_F(Verify, AFailedLookOfAReportIsSaidThereAndChangesNoCode) {
    target.add(fault("scan").occurrence(2));
    const ScratchFolder reports;
    const ToolRun result = run("update", {"--report", reports.text() + "/report.html"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    EXPECT_THAT(reports.read("report.html"), AllOf(HasSubstr("<p>The target cannot be looked at afterwards: "),
                                                   HasSubstr("Fault at scan."), HasSubstr("Update completed")));
}

TEST_F(Verify, AReportAloneSaysWhatDiffersAndChangesNoCode) {
    writeImage("node2.bin", "2.1", 9);
    const ScratchFolder reports;
    const ToolRun result = run("update", {"--report", reports.text() + "/report.html"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.output, Not(HasSubstr("Verification:")));
    EXPECT_THAT(reports.read("report.html"), HasSubstr("class=\"fault\">differs"));
}

/// What an update says when the K-th reading of an address fails, for every K; empty behind the last one.
std::vector<ToolRun> runsWithEachFailedReading(const ArchiveFolder& archive, const std::string& address) {
    std::vector<ToolRun> runs;
    for (std::uint32_t reading = 1; reading < 200; ++reading) {
        TargetBuilder target;
        target.add(completeBoard("HCN", "NODE", 7).element(completeElement(1, "One")).element(completeElement(2)));
        target.add(completeBoard("IOMODULE", "IO", 8).element(completeElement(1, "Bystander")));
        target.add(fault("getValue").at(address).occurrence(reading));
        runs.push_back(runCaptured(
            {"update", "--verify", "-a", archive.folder().text(), "-t", "127.0.0.1", "--emulate", target.write()}));
        if (runs.back().exitCode == 0) {
            return runs;
        }
    }
    ADD_FAILURE() << "no end of readings";
    return runs;
}

TEST_F(Verify, ErrorsThatTheLookMeetsAreListedAndAreErrorsWhenNothingElseIsWrong) {
    archive.write();
    std::size_t looks = 0;
    for (const ToolRun& done : runsWithEachFailedReading(archive, "IOMODULE[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]")) {
        if (done.exitCode != 0 && done.output.find("Reported errors") == std::string::npos) {
            ++looks;
            EXPECT_EQ(1, done.exitCode);
            EXPECT_THAT(done.output, HasSubstr("\nVerification: 2 as expected\nErrors of the look:\n       ERROR "));
            EXPECT_THAT(done.errors, HasSubstr("kvreflash: the look at the target met 1 error"));
        }
    }
    EXPECT_GT(looks, 5U);
}

TEST_F(Verify, NoFailedReadingOfAnUpdatedElementIsAsExpected) {
    archive.write();
    const std::vector<ToolRun> runs = runsWithEachFailedReading(archive, "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]");
    ASSERT_GT(runs.size(), 10U);
    std::size_t verifications = 0;
    for (const ToolRun& done : runs) {
        verifications += done.exitCode == 6 ? 1 : 0;
        EXPECT_TRUE(&done == &runs.back() || done.exitCode != 0) << done.output;
        EXPECT_TRUE(done.exitCode == 0 || done.errors.ends_with("\n")) << "the last line says why";
    }
    EXPECT_GT(verifications, 2U);
}

/// A target that can be rebooted.
class VerifyAfterReboot : public ToolRack {
protected:
    VerifyAfterReboot() {
        node = completeBoard("HCN", "QB4120", 7);
        archive.add(entry("node1.bin").board("QB4120", 1).version("23.3"));
        archive.folder().write("node1.bin", firmwareImage(KvCVersion("23.3"), 2));
    }
    void addFirmware(ItemBuilder element) { node.element(element.parameter("VERSION", "23.2")); }
};

TEST_F(VerifyAfterReboot, TheTargetIsWaitedFor) {
    addFirmware(completeElement(1, "UserFirmware").activatedAtReboot());
    target.rebootLookups(4);
    const ToolRun result = run("update", {"--verify", "--reboot"});
    EXPECT_EQ(0, result.exitCode) << result.output;
    EXPECT_THAT(result.output, EndsWith("    Update completed successfully!\n"
                                        "Waiting for the target to answer after its reboot (at most 300 s) ...\n"
                                        "\nVerification: 1 as expected\n"));
}

TEST_F(VerifyAfterReboot, ATargetThatStaysAwayIsNotWaitedForLonger) {
    addFirmware(completeElement(1, "UserFirmware").activatedAtReboot());
    target.rebootLookups(8);
    const ToolRun result = run("update", {"--verify", "--reboot", "--wait", "3"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(
        result.output,
        HasSubstr("(at most 3 s) ...\n\nVerification: the target cannot be looked at: the target '127.0.0.1' is "
                  "not accessible\n"));
}

TEST_F(VerifyAfterReboot, WhatIsAsBeforeEvenThenDiffers) {
    addFirmware(completeElement(1, "UserFirmware").parameter("CHECKSUM_CRC32", std::uint64_t(5)));
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("23.2"), 5));
    const ToolRun result = run("update", {"--verify", "--reboot", "--wait", "2"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("Verification: 0 as expected, 1 differs\n"));
}

TEST_F(VerifyAfterReboot, ATargetWhoseScanFailsOrIsIncompleteIsAskedAgain) {
    addFirmware(completeElement(1, "UserFirmware"));
    target.add(fault("scan").occurrence(2)).add(fault("scan").occurrence(3).noErrors());
    EXPECT_THAT(run("update", {"--verify", "--reboot", "--wait", "2"}).output,
                EndsWith("\n\nVerification: 1 as expected\n"));
}

TEST_F(VerifyAfterReboot, TheLastAnswerCountsAndEachSecondHasOne) {
    addFirmware(completeElement(1, "UserFirmware"));
    target.add(fault("scan").occurrence(2)).add(fault("scan").occurrence(3));
    EXPECT_EQ(6, run("update", {"--verify", "--reboot", "--wait", "1"}).exitCode);
}

TEST_F(VerifyAfterReboot, WithoutWaitingItIsAskedOnce) {
    addFirmware(completeElement(1, "UserFirmware"));
    target.add(fault("scan").occurrence(2));
    const ToolRun result = run("update", {"--verify", "--reboot", "--wait", "0"});
    EXPECT_EQ(6, result.exitCode);
    EXPECT_THAT(result.output, HasSubstr("(at most 0 s) ...\n\nVerification: the target cannot be looked at: "));
}

TEST_F(VerifyAfterReboot, ARebootThatDoesNotHappenIsTheReasonAndWhatIsThereIsShown) {
    addFirmware(completeElement(1, "UserFirmware").activatedAtReboot());
    target.add(fault("KvHIM_FORCE_resetDevice"));
    const ToolRun result = run("update", {"--verify", "--reboot"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("Verification: 0 as expected, 1 unchanged\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("Waiting")));
    EXPECT_THAT(result.errors, HasSubstr("kvreflash: the target was not rebooted"));
}

TEST_F(VerifyAfterReboot, ARebootThatDoesNotHappenStaysTheReasonWhateverTheLookMeets) {
    addFirmware(completeElement(1, "UserFirmware"));
    target.add(fault("KvHIM_FORCE_resetDevice")).add(fault("deleteRootHandle"));
    const ToolRun result = run("update", {"--verify", "--reboot"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, HasSubstr("Verification: 1 as expected\nErrors of the look:\n       ERROR "));
    EXPECT_THAT(result.errors, HasSubstr("kvreflash: the target was not rebooted"));
    EXPECT_THAT(result.errors, Not(HasSubstr("the look")));
}

TEST_F(VerifyAfterReboot, AReportAloneDoesNotLookAtATargetThatReboots) {
    addFirmware(completeElement(1, "UserFirmware").activatedAtReboot());
    target.rebootLookups(8);
    const ScratchFolder reports;
    EXPECT_EQ(0, run("update", {"--reboot", "--report", reports.text() + "/report.json"}).exitCode);
    const KvNJson::json report = KvNJson::json::parse(reports.read("report.json"));
    EXPECT_TRUE(report.view().find("look").is_null());
    EXPECT_EQ("rebooted", report.view().find("stage").get_string());
}

} // namespace
