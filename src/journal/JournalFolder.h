#pragma once

#include "KvRuns.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

// The files of a journal: one for each run, called by its id.

/// The largest file of a run that is read, in bytes.
inline constexpr std::uint64_t largestRunFile = std::uint64_t{256} << 20U;

/// A new id: the time and a random number, so that ids sort by time.
[[nodiscard]] std::string newRunId(std::chrono::system_clock::time_point now);

/// The moment as RFC 3339 in UTC with milliseconds.
[[nodiscard]] std::string preciseTextOf(std::chrono::system_clock::time_point moment);

/// Path of the file of a run.
[[nodiscard]] std::wstring runFilePath(const std::wstring& folder, const std::string& id);

/// True if `id` can be one: it leads to no other folder.
[[nodiscard]] bool isRunId(std::string_view id);

/// The ids of the runs that have a file in the folder, from the oldest to the newest.
[[nodiscard]] std::vector<std::string> runIdsIn(const std::wstring& folder);

/// Removes runs that have come to their end, or that others have gone on with, if they are older than 400 days or if
/// there are 1,000 newer ones.
void removeOldRuns(const std::wstring& folder, std::chrono::system_clock::time_point now);
