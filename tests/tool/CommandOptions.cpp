#include "CommandOptions.h"

#include <algorithm>

namespace {

using Names = std::vector<std::string_view>;

const Names archiveCommands{"archive-version", "content", "dump", "plan", "update"};
const Names targetCommands{"elements", "connect", "plan", "update", "reboot"};
const Names updateCommand{"update"};
const Names allCommands{"version", "archive-version", "content", "dump", "elements", "connect",
                        "plan",    "update",          "reboot"};

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
        {"--target", "-t", "host", false, targetCommands},
        {"--board-type", "-b", "QB1", false, targetCommands},
        {"--serial-number", "-s", "7", false, targetCommands},
        {"--element", "-e", "UserIpl", false, targetCommands},
        {"--configuration", "", "", false, targetCommands},
        {"--skip-custom", "", "", false, targetCommands},
        {"--force", "-f", "", false, {"plan", "update"}},
        {"--no-progress", "", "", false, updateCommand},
        {"--disable", "", "3", true, updateCommand},
        {"--reboot", "", "", false, updateCommand},
        {"--events", "", "events.jsonl", false, updateCommand},
        {"--json", "", "", false, {"content", "elements", "plan"}},
        {"--verbose", "-v", "", false, allCommands},
        {"--emulate", "", "rack", true, allCommands},
    };
    return options;
}

std::vector<std::string> smallestCommandLine(const std::string& command) {
    std::vector<std::string> line{command};
    if (commandOptions().front().belongsTo(command)) {
        line.insert(line.end(), {"--archive", "folder"});
    }
    return line;
}
