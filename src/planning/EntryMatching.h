#pragma once

#include "KvCString.h"
#include "KvNJson.h"
#include "KvTArchiveFile.h"
#include "KvTPlan.h"
#include "KvTUpdateElement.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

/// A property of an update element as the description's values are compared with it: absent, a text or a number.
using KvTElementValue = std::variant<std::monostate, std::string_view, std::uint32_t>;

/// True when a value of the description, or one item of it when it is an array, equals the element's: both null, the
/// same text byte for byte, or the same unsigned number.
[[nodiscard]] bool matchesValue(KvNJson::jsonView archiveValue, const KvTElementValue& elementValue);

/// A value that an element's is compared with; a look at nothing when the description does not give it.
struct KvTSelectedValue {
    KvNJson::jsonView value;
    /// It is the entry's own and not that of an element of its "boards"; such selections of an entry share it.
    bool inherited = false;
};

/// The values of an entry for one of its board types: those of an element of "boards", where that has them, else
/// those of the entry. Looks into the entry's description, which must stay as it is.
struct KvTEntrySelection {
    KvNJson::jsonView boardType;
    KvTSelectedValue boardVariant;
    KvTSelectedValue boardId;
    KvTSelectedValue hwCompatibilityId;
    KvTSelectedValue swCompatibilityId;
    bool hasTargetPath = false;
    std::optional<std::uint32_t> id;
    std::optional<std::string_view> targetPath;
};

/// The values of a selection that are compared with an element's, its board variant first.
inline constexpr std::array comparedValues = {&KvTEntrySelection::boardVariant, &KvTEntrySelection::boardId,
                                              &KvTEntrySelection::hwCompatibilityId,
                                              &KvTEntrySelection::swCompatibilityId};

/// The selections of an entry: one for each element of its "boards" in order, or the entry itself.
[[nodiscard]] std::vector<KvTEntrySelection> selectionsOf(const KvTArchiveFile& file);

/// The selection that decides alone whether an entry is meant for `element`: the first one of its board type; null when
/// there is none.
[[nodiscard]] const KvTEntrySelection* decidingSelection(const KvTUpdateElement& element,
                                                         const std::vector<KvTEntrySelection>& selections);

/// The first test that the selection fails for `element`. An element at anyLocation takes any target path.
[[nodiscard]] KvNReflasher::KvEMatchTest firstFailingTest(const KvTUpdateElement& element,
                                                          const KvTEntrySelection& selection);

/// True when `file` is meant for `element`: its deciding selection passes all tests. `targetPath` receives the path of
/// a file-system entry.
[[nodiscard]] bool matchesFile(const KvTUpdateElement& element, const KvTArchiveFile& file, KvCString& targetPath);
