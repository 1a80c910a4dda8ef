#include "RuleAdvice.h"

#include "EntryProperties.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

/// What a rule's findings are about.
enum class Subject : std::uint8_t { root, info, entry };

struct RuleText {
    KvEArchiveRule rule;
    std::string_view code;
    Subject subject;
    /// Keys that the finding may be about, separated by blanks: the first one that the subject has.
    std::string_view keys;
    std::string_view hint;
};

using enum KvEArchiveRule;

/// One for each rule, in their order.
constexpr std::array ruleTexts = {
    RuleText{descriptionFileOpens, "description-unreadable", Subject::root, "",
             "Check the folder given with --archive and the name given with --description."},
    RuleText{descriptionIsJson, "invalid-json", Subject::root, "", "Write one JSON document."},
    RuleText{infoIsObject, "info-missing", Subject::root, "info", R"(Give the archive an object "info".)"},
    RuleText{formatVersionIsString, "format-version-missing", Subject::info, "formatVersion",
             R"(Write "formatVersion": "1.0".)"},
    RuleText{formatVersionIsVersion, "format-version-invalid", Subject::info, "formatVersion",
             R"(Write "formatVersion": "1.0".)"},
    RuleText{formatVersionIsSupported, "format-version-unsupported", Subject::info, "formatVersion",
             "Formats 1.x are supported: use the update tool that belongs to the archive."},
    RuleText{archiveVersionIsString, "archive-version-missing", Subject::info, "archiveVersion",
             R"(Write the archive's version as a text, such as "23.2.1".)"},
    RuleText{
        archiveVersionIsVersion, "archive-version-invalid", Subject::info, "archiveVersion",
        R"(Write a version other than 0 such as "23.2.1", "23.2b3" or "23.2.1.4"; the first three numbers go up to )"
        "255, the others up to 65535."},
    RuleText{productNameIsString, "product-name-missing", Subject::info, "productName",
             "Write the product's name as a text."},
    RuleText{archiveVariantIsString, "archive-variant-invalid", Subject::info, "archiveVariant",
             R"(Write a text, or leave "archiveVariant" out.)"},
    RuleText{archiveNameIsString, "archive-name-missing", Subject::info, "archiveName",
             "Write the archive's name as a text."},
    RuleText{filesIsArray, "files-missing", Subject::root, "files", R"(Give the archive an array "files".)"},
    RuleText{entryIsObject, "entry-no-object", Subject::entry, "", "Make each element of \"files\" an object."},
    RuleText{featureLevelIsUnsigned, "feature-level-invalid", Subject::entry, "featureLevel",
             R"(Write a number without sign and fraction, or leave "featureLevel" out.)"},
    RuleText{featureLevelIsSupported, "entry-skipped", Subject::entry, "featureLevel",
             "Feature levels up to 2 are supported: use a newer update tool if the entry is needed."},
    RuleText{mandatoryProperties, "mandatory-property", Subject::entry, "", ""},
    RuleText{boardIsObjectWithType, "board-without-type", Subject::entry, "",
             R"(Make each element of "boards" an object with "boardType".)"},
    RuleText{propertyType, "property-type", Subject::entry, "", ""},
    RuleText{propertyElements, "property-elements", Subject::entry, "", ""},
    RuleText{
        versionIsVersion, "version-invalid", Subject::entry, "version",
        R"(Write a version other than 0 such as "23.2.1", "23.2b3" or "23.2.1.4"; the first three numbers go up to )"
        "255, the others up to 65535. A file without version has null."},
    RuleText{modeIsKnown, "mode-unknown", Subject::entry, "mode", R"(Write "standard" or "upgrade".)"},
    RuleText{boardHasNoEntryProperties, "entry-property-in-board", Subject::entry, "version checksumCrc32 mode",
             "Give it to the entry; boards whose files differ need entries of their own."},
    RuleText{idOrTargetPathNotBoth, "id-and-target-path", Subject::entry, "targetPath",
             R"(Keep "id" for an element that the target updates itself, or "targetPath" for a file of the target; in )"
             R"("boards", too.)"},
    RuleText{idOrTargetPath, "no-address", Subject::entry, "",
             R"(Give "id" or "targetPath" to the entry or to each element of its "boards".)"},
    RuleText{updateFileExists, "checksum-file-missing", Subject::entry, "name",
             R"(Put the file into the archive folder, or write its checksum as "checksumCrc32".)"},
    RuleText{updateFileHasChecksum, "checksum-unreadable", Subject::entry, "name",
             R"(The file has no header that is known: write its checksum as "checksumCrc32".)"}};

constexpr bool isInOrder() {
    for (std::size_t index = 0; index < ruleTexts.size(); ++index) {
        if (static_cast<std::size_t>(ruleTexts[index].rule) != index) {
            return false;
        }
    }
    return ruleTexts.back().rule == updateFileHasChecksum;
}
static_assert(isInOrder());

constexpr std::string_view number = "a number without sign, fraction and exponent";
constexpr std::string_view numberOrNumbers = "a number without sign, fraction and exponent, or an array of such";

struct PropertyText {
    KvEProperty property;
    std::string_view expected;
};

/// What a property has to be.
constexpr std::array propertyTexts = {
    PropertyText{KvEProperty::mode, R"("standard" or "upgrade")"},
    PropertyText{KvEProperty::checksumCrc32, number},
    PropertyText{KvEProperty::version, "a text, or null for a file without version"},
    PropertyText{KvEProperty::swCompatibilityId, numberOrNumbers},
    PropertyText{KvEProperty::hwCompatibilityId, numberOrNumbers},
    PropertyText{KvEProperty::targetPath, "a text"},
    PropertyText{KvEProperty::id, number},
    PropertyText{KvEProperty::boardId, numberOrNumbers},
    PropertyText{KvEProperty::boardVariant, "a text, null for boards without variant, or an array of such"},
    PropertyText{KvEProperty::boardType, "a text, or an array of texts"}};

const RuleText& ruleTextOf(KvEArchiveRule rule) {
    return ruleTexts[static_cast<std::size_t>(rule)];
}

std::string hintOnProperty(KvEProperty property) {
    const auto* const found = std::find_if(propertyTexts.begin(), propertyTexts.end(),
                                           [=](const PropertyText& text) { return text.property == property; });
    return std::string("Write ").append(found != propertyTexts.end() ? found->expected : "another value").append(".");
}

/// `value`, or `otherwise` when there is none.
OutlineValue existing(OutlineValue value, OutlineValue otherwise) {
    return value.isValid() ? value : otherwise;
}

/// The entry or the element of its "boards" that a finding is about.
OutlineValue entryOf(const KvTArchiveFinding& finding, OutlineValue root) {
    const OutlineValue entry = existing(root.find("files").at(finding.entry), root);
    if (finding.board == noBoard) {
        return entry;
    }
    return existing(entry.find(propertyKey(KvEProperty::boards)).at(static_cast<std::size_t>(finding.board)), entry);
}

OutlineValue subjectOf(const KvTArchiveFinding& finding, Subject subject, OutlineValue root) {
    switch (subject) {
    case Subject::root:
        break;
    case Subject::info:
        return existing(root.find("info"), root);
    case Subject::entry:
        return entryOf(finding, root);
    }
    return root;
}

/// The first of `keys` that the object has, or else the object.
OutlineValue memberOf(OutlineValue object, std::string_view keys) {
    while (!keys.empty()) {
        const std::string_view key = keys.substr(0, keys.find(' '));
        if (const OutlineValue member = object.find(key); member.isValid()) {
            return member;
        }
        keys.remove_prefix(std::min(keys.size(), key.size() + 1));
    }
    return object;
}

/// Which mandatory property of `entry` is missing or wrong.
void adviseOnMandatory(OutlineValue entry, KvTRuleAdvice& advice) {
    const OutlineValue boards = entry.find("boards");
    if (const OutlineValue name = entry.find("name"); name.kind() != KvEJsonKind::text) {
        advice.place = existing(name, entry);
        advice.hint = R"(Give "name" as a text: the name of the update file.)";
    } else if (const OutlineValue sequence = entry.find("sequence"); !sequence.unsignedNumber()) {
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

std::string_view codeOf(KvEArchiveRule rule) {
    return ruleTextOf(rule).code;
}

KvTRuleAdvice adviceOn(const KvTArchiveFinding& finding, OutlineValue root) {
    const RuleText& text = ruleTextOf(finding.rule);
    const OutlineValue subject = subjectOf(finding, text.subject, root);
    KvTRuleAdvice advice{.code = text.code, .place = memberOf(subject, text.keys), .hint = std::string(text.hint)};
    if (finding.rule == mandatoryProperties) {
        adviseOnMandatory(subject, advice);
    } else if (finding.rule == propertyType || finding.rule == propertyElements) {
        advice.place = memberOf(subject, propertyKey(finding.property));
        advice.hint = hintOnProperty(finding.property);
    }
    return advice;
}
