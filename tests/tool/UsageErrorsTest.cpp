#include "CommandOptions.h"
#include "PathTexts.h"
#include "ScratchFolder.h"
#include "ToolRun.h"
#include "UpdateCommand.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::string>;

constexpr int usageError = 64;

/// The tool refuses the arguments and says `reason`, on standard error only.
void expectRefused(const Arguments& arguments, const std::string& reason) {
    const ReadArguments read = readCaptured(arguments);
    SCOPED_TRACE(testing::PrintToString(arguments));
    ASSERT_EQ(read.command, nullptr);
    EXPECT_EQ(read.answer.exitCode, usageError);
    EXPECT_EQ(read.answer.output, "");
    EXPECT_EQ(read.answer.errors, "kvreflash: " + reason + "; run 'kvreflash --help' or 'kvreflash COMMAND --help'\n");
}

Arguments joined(Arguments first, const Arguments& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// Each way to write an option: by either name, the value apart or attached.
std::vector<Arguments> waysToGive(const CommandOption& option) {
    if (option.value.empty()) {
        return option.letter.empty() ? std::vector<Arguments>{{option.name}}
                                     : std::vector<Arguments>{{option.name}, {option.letter}};
    }
    std::vector<Arguments> ways{{option.name, option.value}, {option.name + "=" + option.value}};
    if (!option.letter.empty()) {
        ways.push_back({option.letter, option.value});
        ways.push_back({option.letter + option.value});
    }
    return ways;
}

Arguments commandLineWithout(const CommandOption& option, const std::string& command) {
    Arguments line = smallestCommandLine(command);
    if (option.name == "--archive") {
        line.erase(line.begin() + 1, line.begin() + 3);
    }
    return line;
}

/// An option of a command, in one of the ways to write it.
struct Use {
    const CommandOption* option;
    std::string command;
    Arguments given;
};

/// Every option with every command, in every way; only those that belong together, or only those that do not.
std::vector<Use> allUses(bool belonging) {
    std::vector<Use> uses;
    for (const CommandOption& option : commandOptions()) {
        for (const std::string& command : commandNames()) {
            if (option.belongsTo(command) != belonging) {
                continue;
            }
            for (const Arguments& given : waysToGive(option)) {
                uses.push_back({&option, command, given});
            }
        }
    }
    return uses;
}

TEST(UsageErrors, AnOptionIsRefusedByEveryCommandThatItDoesNotBelongTo) {
    const std::vector<Use> uses = allUses(false);
    EXPECT_EQ(uses.size(), 566U);
    for (const Use& use : uses) {
        const bool byName = use.given.front().starts_with("--");
        expectRefused(joined(smallestCommandLine(use.command), use.given),
                      use.command + " has no option " + (byName ? use.option->name : use.option->letter));
    }
}

TEST(UsageErrors, AnOptionIsTakenByEveryCommandThatItBelongsTo) {
    const std::vector<Use> uses = allUses(true);
    EXPECT_EQ(uses.size(), 364U);
    for (const Use& use : uses) {
        const Arguments needed = joined(commandLineWithout(*use.option, use.command), use.option->needs);
        const Arguments line = joined(needed, use.given);
        EXPECT_NE(readCaptured(line).command, nullptr) << testing::PrintToString(line);
    }
}

TEST(UsageErrors, ASingleValuedOptionGivenTwiceIsRefused) {
    for (const CommandOption& option : commandOptions()) {
        if (option.value.empty() || option.repeatable) {
            continue;
        }
        for (const std::string& command : commandNames()) {
            if (option.belongsTo(command)) {
                const Arguments once = joined(commandLineWithout(option, command), {option.name, option.value});
                expectRefused(joined(once, {option.name + "=" + option.value}), option.name + " is given twice");
            }
        }
    }
    expectRefused({"content", "--archive", "a", "-ab"}, "--archive is given twice");
    expectRefused({"content", "-a", "same", "-a", "same"}, "--archive is given twice");
}

TEST(UsageErrors, ARepeatedSwitchDoesNoHarm) {
    for (const CommandOption& option : commandOptions()) {
        if (option.value.empty()) {
            const Arguments line = smallestCommandLine(std::string(option.commands.front()));
            EXPECT_NE(readCaptured(joined(line, {option.name, option.name})).command, nullptr) << option.name;
        }
    }
    EXPECT_NE(readCaptured({"version", "-vv"}).command, nullptr);
}

TEST(UsageErrors, AMissingValueIsRefused) {
    for (const CommandOption& option : commandOptions()) {
        if (option.value.empty()) {
            continue;
        }
        for (const std::string& command : commandNames()) {
            if (option.belongsTo(command)) {
                const Arguments line = commandLineWithout(option, command);
                expectRefused(joined(line, {option.name}), option.name + " needs a value");
                expectRefused(joined(line, {option.name + "="}), option.name + " needs a value");
                expectRefused(joined(line, {option.name + "=", "next"}), option.name + " needs a value");
            }
        }
    }
    expectRefused({"content", "-a"}, "-a needs a value");
    expectRefused({"content", "-va"}, "-a needs a value");
}

TEST(UsageErrors, WhatLooksLikeAnOptionIsNoValue) {
    for (const CommandOption& option : commandOptions()) {
        if (!option.value.empty()) {
            const Arguments line = commandLineWithout(option, std::string(option.commands.back()));
            for (const char* next : {"--verbose", "-v", "-x", "--", "--help", "-1"}) {
                expectRefused(joined(line, {option.name, next}), option.name + " needs a value");
            }
        }
    }
    expectRefused({"content", "-va", "--json"}, "--archive needs a value");
}

TEST(UsageErrors, AValueOfASwitchIsRefused) {
    for (const CommandOption& option : commandOptions()) {
        if (option.value.empty()) {
            const Arguments line = smallestCommandLine(std::string(option.commands.front()));
            for (const char* value : {"=true", "=false", "=1", "={}", "="}) {
                expectRefused(joined(line, {option.name + value}), option.name + " takes no value");
            }
        }
    }
}

TEST(UsageErrors, AMissingArchiveIsRefused) {
    for (const std::string& command : commandNames()) {
        if (commandOptions().front().belongsTo(command)) {
            expectRefused({command}, "--archive is required");
        }
    }
}

TEST(UsageErrors, ACaptureNeedsAFolderAndAMatrixATarget) {
    expectRefused({"capture", "-t", "host"}, "DIR is required");
    expectRefused({"matrix", "-a", "folder"}, "matrix needs at least one --emulate");
}

TEST(UsageErrors, AWordThatAnOptionDoesNotKnowIsRefused) {
    expectRefused({"update", "-a", "folder", "--progress", "dots"},
                  "--progress: 'dots' must be one of auto, line, plain, none");
    expectRefused({"update", "-a", "folder", "--progress", "plain", "--no-progress"},
                  "--no-progress contradicts --progress plain");
    expectRefused({"update", "-a", "folder", "--wait", "1s"}, "--wait: '1s' is not a decimal number up to 4294967295");
    expectRefused({"check", "-a", "folder", "--format", "xml"}, "--format: 'xml' must be one of text, json");
    expectRefused({"update", "-a", "folder", "--progress", ""},
                  "--progress: '' must be one of auto, line, plain, none");
    expectRefused({"check", "-a", "folder", "--format", ""}, "--format: '' must be one of text, json");
    expectRefused({"plan", "-a", "folder", "--report", "report.txt"},
                  "--report: " + quotedPath("report.txt") + " ends neither with .html nor with .json");
    expectRefused({"check", "-a", "folder", "--json", "--format", "text"}, "--json contradicts --format text");
}

TEST(UsageErrors, AStallLimitIsAtLeastASecond) {
    expectRefused({"update", "-a", "folder", "--stall-limit", "0"}, "--stall-limit: '0' must be at least 1");
    expectRefused({"update", "-a", "folder", "--stall-limit", "1m"},
                  "--stall-limit: '1m' is not a decimal number up to 4294967295");
}

TEST(UsageErrors, QuietContradictsVerbose) {
    expectRefused({"content", "-a", "folder", "-qv"}, "--quiet contradicts --verbose");
}

TEST(UsageErrors, WaitingForNothingIsRefused) {
    for (const Arguments& more : {Arguments{}, {"--verify"}, {"--reboot"}}) {
        expectRefused(joined({"update", "-a", "folder", "--wait", "60"}, more), "--wait needs --verify and --reboot");
    }
}

TEST(UsageErrors, ASurplusArgumentIsRefused) {
    for (const std::string& command : commandNames()) {
        if (command == "explain") {
            continue;
        }
        for (const char* surplus : {"surplus", "", "-", "version", "plan"}) {
            expectRefused(joined(smallestCommandLine(command), {surplus}),
                          command + ": unexpected argument '" + surplus + "'");
        }
        expectRefused(joined(smallestCommandLine(command), {"--", "surplus"}), command + " has no option --");
    }
    expectRefused({"update", "-a", "folder", "--disable", "1", "2"}, "update: unexpected argument '2'");
    expectRefused({"explain", "-a", "folder", "1", "2"}, "explain: unexpected argument '2'");
    expectRefused({"version", "--emulate", "rack", "rack2"}, "version: unexpected argument 'rack2'");
}

TEST(UsageErrors, AMissingOrUnknownCommandIsRefused) {
    expectRefused({}, "a command is missing");
    for (const char* unknown : {"", "Version", "versions", "vers", "help", "-v", "--verbose", "--", "-"}) {
        expectRefused({unknown}, "unknown command '" + std::string(unknown) + "'");
    }
    expectRefused({"unknown", "--help"}, "unknown command 'unknown'");
    expectRefused({"-a", "folder", "content"}, "unknown command '-a'");
}

TEST(UsageErrors, AnUnknownOptionIsRefused) {
    for (const std::string& command : commandNames()) {
        for (const char* unknown : {"--unknown", "--verb", "--Verbose", "-V", "-x", "--verbose-"}) {
            expectRefused(joined(smallestCommandLine(command), {unknown}), command + " has no option " + unknown);
        }
        expectRefused(joined(smallestCommandLine(command), {"-vx"}), command + " has no option -x");
        expectRefused(joined(smallestCommandLine(command), {"--unknown=1"}), command + " has no option --unknown");
    }
}

TEST(UsageErrors, OnlyADecimalNumberUpTo32BitsIsATimeToWait) {
    const Arguments line{"update", "-a", "folder", "--verify", "--reboot"};
    for (const char* text : {"", "x", "1x", "0x1", "+1", "1.0", "1e3", " 1", "1 ", "1,2", "[1]", "{}", "4294967296",
                             "99999999999999999999", "\xD9\xA3"}) {
        expectRefused(joined(line, {"--wait", text}),
                      "--wait: '" + std::string(text) + "' is not a decimal number up to 4294967295");
    }
    expectRefused(joined(line, {"--wait=-1"}), "--wait: '-1' is not a decimal number up to 4294967295");
    EXPECT_EQ(commandOf<UpdateCommand>(joined(line, {"--wait", "4294967295"}))->steps.waitSeconds, 4294967295U);
    EXPECT_EQ(commandOf<UpdateCommand>(joined(line, {"--wait", "007"}))->steps.waitSeconds, 7U);
}

TEST(UsageErrors, ArgumentsThatAreNotUtf8AreRefused) {
    for (const char* text : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
        expectRefused({text}, "argument 1 is not valid UTF-8");
        expectRefused({"content", "-a", text}, "argument 3 is not valid UTF-8");
        expectRefused({"connect", std::string("--element=") + text}, "argument 2 is not valid UTF-8");
    }
    EXPECT_NE(readCaptured({"content", "-a", "\xC3\xBC\xF0\x9F\x94\xA7"}).command, nullptr);
}

TEST(UsageErrors, TheFirstFaultIsTold) {
    expectRefused({"version", "--unknown", "surplus"}, "version has no option --unknown");
    expectRefused({"version", "surplus", "--unknown"}, "version: unexpected argument 'surplus'");
    expectRefused({"content", "--archiv", "folder"}, "content has no option --archiv");
    expectRefused({"content", "--unknown", "--help"}, "content has no option --unknown");
}

TEST(UsageErrors, NothingIsRunOrWritten) {
    const ScratchFolder folder;
    const std::string events = (folder.path() / "events").string();
    const ToolRun run = runCaptured({"update", "-a", folder.text(), "--events", events, "--wait", "x"});
    EXPECT_EQ(run.exitCode, usageError);
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(folder.list().empty());
}

} // namespace
