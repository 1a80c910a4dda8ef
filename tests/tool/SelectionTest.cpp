#include "EmulatedTargets.h"
#include "QuietFilter.h"
#include "ScratchFolder.h"
#include "ToolRack.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Two elements of the processor board: version 1.0 is installed, the archive has 2.0.
class SelectionTest : public ToolRack {
protected:
    SelectionTest() {
        addNodeElement(1, "UserFirmware");
        addNodeElement(2, "UserIpl");
    }
    [[nodiscard]] bool isTouched() const { return std::filesystem::exists(std::filesystem::path(rack()) / "state"); }
};

struct SuggestionRow {
    const char* name;
    std::vector<std::string> options;
    std::string message;

    friend void PrintTo(const SuggestionRow& row, std::ostream* stream) { *stream << row.name; }
};

class SuggestionTest : public SelectionTest, public testing::WithParamInterface<SuggestionRow> {};

} // namespace

TEST_P(SuggestionTest, AnUpdateSaysWhatMayHaveBeenMeantAndTouchesNothing) {
    for (const char* command : {"plan", "update"}) {
        const ToolRun result = run(command, GetParam().options);
        EXPECT_EQ(8, result.exitCode);
        EXPECT_THAT(result.errors, EndsWith("kvreflash: " + GetParam().message + "\n"));
    }
    EXPECT_FALSE(isTouched());
}

INSTANTIATE_TEST_SUITE_P(
    Options, SuggestionTest,
    testing::Values(
        SuggestionRow{"BoardType",
                      {"-b", "NODES"},
                      "no element of the target passes the filters; --board-type: nothing has 'NODES', did you mean "
                      "'NODE'?"},
        SuggestionRow{"SerialNumber",
                      {"-s", "71"},
                      "no element of the target passes the filters; --serial-number: nothing has '71'"},
        SuggestionRow{"ElementName",
                      {"-e", "UserIPl,UserFirmwear"},
                      "no element of the target passes the filters; --element: nothing has 'UserIPl', did you mean "
                      "'UserIpl'?; --element: nothing has 'UserFirmwear', did you mean 'UserFirmware'?"},
        SuggestionRow{"FiltersThatExcludeEachOther",
                      {"-b", "NODE", "-s", "8"},
                      "no element of the target passes the filters; --serial-number: nothing has '8'"},
        SuggestionRow{"Disabled",
                      {"--disable", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[3]"},
                      "--disable: the target has no element 'HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[3]', did you mean "
                      "'HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]'?"},
        SuggestionRow{"DisabledNumber", {"--disable", "2"}, "--disable: the target has no element '2'"},
        SuggestionRow{"DisabledByTheInventorysName",
                      {"--disable", "UserIpl"},
                      "--disable: the target has no element 'UserIpl', did you mean 'NODE, SN 7, Bootloader'?"},
        SuggestionRow{"DisabledUnlikeAny",
                      {"--disable", "something else"},
                      "--disable: the target has no element 'something else'"}),
    [](const auto& row) { return row.param.name; });

TEST_F(SelectionTest, AnExplanationSaysWhatMayHaveBeenMeant) {
    EXPECT_THAT(run("explain", {"UserIpk"}).errors, HasSubstr("or a filter hides it, did you mean 'UserIpl'?\n"));
}

TEST_F(SelectionTest, APlanShowsWhatItHasAndLeavesOutWhatIsDisabled) {
    const ToolRun result = run("plan", {"--disable", "0"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_THAT(run("plan", {"--disable", "0", "--json"}).output,
                HasSubstr("\"reasons\": [\n                \"disabled\""));
    const ToolRun failed = run("plan", {"--disable", "7"});
    EXPECT_EQ(8, failed.exitCode);
    EXPECT_THAT(failed.output, HasSubstr("| NODE, SN 7, Bootloader |"));
}

// Downgrades.

namespace {

class DowngradeTest : public SelectionTest {
protected:
    DowngradeTest() {
        node.element(completeElement(3, "Newer").parameter("VERSION", "3.0"));
        archive.add(entry("node3.bin").board("NODE", 3));
    }
    const std::string warning = "warning: 'NODE, SN 7, Newer' is downgraded from 3.0 to 2.0\n";
};

} // namespace

TEST_F(DowngradeTest, AreMarkedEverywhere) {
    for (const char* command : {"plan", "explain", "update"}) {
        EXPECT_THAT(run(command).errors, HasSubstr("is downgraded from 3.0 to 2.0\n")) << command;
    }
    EXPECT_THAT(run("explain").output, HasSubstr("available    2.0 (2.0.0), checksum 2, lower than installed"));
    EXPECT_THAT(run("matrix", {}).errors, HasSubstr("matrix has no option -t"));
    EXPECT_THAT(runCaptured({"matrix", "-a", archive.folder().text(), "--emulate", rack()}).output,
                HasSubstr("would update [DOWNGRADE]"));
    EXPECT_THAT(run("plan", {"--json"}).output, HasSubstr("\"isDowngrade\": true"));
}

TEST_F(DowngradeTest, AreMarkedInReports) {
    const ScratchFolder folder;
    const std::string page = folder.text() + "/r.html";
    EXPECT_EQ(0, run("plan", {"--report", page}).exitCode);
    EXPECT_THAT(folder.read("r.html"), HasSubstr(">planned (downgrade)<"));
    EXPECT_EQ(0, run("update", {"--report", page}).exitCode);
    EXPECT_THAT(folder.read("r.html"), HasSubstr(">updated (downgrade)<"));
}

TEST_F(DowngradeTest, AreLeftOutOnRequestAsADecisionWithItsReason) {
    const ToolRun plan = run("plan", {"--no-downgrade", "--json"});
    EXPECT_THAT(plan.output, HasSubstr("\"downgrade-left-out\""));
    EXPECT_THAT(plan.errors, Not(HasSubstr("is downgraded")));
    EXPECT_EQ(0, run("update", {"--no-downgrade"}).exitCode);
    EXPECT_THAT(run("plan").errors, HasSubstr("is downgraded from 3.0 to 2.0"));
    EXPECT_THAT(run("explain", {"--no-downgrade", "Newer"}).output,
                HasSubstr("no update: the archive has a lower version (--no-downgrade)"));
}

// Quiet runs.

TEST_F(SelectionTest, QuietlyOnlyResultsAreShown) {
    EXPECT_THAT(run("plan", {"-q"}).output, StartsWith("No. | Update element"));
    const ToolRun update = run("update", {"--quiet"});
    EXPECT_EQ(0, update.exitCode);
    EXPECT_EQ("\nResults:\n\n    Update completed successfully!\n", update.output);
}

TEST_F(SelectionTest, QuietlyErrorsAreShown) {
    archive.add(entry("x.bin").board("NODE", 9).mode("none"));
    EXPECT_THAT(run("update", {"-q"}).output, StartsWith("ERROR: File entry 2 is invalid."));
}

TEST(QuietFilterTest, OpensAtTheFirstErrorOrResult) {
    QuietFilter filter;
    EXPECT_FALSE(filter.shows("\nKorvel Device Update Tool\n"));
    EXPECT_TRUE(filter.shows("WARNING: odd\n"));
    EXPECT_FALSE(filter.shows("more\n"));
    EXPECT_TRUE(filter.shows("ERROR: bad\n"));
    EXPECT_TRUE(filter.shows("       details\n"));
}

TEST(QuietFilterTest, OpensWhenAnythingButAnUpdateRuns) {
    QuietFilter update;
    update.beginRun(true);
    EXPECT_FALSE(update.shows("\nUpdating:\n"));
    EXPECT_TRUE(update.shows("\nResults:\n"));
    QuietFilter plan;
    plan.beginRun(false);
    EXPECT_TRUE(plan.shows("No. | Update element\n"));
}

// Targets that cannot be told apart, and builds that reach no rack.

TEST_F(SelectionTest, TwoTargetsWithOneAddressAreNamed) {
    (void)run("connect");
    const ToolRun result = runCaptured({"connect", "-t", "127.0.0.1", "--emulate", rack(), "--emulate", rack() + "/."});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_THAT(result.errors, HasSubstr("kvreflash: warning: '" + rack() + "' and '" + rack() +
                                         "/.' both have the address 127.0.0.1\n"));
}

TEST(NoRackTest, ABuildForEmulatedTargetsSaysSo) {
    const ToolRun result = runCaptured({"connect", "-t", "127.0.0.1"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_EQ(canOnlyEmulate() ? "kvreflash: this build reaches emulated targets only: give --emulate DIR\n"
                               : "kvreflash: the target '127.0.0.1' is not accessible\n",
              result.errors);
}
