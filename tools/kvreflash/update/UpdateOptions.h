#pragma once

#include "SharedOptions.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/// How the progress of an update is shown.
enum class ProgressStyle : std::uint8_t {
    /// As a line on a terminal, plain elsewhere.
    automatic,
    /// The library's line, written over and over.
    line,
    /// A line for every tenth.
    plain,
    none
};

struct ProgressOptions final : OptionGroup {
    ProgressStyle progress = ProgressStyle::automatic;
    bool isOff = false;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

/// The steps around an update.
struct UpdateSteps final : OptionGroup {
    bool reboots = false;
    bool hasPreflight = false;
    /// What `check` has to say of the archive refuses the update.
    bool isStrict = false;
    bool verifies = false;
    /// How long a rebooted target has to show the update.
    std::uint32_t waitSeconds = 300;
    /// For how long elements may show nothing new; 0: as long as it takes.
    std::uint32_t stallLimit = 0;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

struct EventsOption final : OptionGroup {
    std::optional<std::string> file;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

/// A saved plan that decides what the update does.
struct PlanFileOption final : OptionGroup {
    /// `steps`: an update that a plan decides verifies what it has done.
    explicit PlanFileOption(UpdateSteps& steps) : steps_(steps) {}

    std::optional<std::string> file;

    void addTo(CommandSyntax& syntax) override;

private:
    UpdateSteps& steps_;
};
