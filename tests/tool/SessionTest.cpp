#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "KvNJson.h"
#include "PathTexts.h"
#include "RedirectedStream.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <string_view>
#include <system_error>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

/// An archive and a target that it fits: one board with one element.
class Session : public testing::Test {
protected:
    Session() {
        archive_.add(entry("node.bin").board("QB4120", 1).version("31.0"));
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

TEST_F(Session, EveryCommandPrintsItsOwn) {
    struct Row {
        const char* command;
        const char* text;
    };
    const std::array rows{Row{"archive-version", "23.2.1\n"},
                          Row{"content", "\nBoardType"},
                          Row{"dump", "\"info\": {"},
                          Row{"elements", "\nUpdate element"},
                          Row{"plan", "\nNo. | Update element"},
                          Row{"explain", ": chosen\n"},
                          Row{"verify", "\nVerification: "},
                          Row{"update", "Update completed successfully!"}};
    for (const Row& row : rows) {
        const std::string output = run(row.command).output;
        for (const Row& other : rows) {
            const bool isOwn = std::string_view(other.command) == row.command;
            const bool isPlanOfVerify = std::string_view(other.command) == "plan" && &row == &rows[6];
            EXPECT_EQ(output.find(other.text) != std::string::npos, isOwn || isPlanOfVerify)
                << row.command << " and what " << other.command << " prints:\n"
                << output;
        }
    }
}

TEST_F(Session, AnArchiveThatIsRefusedEndsWithThree) {
    const ScratchFolder nothing;
    for (const char* command : {"archive-version", "content", "dump", "plan", "update", "verify"}) {
        const ToolRun done = runCaptured({command, "-a", nothing.text()});
        EXPECT_EQ(done.exitCode, 3) << command;
        EXPECT_THAT(done.output, HasSubstr("ERROR: Failed to read firmware archive.\n"));
        EXPECT_THAT(done.errors, AllOf(StartsWith("kvreflash: "), HasSubstr("archive.json"))) << command;
    }
}

TEST_F(Session, ATargetThatIsNotReachedOrScannedEndsWithFour) {
    for (const char* command : {"elements", "connect", "reboot"}) {
        const ToolRun unnamed = runCaptured({command});
        EXPECT_EQ(unnamed.exitCode, 4) << command;
        EXPECT_THAT(unnamed.output, HasSubstr("ERROR: No IP address or hostname specified!\n"));
        EXPECT_EQ(unnamed.errors, "kvreflash: give the target with -t HOST\n");
        const ToolRun missing = runCaptured({command, "-t", "127.0.0.9", "--emulate", target_.write()});
        EXPECT_EQ(missing.exitCode, 4) << command;
        EXPECT_EQ(missing.errors, "kvreflash: the target '127.0.0.9' is not accessible\n");
        const ToolRun unknown = runCaptured({command, "-t", "no such host", "--emulate", target_.write()});
        EXPECT_EQ(unknown.exitCode, 4) << command;
        EXPECT_EQ(unknown.errors, "kvreflash: 'no such host' is not an IPv4 address or a known host name\n");
    }
    target_.add(fault("scan"));
    for (const char* command : {"elements", "connect", "plan", "verify", "update", "reboot"}) {
        const ToolRun done = run(command);
        EXPECT_EQ(done.exitCode, 4) << command;
        EXPECT_EQ(done.errors, "kvreflash: the inventory of the target '127.0.0.1' cannot be read\n");
    }
}

TEST_F(Session, WhoGivesNoTargetIsToldHow) {
    for (const char* command : {"plan", "update"}) {
        const ToolRun done = runCaptured({command, "-a", archive_.folder().text()});
        EXPECT_EQ(done.exitCode, 4) << command;
        EXPECT_THAT(done.output, EndsWith("ERROR: No IP address or hostname specified!\n"));
        EXPECT_EQ(done.errors, "kvreflash: give the target with -t HOST\n");
    }
    const ToolRun json = runCaptured({"elements", "--json"});
    EXPECT_THAT(json.errors, EndsWith("ERROR: No IP address or hostname specified!\n"
                                      "kvreflash: give the target with -t HOST\n"));
}

TEST_F(Session, ARefusedLockEndsWithFive) {
    target_.add(fault("lock").error(77, "Somebody else has it."));
    const ToolRun done = run("update");
    EXPECT_EQ(done.exitCode, 5);
    EXPECT_EQ(done.errors, "kvreflash: the target could not be locked: Somebody else has it.\n");
}

TEST_F(Session, ATargetWithoutANodeToLockEndsWithFour) {
    TargetBuilder target;
    target.add(completeBoard("IOMODULE", "QB4120", 2815).element(completeElement(1)));
    const ToolRun done =
        runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate", target.write()});
    EXPECT_EQ(done.exitCode, 4);
    EXPECT_EQ(done.errors, "kvreflash: the target has no processor node that can be locked\n");
}

TEST_F(Session, AFailedRunEndsWithOne) {
    target_.add(fault("transferFile"));
    const ToolRun done = run("update");
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.output, HasSubstr("Update failed!"));
    EXPECT_EQ(done.errors, "kvreflash: 1 element failed; the first is 'QB4120, SN 2815, Firmware'\n");
}

TEST_F(Session, AnErrorCollectedByTheWayEndsWithOne) {
    target_.add(fault("getValue").at("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"));
    for (const char* command : {"elements", "connect", "plan"}) {
        const ToolRun done = run(command);
        EXPECT_EQ(done.exitCode, 1) << command;
        EXPECT_THAT(done.output, HasSubstr("\nReported errors:\n"));
        EXPECT_EQ(done.errors, "kvreflash: 1 error reported\n");
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
    const std::string reason =
        "kvreflash: the archive does not support the target: it has no entry for 'QB4120, SN 2815, "
        "Firmware'\n";
    EXPECT_EQ(refused.errors, reason);
    Arguments plan{"plan"};
    plan.insert(plan.end(), line.begin(), line.end());
    const ToolRun planned = runCaptured(plan);
    EXPECT_EQ(planned.exitCode, 2);
    EXPECT_THAT(planned.output, HasSubstr("QB4120, SN 2815, Firmware ")) << "the plan is shown all the same";
    EXPECT_EQ(planned.errors, reason);
}

TEST_F(Session, EachElementWithoutEntryIsNamed) {
    ItemBuilder node = completeBoard("HCN", "NODE", 7);
    for (std::uint32_t id = 2; id <= 6; ++id) {
        node.element(completeElement(id, "E" + std::to_string(id)));
    }
    TargetBuilder target;
    target.add(node);
    const ToolRun done =
        runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate", target.write()});
    EXPECT_EQ(done.exitCode, 2);
    EXPECT_EQ(done.errors, "kvreflash: the archive does not support the target: it has no entry for 'NODE, SN 7, E2', "
                           "'NODE, SN 7, E3', 'NODE, SN 7, E4', 'NODE, SN 7, E5', 'NODE, SN 7, E6'\n");
}

TEST_F(Session, AnEmulatedTargetThatCannotBeLoadedEndsWithFourBeforeAnything) {
    const ScratchFolder nothing;
    for (const char* command : {"version", "content", "check", "update"}) {
        Arguments arguments{command, "--emulate", nothing.text()};
        if (std::string(command) != "version") {
            arguments.insert(arguments.end(), {"-a", archive_.folder().text()});
        }
        const ToolRun done = runCaptured(arguments);
        EXPECT_EQ(done.exitCode, 4);
        EXPECT_EQ(done.output, "");
        EXPECT_THAT(done.errors, StartsWith("kvreflash: " + nothing.text() + "/target.json: "));
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
    EXPECT_EQ(done.exitCode, 3);
    EXPECT_THAT(done.output, HasSubstr("ERROR: Failed to read firmware archive.\n"));
    EXPECT_THAT(folder.read("events"), AllOf(StartsWith("{\"time\":"), HasSubstr("\"event\":\"runBegin\"")));
}

TEST_F(Session, AnEventsFileThatCannotBeCreatedEndsWithOneBeforePrepare) {
    const ScratchFolder folder;
    for (const std::string& path : {folder.text(), folder.text() + "/missing/events", std::string()}) {
        const ToolRun done = run("update", {"--events", path});
        EXPECT_EQ(done.exitCode, 1);
        EXPECT_EQ(done.output, "");
        EXPECT_THAT(done.errors, StartsWith("kvreflash: cannot create " + quotedPath(path) + ": "));
    }
    const std::string reason = std::generic_category().message(ENOENT);
    const std::string path = folder.text() + "/missing/events";
    EXPECT_EQ(run("update", {"--events", path}).errors,
              "kvreflash: cannot create " + quotedPath(path) + ": " + reason + "\n");
}

TEST_F(Session, EventsGoIntoTheFileOrToStandardError) {
    const auto namesOf = [](const std::string& lines) {
        std::string names;
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);) {
            names.append(KvNJson::json::parse(line).view().find("event").get_string()).append(" ");
        }
        return names;
    };
    const std::string expected = "runBegin plan locked phase transfer elementStart progress progress progress "
                                 "elementEnd phase unlocked runEnd ";
    const ScratchFolder folder;
    const ToolRun toFile = run("update", {"--force", "--events", folder.text() + "/events"});
    EXPECT_EQ(toFile.errors, "");
    EXPECT_EQ(namesOf(folder.read("events")), expected);
    const ToolRun toErrors = run("update", {"--force", "--events", "-"});
    EXPECT_EQ(namesOf(toErrors.errors), expected);
    EXPECT_THAT(toErrors.output, HasSubstr("Update completed successfully!"));
}

TEST_F(Session, TheEventOfThePlanCountsWhatIsLeftIn) {
    const ScratchFolder folder;
    const auto planEvent = [&](const Arguments& more) {
        Arguments arguments{"--events", folder.text() + "/events"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        (void)run("update", arguments);
        const std::string lines = folder.read("events");
        const std::size_t place = lines.find(R"("event":"plan")");
        return place == std::string::npos ? "" : lines.substr(place, lines.find('\n', place) - place);
    };
    EXPECT_THAT(planEvent({"--disable", "0"}), HasSubstr("\"updates\":0,\"supported\":true"));
    EXPECT_THAT(planEvent({}), HasSubstr("\"updates\":1,\"supported\":true"));
    archive_.add(entry("other.bin").board("OTHER", 1));
    target_.add(completeBoard("CN", "UNKNOWN", 1).element(completeElement(1)));
    EXPECT_THAT(planEvent({}), HasSubstr("\"supported\":false"));
}

TEST_F(Session, TheLastEventIsTheVerdictWhateverHappens) {
    const ScratchFolder folder;
    const auto lastEvent = [&](int exitCode, const Arguments& more) {
        Arguments arguments{"--events", folder.text() + "/events"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(exitCode, run("update", arguments).exitCode);
        const std::string lines = folder.read("events");
        return lines.substr(lines.rfind('\n', lines.size() - 2) + 1);
    };
    EXPECT_THAT(lastEvent(8, {"-b", "QB9999"}),
                AllOf(HasSubstr("\"event\":\"runEnd\",\"failure\":\"selection\""), HasSubstr("\"exitCode\":8")));
    EXPECT_THAT(lastEvent(3, {"-d", "none.json"}), HasSubstr("\"failure\":\"archive\""));
    EXPECT_THAT(lastEvent(0, {}), HasSubstr("\"failure\":null,\"retryable\":false,\"message\":\"\",\"exitCode\":0}"));
}

TEST_F(Session, ADisabledElementIsLeftOutByAnyOfItsNames) {
    for (const char* name : {"0", "000", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]", "QB4120, SN 2815, Firmware"}) {
        const ToolRun done = run("update", {"--disable", name});
        EXPECT_EQ(done.exitCode, 0) << name;
        EXPECT_EQ(done.errors, "") << name;
        EXPECT_EQ(done.output.find("Updating:"), std::string::npos) << name;
    }
    EXPECT_THAT(run("update").output, HasSubstr("Updating:"));
}

TEST_F(Session, AFileOfTheTargetIsDisabledByItsPath) {
    archive_.add(entry("a.cfg").target("QB4120", "cfg/a.cfg"));
    archive_.write();
    const ToolRun done = run("update", {"--disable", "cfg/a.cfg", "--disable", "0"});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.output.find("Updating:"), std::string::npos);
}

TEST_F(Session, DisablingAnElementThatIsNotThereEndsWithEightBeforeAnything) {
    for (const char* name : {"1", "4294967295", "99999999999999999999", "UserFirmware", "userfirmware",
                             "QB4120, SN 2815, Firmware ", "HCN[1]", ""}) {
        const ToolRun done = run("update", {"--disable", "0", "--disable", name});
        EXPECT_EQ(done.exitCode, 8) << name;
        EXPECT_THAT(done.errors,
                    StartsWith("kvreflash: --disable: the target has no element '" + std::string(name) + "'"));
        EXPECT_EQ(done.output.find("Updating:"), std::string::npos) << name;
    }
    EXPECT_EQ(run("update", {"--disable", "1", "--disable", "0", "--disable", "x"}).errors,
              "kvreflash: --disable: the target has no element '1'; the target has no element 'x'\n");
    EXPECT_FALSE(target_.folder().has("state"));
}

TEST_F(Session, DisablingAnElementOfANameThatSeveralHaveEndsWithEight) {
    archive_.add(entry("other.bin").board("QB4120", 2));
    archive_.write();
    TargetBuilder target;
    target.add(
        completeBoard("HCN", "QB4120", 7).element(completeElement(1, "Same")).element(completeElement(2, "Same")));
    const ToolRun done = runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate",
                                      target.write(), "--disable", "QB4120, SN 7, Same"});
    EXPECT_EQ(done.exitCode, 8);
    EXPECT_EQ(done.errors, "kvreflash: --disable: several elements are called 'QB4120, SN 7, Same': 0 1\n");
}

TEST_F(Session, WhatPrepareSaysComesBeforeWhatIsDisabled) {
    const ToolRun done = runCaptured({"update", "-a", "missing", "-t", "127.0.0.1", "--disable", "99"});
    EXPECT_EQ(done.exitCode, 3);
    EXPECT_EQ(done.errors.find("--disable"), std::string::npos);
}

TEST_F(Session, FiltersThatLetNothingThroughEndWithEight) {
    const std::string sentence = "kvreflash: no element of the target passes the filters; --";
    target_.rebootLookups(1);
    for (const char* command : {"elements", "connect", "plan", "verify", "explain", "update", "reboot"}) {
        for (const Arguments& filter : {Arguments{"-b", "QB9999"}, {"-s", "1"}, {"-e", "Firmware"}}) {
            const ToolRun done = run(command, filter);
            EXPECT_EQ(done.exitCode, 8) << command << filter.front();
            EXPECT_THAT(done.errors, StartsWith(sentence)) << command << filter.front();
        }
    }
    EXPECT_FALSE(target_.folder().has("state")) << "nothing was updated or rebooted";
}

TEST_F(Session, WhatOnlyLooksShowsWhatThereIsAlthoughNothingPassesTheFilters) {
    const ToolRun elements = run("elements", {"-b", "QB9999"});
    EXPECT_THAT(elements.output, HasSubstr("Korvel Device Update Tool"));
    EXPECT_EQ(run("plan", {"--json", "-b", "QB9999"}).errors,
              run("plan", {"-b", "QB9999"}).output +
                  "kvreflash: no element of the target passes the filters; --board-type: "
                  "nothing has 'QB9999'\n");
}

TEST_F(Session, FiltersThatLetSomethingThroughAreFine) {
    for (const char* command : {"elements", "connect", "plan", "update", "reboot"}) {
        const ToolRun done = run(command, {"-b", "QB9999,QB4120", "-s", "2815", "-e", "UserFirmware Nothing"});
        EXPECT_EQ(done.exitCode, 0) << command;
        EXPECT_EQ(done.errors, "") << command;
    }
}

TEST_F(Session, TheKindOfElementsIsNoFilter) {
    for (const char* command : {"elements", "connect", "plan", "update"}) {
        const ToolRun done = run(command, {"--configuration"});
        EXPECT_EQ(done.exitCode, 0) << command;
        EXPECT_EQ(done.errors, "") << command;
    }
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
    EXPECT_EQ(run("connect").exitCode, 4);
    EXPECT_EQ(run("connect").exitCode, 0);
}

TEST_F(Session, NoRebootFollowsAnUpdateThatFailed) {
    target_.rebootLookups(1).add(fault("lock"));
    EXPECT_EQ(run("update", {"--reboot"}).exitCode, 5);
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
        EXPECT_EQ(done.errors, "kvreflash: the target was not rebooted: the reset failed\n");
    }
}

} // namespace
