#include "KvCVersion.h"
#include "ToolRack.h"
#include "UpdateFiles.h"
#include "Verification.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
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

TEST_F(Preflight, EveryFaultIsToldAndTheRackIsLeftAlone) {
    archive.removeFile("node1.bin");
    writeImage("node2.bin", "2.0.1", 7);
    const ToolRun result = run("update", {"--preflight"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_EQ("kvreflash: preflight: node1.bin: not found\n"
              "kvreflash: preflight: node2.bin: its checksum is 7, the description says 2\n"
              "kvreflash: preflight: node2.bin: its version is 2.0.1, the description says 2.0\n",
              result.errors);
    expectInstalled(false);
}

TEST_F(Preflight, FilesThatAreNotInstalledAreNotLookedAt) {
    archive.removeFile("node1.bin");
    EXPECT_EQ(0, run("update", {"--preflight", "--disable", "0"}).exitCode);
}

TEST_F(Preflight, AFolderInPlaceOfAFileCannotBeRead) {
    archive.removeFile("node1.bin");
    std::filesystem::create_directory(archive.folder().path() / "node1.bin");
    EXPECT_EQ("kvreflash: preflight: node1.bin: cannot be read\n", run("update", {"--preflight"}).errors);
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
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("kvreflash: preflight: node1.bin: not found\n", result.errors);
    expectInstalled(false);
}

TEST_F(Preflight, FindingsAreReported) {
    archive.removeFile("node1.bin");
    const ScratchFolder reports;
    EXPECT_EQ(1, run("update", {"--preflight", "--report", reports.text() + "/report.json"}).exitCode);
    EXPECT_THAT(reports.read("report.json"), HasSubstr("preflight: node1.bin: not found"));
}

TEST_F(Preflight, WithoutAPlanTheSessionTellsWhy) {
    const ToolRun result = run("update", {"--preflight", "-d", "none.json"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("ERROR: Failed to read firmware archive.\n"));
    EXPECT_EQ("", result.errors);
}

TEST_F(Verify, WhatTheTargetReportsAsExpectedIsCounted) {
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("    Update completed successfully!\n\nVerification: 2 as expected\n"));
}

TEST_F(Verify, WhatDiffersIsShownAndFails) {
    writeImage("node2.bin", "2.1", 9);
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output,
                EndsWith("\n"
                         "No. | Update element  | Expected | Found | Expected checksum | Found checksum | Result \n"
                         "---------------------------------------------------------------------------------------\n"
                         "1   | NODE, SN 7, Two | 2.0      | 2.1   | 2                 | 9              | differs\n"
                         "\n"
                         "Verification: 1 as expected, 1 differs\n"));
}

TEST_F(Verify, WhatIsAsBeforeMayShowAtAReboot) {
    node.element(completeElement(3, "Three").activatedAtReboot());
    archive.add(entry("node3.bin").board("NODE", 3));
    writeImage("node3.bin", "2.0", 2);
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.output,
                EndsWith("| activates at reboot\n\nVerification: 2 as expected, 1 activates at reboot\n"));
}

TEST_F(Verify, FilesThatAreNoElementsAreNotJudged) {
    archive.add(entry("plain.bin").target("NODE", "cfg/plain.cfg"));
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(result.output,
                EndsWith("| not reported by the target\n\nVerification: 2 as expected, 1 not reported by "
                         "the target\n"));
}

TEST_F(Verify, AFailedUpdateIsNotVerified) {
    archive.removeFile("node1.bin");
    const ToolRun result = run("update", {"--verify"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, Not(HasSubstr("Verification:")));
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
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("(at most 3 s) ...\n\nVerification: the target cannot be scanned.\n"));
}

TEST_F(VerifyAfterReboot, WhatIsAsBeforeEvenThenDiffers) {
    addFirmware(completeElement(1, "UserFirmware").parameter("CHECKSUM_CRC32", std::uint64_t(5)));
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("23.2"), 5));
    const ToolRun result = run("update", {"--verify", "--reboot"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_THAT(result.output, EndsWith("Verification: 0 as expected, 1 differs\n"));
}

KvTPlannedElement planned(const char* version, std::optional<std::uint32_t> checksum) {
    KvTPlannedElement element;
    element.address = "A";
    element.file = 0;
    element.availableVersion = KvCVersion(version);
    element.availableChecksum = checksum;
    return element;
}

KvEVerified judged(const KvTPlannedElement& element, const KvTInstalled& found) {
    const std::vector<KvTPlannedElement> elements{element};
    return verifyElements(elements, {{"A", found}}, true).at(0).result;
}

/// What a rebooted target answers, one scan after the other.
class RebootingTarget : public testing::Test {
protected:
    using Answer = std::optional<KvTInstalledElements>;

    /// The answer that is taken after so many seconds of waiting.
    [[nodiscard]] Answer taken(const std::vector<Answer>& answers, std::uint32_t seconds) const {
        std::size_t asked = 0;
        const auto scan = [&] { return answers.at(asked++); };
        testing::internal::CaptureStdout();
        Answer answer = scanAfterReboot(scan, elements, seconds);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("(at most " + std::to_string(seconds) + " s)"));
        EXPECT_EQ(answers.size(), asked);
        return answer;
    }
    static bool isNew(const Answer& answer) { return answer && answer->at("A").version == KvCVersion("2.0"); }

    const std::vector<KvTPlannedElement> elements{planned("2.0", 2)};
    const Answer away;
    const Answer empty = KvTInstalledElements();
    const Answer before = KvTInstalledElements{{"A", {KvCVersion("1.0"), 1, true, true}}};
    const Answer after = KvTInstalledElements{{"A", {KvCVersion("2.0"), 2, true, true}}};

private:
    EnvironmentVariable timeScale_{"KV_TIME_SCALE", "0"};
};

TEST_F(RebootingTarget, IsAskedAgainWhileItStillAnswersAsBefore) {
    EXPECT_TRUE(isNew(taken({before, before, away, after}, 9)));
}

TEST_F(RebootingTarget, IsAskedAgainWhileBoardsAreMissing) {
    EXPECT_TRUE(isNew(taken({away, empty, after}, 9)));
}

TEST_F(RebootingTarget, IsJudgedByItsLastAnswer) {
    EXPECT_FALSE(isNew(taken({away, before, before}, 2)));
    EXPECT_EQ(std::nullopt, taken({before, away}, 1));
    EXPECT_TRUE(isNew(taken({after}, 0)));
}

TEST(VerifiedElements, UnknownVersionsAndChecksumsAreNotCompared) {
    const KvTInstalled found{KvCVersion("2.0"), 2, true, true};
    EXPECT_EQ(KvEVerified::asExpected, judged(planned("2.0", 2), found));
    EXPECT_EQ(KvEVerified::asExpected, judged(planned("", 2), found));
    EXPECT_EQ(KvEVerified::asExpected, judged(planned("2.0", std::nullopt), found));
    EXPECT_EQ(KvEVerified::asExpected, judged(planned("2.0", 2), {KvCVersion(), std::nullopt, true, true}));
    EXPECT_EQ(KvEVerified::asExpected, judged(planned("2.0", 2), {KvCVersion("2.0"), 0, true, true}));
    EXPECT_EQ(KvEVerified::differs, judged(planned("2.0", 3), found));
    EXPECT_EQ(KvEVerified::differs, judged(planned("2.0.1", 2), found));
    EXPECT_EQ(KvEVerified::differs, judged(planned("2.0", 2), {KvCVersion("2.0"), 2, false, true}));
}

TEST(VerifiedElements, AnElementThatIsGoneIsMissing) {
    const std::vector<KvTPlannedElement> elements{planned("2.0", 2)};
    const std::vector<KvTVerifiedElement> verified = verifyElements(elements, {{"B", {}}}, false);
    EXPECT_EQ(KvEVerified::missing, verified.at(0).result);
    EXPECT_TRUE(verified.at(0).isFault());
}

TEST(VerifiedElements, OnlyUpdatedElementsAreLookedAt) {
    std::vector<KvTPlannedElement> elements{planned("2.0", 2), planned("2.0", 2)};
    elements[0].disabled = true;
    elements[1].file = noArchiveFile;
    EXPECT_THAT(verifyElements(elements, {}, false), IsEmpty());
}

} // namespace
