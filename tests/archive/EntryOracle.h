#pragma once

#include "JsonModel.h"

#include <string>
#include <string_view>

/// What the rules for file entries make of an element of "files", worked out a second time and as plainly as possible.
struct JudgedEntry {
    enum class Outcome { accepted, skipped, refused };

    Outcome outcome = Outcome::accepted;
    /// The message that is printed; empty for an accepted entry.
    std::wstring message;
    /// Of an accepted entry: "targetPath" occurs in it.
    bool hasTargetPath = false;
};

/// Judges element `index` of "files". Version texts in it are among the following ones, or no versions.
[[nodiscard]] JudgedEntry judgeEntry(const JsonModel& entry, unsigned index);

/// Version texts that are not zero, as they print.
inline constexpr std::string_view goodVersions[] = {"1.0", "23.2b3.1", "0.0.0.4", "7.8.9"};
