#pragma once

#include "Command.h"

class ConnectCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Check that a target can be reached and scanned."; }
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    FilterOptions filters;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&host, &filters}; }
};
