#pragma once

#include "Command.h"

class VersionCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print the version of the library."; }
    [[nodiscard]] ExitCode run() override;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {}; }
};
