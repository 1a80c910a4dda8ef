#pragma once

#include "Command.h"

class MatrixCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Print what an update would do to each of several emulated targets.";
    }
    [[nodiscard]] bool isAvailable() const override;
    void addOptions(CommandSyntax& syntax) override;
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive, &json}; }
};
