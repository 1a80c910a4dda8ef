#pragma once

#include "Command.h"

#include <optional>
#include <string>

/// Files of saved plans.
struct PlanFilesOptions final : OptionGroup {
    std::optional<std::string> saved;
    std::optional<std::string> shown;

    void addTo(CommandSyntax& syntax) override;
};

class PlanCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Print what an update would do, save it, or show it."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive{true};
    HostOption host;
    FilterOptions filters;
    ForceOption force;
    UnlistedFilesOption unlistedFiles;
    DisableOption disabled;
    PlanFilesOptions files;
    JournalOption journal;
    JsonOption json;
    ReportOption report;

private:
    [[nodiscard]] ExitCode showSaved();
    [[nodiscard]] std::vector<OptionGroup*> groups() override {
        return {&archive, &host, &filters, &force, &unlistedFiles, &disabled, &files, &journal, &json, &report};
    }
};
