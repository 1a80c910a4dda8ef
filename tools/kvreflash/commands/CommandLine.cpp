#include "CommandLine.h"

#include "ArchiveVersionCommand.h"
#include "CaptureCommand.h"
#include "CheckCommand.h"
#include "CompareCommand.h"
#include "ConnectCommand.h"
#include "ContentCommand.h"
#include "DumpCommand.h"
#include "ElementsCommand.h"
#include "ExplainCommand.h"
#include "HistoryCommand.h"
#include "MatrixCommand.h"
#include "NewCommand.h"
#include "PackCommand.h"
#include "PlanCommand.h"
#include "RebootCommand.h"
#include "ResumeCommand.h"
#include "SealCommand.h"
#include "SettingsCommand.h"
#include "ToolOutput.h"
#include "UpdateCommand.h"
#include "VerifyCommand.h"
#include "VersionCommand.h"

#include <array>
#include <cstdio>
#include <map>
#include <utility>

namespace {

constexpr const char* helpFooter =
    "What a session has to say goes to standard output, what this tool itself has to say to standard error.\n\n"
    "Every option with a value takes exactly one; a value that begins with \"-\" is written --option=VALUE, an empty "
    "one as an argument of its own: -t \"\". Options without a value are off by default.\n\n"
    "The settings file of the machine may state a trust folder and more: kvreflash settings shows what is in force. "
    "A settings file that cannot be used is a usage error.\n\n"
    "Sessions with emulated targets obey the environment variables KV_TIME_SCALE and KV_TRACE: see "
    "docs/emulation.md.\n\n"
    "Exit codes:\n"
    "  0    success\n"
    "  1    an element or file failed, errors were reported, a reboot did not happen, or something could not be "
    "written\n"
    "  2    the archive does not support the target\n"
    "  3    the archive was refused\n"
    "  4    the target was not reached or cannot be scanned\n"
    "  5    the target could not be locked\n"
    "  6    the target does not report what it should\n"
    "  7    ended on request\n"
    "  8    no element passes the filters, or what was named does not exist\n"
    "  9    a saved plan does not hold any more\n"
    "  64   usage error\n"
    "  130  ended by an interrupt at once\n\n"
    "kvreflash COMMAND --help lists the options of a command.";

template <typename Kind>
std::unique_ptr<Command> make() {
    return std::make_unique<Kind>();
}

struct Row {
    const char* name;
    std::unique_ptr<Command> (*make)();
};

/// The commands, in the order of the help.
constexpr std::array commandTable = {Row{"version", make<VersionCommand>},
                                     Row{"new", make<NewCommand>},
                                     Row{"check", make<CheckCommand>},
                                     Row{"compare", make<CompareCommand>},
                                     Row{"seal", make<SealCommand>},
                                     Row{"pack", make<PackCommand>},
                                     Row{"archive-version", make<ArchiveVersionCommand>},
                                     Row{"content", make<ContentCommand>},
                                     Row{"dump", make<DumpCommand>},
                                     Row{"elements", make<ElementsCommand>},
                                     Row{"connect", make<ConnectCommand>},
                                     Row{"capture", make<CaptureCommand>},
                                     Row{"plan", make<PlanCommand>},
                                     Row{"explain", make<ExplainCommand>},
                                     Row{"matrix", make<MatrixCommand>},
                                     Row{"update", make<UpdateCommand>},
                                     Row{"resume", make<ResumeCommand>},
                                     Row{"history", make<HistoryCommand>},
                                     Row{"verify", make<VerifyCommand>},
                                     Row{"reboot", make<RebootCommand>},
                                     Row{"settings", make<SettingsCommand>}};

} // namespace

std::variant<std::unique_ptr<Command>, ExitCode> readCommandLine(const std::vector<std::string>& arguments) {
    ArgumentParser parser("kvreflash", "Update the firmware of networked real-time targets.", helpFooter,
                          KvISession::version());
    std::map<std::string, std::unique_ptr<Command>> commands;
    for (const Row& row : commandTable) {
        std::unique_ptr<Command> command = row.make();
        if (command->isAvailable()) {
            command->addOptions(parser.addCommand(row.name, command->summary()));
            commands.emplace(row.name, std::move(command));
        }
    }
    const ParsedLine line = parser.parse(arguments);
    switch (line.kind) {
    case ParsedLine::Kind::command:
        return std::move(commands.at(line.text));
    case ParsedLine::Kind::answer:
        writeText(stdout, line.text);
        return exitSuccess;
    case ParsedLine::Kind::fault:
        say(line.text + "; run 'kvreflash --help' or 'kvreflash COMMAND --help'");
        break;
    }
    return exitUsage;
}

ExitCode executeCommandLine(const std::vector<std::string>& arguments) {
    const auto read = readCommandLine(arguments);
    if (const auto* const answered = std::get_if<ExitCode>(&read)) {
        return *answered == exitSuccess ? conclude({}) : *answered;
    }
    Command& command = *std::get<std::unique_ptr<Command>>(read);
    if (const std::string fault = command.takeSettings(); !fault.empty()) {
        say(fault);
        return exitUsage;
    }
    return command.run();
}
