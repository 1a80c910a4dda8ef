#include "CommandLine.h"

#include "EmulatedTargets.h"
#include "ToolOutput.h"
#include "Utf8.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

namespace {

using namespace KvNReflasher;

constexpr const char* helpFooter =
    "What a session has to say goes to standard output, what this tool itself has to say to standard error.\n\n"
    "Every option with a value takes exactly one; a value that begins with \"-\" is written --option=VALUE, an empty "
    "one as an argument of its own: -t \"\". Options without a value are off by default.\n\n"
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
    "  8    no element passes the filters, or an element that was named does not exist\n"
    "  64   usage error\n"
    "  130  ended by an interrupt\n\n"
    "kvreflash COMMAND --help tells the options of a command.";

/// The groups of options that a command takes.
enum OptionGroup : unsigned {
    archiveOptions = 1,
    hostOption = 2,
    filterOptions = 4,
    targetOptions = hostOption | filterOptions,
    forceOption = 8,
    updateOptions = 16,
    jsonOption = 32,
    reportOption = 64,
    checkOptions = 128,
    folderArgument = 256,
    elementArgument = 512
};

struct Command {
    const char* name;
    KvETask task;
    KvEMode mode;
    unsigned groups;
    const char* description;
};

constexpr std::array commands = {
    Command{"version", KvETask::session, showVersion, 0, "Print the version of the library."},
    Command{"check", KvETask::check, showArchiveVersion, archiveOptions | checkOptions | jsonOption,
            "Find everything that is wrong with an archive."},
    Command{"archive-version", KvETask::session, showArchiveVersion, archiveOptions,
            "Print the version of a firmware archive."},
    Command{"content", KvETask::session, showArchiveContent, archiveOptions | jsonOption,
            "Print the table of an archive's entries."},
    Command{"dump", KvETask::session, dumpArchiveDescription, archiveOptions,
            "Print an archive's description as it is understood, with the checksums of its update files."},
    Command{"elements", KvETask::session, showTargetElements, targetOptions | jsonOption,
            "Print the table of a target's update elements."},
    Command{"connect", KvETask::session, connectOnly, targetOptions, "Check that a target can be reached and scanned."},
    Command{"capture", KvETask::capture, connectOnly, hostOption | folderArgument,
            "Write a target's inventory as an emulated target, to rehearse with."},
    Command{"plan", KvETask::session, showUpdatePlan,
            archiveOptions | targetOptions | forceOption | jsonOption | reportOption, "Print what an update would do."},
    Command{"explain", KvETask::explain, showUpdatePlan,
            archiveOptions | targetOptions | forceOption | jsonOption | elementArgument,
            "Tell why each element is or is not updated."},
    Command{"matrix", KvETask::matrix, showUpdatePlan, archiveOptions | jsonOption,
            "Print what an update would do to each of several emulated targets."},
    Command{"update", KvETask::session, performUpdate,
            archiveOptions | targetOptions | forceOption | updateOptions | reportOption,
            "Update a target from an archive."},
    Command{"verify", KvETask::session, showUpdatePlan, archiveOptions | targetOptions | jsonOption | reportOption,
            "Update nothing and state whether the target is what the archive says."},
    Command{"reboot", KvETask::session, connectOnly, targetOptions, "Connect to a target and reboot it."}};

/// The texts of the options as they were given.
struct Texts {
    std::string archiveFolder;
    std::string descriptionFileName = "archive.json";
    std::string target;
    std::vector<std::string> disabled;
    std::optional<std::string> progress;
    std::optional<std::string> waitSeconds;
    std::optional<std::string> format;
};

/// An option that takes a value and may be given several times.
void addRepeatable(CLI::App& app, const char* name, std::vector<std::string>& values, const char* valueName,
                   const char* help) {
    // With a function of its own, CLI11 hands over the texts as they are, "{}" and "[a,b]" too.
    const CLI::callback_t take = [&values](const CLI::results_t& texts) {
        values = texts;
        return true;
    };
    app.add_option(name, take, help)->type_name(valueName)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addArchiveOptions(CLI::App& app, Texts& texts) {
    app.add_option("-a,--archive", texts.archiveFolder, "Folder of the firmware archive")->required()->type_name("DIR");
    app.add_option("-d,--description", texts.descriptionFileName,
                   "Description file inside the archive folder (default: archive.json)")
        ->type_name("FILE");
}

void addHostOption(CLI::App& app, Texts& texts) {
    app.add_option("-t,--target", texts.target, "IPv4 address or host name of the target (default: none)")
        ->type_name("HOST");
}

void addFilterOptions(CLI::App& app, KvTOptions& options) {
    app.add_option("-b,--board-type", options.boardTypeFilter,
                   "Look only at boards of these types, words separated by commas or blanks (default: all)")
        ->type_name("LIST");
    app.add_option("-s,--serial-number", options.serialNumberFilter,
                   "Look only at boards of these serial numbers, in decimal, sub-number included: 12345(2) is "
                   "2 * 16777216 + 12345 (default: all)")
        ->type_name("LIST");
    app.add_option(
           "-e,--element", options.elementNameFilter,
           "Look only at update elements with these names of the inventory, such as UserFirmware; explain shows "
           "them (default: all)")
        ->type_name("LIST");
    app.add_flag("--configuration", options.configurationElements,
                 "Look at configuration elements instead of the others");
    app.add_flag("--skip-custom", options.disableCustomElements, "Leave custom elements out of the update");
}

void addUpdateOptions(CLI::App& app, KvTCommandLine& line, Texts& texts) {
    app.add_option("--progress", texts.progress,
                   "How progress is shown: line, plain (a line for every tenth) or none (default: line)")
        ->type_name("HOW");
    app.add_flag("--no-progress", line.options.noProgress, "The same as --progress none");
    addRepeatable(
        app, "--disable", texts.disabled, "ELEMENT",
        "Leave this element out of the update: its number (No. of a plan made with the same filters), address "
        "in the inventory, target path or display name; repeatable (default: none)");
    app.add_flag("--reboot", line.reboot, "Reboot the target after a successful update");
    app.add_flag("--preflight", line.preflight, "Check every update file of the plan before the target is touched");
    app.add_flag("--verify", line.verify,
                 "Look at the target again after the update and judge by what it reports then");
    app.add_option("--wait", texts.waitSeconds,
                   "With --verify and --reboot: how many seconds the target has to show the update (default: 300)")
        ->type_name("SECONDS");
    app.add_option("--events", line.eventsFile,
                   "Write notifications to FILE as JSON lines; -: to standard error (default: nowhere)")
        ->type_name("FILE");
}

void addCheckOptions(CLI::App& app, KvTCommandLine& line, Texts& texts) {
    app.add_flag("--strict", line.strict, "Refuse an archive with warnings, too");
    app.add_option("--format", texts.format,
                   "How findings are written: text or json (the same as --json) (default: text)")
        ->type_name("FORMAT");
}

void addArguments(CLI::App& app, unsigned groups, KvTCommandLine& line) {
    if ((groups & folderArgument) != 0) {
        app.add_option("DIR", line.captureFolder, "The folder to be made; an existing one must be empty")
            ->required()
            ->type_name("");
    }
    if ((groups & elementArgument) != 0) {
        app.add_option("ELEMENT", line.element, "Number (No. of the plan) or name of one element (default: all)")
            ->type_name("");
    }
}

void addOptions(CLI::App& app, unsigned groups, KvTCommandLine& line, Texts& texts) {
    if ((groups & archiveOptions) != 0) {
        addArchiveOptions(app, texts);
    }
    if ((groups & hostOption) != 0) {
        addHostOption(app, texts);
    }
    if ((groups & filterOptions) != 0) {
        addFilterOptions(app, line.options);
    }
    if ((groups & forceOption) != 0) {
        app.add_flag("-f,--force", line.options.forceUpdate,
                     "Update elements that are up to date, too (never those with an \"upgrade\" entry)");
    }
    if ((groups & updateOptions) != 0) {
        addUpdateOptions(app, line, texts);
    }
    if ((groups & checkOptions) != 0) {
        addCheckOptions(app, line, texts);
    }
    if ((groups & jsonOption) != 0) {
        app.add_flag("--json", line.json, "Write a JSON document; messages go to standard error");
    }
    if ((groups & reportOption) != 0) {
        app.add_option("--report", line.reportFile, "Write a report to FILE, .html or .json (default: none)")
            ->type_name("FILE");
    }
    app.add_flag("-v,--verbose", line.options.verbose, "Print details");
    if (canEmulate()) {
        addRepeatable(app, "--emulate", line.emulatedTargets, "DIR",
                      "Serve the emulated target in this folder; repeatable (default: none)");
    }
}

void addCommand(CLI::App& app, const Command& command, KvTCommandLine& line, Texts& texts) {
    CLI::App& sub = *app.add_subcommand(command.name, command.description);
    addOptions(sub, command.groups, line, texts);
    addArguments(sub, command.groups, line);
    sub.group("Commands");
    sub.footer(helpFooter);
    sub.callback([&line, &command] {
        line.command = command.name;
        line.task = command.task;
        line.verifiesOnly = std::string_view(command.name) == "verify";
        line.options.mode = command.mode;
        line.reboot = line.reboot || std::string_view(command.name) == "reboot";
    });
}

[[noreturn]] void refuse(const std::string& reason) {
    throw CLI::ParseError(reason, CLI::ExitCodes::InvalidError);
}

std::uint32_t numberOf(const char* option, const std::string& text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) {
        refuse(option + (": '" + text) + "' is not a decimal number up to " +
               std::to_string(std::numeric_limits<std::uint32_t>::max()));
    }
    return number;
}

/// The value of an option that takes one of a few words.
template <typename Value, std::size_t size>
Value oneOf(const char* option, const std::string& text,
            const std::array<std::pair<const char*, Value>, size>& values) {
    std::string known;
    for (const auto& [word, value] : values) {
        if (text == word) {
            return value;
        }
        known.append(known.empty() ? "" : ", ").append(word);
    }
    refuse(option + (": '" + text) + "' is none of " + known);
}

void convertProgress(const std::optional<std::string>& text, KvTCommandLine& line) {
    constexpr std::array<std::pair<const char*, KvEProgress>, 3> ways{
        {{"line", KvEProgress::line}, {"plain", KvEProgress::plain}, {"none", KvEProgress::none}}};
    const bool isOff = line.options.noProgress;
    line.progress = isOff ? KvEProgress::none : KvEProgress::line;
    if (!text) {
        return;
    }
    line.progress = oneOf("--progress", *text, ways);
    if (isOff && line.progress != KvEProgress::none) {
        refuse("--no-progress contradicts --progress " + *text);
    }
    line.options.noProgress = line.progress != KvEProgress::line;
}

void convertReport(const std::optional<std::string>& path) {
    if (path && !path->ends_with(".html") && !path->ends_with(".json")) {
        refuse("--report: '" + *path + "' ends neither with .html nor with .json");
    }
}

void convertFormat(const std::optional<std::string>& text, KvTCommandLine& line) {
    constexpr std::array<std::pair<const char*, bool>, 2> formats{{{"text", false}, {"json", true}}};
    if (!text) {
        return;
    }
    const bool isJson = oneOf("--format", *text, formats);
    if (line.json && !isJson) {
        refuse("--json contradicts --format " + *text);
    }
    line.json = isJson;
}

void convertTexts(const Texts& texts, KvTCommandLine& line) {
    line.options.archiveFolder = wideOf(texts.archiveFolder);
    line.options.descriptionFileName = wideOf(texts.descriptionFileName);
    line.options.target = wideOf(texts.target);
    line.disabledElements = texts.disabled;
    convertProgress(texts.progress, line);
    convertReport(line.reportFile);
    if (texts.waitSeconds) {
        line.waitSeconds = numberOf("--wait", *texts.waitSeconds);
        if (!line.verify || !line.reboot) {
            refuse("--wait needs --verify and --reboot");
        }
    }
    convertFormat(texts.format, line);
    if (line.task == KvETask::matrix && line.emulatedTargets.empty()) {
        refuse("matrix needs at least one --emulate");
    }
}

bool looksLikeOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

bool takesValue(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

/// An argument that gives an option, or several letters of which the last one takes a value.
struct GivenOption {
    std::string name;
    const CLI::Option* option = nullptr;
    /// What stands in the same argument.
    std::optional<std::string> value;
};

GivenOption givenOption(const CLI::App& command, const std::string& argument) {
    GivenOption given;
    if (argument[1] == '-') {
        const std::size_t end = argument.find('=');
        given.name = argument.substr(0, end);
        given.option = command.get_option_no_throw(given.name);
        if (end != std::string::npos) {
            given.value = argument.substr(end + 1);
        }
        return given;
    }
    for (std::size_t index = 1; index < argument.size(); ++index) {
        given.name = {'-', argument[index]};
        given.option = command.get_option_no_throw(given.name);
        if (given.option == nullptr || takesValue(*given.option)) {
            if (index + 1 < argument.size()) {
                given.value = argument.substr(index + 1);
            }
            break;
        }
    }
    return given;
}

/// Refuses what CLI11 takes as it comes: an option where a value is due, a value of an option that has none; and what
/// its messages tell badly.
void checkOptionUse(const CLI::App& command, const std::vector<std::string>& arguments) {
    std::set<const CLI::Option*> single;
    auto positionals = command.get_options([](const CLI::Option* option) { return option->get_positional(); }).size();
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        if (!looksLikeOption(arguments[index])) {
            if (positionals-- == 0) {
                refuse(command.get_name() + ": unexpected argument '" + arguments[index] + "'");
            }
            continue;
        }
        const GivenOption given = givenOption(command, arguments[index]);
        if (given.option == nullptr) {
            refuse(command.get_name() + " has no option " + given.name);
        }
        if (!takesValue(*given.option)) {
            if (given.value) {
                refuse(given.name + " takes no value");
            }
            continue;
        }
        if (given.option->get_multi_option_policy() == CLI::MultiOptionPolicy::Throw &&
            !single.insert(given.option).second) {
            refuse(given.name + " is given twice");
        }
        const bool isNext = !given.value && index + 1 < arguments.size() && !looksLikeOption(arguments[index + 1]);
        if (!isNext && given.value.value_or("").empty()) {
            refuse(given.name + " needs a value");
        }
        index += isNext ? 1 : 0;
    }
}

void checkArguments(const CLI::App& app, const std::vector<std::string>& arguments) {
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        if (wideOf(arguments[index]).empty() && !arguments[index].empty()) {
            refuse("argument " + std::to_string(index + 1) + " is not valid UTF-8");
        }
    }
    if (arguments.empty()) {
        refuse("a command is missing");
    }
    const auto named = app.get_subcommands([&](const CLI::App* sub) { return sub->get_name() == arguments.front(); });
    if (!named.empty()) {
        checkOptionUse(*named.front(), arguments);
    } else if (app.get_option_no_throw(arguments.front()) == nullptr) {
        refuse("'" + arguments.front() + "' is no command");
    }
}

} // namespace

std::variant<KvTCommandLine, ExitCode> readCommandLine(const std::vector<std::string>& arguments) {
    KvTCommandLine line;
    Texts texts;
    CLI::App app("Update the firmware of networked real-time targets.", "kvreflash");
    app.allow_windows_style_options(false);
    app.footer(helpFooter);
    for (const Command& command : commands) {
        if (command.task != KvETask::matrix || canEmulate()) {
            addCommand(app, command, line, texts);
        }
    }
    app.formatter(std::make_shared<CLI::Formatter>());
    app.get_formatter()->label("OPTIONS", "--help");
    app.get_formatter()->label("SUBCOMMAND", "COMMAND [OPTIONS]");
    app.require_subcommand(1, 1);
    try {
        checkArguments(app, arguments);
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        convertTexts(texts, line);
    } catch (const CLI::Success&) {
        writeText(stdout, app.help());
        return exitSuccess;
    } catch (const CLI::ParseError& error) {
        say(error.what() + std::string("; run 'kvreflash --help' or 'kvreflash COMMAND --help'"));
        return exitUsage;
    }
    return line;
}
