#pragma once

#include "Command.h"
#include "RunOptions.h"
#include "UpdateOptions.h"

#include <optional>

struct RedoOption final : OptionGroup {
    bool redoes = false;

    void addTo(CommandSyntax& syntax) override;
};

/// Goes on with an update that broke off or was stopped.
class ResumeCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Go on with an update that broke off or was stopped."; }
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    TrustOptions trust;
    RedoOption redo;
    ProgressOptions progress;
    UpdateSteps steps;
    EventsOption events;
    JournalOption journal;
    ReportOption report;
    JsonOption json;
    RunArgument argument;

private:
    [[nodiscard]] std::optional<KvNReflasher::KvTRunRecord> chooseRun(KvNReflasher::KvTVerdict& verdict) const;
    [[nodiscard]] std::vector<OptionGroup*> groups() override {
        return {&host, &trust, &redo, &progress, &steps, &events, &journal, &report, &json, &argument};
    }
};
