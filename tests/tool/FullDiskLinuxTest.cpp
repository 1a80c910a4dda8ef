#include "ArchiveFolder.h"
#include "CommandLine.h"
#include "CompleteItems.h"
#include "RedirectedStream.h"
#include "ReplacedFile.h"
#include "Report.h"
#include "ScratchFolder.h"
#include "SmallFilesLinux.h"
#include "TargetBuilder.h"
#include "ToolRun.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* fullDisk = "/dev/full";

/// Runs the tool with standard output on a full disk.
ToolRun runOnFullDisk(const std::vector<std::string>& arguments) {
    KvEmulation::reset();
    const RedirectedStream output(stdout, fullDisk);
    const RedirectedStream errors(stderr);
    ToolRun run;
    run.exitCode = executeCommandLine(arguments);
    run.errors = errors.received();
    KvEmulation::reset();
    return run;
}

class FullDisk : public testing::Test {
protected:
    FullDisk() {
        archive_.add(entry("node.bin").board("QB4120", 1));
        archive_.folder().write("node.bin", firmwareImage(KvCVersion("2.0"), 2));
        archive_.write();
        target_.add(completeBoard("HCN", "QB4120", 2815).element(completeElement(1)));
    }

    ArchiveFolder archive_;
    TargetBuilder target_;
};

TEST_F(FullDisk, MessagesThatAreLostAreNoticed) {
    for (const char* command : {"archive-version", "content", "dump"}) {
        const ToolRun run = runOnFullDisk({command, "-a", archive_.folder().text()});
        EXPECT_EQ(run.exitCode, 1) << command;
        EXPECT_EQ(run.errors, "kvreflash: cannot write to standard output\n");
    }
    EXPECT_EQ(runOnFullDisk({"version"}).exitCode, 1);
}

TEST_F(FullDisk, ADocumentThatIsLostIsNoticed) {
    const ToolRun run = runOnFullDisk({"content", "--json", "-a", archive_.folder().text()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, EndsWith("kvreflash: cannot write to standard output\n"));
}

TEST_F(FullDisk, HelpThatIsLostIsNoticed) {
    EXPECT_EQ(runOnFullDisk({"--help"}).exitCode, 1);
    EXPECT_EQ(runOnFullDisk({"plan", "--help"}).exitCode, 1);
}

TEST_F(FullDisk, AnotherFailureKeepsItsExitCode) {
    EXPECT_EQ(runOnFullDisk({"nonsense"}).exitCode, 64);
    ArchiveFolder empty;
    empty.write();
    const ToolRun run =
        runOnFullDisk({"update", "-a", empty.folder().text(), "-t", "127.0.0.1", "--emulate", target_.write()});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, StartsWith("kvreflash: cannot write to standard output\n"
                                       "kvreflash: the archive does not support the target: "))
        << "the last line is the reason of the code";
}

TEST_F(FullDisk, AnUpdateGoesOnToItsEnd) {
    const std::vector<std::string> update{"update",    "-a",        archive_.folder().text(), "-t",
                                          "127.0.0.1", "--emulate", target_.write()};
    EXPECT_EQ(runOnFullDisk(update).exitCode, 1);
    const ToolRun again = runCaptured(update);
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_THAT(again.output, HasSubstr("No update is required for these elements:"));
}

TEST_F(FullDisk, EventsThatAreLostAreNoticedInTheEnd) {
    const ToolRun run = runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate",
                                     target_.write(), "--events", fullDisk});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr("Update completed successfully!"));
    EXPECT_EQ(run.errors, "kvreflash: cannot write '/dev/full'\n");
}

TEST_F(FullDisk, AnEventsFileWithoutEventsLosesNothing) {
    const ToolRun run = runCaptured({"update", "-a", "missing", "-t", "127.0.0.1", "--events", fullDisk});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.errors, testing::Not(HasSubstr(fullDisk)));
}

TEST(ReportOnAFullDisk, AnEarlierReportIsStillThere) {
    const ScratchFolder folder;
    for (const char* name : {"report.json", "report.html"}) {
        folder.write(name, "earlier");
        const std::string path = folder.text() + "/" + name;
        ReplacedFile file;
        int error = 0;
        {
            const SmallFiles disk(100);
            error = file.open(path);
            EXPECT_EQ(error, 0) << "it may get along with less than what is reserved";
            error = file.commit(reportFor(ReportData(), path));
        }
        EXPECT_EQ(error, EFBIG);
        EXPECT_EQ("earlier", folder.read(name));
        EXPECT_EQ(file.open(path), 0);
        EXPECT_EQ(file.commit(reportFor(ReportData(), path)), 0);
        EXPECT_NE("earlier", folder.read(name));
    }
    EXPECT_EQ(folder.list().size(), 2U);
}

} // namespace
