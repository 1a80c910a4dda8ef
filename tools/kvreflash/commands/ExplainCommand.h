#pragma once

#include "Command.h"

#include <string>

struct ElementArgument final : OptionGroup {
    /// Number or name of the element to be explained; empty: all.
    std::string element;

    void addTo(CommandSyntax& syntax) override;
};

class ExplainCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Tell why each element is or is not updated."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    HostOption host;
    FilterOptions filters;
    ForceOption force;
    JsonOption json;
    ElementArgument argument;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override {
        return {&archive, &host, &filters, &force, &json, &argument};
    }
};
