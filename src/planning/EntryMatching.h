#pragma once

#include "EntrySelection.h"
#include "KvCString.h"
#include "KvTArchiveFile.h"
#include "KvTPlan.h"
#include "KvTUpdateElement.h"

#include <array>

/// True if one of the allowed values equals the element's: both none, the same text byte for byte, or the same number.
[[nodiscard]] bool matchesValue(const KvCAllowedValues& allowed, const KvTComparedValue& elementValue);

/// A property in which an element must have one of the values that a selection allows.
struct KvTComparedProperty {
    KvNReflasher::KvEMatchTest test;
    KvCAllowedValues KvTEntrySelection::*allowed;
    KvTComparedValue (*valueOf)(const KvTUpdateElement& element);
};

/// All of them: board variant, board ID, hardware and software compatibility.
extern const std::array<KvTComparedProperty, 4> comparedProperties;

/// The selection that decides alone whether `file` is meant for `element`: the one for its board type; null if there is
/// none.
[[nodiscard]] const KvTEntrySelection* decidingSelection(const KvTUpdateElement& element, const KvTArchiveFile& file);

/// The first test that the selection fails for `element`. An element at anyLocation takes any target path.
[[nodiscard]] KvNReflasher::KvEMatchTest firstFailingTest(const KvTUpdateElement& element,
                                                          const KvTEntrySelection& selection);

/// True if the selection passes all tests for `element`.
[[nodiscard]] bool isMeantFor(const KvTEntrySelection& selection, const KvTUpdateElement& element);

/// True if `file` is meant for `element`: its deciding selection passes all tests. `targetPath` receives the path of a
/// file-system entry.
[[nodiscard]] bool matchesFile(const KvTUpdateElement& element, const KvTArchiveFile& file, KvCString& targetPath);
