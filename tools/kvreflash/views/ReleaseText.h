#pragma once

#include "KvTRelease.h"

#include <string>

/// Who vouches for an archive, as a part of a sentence: "sealed 2026-02-28T08:00:00Z and signed by ...". Empty if it is
/// not sealed and nobody has asked for that.
[[nodiscard]] std::string releaseText(const KvNReflasher::KvTRelease& release);
