#include "NearestWord.h"
#include "Warnings.h"

#include <string_view>

namespace {

/// A text such as "<board type>", which drafts of descriptions have in place of what only a person knows.
bool isGap(KvCOutlineValue value) {
    const std::string_view text = value.text();
    return value.kind() == KvEJsonKind::text && text.size() > 2 && text.front() == '<' && text.back() == '>';
}

} // namespace

void warnOfGaps(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    checked.outline.forEachValue([&findings](KvCOutlineValue value) {
        if (isGap(value) && value.key() != "comment") {
            findings.warn(KvECheckRule::gap, value, inQuotes(value.text()) + " is still to be filled in.");
        }
    });
}
