#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "KvNJson.h"
#include "RedirectedStream.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

/// An archive and a target that it fits: one board with one element.
class Session : public testing::Test {
protected:
    Session() {
        archive_.add(entry("node.bin").board("QB4120", 1));
        archive_.write();
        target_.add(completeBoard("HCN", "QB4120", 2815)
                        .element(completeElement(1, "UserFirmware").parameter("VERSION", "30.0")));
    }

    /// Runs a command with the archive, the target and `more`.
    [[nodiscard]] ToolRun run(const std::string& command, const Arguments& more = {}) {
        Arguments arguments{command};
        if (command != "elements" && command != "connect" && command != "reboot") {
            arguments.insert(arguments.end(), {"-a", archive_.folder().text()});
        }
        if (command != "content" && command != "dump" && command != "archive-version") {
            arguments.insert(arguments.end(), {"-t", "127.0.0.1"});
        }
        arguments.insert(arguments.end(), {"--emulate", target_.write()});
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCaptured(arguments);
    }

    ArchiveFolder archive_;
    TargetBuilder target_;
};

TEST_F(Session, EveryCommandEndsWithZeroWhenAllIsWell) {
    for (const char* command :
         {"archive-version", "content", "dump", "elements", "connect", "plan", "update", "reboot"}) {
        const ToolRun done = run(command);
        EXPECT_EQ(done.exitCode, 0) << command;
        EXPECT_EQ(done.errors, "") << command;
        EXPECT_NE(done.output, "") << command;
    }
    EXPECT_EQ(runCaptured({"version"}).exitCode, 0);
}

TEST_F(Session, AFailedPrepareEndsWithOne) {
    const ScratchFolder nothing;
    for (const char* command : {"archive-version", "content", "dump", "plan", "update"}) {
        const ToolRun done = runCaptured({command, "-a", nothing.text()});
        EXPECT_EQ(done.exitCode, 1) << command;
        EXPECT_THAT(done.output, HasSubstr("ERROR: Failed to read firmware archive.\n"));
        EXPECT_EQ(done.errors, "");
    }
    for (const char* command : {"elements", "connect", "reboot"}) {
        const ToolRun done = runCaptured({command});
        EXPECT_EQ(done.exitCode, 1) << command;
        EXPECT_THAT(done.output, HasSubstr("ERROR: No IP address or hostname specified!\n"));
        EXPECT_EQ(done.errors, "kvreflash: give the target with -t HOST\n");
    }
}

TEST_F(Session, WhoGivesNoTargetIsToldHow) {
    for (const char* command : {"plan", "update"}) {
        const ToolRun done = runCaptured({command, "-a", archive_.folder().text()});
        EXPECT_EQ(done.exitCode, 1) << command;
        EXPECT_THAT(done.output, EndsWith("ERROR: No IP address or hostname specified!\n"));
        EXPECT_EQ(done.errors, "kvreflash: give the target with -t HOST\n");
    }
    const ToolRun json = runCaptured({"elements", "--json"});
    EXPECT_THAT(json.errors, EndsWith("ERROR: No IP address or hostname specified!\n"
                                      "kvreflash: give the target with -t HOST\n"));
}

TEST_F(Session, AFailedRunEndsWithOne) {
    target_.add(fault("transferFile"));
    const ToolRun done = run("update");
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.output, HasSubstr("Update failed!"));
}

TEST_F(Session, AnErrorCollectedByTheWayEndsWithOne) {
    target_.add(fault("getValue").at("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"));
    for (const char* command : {"elements", "connect", "plan"}) {
        const ToolRun done = run(command);
        EXPECT_EQ(done.exitCode, 1) << command;
        EXPECT_THAT(done.output, HasSubstr("\nReported errors:\n"));
    }
}

TEST_F(Session, ATargetThatTheArchiveDoesNotSupportEndsWithTwo) {
    target_.add(completeBoard("IOMODULE", "QB7001", 7).element(completeElement(1)));
    ArchiveFolder other;
    other.add(entry("io.bin").board("QB7001", 1));
    other.write();
    const Arguments line{"-a", other.folder().text(), "-t", "127.0.0.1", "--emulate", target_.write()};
    Arguments update{"update"};
    update.insert(update.end(), line.begin(), line.end());
    const ToolRun refused = runCaptured(update);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, EndsWith("ERROR: The target system is not supported by this firmware archive.\n"));
    EXPECT_EQ(refused.errors, "kvreflash: there is no entry for 'QB4120, SN 2815, Firmware'\n");
    Arguments plan{"plan"};
    plan.insert(plan.end(), line.begin(), line.end());
    EXPECT_EQ(runCaptured(plan).exitCode, 0) << "a plan is shown all the same";
}

TEST_F(Session, OfManyElementsWithoutEntryTheFirstThreeAreNamed) {
    ItemBuilder node = completeBoard("HCN", "NODE", 7);
    for (std::uint32_t id = 2; id <= 6; ++id) {
        node.element(completeElement(id, "E" + std::to_string(id)));
    }
    TargetBuilder target;
    target.add(node);
    const ToolRun done =
        runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate", target.write()});
    EXPECT_EQ(done.exitCode, 2);
    EXPECT_EQ(done.errors,
              "kvreflash: there is no entry for 'NODE, SN 7, E2', 'NODE, SN 7, E3', 'NODE, SN 7, E4' and 2 more\n");
}

TEST_F(Session, AnEmulatedTargetThatCannotBeLoadedEndsWithOneBeforeAnything) {
    const ScratchFolder nothing;
    for (const char* command : {"version", "content", "update"}) {
        Arguments arguments{command, "--emulate", nothing.text()};
        if (std::string(command) != "version") {
            arguments.insert(arguments.end(), {"-a", archive_.folder().text()});
        }
        const ToolRun done = runCaptured(arguments);
        EXPECT_EQ(done.exitCode, 1);
        EXPECT_EQ(done.output, "");
        EXPECT_THAT(done.errors, StartsWith("kvreflash: "));
        EXPECT_THAT(done.errors, HasSubstr("target.json"));
    }
}

TEST_F(Session, AWarningOfAnEmulatedTargetGoesToStandardError) {
    target_.add(completeBoard("IOMODULE", "QB7001", 7).element(completeElement(1)).element(completeElement(1)));
    const ToolRun done = run("connect");
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.errors, StartsWith("kvreflash: warning: "));
}

TEST_F(Session, SeveralEmulatedTargetsAreServed) {
    TargetBuilder other;
    other.address("127.0.0.2");
    other.add(completeBoard("HCN", "QB4140", 1).element(completeElement(1, "Other")));
    const ToolRun done =
        runCaptured({"elements", "-t", "127.0.0.2", "--emulate", target_.write(), "--emulate", other.write()});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.output, HasSubstr("QB4140, SN 1, Other"));
}

TEST_F(Session, AnEventsFileIsCreatedBeforePrepare) {
    const ScratchFolder folder;
    const std::string events = folder.write("events", "of an earlier update");
    const ToolRun done = runCaptured({"update", "-a", "missing", "--events", events});
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.output, HasSubstr("ERROR: Failed to read firmware archive.\n"));
    EXPECT_EQ(folder.read("events"), "");
}

TEST_F(Session, AnEventsFileThatCannotBeCreatedEndsWithOneBeforePrepare) {
    const ScratchFolder folder;
    for (const std::string& path : {folder.text(), folder.text() + "/missing/events", std::string()}) {
        const ToolRun done = run("update", {"--events", path});
        EXPECT_EQ(done.exitCode, 1);
        EXPECT_EQ(done.output, "");
        EXPECT_THAT(done.errors, StartsWith("kvreflash: cannot create '" + path + "': "));
    }
    const std::string reason = std::generic_category().message(ENOENT);
    const std::string path = folder.text() + "/missing/events";
    EXPECT_EQ(run("update", {"--events", path}).errors, "kvreflash: cannot create '" + path + "': " + reason + "\n");
}

TEST_F(Session, EventsGoIntoTheFileOrToStandardError) {
    const std::string expected = "{\"event\":\"phase\",\"value\":0}\n"
                                 "{\"event\":\"progress\",\"value\":33}\n"
                                 "{\"event\":\"progress\",\"value\":66}\n"
                                 "{\"event\":\"progress\",\"value\":100}\n"
                                 "{\"event\":\"progress\",\"value\":100}\n"
                                 "{\"event\":\"phase\",\"value\":4294967295}\n";
    const ScratchFolder folder;
    const ToolRun toFile = run("update", {"--force", "--events", folder.text() + "/events"});
    EXPECT_EQ(toFile.errors, "");
    EXPECT_EQ(folder.read("events"), expected);
    const ToolRun toErrors = run("update", {"--force", "--events", "-"});
    EXPECT_EQ(toErrors.errors, expected);
    EXPECT_THAT(toErrors.output, HasSubstr("Update completed successfully!"));
}

TEST_F(Session, WithJsonTheDocumentStandsAloneOnStandardOutput) {
    for (const char* command : {"content", "elements", "plan"}) {
        const ToolRun text = run(command);
        const ToolRun records = run(command, {"--json"});
        EXPECT_EQ(records.exitCode, 0);
        EXPECT_EQ(records.errors, text.output) << command;
        EXPECT_FALSE(KvNJson::json::parse(records.output).is_invalid()) << command;
        EXPECT_TRUE(records.output.ends_with("}\n"));
    }
}

TEST_F(Session, TheDocumentIsWrittenEvenWhenTheRunFails) {
    target_.add(fault("getValue").at("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"));
    for (const char* command : {"elements", "plan"}) {
        const ToolRun done = run(command, {"--json"});
        EXPECT_EQ(done.exitCode, 1) << command;
        const KvNJson::json document = KvNJson::json::parse(done.output);
        ASSERT_FALSE(document.is_invalid()) << command;
        EXPECT_EQ(document.view().find("elements").size(), 1U);
        EXPECT_THAT(done.errors, HasSubstr("\nReported errors:\n"));
    }
}

TEST_F(Session, NoDocumentIsWrittenWhenPrepareFails) {
    for (const char* command : {"content", "plan"}) {
        const ToolRun done = runCaptured({command, "--json", "-a", "missing"});
        EXPECT_EQ(done.exitCode, 1);
        EXPECT_EQ(done.output, "");
        EXPECT_THAT(done.errors, HasSubstr("ERROR: Failed to read firmware archive.\n"));
    }
    const ToolRun done = runCaptured({"elements", "--json"});
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_EQ(done.output, "");
    EXPECT_THAT(done.errors, HasSubstr("ERROR: No IP address or hostname specified!\n"));
}

TEST_F(Session, DisabledElementsAreLeftOutOfTheUpdate) {
    const ToolRun all = run("update", {"--disable", "0"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_EQ(all.output.find("Updating:"), std::string::npos);
    const ToolRun none = run("update", {"--disable", "1", "--disable", "4294967295"});
    EXPECT_THAT(none.output, HasSubstr("Updating:"));
    EXPECT_EQ(all.errors, "");
}

TEST_F(Session, DisablingAnElementThatIsNotThereIsToldAndChangesNothing) {
    const ToolRun done = run("update", {"--disable", "1", "--disable", "0", "--disable", "4294967295"});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.errors, "kvreflash: --disable: the target has no element 1\n"
                           "kvreflash: --disable: the target has no element 4294967295\n");
}

TEST_F(Session, FiltersThatLetNothingThroughAreTold) {
    const std::string sentence = "kvreflash: no element of the target passes the filters\n";
    for (const char* command : {"elements", "plan", "update"}) {
        for (const Arguments& filter :
             {Arguments{"-b", "QB9999"}, {"-s", "1"}, {"-e", "Firmware"}, {"--configuration"}}) {
            const ToolRun done = run(command, filter);
            EXPECT_EQ(done.exitCode, 0) << command << filter.front();
            EXPECT_EQ(done.errors, sentence) << command << filter.front();
        }
        EXPECT_EQ(run(command, {"-b", "QB4120", "-s", "2815", "-e", "UserFirmware"}).errors, "") << command;
    }
    EXPECT_EQ(run("connect", {"-b", "QB9999"}).errors, "");
    EXPECT_EQ(run("plan", {"--json", "-b", "QB9999"}).errors, run("plan", {"-b", "QB9999"}).output + sentence);
}

TEST_F(Session, ATargetWithoutElementsIsNoMatterOfFilters) {
    TargetBuilder bare;
    bare.add(completeBoard("HCN", "QB4120", 2815));
    EXPECT_EQ(runCaptured({"elements", "-t", "127.0.0.1", "--emulate", bare.write()}).errors, "");
}

/// The target of a session that rebooted is not found for a while.
TEST_F(Session, ARebootFollowsAnUpdateThatSucceeded) {
    target_.rebootLookups(1);
    EXPECT_EQ(run("update").exitCode, 0);
    EXPECT_EQ(run("connect").exitCode, 0) << "nobody asked for a reboot";
    EXPECT_EQ(run("update", {"--reboot"}).exitCode, 0);
    EXPECT_EQ(run("connect").exitCode, 1);
    EXPECT_EQ(run("connect").exitCode, 0);
}

TEST_F(Session, NoRebootFollowsAnUpdateThatFailed) {
    target_.rebootLookups(1).add(fault("lock"));
    EXPECT_EQ(run("update", {"--reboot"}).exitCode, 1);
    EXPECT_EQ(run("connect").exitCode, 0);
}

TEST_F(Session, NoRebootFollowsAScanThatCollectedAnError) {
    target_.rebootLookups(1).add(fault("getValue").at("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"));
    const ToolRun done = run("reboot");
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.output, HasSubstr("\nReported errors:\n"));
    EXPECT_EQ(run("connect").output.find("not found"), std::string::npos);
}

TEST_F(Session, ARebootThatDoesNotHappenEndsWithOne) {
    target_.add(fault("KvHIM_FORCE_resetDevice"));
    for (const Arguments& more : {Arguments{}, Arguments{"--reboot"}}) {
        const ToolRun done = run(more.empty() ? "reboot" : "update", more);
        EXPECT_EQ(done.exitCode, 1);
        EXPECT_THAT(done.output, HasSubstr("ERROR: Device cannot be rebooted. Command failed.\n"));
    }
}

} // namespace
