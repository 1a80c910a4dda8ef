#pragma once

#include "Command.h"
#include "RunOptions.h"

/// Lists runs, shows one, or waits for one.
class HistoryCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "List the runs of the journal, or show one of them."; }
    void addOptions(CommandSyntax& syntax) override;
    [[nodiscard]] ExitCode run() override;

    HostOption host;
    JournalOption journal;
    ReportOption report;
    JsonOption json;
    RunArgument argument;
    bool waits = false;

private:
    [[nodiscard]] ExitCode showList();
    [[nodiscard]] ExitCode showRun(const std::string& id);
    [[nodiscard]] ExitCode waitForRun();
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&host, &journal, &report, &json, &argument}; }
};
