#pragma once

#include "Command.h"

class PlanCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print what an update would do."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    HostOption host;
    FilterOptions filters;
    ForceOption force;
    DisableOption disabled;
    JsonOption json;
    ReportOption report;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override {
        return {&archive, &host, &filters, &force, &disabled, &json, &report};
    }
};
