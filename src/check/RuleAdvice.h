#pragma once

#include "ArchiveFindings.h"
#include "JsonOutline.h"

#include <string>

/// Where a broken rule shows, and what to do.
struct KvTRuleAdvice {
    /// The value concerned; if it is missing, the one that it should be in.
    KvCOutlineValue place;
    std::string hint;
};

/// What to say of `finding` in the document `root`.
[[nodiscard]] KvTRuleAdvice adviceOn(const KvTArchiveFinding& finding, KvCOutlineValue root);
