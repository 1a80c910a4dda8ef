#pragma once

#include "Command.h"

#include <string>

/// The folder with the update files.
struct DraftedFolder final : OptionGroup {
    std::string folder;

    void addTo(CommandSyntax& syntax) override;
};

class NewCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Draft the description of an archive from its update files.";
    }
    [[nodiscard]] ExitCode run() override;

    DraftedFolder archive;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive}; }
};
