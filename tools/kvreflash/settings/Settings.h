#pragma once

#include "KvTSettings.h"

#include <string>

/// What is in force, each value with where it comes from.
using Settings = KvNReflasher::KvTSettings;

/// What is in force on this machine unless a command line says otherwise: what its settings file states, then the
/// defaults. Returns why the file cannot be used, in one sentence; empty: it was read, or it is known that there is
/// none. The settings must not be used after a fault.
[[nodiscard]] std::string readSettings(Settings& settings);

/// What is in force without the settings file and the trust folder of the system.
[[nodiscard]] Settings settingsOfTheToolAlone();

/// Takes in the text of a settings file. Returns why it is not understood; empty: it is.
[[nodiscard]] std::string takeSettingsText(const std::string& text, Settings& settings);
