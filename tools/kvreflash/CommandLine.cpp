#include "CommandLine.h"

#include "TextConversion.h"
#include "ToolOutput.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <memory>
#include <set>

namespace {

using namespace KvNReflasher;

constexpr const char* helpFooter =
    "Each command is one session with one target. What the session has to say goes to standard output, what this tool "
    "itself has to say to standard error.\n\n"
    "Every option with a value takes exactly one; a value that begins with \"-\" is written --option=VALUE, an empty "
    "one as an argument of its own: -t \"\". Options without a value are off by default.\n\n"
    "Sessions with emulated targets obey the environment variables KV_TIME_SCALE and KV_TRACE: see "
    "docs/emulation.md.\n\n"
    "Exit codes: 0 success, 1 failed, 2 the archive does not support the target, 64 usage error.\n\n"
    "kvreflash COMMAND --help tells the options of a command.";

/// The groups of options that a command takes.
enum OptionGroup : unsigned {
    archiveOptions = 1,
    targetOptions = 2,
    forceOption = 4,
    updateOptions = 8,
    jsonOption = 16
};

struct Command {
    const char* name;
    KvEMode mode;
    unsigned groups;
    const char* description;
};

constexpr std::array commands = {
    Command{"version", showVersion, 0, "Print the version of the library."},
    Command{"archive-version", showArchiveVersion, archiveOptions, "Print the version of a firmware archive."},
    Command{"content", showArchiveContent, archiveOptions | jsonOption, "Print the table of an archive's entries."},
    Command{"dump", dumpArchiveDescription, archiveOptions,
            "Print an archive's description as it is understood, with the checksums of its update files."},
    Command{"elements", showTargetElements, targetOptions | jsonOption,
            "Print the table of a target's update elements."},
    Command{"connect", connectOnly, targetOptions, "Check that a target can be reached and scanned."},
    Command{"plan", showUpdatePlan, archiveOptions | targetOptions | forceOption | jsonOption,
            "Print what an update would do."},
    Command{"update", performUpdate, archiveOptions | targetOptions | forceOption | updateOptions,
            "Update a target from an archive."},
    Command{"reboot", connectOnly, targetOptions, "Connect to a target and reboot it."}};

/// The texts of the options as they were given.
struct Texts {
    std::string archiveFolder;
    std::string descriptionFileName = "archive.json";
    std::string target;
    std::vector<std::string> disabled;
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

void addTargetOptions(CLI::App& app, Texts& texts, KvTOptions& options) {
    app.add_option("-t,--target", texts.target, "IPv4 address or host name of the target (default: none)")
        ->type_name("HOST");
    app.add_option("-b,--board-type", options.boardTypeFilter,
                   "Look only at boards of these types, words separated by commas or blanks (default: all)")
        ->type_name("LIST");
    app.add_option("-s,--serial-number", options.serialNumberFilter,
                   "Look only at boards of these serial numbers, in decimal, sub-number included: 12345(2) is "
                   "2 * 16777216 + 12345 (default: all)")
        ->type_name("LIST");
    app.add_option("-e,--element", options.elementNameFilter,
                   "Look only at update elements of these names (default: all)")
        ->type_name("LIST");
    app.add_flag("--configuration", options.configurationElements,
                 "Look at configuration elements instead of the others");
    app.add_flag("--skip-custom", options.disableCustomElements, "Leave custom elements out of the update");
}

void addUpdateOptions(CLI::App& app, KvTCommandLine& line, Texts& texts) {
    app.add_flag("--no-progress", line.options.noProgress, "Do not print the progress line");
    addRepeatable(app, "--disable", texts.disabled, "N",
                  "Leave the element of this number out of the update: No. of the plan; repeatable (default: none)");
    app.add_flag("--reboot", line.reboot, "Reboot the target after a successful update");
    app.add_option("--events", line.eventsFile,
                   "Write notifications to FILE as JSON lines; -: to standard error (default: nowhere)")
        ->type_name("FILE");
}

void addCommand(CLI::App& app, const Command& command, KvTCommandLine& line, Texts& texts) {
    CLI::App& sub = *app.add_subcommand(command.name, command.description);
    if ((command.groups & archiveOptions) != 0) {
        addArchiveOptions(sub, texts);
    }
    if ((command.groups & targetOptions) != 0) {
        addTargetOptions(sub, texts, line.options);
    }
    if ((command.groups & forceOption) != 0) {
        sub.add_flag("-f,--force", line.options.forceUpdate,
                     "Update elements that are up to date, too (never those with an \"upgrade\" entry)");
    }
    if ((command.groups & updateOptions) != 0) {
        addUpdateOptions(sub, line, texts);
    }
    if ((command.groups & jsonOption) != 0) {
        sub.add_flag("--json", line.json, "Write the records as a JSON document; messages go to standard error");
    }
    sub.add_flag("-v,--verbose", line.options.verbose, "Print details");
    addRepeatable(sub, "--emulate", line.emulatedTargets, "DIR",
                  "Serve the emulated target in this folder; repeatable (default: none)");
    sub.group("Commands");
    sub.footer(helpFooter);
    sub.callback([&line, &command] {
        line.options.mode = command.mode;
        line.reboot = line.reboot || std::string_view(command.name) == "reboot";
    });
}

[[noreturn]] void refuse(const std::string& reason) {
    throw CLI::ParseError(reason, CLI::ExitCodes::InvalidError);
}

std::uint32_t elementNumber(const std::string& text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) {
        refuse("--disable: '" + text + "' is not a decimal number up to " +
               std::to_string(std::numeric_limits<std::uint32_t>::max()));
    }
    return number;
}

void convertTexts(const Texts& texts, KvTCommandLine& line) {
    line.options.archiveFolder = utf8ToWide(texts.archiveFolder.c_str());
    line.options.descriptionFileName = utf8ToWide(texts.descriptionFileName.c_str());
    line.options.target = utf8ToWide(texts.target.c_str());
    for (const std::string& number : texts.disabled) {
        line.disabledElements.push_back(elementNumber(number));
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
void checkOptions(const CLI::App& command, const std::vector<std::string>& arguments) {
    std::set<const CLI::Option*> single;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        if (!looksLikeOption(arguments[index])) {
            refuse(command.get_name() + ": unexpected argument '" + arguments[index] + "'");
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
        if (utf8ToWide(arguments[index].c_str()).empty() && !arguments[index].empty()) {
            refuse("argument " + std::to_string(index + 1) + " is not valid UTF-8");
        }
    }
    if (arguments.empty()) {
        refuse("a command is missing");
    }
    const auto named = app.get_subcommands([&](const CLI::App* sub) { return sub->get_name() == arguments.front(); });
    if (!named.empty()) {
        checkOptions(*named.front(), arguments);
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
        addCommand(app, command, line, texts);
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
        say(error.what());
        writeText(stderr, "Run 'kvreflash --help' or 'kvreflash COMMAND --help'.\n");
        return exitUsage;
    }
    return line;
}
