#pragma once

#include "Command.h"
#include "UpdateOptions.h"

class UpdateCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Update a target from an archive."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive{true};
    HostOption host;
    FilterOptions filters;
    ForceOption force;
    UnlistedFilesOption unlistedFiles;
    ProgressOptions progress;
    DisableOption disabled;
    UpdateSteps steps;
    PlanFileOption plan{steps};
    EventsOption events;
    JournalOption journal;
    ReportOption report;
    JsonOption json;

private:
    [[nodiscard]] ExitCode runPlan(const std::string& file);
    [[nodiscard]] std::vector<OptionGroup*> groups() override {
        return {&archive, &host,  &filters, &force,   &unlistedFiles, &progress, &disabled,
                &plan,    &steps, &events,  &journal, &report,        &json};
    }
};
