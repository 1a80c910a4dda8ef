#pragma once

#include "Command.h"

class DumpCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override {
        return "Print an archive's description as it is understood, with the checksums of its update files.";
    }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive}; }
};
