#pragma once

#include "Command.h"

#include <string>

/// The archive that is released.
struct ReleasedFolder final : OptionGroup {
    std::string folder;
    std::string description = "archive.json";

    void addTo(CommandSyntax& syntax) override;
};

class SealCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Write the manifest of an archive, which is then signed.";
    }
    [[nodiscard]] ExitCode run() override;

    ReleasedFolder archive;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive}; }
};
