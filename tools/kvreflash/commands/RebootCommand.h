#pragma once

#include "Command.h"

class RebootCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Connect to a target and reboot it."; }
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    FilterOptions filters;
    JournalOption journal;
    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&host, &filters, &journal, &json}; }
};
