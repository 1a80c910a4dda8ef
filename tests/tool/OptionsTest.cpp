#include "CommandOptions.h"
#include "ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

namespace {

using KvNReflasher::KvTOptions;
using Arguments = std::vector<std::string>;

KvTCommandLine lineOf(const Arguments& arguments) {
    ReadArguments read = readCaptured(arguments);
    EXPECT_TRUE(read.line.has_value()) << read.answer.errors;
    EXPECT_EQ(read.answer.output + read.answer.errors, "");
    return read.line.value_or(KvTCommandLine());
}

TEST(Options, EachCommandHasItsMode) {
    const std::vector<std::pair<std::string, std::uint32_t>> modes{
        {"version", 0},  {"check", 1},   {"archive-version", 1}, {"content", 2}, {"dump", 3},
        {"elements", 4}, {"connect", 5}, {"capture", 5},         {"plan", 6},    {"explain", 6},
        {"matrix", 6},   {"update", 7},  {"verify", 6},          {"reboot", 5}};
    EXPECT_EQ(modes.size(), commandNames().size());
    for (const auto& [command, mode] : modes) {
        EXPECT_EQ(lineOf(smallestCommandLine(command)).options.mode, mode) << command;
    }
}

TEST(Options, EachCommandHasItsTask) {
    const std::map<std::string, KvETask> tasks{{"check", KvETask::check},
                                               {"capture", KvETask::capture},
                                               {"explain", KvETask::explain},
                                               {"matrix", KvETask::matrix}};
    for (const std::string& command : commandNames()) {
        const auto task = tasks.find(command);
        EXPECT_EQ(lineOf(smallestCommandLine(command)).task, task != tasks.end() ? task->second : KvETask::session);
    }
}

TEST(Options, EverythingIsOffOrEmptyByDefault) {
    for (const std::string& command : commandNames()) {
        SCOPED_TRACE(command);
        const KvTCommandLine line = lineOf(smallestCommandLine(command));
        const KvTOptions& options = line.options;
        EXPECT_EQ(options.descriptionFileName, L"archive.json");
        EXPECT_EQ(options.target, L"");
        EXPECT_EQ(options.boardTypeFilter + options.serialNumberFilter + options.elementNameFilter, "");
        EXPECT_FALSE(options.forceUpdate || options.noProgress || options.verbose || options.configurationElements ||
                     options.disableCustomElements || options.reserved);
        EXPECT_EQ(line.emulatedTargets.size(), command == "matrix" ? 1U : 0U);
        EXPECT_TRUE(line.disabledElements.empty());
        EXPECT_FALSE(line.preflight || line.verify || line.strict || line.reportFile.has_value());
        EXPECT_EQ(line.waitSeconds, 300U);
        EXPECT_EQ(line.progress, KvEProgress::line);
        EXPECT_EQ(line.captureFolder, command == "capture" ? "captured" : "");
        EXPECT_EQ(line.element, "");
        EXPECT_EQ(line.reboot, command == "reboot");
        EXPECT_FALSE(line.json);
        EXPECT_FALSE(line.eventsFile.has_value());
    }
}

TEST(Options, EachOptionSetsItsFieldAlone) {
    struct Row {
        const char* option;
        std::function<bool(const KvTCommandLine&)> isSet;
    };
    const std::vector<Row> rows{
        {"--description", [](const auto& line) { return line.options.descriptionFileName == L"file.json"; }},
        {"--target", [](const auto& line) { return line.options.target == L"host"; }},
        {"--board-type", [](const auto& line) { return line.options.boardTypeFilter == "QB1"; }},
        {"--serial-number", [](const auto& line) { return line.options.serialNumberFilter == "7"; }},
        {"--element", [](const auto& line) { return line.options.elementNameFilter == "UserIpl"; }},
        {"--configuration", [](const auto& line) { return line.options.configurationElements; }},
        {"--skip-custom", [](const auto& line) { return line.options.disableCustomElements; }},
        {"--force", [](const auto& line) { return line.options.forceUpdate; }},
        {"--no-progress", [](const auto& line) { return line.progress == KvEProgress::none; }},
        {"--progress", [](const auto& line) { return line.progress == KvEProgress::plain; }},
        {"--preflight", [](const auto& line) { return line.preflight; }},
        {"--verify", [](const auto& line) { return line.verify; }},
        {"--wait", [](const auto& line) { return line.waitSeconds == 60; }},
        {"--report", [](const auto& line) { return line.reportFile == "report.html"; }},
        {"--disable", [](const auto& line) { return line.disabledElements == Arguments{"3"}; }},
        {"--reboot", [](const auto& line) { return line.reboot; }},
        {"--events", [](const auto& line) { return line.eventsFile == "events.jsonl"; }},
        {"--verbose", [](const auto& line) { return line.options.verbose; }},
        {"--emulate", [](const auto& line) { return line.emulatedTargets == std::vector<std::string>{"rack"}; }},
    };
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
        const KvTCommandLine line = lineOf(arguments);
        for (const Row& row : rows) {
            const bool isNeeded = std::find(option.needs.begin(), option.needs.end(), row.option) != option.needs.end();
            EXPECT_EQ(row.isSet(line), row.option == option.name || isNeeded) << row.option << " by " << option.name;
        }
    }
    EXPECT_EQ(lineOf({"update", "-a", "folder"}).options.archiveFolder, L"folder");
    EXPECT_TRUE(lineOf({"elements", "--json"}).json);
    EXPECT_TRUE(lineOf({"check", "-a", "folder", "--strict"}).strict);
    EXPECT_TRUE(lineOf({"check", "-a", "folder", "--format", "json"}).json);
    EXPECT_FALSE(lineOf({"check", "-a", "folder", "--format", "text"}).json);
    EXPECT_TRUE(lineOf({"check", "-a", "folder", "--json"}).json);
    EXPECT_TRUE(lineOf({"check", "-a", "folder", "--json", "--format", "json"}).json);
}

TEST(Options, OnlyVerifyAndRebootDoMoreThanTheirModes) {
    for (const std::string& command : commandNames()) {
        const KvTCommandLine line = lineOf(smallestCommandLine(command));
        EXPECT_EQ(line.verifiesOnly, command == "verify") << command;
        EXPECT_EQ(line.reboot, command == "reboot") << command;
        EXPECT_EQ(line.command, command);
    }
}

TEST(Options, TheLibrarysLineIsLeftOutWhenProgressIsShownOtherwise) {
    EXPECT_FALSE(lineOf({"update", "-a", "folder", "--progress", "line"}).options.noProgress);
    EXPECT_TRUE(lineOf({"update", "-a", "folder", "--progress", "plain"}).options.noProgress);
    EXPECT_TRUE(lineOf({"update", "-a", "folder", "--progress", "none"}).options.noProgress);
    EXPECT_TRUE(lineOf({"update", "-a", "folder", "--no-progress", "--progress", "none"}).options.noProgress);
}

TEST(Options, ArgumentsStandWhereTheyLike) {
    EXPECT_EQ(lineOf({"capture", "-t", "host", "rack"}).captureFolder, "rack");
    EXPECT_EQ(lineOf({"capture", "rack", "-t", "host"}).captureFolder, "rack");
    EXPECT_EQ(lineOf({"explain", "-a", "folder", "12"}).element, "12");
    EXPECT_EQ(lineOf({"explain", "Node, SN 7, One", "-a", "folder"}).element, "Node, SN 7, One");
}

TEST(Options, AValueIsTakenAsItIs) {
    for (const char* value : {"a b", "a,b", "[a,b]", "{}", "%%", "\"q\"", "=x", "x=y", "-", "\xC3\xBC", "a\\b"}) {
        EXPECT_EQ(lineOf({"connect", "-b", value}).options.boardTypeFilter, value);
        EXPECT_EQ(lineOf({"connect", "-b" + std::string(value)}).options.boardTypeFilter, value);
        EXPECT_EQ(lineOf({"connect", "--board-type=" + std::string(value)}).options.boardTypeFilter, value);
        EXPECT_EQ(lineOf({"version", "--emulate", value}).emulatedTargets, Arguments{value});
        EXPECT_EQ(lineOf({"update", "-a", "folder", "--disable", value}).disabledElements, Arguments{value});
    }
}

TEST(Options, AnAttachedValueMayBeginWithADash) {
    EXPECT_EQ(lineOf({"content", "--archive=--json"}).options.archiveFolder, L"--json");
    EXPECT_EQ(lineOf({"content", "-a-x"}).options.archiveFolder, L"-x");
    EXPECT_EQ(lineOf({"version", "--emulate=-v"}).emulatedTargets, Arguments{"-v"});
}

TEST(Options, AnEmptyArgumentIsAnEmptyValue) {
    const KvTCommandLine line =
        lineOf({"update", "-a", "", "-d", "", "-t", "", "-b", "", "--emulate", "", "--events", ""});
    EXPECT_EQ(line.options.archiveFolder, L"");
    EXPECT_EQ(line.options.descriptionFileName, L"");
    EXPECT_EQ(line.options.target, L"");
    EXPECT_EQ(line.options.boardTypeFilter, "");
    EXPECT_EQ(line.emulatedTargets, Arguments{""});
    EXPECT_EQ(line.eventsFile, "");
}

TEST(Options, RepeatableOptionsKeepTheirOrder) {
    const KvTCommandLine line =
        lineOf({"update", "--disable", "7", "--emulate", "b", "-a", "folder", "--disable=Node, SN 7, One", "--emulate",
                "a", "--disable", "0", "--disable", "HCN[1]/UPDATE_INFO[1]", "--emulate=b"});
    EXPECT_EQ(line.disabledElements, (Arguments{"7", "Node, SN 7, One", "0", "HCN[1]/UPDATE_INFO[1]"}));
    EXPECT_EQ(line.emulatedTargets, (Arguments{"b", "a", "b"}));
}

TEST(Options, LettersCanBeJoined) {
    const KvTCommandLine line = lineOf({"plan", "-vfa", "folder", "-vt127.0.0.1"});
    EXPECT_TRUE(line.options.verbose);
    EXPECT_TRUE(line.options.forceUpdate);
    EXPECT_EQ(line.options.archiveFolder, L"folder");
    EXPECT_EQ(line.options.target, L"127.0.0.1");
}

TEST(Options, PathsAndTargetsAreWidenedFromUtf8) {
    const KvTCommandLine line = lineOf({"plan", "-a", "\xC3\xBC", "-d", "\xE2\x82\xAC.json", "-t", "\xC3\xA4.example"});
    EXPECT_EQ(line.options.archiveFolder, L"\u00FC");
    EXPECT_EQ(line.options.descriptionFileName, L"\u20AC.json");
    EXPECT_EQ(line.options.target, L"\u00E4.example");
}

} // namespace
