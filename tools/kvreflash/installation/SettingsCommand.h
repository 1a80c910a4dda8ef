#pragma once

#include "Command.h"

#include <vector>

class SettingsCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Show which settings are in force, and from where."; }
    [[nodiscard]] ExitCode run() override;

    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&json}; }
    [[nodiscard]] bool usesSettings() override { return true; }
};
