#include "CommandOptions.h"

#include <algorithm>

namespace {

using Names = std::vector<std::string_view>;

const Names archiveCommands{"check",   "archive-version", "content", "dump",  "plan",
                            "explain", "matrix",          "update",  "verify"};
const Names hostCommands{"elements", "connect", "capture", "plan", "explain", "update", "verify", "reboot"};
const Names targetCommands{"elements", "connect", "plan", "explain", "update", "verify", "reboot"};
const Names checkCommand{"check"};
const Names updateCommand{"update"};
const Names allCommands{"version", "check",   "archive-version", "content", "dump",   "elements", "connect", "capture",
                        "plan",    "explain", "matrix",          "update",  "verify", "reboot",   "settings"};

} // namespace

bool CommandOption::belongsTo(std::string_view command) const {
    return std::find(commands.begin(), commands.end(), command) != commands.end();
}

const std::vector<std::string>& commandNames() {
    static const std::vector<std::string> names(allCommands.begin(), allCommands.end());
    return names;
}

const std::vector<CommandOption>& commandOptions() {
    static const std::vector<CommandOption> options{
        {"--archive", "-a", "folder", false, archiveCommands},
        {"--description", "-d", "file.json", false, archiveCommands},
        {"--target", "-t", "host", false, hostCommands},
        {"--board-type", "-b", "QB1", false, targetCommands},
        {"--serial-number", "-s", "7", false, targetCommands},
        {"--element", "-e", "UserIpl", false, targetCommands},
        {"--configuration", "", "", false, targetCommands},
        {"--skip-custom", "", "", false, targetCommands},
        {"--force", "-f", "", false, {"plan", "explain", "update"}},
        {"--no-downgrade", "", "", false, {"plan", "explain", "update"}},
        {"--unlisted-files", "", "changed", false, {"plan", "update"}},
        {"--save", "", "plan.json", false, {"plan"}},
        {"--journal", "", "none", false, {"plan", "update", "reboot"}},
        {"--progress", "", "plain", false, updateCommand},
        {"--no-progress", "", "", false, updateCommand},
        {"--disable", "", "3", true, {"plan", "update"}},
        {"--reboot", "", "", false, updateCommand},
        {"--preflight", "", "", false, updateCommand},
        {"--verify", "", "", false, updateCommand},
        {"--wait", "", "60", false, updateCommand, {"--verify", "--reboot"}},
        {"--stall-limit", "", "60", false, updateCommand},
        {"--events", "", "events.jsonl", false, updateCommand},
        {"--report", "", "report.html", false, {"plan", "update", "verify"}},
        {"--strict", "", "", false, {"check", "update"}},
        {"--format", "", "json", false, checkCommand},
        {"--json",
         "",
         "",
         false,
         {"check", "content", "elements", "plan", "explain", "matrix", "update", "verify", "reboot", "settings"}},
        {"--verbose", "-v", "", false, allCommands},
        {"--quiet", "-q", "", false, allCommands},
        {"--no-settings", "", "", false, allCommands},
        {"--emulate", "", "rack", true, allCommands},
    };
    return options;
}

std::vector<std::string> smallestCommandLine(const std::string& command) {
    std::vector<std::string> line{command};
    if (commandOptions().front().belongsTo(command)) {
        line.insert(line.end(), {"--archive", "folder"});
    }
    if (command == "capture") {
        line.emplace_back("captured");
    }
    if (command == "matrix") {
        line.insert(line.end(), {"--emulate", "first"});
    }
    return line;
}
