#pragma once

#include "KvTSettings.h"

#include <string>

/// The settings file, and a table of the values that are in force with where they come from.
[[nodiscard]] std::string settingsText(const KvNReflasher::KvTSettings& settings);
