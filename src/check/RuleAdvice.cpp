#include "ReaderFindings.h"

#include "EntryProperties.h"
#include "FindingTable.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::string_view number = "a number without sign, fraction and exponent";
constexpr std::string_view numberOrNumbers = "a number without sign, fraction and exponent, or an array of such";

struct PropertyText {
    KvEProperty property;
    std::string_view expected;
    /// The same for an item, if the property may be an array.
    std::string_view expectedItem = "another value";
};

/// What a property has to be.
constexpr std::array propertyTexts = {PropertyText{KvEProperty::mode, R"("standard" or "upgrade")"},
                                      PropertyText{KvEProperty::checksumCrc32, number},
                                      PropertyText{KvEProperty::version, "a text, or null for a file without version"},
                                      PropertyText{KvEProperty::swCompatibilityId, numberOrNumbers, number},
                                      PropertyText{KvEProperty::hwCompatibilityId, numberOrNumbers, number},
                                      PropertyText{KvEProperty::targetPath, "a text"},
                                      PropertyText{KvEProperty::id, number},
                                      PropertyText{KvEProperty::boardId, numberOrNumbers, number},
                                      PropertyText{KvEProperty::boardVariant,
                                                   "a text, null for boards without variant, or an array of such",
                                                   "a text, or null for boards without variant"},
                                      PropertyText{KvEProperty::boardType, "a text, or an array of texts", "a text"}};

std::string_view expectedOf(const KvTArchiveFinding& finding) {
    const auto* const found = std::find_if(propertyTexts.begin(), propertyTexts.end(),
                                           [&](const PropertyText& text) { return text.property == finding.property; });
    if (found == propertyTexts.end()) {
        return "another value";
    }
    return finding.item == noItem ? found->expected : found->expectedItem;
}

/// `value`, or `otherwise` when there is none.
KvCOutlineValue existing(KvCOutlineValue value, KvCOutlineValue otherwise) {
    return value.isValid() ? value : otherwise;
}

/// The entry or the element of its "boards" that a finding is about.
KvCOutlineValue entryOf(const KvTArchiveFinding& finding, KvCOutlineValue root) {
    const KvCOutlineValue entry = existing(root.find("files").at(finding.entry), root);
    if (finding.board == noBoard) {
        return entry;
    }
    return existing(entry.find(propertyKey(KvEProperty::boards)).at(static_cast<std::size_t>(finding.board)), entry);
}

KvCOutlineValue subjectOf(const KvTArchiveFinding& finding, KvEFindingSubject subject, KvCOutlineValue root) {
    switch (subject) {
    case KvEFindingSubject::root:
        break;
    case KvEFindingSubject::info:
        return existing(root.find("info"), root);
    case KvEFindingSubject::entry:
        return entryOf(finding, root);
    }
    return root;
}

/// The first of `keys` that the object has, or else the object.
KvCOutlineValue memberOf(KvCOutlineValue object, std::string_view keys) {
    while (!keys.empty()) {
        const std::string_view key = keys.substr(0, keys.find(' '));
        if (const KvCOutlineValue member = object.find(key); member.isValid()) {
            return member;
        }
        keys.remove_prefix(std::min(keys.size(), key.size() + 1));
    }
    return object;
}

/// Which mandatory property of `entry` is missing or wrong.
void adviseOnMandatory(KvCOutlineValue entry, KvTRuleAdvice& advice) {
    const KvCOutlineValue boards = entry.find("boards");
    if (const KvCOutlineValue name = entry.find("name"); name.kind() != KvEJsonKind::text) {
        advice.place = existing(name, entry);
        advice.hint = R"(Give "name" as a text: the name of the update file.)";
    } else if (const KvCOutlineValue sequence = entry.find("sequence"); !sequence.unsignedNumber()) {
        advice.place = existing(sequence, entry);
        advice.hint = R"(Give "sequence" as a number without sign and fraction: lower ones are updated first.)";
    } else if (!boards.isValid()) {
        advice.hint = R"(Give either "boardType" or "boards".)";
    } else if (entry.find("boardType").isValid()) {
        advice.place = boards;
        advice.hint = R"(Give either "boardType" or "boards", not both.)";
    } else {
        advice.place = boards;
        advice.hint = R"(Make "boards" an array with at least one element.)";
    }
}

} // namespace

KvTRuleAdvice adviceOn(const KvTArchiveFinding& finding, KvCOutlineValue root) {
    const KvTFindingRow& row = findingRow(finding.rule);
    const KvCOutlineValue subject = subjectOf(finding, row.subject, root);
    KvTRuleAdvice advice{.place = memberOf(subject, row.keys), .hint = hintOf(row)};
    if (finding.rule == KvEArchiveRule::mandatoryProperties) {
        adviseOnMandatory(subject, advice);
    } else if (finding.rule == KvEArchiveRule::propertyType || finding.rule == KvEArchiveRule::propertyElements) {
        const KvCOutlineValue value = memberOf(subject, propertyKey(finding.property));
        advice.place = existing(finding.item == noItem ? value : value.at(finding.item), value);
        advice.hint = hintOf(row, expectedOf(finding));
    }
    return advice;
}
