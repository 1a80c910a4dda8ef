#pragma once

#include "Command.h"

class ContentCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print the table of an archive's entries."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive, &json}; }
};
