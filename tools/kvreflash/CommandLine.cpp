#include "CommandLine.h"

#include "TextConversion.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <iostream>
#include <limits>

namespace {

using namespace KvNReflasher;

constexpr const char* helpFooter =
    "Each command is one session with one target. What the session has to say goes to standard output, what this tool "
    "itself has to say to standard error.\n\n"
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

CLI::Option* addRepeatable(CLI::App& app, const char* name, std::vector<std::string>& values, const char* help) {
    return app.add_option(name, values, help)->allow_extra_args(false);
}

void addArchiveOptions(CLI::App& app, Texts& texts) {
    app.add_option("-a,--archive", texts.archiveFolder, "Folder of the firmware archive")->required()->type_name("DIR");
    app.add_option("-d,--description", texts.descriptionFileName,
                   "Description file inside the archive folder (default: archive.json)")
        ->type_name("FILE");
}

void addTargetOptions(CLI::App& app, Texts& texts, KvTOptions& options) {
    app.add_option("-t,--target", texts.target, "IPv4 address or host name of the target")->type_name("HOST");
    app.add_option("-b,--board-type", options.boardTypeFilter,
                   "Look only at boards of these types (words separated by commas or blanks)")
        ->type_name("LIST");
    app.add_option("-s,--serial-number", options.serialNumberFilter,
                   "Look only at boards of these serial numbers, in decimal")
        ->type_name("LIST");
    app.add_option("-e,--element", options.elementNameFilter, "Look only at update elements of these names")
        ->type_name("LIST");
    app.add_flag("--configuration", options.configurationElements,
                 "Look at configuration elements instead of the others");
    app.add_flag("--skip-custom", options.disableCustomElements, "Leave custom elements out of the update");
}

void addUpdateOptions(CLI::App& app, KvTCommandLine& line, Texts& texts) {
    app.add_flag("--no-progress", line.options.noProgress, "Do not print the progress line");
    addRepeatable(app, "--disable", texts.disabled,
                  "Leave the element of this number out of the update (No. of the plan; repeatable)")
        ->type_name("N");
    app.add_flag("--reboot", line.reboot, "Reboot the target after a successful update");
    app.add_option("--events", line.eventsFile, "Write notifications to FILE as JSON lines (-: standard error)")
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
    addRepeatable(sub, "--emulate", line.emulatedTargets, "Serve the emulated target in this folder (repeatable)")
        ->type_name("DIR");
    sub.footer(helpFooter);
    sub.callback([&line, &command] {
        line.options.mode = command.mode;
        line.reboot = line.reboot || std::string_view(command.name) == "reboot";
    });
}

/// A wide option from its UTF-8 text.
std::wstring wideOption(const std::string& text, const char* name) {
    std::wstring wide = utf8ToWide(text.c_str());
    if (wide.empty() && !text.empty()) {
        throw CLI::ValidationError(name, "is not valid UTF-8");
    }
    return wide;
}

std::uint32_t elementNumber(const std::string& text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) {
        throw CLI::ValidationError("--disable", "'" + text + "' is not a decimal number up to " +
                                                    std::to_string(std::numeric_limits<std::uint32_t>::max()));
    }
    return number;
}

void convertTexts(const Texts& texts, KvTCommandLine& line) {
    line.options.archiveFolder = wideOption(texts.archiveFolder, "--archive");
    line.options.descriptionFileName = wideOption(texts.descriptionFileName, "--description");
    line.options.target = wideOption(texts.target, "--target");
    for (const std::string& number : texts.disabled) {
        line.disabledElements.push_back(elementNumber(number));
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
    app.require_subcommand(1, 1);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        convertTexts(texts, line);
    } catch (const CLI::Success& help) {
        app.exit(help, std::cout, std::cerr);
        return exitSuccess;
    } catch (const CLI::ParseError& error) {
        std::cerr << "kvreflash: " << error.what() << "\nRun 'kvreflash --help' or 'kvreflash COMMAND --help'.\n";
        return exitUsage;
    }
    return line;
}
