#include "CaptureCommand.h"
#include "CheckCommand.h"
#include "CommandOptions.h"
#include "ExplainCommand.h"
#include "ToolRun.h"
#include "UpdateCommand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using KvNReflasher::KvTOptions;
using Arguments = std::vector<std::string>;

/// What the arguments ask of a session.
SessionRequest requestOf(const Arguments& arguments) {
    return commandOf(arguments)->request(KvNReflasher::showUpdatePlan);
}

KvTOptions optionsOf(const Arguments& arguments) {
    return requestOf(arguments).options;
}

TEST(Options, ASessionIsOffOrEmptyByDefault) {
    for (const std::string& command : commandNames()) {
        SCOPED_TRACE(command);
        const SessionRequest request = requestOf(smallestCommandLine(command));
        const KvTOptions& options = request.options;
        const bool readsArchive = commandOptions().front().belongsTo(command);
        EXPECT_EQ(options.mode, KvNReflasher::showUpdatePlan);
        EXPECT_EQ(options.archiveFolder, readsArchive ? L"folder" : L"");
        EXPECT_EQ(options.descriptionFileName, readsArchive ? L"archive.json" : L"");
        EXPECT_EQ(options.target, L"");
        EXPECT_EQ(options.boardTypeFilter + options.serialNumberFilter + options.elementNameFilter, "");
        EXPECT_FALSE(options.forceUpdate || options.verbose || options.configurationElements ||
                     options.disableCustomElements || options.reserved);
        EXPECT_EQ(options.noProgress, command == "update") << "standard output is not a terminal";
        EXPECT_EQ(request.emulatedTargets.size(), command == "matrix" ? 1U : 0U);
        EXPECT_EQ(request.textStream, stdout);
        EXPECT_EQ(request.showsPlainProgress, command == "update");
        EXPECT_FALSE(request.keepsMessages || request.isQuiet || request.leavesOutDowngrades ||
                     request.eventsFile.has_value());
        EXPECT_TRUE(request.disabledElements.empty());
        EXPECT_EQ(request.stallLimit, 0U);
    }
}

TEST(Options, WhatSurroundsASessionIsOffOrEmptyByDefault) {
    const auto update = commandOf<UpdateCommand>(smallestCommandLine("update"));
    EXPECT_TRUE(update->disabled.elements.empty());
    EXPECT_FALSE(update->steps.reboots || update->steps.hasPreflight || update->steps.isStrict ||
                 update->steps.verifies);
    EXPECT_EQ(update->steps.waitSeconds, 300U);
    EXPECT_FALSE(update->report.file.has_value());
    const auto check = commandOf<CheckCommand>(smallestCommandLine("check"));
    EXPECT_FALSE(check->findings.isStrict || check->findings.json.isWanted);
    EXPECT_EQ(commandOf<CaptureCommand>(smallestCommandLine("capture"))->argument.folder, "captured");
    EXPECT_EQ(commandOf<ExplainCommand>(smallestCommandLine("explain"))->argument.element, "");
}

struct Field {
    const char* option;
    std::function<bool(const UpdateCommand&, const SessionRequest&)> isSet;
};

/// What each option of an update sets, by itself or in the session.
std::vector<Field> updateFields() {
    return {
        {"--description",
         [](auto&, const auto& request) { return request.options.descriptionFileName == L"file.json"; }},
        {"--target", [](auto&, const auto& request) { return request.options.target == L"host"; }},
        {"--board-type", [](auto&, const auto& request) { return request.options.boardTypeFilter == "QB1"; }},
        {"--serial-number", [](auto&, const auto& request) { return request.options.serialNumberFilter == "7"; }},
        {"--element", [](auto&, const auto& request) { return request.options.elementNameFilter == "UserIpl"; }},
        {"--configuration", [](auto&, const auto& request) { return request.options.configurationElements; }},
        {"--skip-custom", [](auto&, const auto& request) { return request.options.disableCustomElements; }},
        {"--force", [](auto&, const auto& request) { return request.options.forceUpdate; }},
        {"--no-progress", [](auto& update, const auto&) { return update.progress.isOff; }},
        {"--progress", [](auto& update, const auto&) { return update.progress.progress == ProgressStyle::plain; }},
        {"--no-downgrade", [](auto&, const auto& request) { return request.leavesOutDowngrades; }},
        {"--stall-limit", [](auto&, const auto& request) { return request.stallLimit == 60; }},
        {"--json", [](auto&, const auto& request) { return request.textStream == stderr; }},
        {"--quiet", [](auto&, const auto& request) { return request.isQuiet; }},
        {"--preflight", [](auto& update, const auto&) { return update.steps.hasPreflight; }},
        {"--strict", [](auto& update, const auto&) { return update.steps.isStrict; }},
        {"--verify", [](auto& update, const auto&) { return update.steps.verifies; }},
        {"--wait", [](auto& update, const auto&) { return update.steps.waitSeconds == 60; }},
        {"--report", [](auto& update,
                        const auto& request) { return update.report.file == "report.html" && request.keepsMessages; }},
        {"--disable", [](auto& update, const auto&) { return update.disabled.elements == Arguments{"3"}; }},
        {"--reboot", [](auto& update, const auto&) { return update.steps.reboots; }},
        {"--events", [](auto&, const auto& request) { return request.eventsFile == "events.jsonl"; }},
        {"--verbose", [](auto&, const auto& request) { return request.options.verbose; }},
        {"--no-settings", [](auto& update, const auto&) { return update.common.ignoresSettings; }},
        {"--emulate", [](auto&, const auto& request) { return request.emulatedTargets == Arguments{"rack"}; }},
    };
}

TEST(Options, EachOptionSetsItsFieldAlone) {
    for (const CommandOption& option : commandOptions()) {
        if (!option.belongsTo("update") || option.name == "--archive") {
            continue;
        }
        Arguments arguments = smallestCommandLine("update");
        arguments.push_back(option.name);
        if (!option.value.empty()) {
            arguments.push_back(option.value);
        }
        arguments.insert(arguments.end(), option.needs.begin(), option.needs.end());
        const auto update = commandOf<UpdateCommand>(arguments);
        const SessionRequest request = requestOf(arguments);
        for (const Field& field : updateFields()) {
            const bool isNeeded =
                std::find(option.needs.begin(), option.needs.end(), field.option) != option.needs.end();
            EXPECT_EQ(field.isSet(*update, request), field.option == option.name || isNeeded)
                << field.option << " by " << option.name;
        }
    }
}

TEST(Options, ADocumentSendsMessagesToStandardError) {
    for (const CommandOption& option : commandOptions()) {
        for (const std::string& command : commandNames()) {
            if (option.name == "--json" && option.belongsTo(command) && command != "check") {
                Arguments arguments = smallestCommandLine(command);
                arguments.emplace_back("--json");
                EXPECT_EQ(requestOf(arguments).textStream, stderr) << command;
            }
        }
    }
}

TEST(Options, AFormatIsTheOneOfTheFindings) {
    const Arguments line{"check", "-a", "folder"};
    const auto isJson = [&](const Arguments& more) {
        Arguments arguments = line;
        arguments.insert(arguments.end(), more.begin(), more.end());
        return commandOf<CheckCommand>(arguments)->findings.json.isWanted;
    };
    EXPECT_TRUE(isJson({"--format", "json"}));
    EXPECT_FALSE(isJson({"--format", "text"}));
    EXPECT_TRUE(isJson({"--json"}));
    EXPECT_TRUE(isJson({"--json", "--format", "json"}));
    EXPECT_TRUE(commandOf<CheckCommand>({"check", "-a", "folder", "--strict"})->findings.isStrict);
}

TEST(Options, TheLibrarysLineIsLeftOutWhenProgressIsShownOtherwise) {
    EXPECT_FALSE(optionsOf({"update", "-a", "folder", "--progress", "line"}).noProgress);
    EXPECT_TRUE(optionsOf({"update", "-a", "folder", "--progress", "plain"}).noProgress);
    EXPECT_TRUE(optionsOf({"update", "-a", "folder", "--progress", "none"}).noProgress);
    EXPECT_TRUE(optionsOf({"update", "-a", "folder", "--no-progress", "--progress", "none"}).noProgress);
}

TEST(Options, ProgressIsPlainUnlessStandardOutputIsATerminal) {
    for (const Arguments& more : {Arguments{}, {"--progress", "auto"}}) {
        Arguments arguments{"update", "-a", "folder"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_TRUE(optionsOf(arguments).noProgress);
        EXPECT_TRUE(requestOf(arguments).showsPlainProgress);
    }
    EXPECT_FALSE(requestOf({"update", "-a", "folder", "--no-progress"}).showsPlainProgress);
}

TEST(Options, NoProgressIsShownQuietly) {
    for (const char* how : {"auto", "line", "plain", "none"}) {
        const SessionRequest request = requestOf({"update", "-qa", "folder", "--progress", how});
        EXPECT_TRUE(request.options.noProgress) << how;
        EXPECT_FALSE(request.showsPlainProgress) << how;
        EXPECT_TRUE(request.isQuiet);
    }
}

TEST(Options, TheStallLimitIsKept) {
    EXPECT_EQ(0U, requestOf({"update", "-a", "folder"}).stallLimit);
    EXPECT_EQ(90U, requestOf({"update", "-a", "folder", "--stall-limit", "90"}).stallLimit);
}

TEST(Options, WhatIsLeftOutIsKept) {
    const SessionRequest request = requestOf({"plan", "-a", "folder", "--disable", "3", "--no-downgrade"});
    EXPECT_EQ(Arguments{"3"}, request.disabledElements);
    EXPECT_TRUE(request.leavesOutDowngrades);
}

TEST(Options, ArgumentsStandWhereTheyLike) {
    EXPECT_EQ(commandOf<CaptureCommand>({"capture", "-t", "host", "rack"})->argument.folder, "rack");
    EXPECT_EQ(commandOf<CaptureCommand>({"capture", "rack", "-t", "host"})->argument.folder, "rack");
    EXPECT_EQ(commandOf<ExplainCommand>({"explain", "-a", "folder", "12"})->argument.element, "12");
    EXPECT_EQ(commandOf<ExplainCommand>({"explain", "Node, SN 7, One", "-a", "folder"})->argument.element,
              "Node, SN 7, One");
}

TEST(Options, AValueIsTakenAsItIs) {
    for (const char* value :
         {"a b", "a,b", "[a,b]", "{}", "%%", "++", "\"q\"", "=x", "x=y", "x-y", "-", "\xC3\xBC", "a\\b"}) {
        EXPECT_EQ(optionsOf({"connect", "-b", value}).boardTypeFilter, value);
        EXPECT_EQ(optionsOf({"connect", "-b" + std::string(value)}).boardTypeFilter, value);
        EXPECT_EQ(optionsOf({"connect", "--board-type=" + std::string(value)}).boardTypeFilter, value);
        EXPECT_EQ(requestOf({"version", "--emulate", value}).emulatedTargets, Arguments{value});
        EXPECT_EQ(commandOf<UpdateCommand>({"update", "-a", "folder", "--disable", value})->disabled.elements,
                  Arguments{value});
        EXPECT_EQ(commandOf<ExplainCommand>({"explain", "-a", "folder", value})->argument.element, value);
    }
}

TEST(Options, AnAttachedValueMayBeginWithADash) {
    EXPECT_EQ(optionsOf({"content", "--archive=--json"}).archiveFolder, L"--json");
    EXPECT_EQ(optionsOf({"content", "-a-x"}).archiveFolder, L"-x");
    EXPECT_EQ(requestOf({"version", "--emulate=-v"}).emulatedTargets, Arguments{"-v"});
}

TEST(Options, AnEmptyArgumentIsAnEmptyValue) {
    const SessionRequest request =
        requestOf({"update", "-a", "", "-d", "", "-t", "", "-b", "", "--emulate", "", "--events", ""});
    EXPECT_EQ(request.options.archiveFolder, L"");
    EXPECT_EQ(request.options.descriptionFileName, L"");
    EXPECT_EQ(request.options.target, L"");
    EXPECT_EQ(request.options.boardTypeFilter, "");
    EXPECT_EQ(request.emulatedTargets, Arguments{""});
    EXPECT_EQ(request.eventsFile, "");
}

TEST(Options, RepeatableOptionsKeepTheirOrder) {
    const auto update = commandOf<UpdateCommand>({"update", "--disable", "7", "--emulate", "b", "-a", "folder",
                                                  "--disable=Node, SN 7, One", "--emulate", "a", "--disable", "0",
                                                  "--disable", "HCN[1]/UPDATE_INFO[1]", "--emulate=b"});
    EXPECT_EQ(update->disabled.elements, (Arguments{"7", "Node, SN 7, One", "0", "HCN[1]/UPDATE_INFO[1]"}));
    EXPECT_EQ(update->common.emulatedTargets, (Arguments{"b", "a", "b"}));
}

TEST(Options, LettersCanBeJoined) {
    const KvTOptions options = optionsOf({"plan", "-vfa", "folder", "-vt127.0.0.1"});
    EXPECT_TRUE(options.verbose);
    EXPECT_TRUE(options.forceUpdate);
    EXPECT_EQ(options.archiveFolder, L"folder");
    EXPECT_EQ(options.target, L"127.0.0.1");
}

TEST(Options, PathsAndTargetsAreWidenedFromUtf8) {
    const KvTOptions options =
        optionsOf({"plan", "-a", "\xC3\xBC", "-d", "\xE2\x82\xAC.json", "-t", "\xC3\xA4.example"});
    EXPECT_EQ(options.archiveFolder, L"\u00FC");
    EXPECT_EQ(options.descriptionFileName, L"\u20AC.json");
    EXPECT_EQ(options.target, L"\u00E4.example");
}

} // namespace
