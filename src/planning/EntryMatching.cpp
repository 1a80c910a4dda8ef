#include "EntryMatching.h"

#include "EntryProperties.h"

#include <algorithm>

using KvNReflasher::KvEMatchTest;

namespace {

using KvNJson::jsonView;

bool matchesScalar(jsonView archiveValue, const KvTElementValue& elementValue) {
    if (std::holds_alternative<std::monostate>(elementValue)) {
        return archiveValue.is_null();
    }
    if (const auto* text = std::get_if<std::string_view>(&elementValue)) {
        return archiveValue.is_string() && archiveValue.get_string() == *text;
    }
    return archiveValue.is_number_unsigned() && archiveValue.get_unsigned() == std::get<std::uint32_t>(elementValue);
}

/// As matchesValue(); an absent value of the description stands for `absent`.
bool matchesOrDefault(const KvTSelectedValue& archiveValue, const KvTElementValue& elementValue,
                      const KvTElementValue& absent) {
    return archiveValue.value.is_valid() ? matchesValue(archiveValue.value, elementValue) : elementValue == absent;
}

KvTElementValue variantOf(const KvTUpdateElement& element) {
    if (element.boardVariant.isEmpty()) {
        return {};
    }
    return element.boardVariant.view();
}

/// The values of `own`, an element of "boards" or the entry itself, completed by those of the entry.
KvTEntrySelection makeSelection(const EntryProperties& own, const EntryProperties& entry, bool hasTargetPath) {
    const auto select = [&](KvEProperty property) {
        return own.has(property) ? KvTSelectedValue{own[property], false} : KvTSelectedValue{entry[property], true};
    };
    KvTEntrySelection selection;
    selection.boardType = own[KvEProperty::boardType];
    selection.boardVariant = select(KvEProperty::boardVariant);
    selection.boardId = select(KvEProperty::boardId);
    selection.hwCompatibilityId = select(KvEProperty::hwCompatibilityId);
    selection.swCompatibilityId = select(KvEProperty::swCompatibilityId);
    selection.hasTargetPath = hasTargetPath;
    if (const jsonView id = select(KvEProperty::id).value; id.is_number_unsigned()) {
        selection.id = static_cast<std::uint32_t>(id.get_unsigned());
    }
    if (const jsonView path = select(KvEProperty::targetPath).value; path.is_string()) {
        selection.targetPath = path.get_string();
    }
    return selection;
}

bool matchesTargetPath(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    return selection.targetPath && (element.location == anyLocation || element.location == *selection.targetPath);
}

} // namespace

bool matchesValue(jsonView archiveValue, const KvTElementValue& elementValue) {
    if (!archiveValue.is_array()) {
        return matchesScalar(archiveValue, elementValue);
    }
    for (std::size_t index = 0; index < archiveValue.size(); ++index) {
        if (matchesScalar(archiveValue.at(index), elementValue)) {
            return true;
        }
    }
    return false;
}

std::vector<KvTEntrySelection> selectionsOf(const KvTArchiveFile& file) {
    const EntryProperties entry(file.description.view());
    const jsonView boards = entry[KvEProperty::boards];
    if (!boards.is_valid()) {
        return {makeSelection(entry, entry, file.hasTargetPath)};
    }
    std::vector<KvTEntrySelection> selections;
    selections.reserve(boards.size());
    for (std::size_t index = 0; index < boards.size(); ++index) {
        selections.push_back(makeSelection(EntryProperties(boards.at(index)), entry, file.hasTargetPath));
    }
    return selections;
}

KvEMatchTest firstFailingTest(const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    if (!matchesValue(selection.boardType, element.boardType.view())) {
        return KvEMatchTest::boardType;
    }
    if (!matchesOrDefault(selection.boardVariant, variantOf(element), std::monostate())) {
        return KvEMatchTest::boardVariant;
    }
    if (!matchesOrDefault(selection.boardId, element.boardId, std::uint32_t{0})) {
        return KvEMatchTest::boardId;
    }
    if (element.isFileSystemElement != selection.hasTargetPath) {
        return KvEMatchTest::addressing;
    }
    if (!selection.hasTargetPath && selection.id != element.elementId) {
        return KvEMatchTest::id;
    }
    if (selection.hasTargetPath && !matchesTargetPath(element, selection)) {
        return KvEMatchTest::targetPath;
    }
    if (!matchesOrDefault(selection.hwCompatibilityId, element.hwCompatibilityId, std::uint32_t{0})) {
        return KvEMatchTest::hwCompatibilityId;
    }
    if (!matchesOrDefault(selection.swCompatibilityId, element.swCompatibilityId, std::uint32_t{0})) {
        return KvEMatchTest::swCompatibilityId;
    }
    return KvEMatchTest::none;
}

const KvTEntrySelection* decidingSelection(const KvTUpdateElement& element,
                                           const std::vector<KvTEntrySelection>& selections) {
    const auto found = std::find_if(selections.begin(), selections.end(), [&](const KvTEntrySelection& selection) {
        return matchesValue(selection.boardType, element.boardType.view());
    });
    return found != selections.end() ? &*found : nullptr;
}

bool matchesFile(const KvTUpdateElement& element, const KvTArchiveFile& file, KvCString& targetPath) {
    const std::vector<KvTEntrySelection> selections = selectionsOf(file);
    const KvTEntrySelection* selected = decidingSelection(element, selections);
    if (selected == nullptr || firstFailingTest(element, *selected) != KvEMatchTest::none) {
        return false;
    }
    targetPath = KvCString(selected->targetPath.value_or(std::string_view()));
    return true;
}
