#pragma once

#include "Command.h"

class ElementsCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print the table of a target's update elements."; }
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    FilterOptions filters;
    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&host, &filters, &json}; }
};
