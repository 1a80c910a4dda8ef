#pragma once

#include "Command.h"
#include "KvIArchive.h"

#include <string>

/// How the findings of a check are judged and written.
struct FindingOptions final : OptionGroup {
    /// Warnings refuse an archive, too.
    bool isStrict = false;
    JsonOption json;

    void addTo(CommandSyntax& syntax) override;
};

class CheckCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Find everything that is wrong with an archive."; }
    [[nodiscard]] ExitCode run() override;

    ArchiveOptions archive;
    FindingOptions findings;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archive, &findings}; }
    [[nodiscard]] ExitCode show(const std::vector<KvNReflasher::KvTFinding>& found, const std::string& file,
                                const KvNReflasher::KvTVerdict& verdict) const;
};
