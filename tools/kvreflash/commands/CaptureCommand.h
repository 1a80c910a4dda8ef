#pragma once

#include "Command.h"

#include <string>

struct FolderArgument final : OptionGroup {
    /// The folder to be made.
    std::string folder;

    void addTo(CommandSyntax& syntax) override;
};

class CaptureCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Write a target's inventory as an emulated target, to rehearse with.";
    }
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    FolderArgument argument;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&host, &argument}; }
};
