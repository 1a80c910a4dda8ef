#pragma once

#include "Command.h"

class VerifyCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Update nothing and state whether the target is what the archive says.";
    }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    HostOption host;
    FilterOptions filters;
    JsonOption json;
    ReportOption report;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive, &host, &filters, &json, &report}; }
};
