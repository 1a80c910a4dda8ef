#pragma once

#include <string>
#include <string_view>
#include <vector>

// The tool's commands and options as its users know them, written down a second time.

/// One of the tool's options.
struct CommandOption {
    std::string name;
    /// The one-letter name; empty when there is none.
    std::string letter;
    /// A value that it takes; empty when it takes none.
    std::string value;
    bool repeatable = false;
    std::vector<std::string_view> commands;
    /// Options without which it is refused.
    std::vector<std::string> needs{};

    [[nodiscard]] bool belongsTo(std::string_view command) const;
};

[[nodiscard]] const std::vector<std::string>& commandNames();
[[nodiscard]] const std::vector<CommandOption>& commandOptions();

/// The command with what it requires, and no more.
[[nodiscard]] std::vector<std::string> smallestCommandLine(const std::string& command);
