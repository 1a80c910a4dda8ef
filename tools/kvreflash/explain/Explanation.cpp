#include "Explanation.h"

#include "EntryProperties.h"

namespace {

using KvNJson::json;
using KvNJson::jsonView;

/// A copy of a comparison value: a text, a number, null, or an array of these.
json copyOf(jsonView value) {
    if (value.is_string()) {
        return value.get_string();
    }
    if (value.is_number_unsigned()) {
        return value.get_unsigned();
    }
    json copy = value.is_array() ? json::makeArray() : json();
    for (std::size_t index = 0; value.is_array() && index < value.size(); ++index) {
        copy.append(copyOf(value.at(index)));
    }
    return copy;
}

json variantOf(const KvTUpdateElement& element) {
    return element.boardVariant.isEmpty() ? json() : json(element.boardVariant);
}

/// The values that the failed test compared.
void fillValues(KvTTriedEntry& entry, const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    switch (entry.failedTest) {
    case KvEMatchTest::boardType:
        entry.archiveValue = copyOf(selection.boardType);
        entry.elementValue = element.boardType;
        break;
    case KvEMatchTest::boardVariant:
        entry.archiveValue = copyOf(selection.boardVariant.value);
        entry.elementValue = variantOf(element);
        break;
    case KvEMatchTest::boardId:
        entry.archiveValue = copyOf(selection.boardId.value);
        entry.elementValue = element.boardId;
        break;
    case KvEMatchTest::addressing:
        entry.archiveValue = selection.hasTargetPath ? "targetPath" : "id";
        entry.elementValue = element.isFileSystemElement ? "targetPath" : "id";
        break;
    case KvEMatchTest::id:
        entry.archiveValue = selection.id ? json(*selection.id) : json();
        entry.elementValue = element.elementId;
        break;
    case KvEMatchTest::targetPath:
        entry.archiveValue = selection.targetPath ? json(*selection.targetPath) : json();
        entry.elementValue = element.location;
        break;
    case KvEMatchTest::hwCompatibilityId:
        entry.archiveValue = copyOf(selection.hwCompatibilityId.value);
        entry.elementValue = element.hwCompatibilityId;
        break;
    case KvEMatchTest::swCompatibilityId:
        entry.archiveValue = copyOf(selection.swCompatibilityId.value);
        entry.elementValue = element.swCompatibilityId;
        break;
    case KvEMatchTest::none:
        break;
    }
}

} // namespace

Explainer::Explainer(KvCPreparation& preparation, const KvNReflasher::KvTOptions& options)
    : preparation_(preparation), options_(options) {
    std::uint32_t file = 0;
    for (const KvTArchiveFile& entry : preparation.archive().files()) {
        listEntry(entry, file++);
    }
}

/// Lists the entry once under each of its board types.
void Explainer::listEntry(const KvTArchiveFile& entry, std::uint32_t file) {
    for (const KvTEntrySelection& selection : selectionsOf(entry)) {
        forEachScalar(selection.boardType, [&](jsonView boardType) {
            std::vector<std::uint32_t>& entries = entriesOfBoardType_[boardType.get_string()];
            if (entries.empty() || entries.back() != file) {
                entries.push_back(file);
            }
        });
    }
}

KvTTriedEntry Explainer::tryEntry(const KvTUpdateElement& element, std::uint32_t file) const {
    const std::vector<KvTEntrySelection> selections = selectionsOf(preparation_.archive().files()[file]);
    const KvTEntrySelection* selection = decidingSelection(element, selections);
    KvTTriedEntry entry;
    entry.file = file;
    entry.failedTest = selection != nullptr ? firstFailingTest(element, *selection) : KvEMatchTest::boardType;
    if (selection != nullptr) {
        fillValues(entry, element, *selection);
    }
    return entry;
}

std::vector<KvEDisabledBy> Explainer::disabledBy(const KvTUpdateElement& element) const {
    std::vector<KvEDisabledBy> reasons;
    if (element.custom != 0 && options_.disableCustomElements) {
        reasons.push_back(KvEDisabledBy::customElement);
    }
    if (lacksCarrierBoard(element)) {
        reasons.push_back(KvEDisabledBy::carrierBoardMissing);
    }
    if (element.upToDate && leavesOutUpToDate(preparation_.archive().files()[element.archiveFileIndex], options_)) {
        reasons.push_back(KvEDisabledBy::upToDate);
    }
    return reasons;
}

KvTExplanation Explainer::explain(const KvTUpdateElement& element) const {
    const std::vector<KvTArchiveFile>& files = preparation_.archive().files();
    KvTExplanation result;
    result.element = &element;
    if (element.hasArchiveFile()) {
        result.file = &files[element.archiveFileIndex];
        result.decision = decideUpdate(element, *result.file, options_);
    }
    const std::size_t end = element.hasArchiveFile() ? element.archiveFileIndex + std::size_t{1} : files.size();
    if (const auto entries = entriesOfBoardType_.find(element.boardType.view()); entries != entriesOfBoardType_.end()) {
        for (const std::uint32_t file : entries->second) {
            if (file < end) {
                result.tried.push_back(tryEntry(element, file));
            }
        }
    }
    result.otherBoardCount = end - result.tried.size();
    result.disabledBy = disabledBy(element);
    return result;
}
