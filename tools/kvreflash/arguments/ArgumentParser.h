#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

/// Refuses the command line with this reason, in one line without end. Only for functions that take or check values.
[[noreturn]] void refuse(const std::string& reason);

/// How often an option or argument may be given.
enum class Occurs : std::uint8_t { atMostOnce, once, anyNumber };

/// The options and arguments of one command, as they are added to it.
///
/// The texts are those of the help; names are such as "-a,--archive". What values are written to must stay where it is
/// until the command line is parsed. Values are taken when all arguments have been read, in the order in which their
/// options were added; switches are set by then.
class CommandSyntax {
public:
    /// Takes the value of an option; may refuse it.
    using Take = std::function<void(const std::string& value)>;

    explicit CommandSyntax(CLI::App& command);
    CommandSyntax(const CommandSyntax&) = delete;
    CommandSyntax& operator=(const CommandSyntax&) = delete;
    ~CommandSyntax() = default;

    /// Adds an option without a value, which may be repeated.
    void addSwitch(const char* names, bool& isGiven, const char* help);
    /// Adds an option with exactly one value.
    void addOption(const char* names, const char* valueName, const char* help, Take take,
                   Occurs occurs = Occurs::atMostOnce);
    /// Adds an argument that stands for itself.
    void addArgument(const char* name, const char* help, Take take, Occurs occurs = Occurs::atMostOnce);
    /// True if the command line has this option, such as "--archive". Only for functions that take or check values.
    [[nodiscard]] bool isGiven(const char* name) const;
    /// Adds a check that is made when all values have been taken; it may refuse.
    void addCheck(std::function<void()> check) { checks_.push_back(std::move(check)); }

private:
    void add(const std::string& names, const char* valueName, const char* help, Take take, Occurs occurs);
    void finish() const;

    CLI::App& command_;
    std::vector<std::function<void()>> values_;
    std::vector<std::function<void()>> checks_;
};

/// Keeps a value as it is.
template <typename Kept>
[[nodiscard]] CommandSyntax::Take keptIn(Kept& kept) {
    return [&kept](const std::string& value) { kept = value; };
}

/// Keeps every value of an option that may be repeated.
[[nodiscard]] CommandSyntax::Take addedTo(std::vector<std::string>& values);

/// Returns the number that `text` is in decimal; refuses anything else as a value of `option`.
[[nodiscard]] std::uint32_t decimalNumber(const char* option, const std::string& text);

/// A word that an option takes, and what it means.
template <typename Meaning>
using Word = std::pair<const char*, Meaning>;

/// Returns which one of `words` the text is; refuses any other as a value of `option`.
[[nodiscard]] std::size_t indexOfWord(const char* option, const std::string& text,
                                      const std::vector<const char*>& words);

/// Returns the meaning of a word; refuses an unknown one as a value of `option`.
template <typename Meaning>
[[nodiscard]] Meaning meaningOf(const char* option, const std::string& text,
                                std::initializer_list<Word<Meaning>> words) {
    std::vector<const char*> known;
    for (const auto& [word, meaning] : words) {
        known.push_back(word);
    }
    return words.begin()[indexOfWord(option, text, known)].second;
}

/// The meaning of a command line.
struct ParsedLine {
    enum class Kind : std::uint8_t {
        /// `text` is the name of the command to be run; its options are set.
        command,
        /// `text` is the help or the version that was asked for.
        answer,
        /// `text` is the reason to refuse the line.
        fault
    };
    Kind kind = Kind::fault;
    std::string text;
};

/// Reads command lines of the form COMMAND [OPTIONS].
class ArgumentParser {
public:
    /// `footer`: what the help of the tool and of each command ends with. `version`: what --version answers.
    ArgumentParser(const char* tool, const char* summary, const char* footer, const std::string& version);
    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;
    ~ArgumentParser();

    /// Adds a command; the result lives as long as the parser.
    [[nodiscard]] CommandSyntax& addCommand(const char* name, const char* summary);
    /// Reads arguments (UTF-8, without the program's name).
    [[nodiscard]] ParsedLine parse(const std::vector<std::string>& arguments);

private:
    std::unique_ptr<CLI::App> app_;
    std::vector<std::unique_ptr<CommandSyntax>> commands_;
};
