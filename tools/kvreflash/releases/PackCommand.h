#pragma once

#include "Command.h"

#include <string>

/// A sealed archive, and the package to be made of it.
struct PackedFolder final : OptionGroup {
    std::string folder;
    std::string package;

    void addTo(CommandSyntax& syntax) override;
};

class PackCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Pack a sealed archive into one file."; }
    [[nodiscard]] ExitCode run() override;

    PackedFolder archive;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive}; }
};
