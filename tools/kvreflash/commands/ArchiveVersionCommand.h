#pragma once

#include "Command.h"

class ArchiveVersionCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print the version of a firmware archive."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive}; }
};
