#pragma once

#include "Command.h"
#include "KvTComparison.h"

#include <optional>
#include <string>
#include <vector>

/// The two archives.
struct ComparedArchives final : OptionGroup {
    std::string before;
    std::string after;
    std::string description = "archive.json";
    TrustOptions trust;

    void addTo(CommandSyntax& syntax) override;
    [[nodiscard]] bool usesSettings() const override { return true; }
    void takeSettings(Settings& settings) override { trust.takeSettings(settings); }
};

class CompareCommand final : public Command {
public:
    [[nodiscard]] const char* summary() const override { return "Show what a release changes."; }
    [[nodiscard]] ExitCode run() override;

    ComparedArchives archives;
    HostOption host;
    FilterOptions filters;
    JsonOption json;

private:
    [[nodiscard]] std::vector<OptionGroup*> groups() override { return {&archives, &host, &filters, &json}; }
    [[nodiscard]] KvNReflasher::KvTVerdict verdictOf(const KvNReflasher::KvTComparison& comparison) const;
    [[nodiscard]] std::optional<KvNReflasher::KvTPlan>
    planWith(const std::string& archive, std::vector<std::string> emulatedTargets, KvNReflasher::KvTVerdict& verdict);
};
