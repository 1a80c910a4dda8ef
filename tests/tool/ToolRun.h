#pragma once

#include "Command.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// What became of a run of the tool inside this process.
struct ToolRun {
    int exitCode = -1;
    /// Standard output and standard error.
    std::string output;
    std::string errors;
};

/// Runs the whole tool with these arguments. A test failure when something of the target is still held afterwards.
[[nodiscard]] ToolRun runCaptured(const std::vector<std::string>& arguments);

/// What the tool made of its arguments: the command with its options, or what it said and the exit code.
struct ReadArguments {
    std::unique_ptr<Command> command;
    ToolRun answer;
};

/// Only reads the arguments.
[[nodiscard]] ReadArguments readCaptured(const std::vector<std::string>& arguments);

/// The command that the arguments name, with its options. A test failure if it is not of this kind, or says anything.
template <typename Kind = Command>
[[nodiscard]] std::unique_ptr<Kind> commandOf(const std::vector<std::string>& arguments) {
    ReadArguments read = readCaptured(arguments);
    EXPECT_EQ(read.answer.output + read.answer.errors, "");
    auto* const command = dynamic_cast<Kind*>(read.command.get());
    if (command == nullptr) {
        throw std::runtime_error("no such command");
    }
    static_cast<void>(read.command.release());
    return std::unique_ptr<Kind>(command);
}
