#pragma once

#include "Explanation.h"
#include "HiddenElements.h"

// The words for reasons: stable codes for programs, sentences for people.

/// "boardId", ...; "none" when all tests passed.
[[nodiscard]] const char* codeOf(KvEMatchTest test);
/// "version-differs", ...
[[nodiscard]] const char* codeOf(KvEDecision decision);
/// "up-to-date", ...
[[nodiscard]] const char* codeOf(KvEDisabledBy reason);
/// "board-type-filter", ...
[[nodiscard]] const char* codeOf(KvEHiddenBy reason);

/// What follows from the decision, such as "update: the version differs".
[[nodiscard]] const char* sentenceOf(KvEDecision decision);
[[nodiscard]] const char* sentenceOf(KvEDisabledBy reason);
[[nodiscard]] const char* sentenceOf(KvEHiddenBy reason);
