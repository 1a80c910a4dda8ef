#include "ArgumentParser.h"

#include "Texts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace {

/// The reason that a command line is refused for.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// CLI11 cannot be configured for this: it takes whatever follows for the value of an option that needs one, does not
// say whether a value was attached to its option (--option=VALUE), takes an empty attached value for none, and gives
// "--" and "++" a meaning of their own. So attached values, which alone may begin with "-", and these two arguments are
// marked by a character that no argument can hold.
constexpr char mark = '\0';

bool looksLikeOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

std::string marked(std::string argument) {
    if (argument == "--" || argument == "++") {
        return argument + mark;
    }
    if (looksLikeOption(argument)) {
        const bool isName = argument[1] == '-';
        const std::size_t place = isName ? argument.find('=') : argument.find('-', 2);
        if (place != std::string::npos) {
            argument.insert(place + (isName ? 1 : 0), 1, mark);
        }
    }
    return argument;
}

std::string unmarked(std::string argument) {
    std::erase(argument, mark);
    return argument;
}

/// CLI11 reads arguments from the end of a list.
std::vector<std::string> markedInReverse(const std::vector<std::string>& arguments) {
    std::vector<std::string> result;
    for (const std::string& argument : arguments) {
        if (wideOf(argument).empty() && !argument.empty()) {
            refuse("argument " + std::to_string(result.size() + 1) + " is not valid UTF-8");
        }
        result.push_back(marked(argument));
    }
    std::reverse(result.begin(), result.end());
    return result;
}

/// "--archive" of "-a,--archive".
std::string longName(const std::string& names) {
    return names.substr(names.rfind(',') + 1);
}

std::string valueOf(const std::string& option, const std::string& text) {
    if (looksLikeOption(text) || text == std::string(1, mark)) {
        refuse(option + " needs a value");
    }
    return unmarked(text);
}

/// An argument that `command` has no place for.
std::string surplusText(const std::string& command, const std::string& argument) {
    const std::string text = unmarked(argument);
    if (!looksLikeOption(text)) {
        return command + ": unexpected argument '" + text + "'";
    }
    return command + " has no option " + (text[1] == '-' ? text.substr(0, text.find('=')) : text.substr(0, 2));
}

std::function<void(const std::string&)> refuseValueOf(const std::string& name) {
    return [name](const std::string& value) {
        if (value.find(mark) != std::string::npos) {
            refuse(name + " takes no value");
        }
    };
}

/// The reason to refuse the first argument that there is no place for; empty if there is none.
std::string faultOfSurplus(const CLI::App& app) {
    if (const std::vector<std::string> surplus = app.remaining(); !surplus.empty()) {
        return "unknown command '" + unmarked(surplus.front()) + "'";
    }
    for (const CLI::App* const command : app.get_subcommands()) {
        if (const std::vector<std::string> surplus = command->remaining(); !surplus.empty()) {
            return surplusText(command->get_name(), surplus.front());
        }
    }
    return {};
}

} // namespace

void refuse(const std::string& reason) {
    throw Refusal(reason);
}

CommandSyntax::Take addedTo(std::vector<std::string>& values) {
    return [&values](const std::string& value) { values.push_back(value); };
}

std::uint32_t decimalNumber(const char* option, const std::string& text) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) {
        refuse(option + (": '" + text) + "' is not a decimal number up to " +
               std::to_string(std::numeric_limits<std::uint32_t>::max()));
    }
    return number;
}

std::size_t indexOfWord(const char* option, const std::string& text, const std::vector<const char*>& words) {
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end()) {
        std::string known;
        for (const char* const word : words) {
            known.append(known.empty() ? "" : ", ").append(word);
        }
        refuse(option + (": '" + text) + "' must be one of " + known);
    }
    return static_cast<std::size_t>(found - words.begin());
}

CommandSyntax::CommandSyntax(CLI::App& command) : command_(command) {
    // Called when CLI11 has nothing more to refuse, and no help is asked for.
    command_.callback([this] { finish(); });
}

void CommandSyntax::addSwitch(const char* names, bool& isGiven, const char* help) {
    command_.add_flag(names, isGiven, help)->each(refuseValueOf(longName(names)));
}

void CommandSyntax::addOption(const char* names, const char* valueName, const char* help, Take take, Occurs occurs) {
    add(names, valueName, help, std::move(take), occurs);
}

void CommandSyntax::addArgument(const char* name, const char* help, Take take, Occurs occurs) {
    add(name, "", help, std::move(take), occurs);
}

void CommandSyntax::add(const std::string& names, const char* valueName, const char* help, Take take, Occurs occurs) {
    const std::string name = longName(names);
    // With a function of its own CLI11 hands over texts as they are, "{}" and "[a,b]" too.
    const CLI::callback_t read = [this, name, take = std::move(take), occurs](const CLI::results_t& texts) {
        if (texts.size() > 1 && occurs != Occurs::anyNumber) {
            refuse(name + " is given twice");
        }
        for (const std::string& text : texts) {
            // CLI11 takes what looks like a negative number for an argument that stands for itself.
            if (looksLikeOption(text) && !looksLikeOption(name)) {
                refuse(surplusText(command_.get_name(), text));
            }
            values_.emplace_back([take, value = valueOf(name, text)] { take(value); });
        }
        return true;
    };
    command_.add_option(names, read, help)
        ->type_name(valueName)
        ->required(occurs == Occurs::once)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

bool CommandSyntax::isGiven(const char* name) const {
    return command_.get_option(name)->count() > 0;
}

void CommandSyntax::finish() const {
    for (const auto& take : values_) {
        take();
    }
    for (const auto& check : checks_) {
        check();
    }
}

ArgumentParser::ArgumentParser(const char* tool, const char* summary, const char* footer, const std::string& version)
    : app_(std::make_unique<CLI::App>(summary, tool)) {
    app_->allow_windows_style_options(false);
    app_->footer(footer);
    app_->require_subcommand(1, 1);
    app_->get_formatter()->label("OPTIONS", "--help");
    app_->get_formatter()->label("SUBCOMMAND", "COMMAND [OPTIONS]");
    app_->get_help_ptr()->each(refuseValueOf("--help"));
    app_->set_version_flag("--version", version, "Print the version of the library and exit")
        ->each(refuseValueOf("--version"));
}

ArgumentParser::~ArgumentParser() = default;

CommandSyntax& ArgumentParser::addCommand(const char* name, const char* summary) {
    CLI::App& command = *app_->add_subcommand(name, summary);
    command.group("Commands");
    command.formatter(std::make_shared<CLI::Formatter>());
    command.get_help_ptr()->each(refuseValueOf("--help"));
    return *commands_.emplace_back(std::make_unique<CommandSyntax>(command));
}

ParsedLine ArgumentParser::parse(const std::vector<std::string>& arguments) {
    using enum ParsedLine::Kind;
    bool asksForHelp = false;
    bool asksForVersion = false;
    std::string reason;
    try {
        if (arguments.empty()) {
            refuse("a command is missing");
        }
        app_->parse(markedInReverse(arguments));
        return {command, app_->get_subcommands().front()->get_name()};
    } catch (const Refusal& refusal) {
        return {fault, refusal.what()};
    } catch (const CLI::CallForVersion&) {
        asksForVersion = true;
    } catch (const CLI::Success&) {
        asksForHelp = true;
    } catch (const CLI::ArgumentMismatch&) {
        // Nothing follows the last option, or the last of several letters, which needs a value.
        const std::string& last = arguments.back();
        reason = (last[1] == '-' ? last : std::string{'-', last.back()}) + " needs a value";
    } catch (const CLI::ParseError& error) {
        reason = error.what();
    }
    const std::string answered = asksForVersion ? app_->version() + "\n" : asksForHelp ? app_->help() : std::string();
    if (!answered.empty() && app_->get_option_no_throw(arguments.front()) != nullptr) {
        return {answer, answered}; // whatever follows
    }
    // What there is no place for is named first: it may be what is missing, mistyped.
    if (std::string surplus = faultOfSurplus(*app_); !surplus.empty()) {
        return {fault, std::move(surplus)};
    }
    return answered.empty() ? ParsedLine{fault, reason} : ParsedLine{answer, answered};
}
