#pragma once

#include "ArgumentParser.h"
#include "Settings.h"
#include "ToolSession.h"

#include <optional>
#include <string>
#include <vector>

// The options that several commands have: one record for each group. Texts are UTF-8.

/// Options that belong together, as they were given.
class OptionGroup {
public:
    OptionGroup() = default;
    OptionGroup(const OptionGroup&) = delete;
    OptionGroup& operator=(const OptionGroup&) = delete;
    virtual ~OptionGroup() = default;

    /// Adds the options to a command; their values are written here.
    virtual void addTo(CommandSyntax& syntax) = 0;
    /// Settings may state what the command line leaves open.
    [[nodiscard]] virtual bool usesSettings() const { return false; }
    /// Puts what was given into the settings, and takes from them what was not.
    virtual void takeSettings(Settings& /*settings*/) {}
    /// Writes what they ask of a session into the request.
    virtual void applyTo(SessionRequest& /*request*/) const {}
};

/// The conditions on which an archive is accepted.
struct TrustOptions final : OptionGroup {
    /// As it was given; when the settings were taken, as it is in force. Nothing: there is none.
    std::optional<std::string> folder;
    bool acceptsUnsealed = false;

    void addTo(CommandSyntax& syntax) override;
    [[nodiscard]] bool usesSettings() const override { return true; }
    void takeSettings(Settings& settings) override;
    void applyTo(SessionRequest& request) const override;
    [[nodiscard]] KvNReflasher::KvTReleaseOptions options() const;
};

struct ArchiveOptions final : OptionGroup {
    /// `isOptional`: the command may know the archive from elsewhere.
    explicit ArchiveOptions(bool mayBeLeftOut = false) : isOptional(mayBeLeftOut) {}

    const bool isOptional;
    bool isGiven = false;
    std::string folder;
    std::string description = "archive.json";
    TrustOptions trust;

    void addTo(CommandSyntax& syntax) override;
    [[nodiscard]] bool usesSettings() const override { return true; }
    void takeSettings(Settings& settings) override { trust.takeSettings(settings); }
    void applyTo(SessionRequest& request) const override;
};

struct HostOption final : OptionGroup {
    /// IPv4 address or name of the target.
    std::string host;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

struct FilterOptions final : OptionGroup {
    std::string boardTypes;
    std::string serialNumbers;
    std::string elementNames;
    bool looksAtConfiguration = false;
    bool skipsCustom = false;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

struct DisableOption final : OptionGroup {
    /// Numbers, addresses, target paths or display names of the elements to be left out of the update.
    std::vector<std::string> elements;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

struct ForceOption final : OptionGroup {
    bool isForced = false;
    bool leavesOutDowngrades = false;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

/// Which files that the inventory does not list are written.
struct UnlistedFilesOption final : OptionGroup {
    KvNReflasher::KvEUnlistedFiles which = KvNReflasher::KvEUnlistedFiles::always;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

/// Where runs are written down.
struct JournalOption final : OptionGroup {
    /// As it was given; when the settings were taken, as it is in force. Nothing: nowhere.
    std::optional<std::string> folder;
    /// Somebody has asked for this folder: a run that cannot be written there does not begin.
    bool isAskedFor = false;

    void addTo(CommandSyntax& syntax) override;
    [[nodiscard]] bool usesSettings() const override { return true; }
    void takeSettings(Settings& settings) override;
    void applyTo(SessionRequest& request) const override;

private:
    bool isGiven_ = false;
};

struct JsonOption final : OptionGroup {
    bool isWanted = false;

    void addTo(CommandSyntax& syntax) override;
    /// Messages go to standard error.
    void applyTo(SessionRequest& request) const override;
};

struct ReportOption final : OptionGroup {
    std::optional<std::string> file;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};

/// The options of every command.
struct CommonOptions final : OptionGroup {
    bool isVerbose = false;
    bool isQuiet = false;
    bool ignoresSettings = false;
    /// Folders.
    std::vector<std::string> emulatedTargets;

    void addTo(CommandSyntax& syntax) override;
    void applyTo(SessionRequest& request) const override;
};
