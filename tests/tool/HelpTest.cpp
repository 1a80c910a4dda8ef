#include "CommandOptions.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using testing::HasSubstr;
using testing::Not;

std::string helpOf(const std::vector<std::string>& arguments) {
    const ToolRun run = runCaptured(arguments);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    return run.output;
}

/// The line of a help text that begins with `name`; empty when there is none.
std::string lineOf(const std::string& help, const std::string& name) {
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin != std::string::npos && line.compare(begin, name.size(), name) == 0 &&
            (line.size() == begin + name.size() || line[begin + name.size()] == ' ')) {
            return line.substr(begin);
        }
    }
    return {};
}

/// What stands behind the names of an option or command.
std::string meaningOf(const std::string& line) {
    const std::size_t gap = line.find("  ");
    return gap == std::string::npos ? "" : line.substr(line.find_first_not_of(' ', gap));
}

TEST(Help, TheToolNamesEveryCommandWithItsMeaning) {
    for (const char* option : {"--help", "-h"}) {
        const std::string help = helpOf({option});
        EXPECT_THAT(help, HasSubstr("Usage: kvreflash [--help] COMMAND [OPTIONS]\n"));
        for (const std::string& command : commandNames()) {
            EXPECT_GT(meaningOf(lineOf(help, command)).size(), 10U) << command;
        }
        for (const char* code :
             {"0    success\n", "1    an element or file failed, ", "2    the archive does not support the target\n",
              "3    the archive was refused\n", "4    the target was not reached or cannot be scanned\n",
              "5    the target could not be locked\n", "6    the target does not report what it should\n",
              "7    ended on request\n", "8    no element passes the filters, ", "64   usage error\n",
              "130  ended by an interrupt at once\n"}) {
            EXPECT_THAT(help, HasSubstr(std::string("\n  ") + code));
        }
    }
}

TEST(Help, ACommandNamesItsOptionsWithMeaningAndDefaultAndNoOthers) {
    for (const std::string& command : commandNames()) {
        const std::string help = helpOf({command, "--help"});
        EXPECT_THAT(help, HasSubstr("Usage: kvreflash " + command + " [OPTIONS]"));
        EXPECT_THAT(help, HasSubstr("Options without a value are off by default."));
        for (const CommandOption& option : commandOptions()) {
            SCOPED_TRACE(option.name + " of " + command);
            const std::string names = (option.letter.empty() ? "" : option.letter + ",") + option.name;
            const std::string meaning = meaningOf(lineOf(help, names));
            if (!option.belongsTo(command)) {
                EXPECT_EQ(meaning, "");
                EXPECT_THAT(help, Not(HasSubstr(option.name + " ")));
                continue;
            }
            EXPECT_GT(meaning.size(), 10U);
            if (!option.value.empty() && option.name != "--archive") {
                EXPECT_THAT(meaning, HasSubstr("(default: "));
            }
        }
    }
}

TEST(Help, TellsWhatIsRequired) {
    for (const std::string& command : commandNames()) {
        const bool takesArchive = commandOptions().front().belongsTo(command);
        const bool mayHavePlan = command == "plan" || command == "update";
        const std::string help = helpOf({command, "-h"});
        EXPECT_EQ(lineOf(help, "-a,--archive DIR REQUIRED").empty(), !takesArchive || mayHavePlan) << command;
        EXPECT_EQ(help.find("Required, unless a saved plan names it") != std::string::npos, mayHavePlan) << command;
    }
}

TEST(Help, TellsTheDefaultDescription) {
    EXPECT_THAT(lineOf(helpOf({"content", "--help"}), "-d,--description FILE"), HasSubstr("(default: archive.json)"));
}

TEST(Help, TellsHowAnEmptyValueIsWritten) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"-h"}, {"connect", "-h"}}) {
        EXPECT_THAT(helpOf(arguments), HasSubstr("an empty one as an argument of its own: -t \"\"."));
    }
    EXPECT_THAT(runCaptured({"connect", "-t", ""}).output, HasSubstr("ERROR: No IP address or hostname specified!\n"));
    EXPECT_THAT(runCaptured({"connect", "--target="}).errors, HasSubstr("--target needs a value; "));
}

TEST(Help, NamesTheVariablesOfTheEnvironmentAndWhereTheyAreDescribed) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"-h"}, {"update", "-h"}}) {
        const std::string line = lineOf(helpOf(arguments), "Sessions with emulated targets");
        for (const char* word : {" KV_TIME_SCALE ", " KV_TRACE:", " docs/emulation.md."}) {
            EXPECT_THAT(line, HasSubstr(word));
        }
    }
}

TEST(Help, TheVersionIsThatOfTheVersionCommand) {
    const ToolRun version = runCaptured({"--version"});
    EXPECT_EQ(0, version.exitCode);
    EXPECT_EQ("", version.errors);
    EXPECT_EQ(runCaptured({"version"}).output, version.output);
    EXPECT_THAT(runCaptured({"--version=1"}).errors, HasSubstr("--version takes no value; "));
}

TEST(Help, NeedsNothingElse) {
    EXPECT_EQ(helpOf({"content", "--json", "--help"}), helpOf({"content", "--help"}));
    EXPECT_EQ(helpOf({"content", "-vh"}), helpOf({"content", "--help"}));
}

} // namespace
