#pragma once

#include "ArgumentParser.h"
#include "ExitCodes.h"
#include "Settings.h"
#include "SharedOptions.h"

#include <string>
#include <vector>

/// A command of the tool. Its options are its members: records that arguments are written to.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// What it does, in one sentence.
    [[nodiscard]] virtual const char* summary() const = 0;
    /// False if the platform lacks what it needs.
    [[nodiscard]] virtual bool isAvailable() const { return true; }
    /// Adds its options to `syntax`, which writes to them.
    virtual void addOptions(CommandSyntax& syntax);
    /// Takes in the settings of this machine if it uses any. Returns why they cannot be used, in one sentence; empty:
    /// they can. To be called before it is run.
    [[nodiscard]] std::string takeSettings();
    /// Does what the options ask for. Says why if that fails, and returns the exit code.
    [[nodiscard]] virtual ExitCode run() = 0;

    /// What the options ask of a session in this mode.
    [[nodiscard]] SessionRequest request(KvNReflasher::KvEMode mode);

    /// Those of every command.
    CommonOptions common;
    /// What is in force for it, the command line included. Says nothing if it uses no settings.
    Settings settings;

private:
    /// By default a command uses settings if any of its options does.
    [[nodiscard]] virtual bool usesSettings();
    /// Its other options, in the order of the help.
    [[nodiscard]] virtual std::vector<OptionGroup*> groups() = 0;
};
