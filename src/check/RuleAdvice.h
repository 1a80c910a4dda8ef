#pragma once

#include "ArchiveFindings.h"
#include "JsonOutline.h"

#include <string>
#include <string_view>

/// What there is to say of a broken rule besides the reader's message.
struct KvTRuleAdvice {
    std::string_view code;
    /// The value concerned; where it is missing, the one that it should be in.
    OutlineValue place;
    std::string hint;
};

/// The code of a rule's findings.
[[nodiscard]] std::string_view codeOf(KvEArchiveRule rule);

/// What to say of `finding` in the document `root`.
[[nodiscard]] KvTRuleAdvice adviceOn(const KvTArchiveFinding& finding, OutlineValue root);
