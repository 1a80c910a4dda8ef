#pragma once

#include <cstdint>
#include <optional>
#include <string>

// What is in force on a machine unless a command line says otherwise. Texts are UTF-8.

namespace KvNReflasher {

/// Where a value comes from.
enum class KvESettingSource : std::uint8_t {
    commandLine,
    settingsFile,
    /// Neither states it: it is the default.
    builtIn
};

/// A value that is in force.
template <typename Value>
struct KvTSetting {
    /// What counts.
    Value value{};
    /// Where it comes from.
    KvESettingSource source = KvESettingSource::builtIn;
};

/// Whether the settings file of a machine counts.
enum class KvESettingsFile : std::uint8_t {
    read,
    /// There is none.
    absent,
    /// It was to be ignored; whether there is one was not asked.
    ignored
};

/// The settings of a machine.
struct KvTSettings {
    /// Path of the settings file.
    std::string file;
    /// Whether it counts.
    KvESettingsFile fileState = KvESettingsFile::absent;
    /// An update needs a saved plan.
    KvTSetting<bool> requirePlan;
    /// The trust folder; nothing: archives are accepted whoever has made them.
    KvTSetting<std::optional<std::string>> trust;
    /// The folder of journals; nothing: no journal is kept.
    KvTSetting<std::optional<std::string>> journal;
};

} // namespace KvNReflasher
