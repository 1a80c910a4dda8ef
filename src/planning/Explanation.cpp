#include "Explanation.h"

#include "EntryProperties.h"

namespace {

using namespace KvNReflasher;
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

/// The values that a failed test has compared.
struct Compared {
    json archiveValue;
    json elementValue;
};

Compared comparedBy(KvEMatchTest test, const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    switch (test) {
    case KvEMatchTest::boardType:
        return {copyOf(selection.boardType), element.boardType};
    case KvEMatchTest::boardVariant:
        return {copyOf(selection.boardVariant.value), variantOf(element)};
    case KvEMatchTest::boardId:
        return {copyOf(selection.boardId.value), element.boardId};
    case KvEMatchTest::addressing:
        return {selection.hasTargetPath ? "targetPath" : "id", element.isFileSystemElement ? "targetPath" : "id"};
    case KvEMatchTest::id:
        return {selection.id ? json(*selection.id) : json(), element.elementId};
    case KvEMatchTest::targetPath:
        return {selection.targetPath ? json(*selection.targetPath) : json(), element.location};
    case KvEMatchTest::hwCompatibilityId:
        return {copyOf(selection.hwCompatibilityId.value), element.hwCompatibilityId};
    case KvEMatchTest::swCompatibilityId:
        return {copyOf(selection.swCompatibilityId.value), element.swCompatibilityId};
    case KvEMatchTest::none:
        break;
    }
    return {};
}

KvTTriedEntry tryEntry(const KvTUpdateElement& element, const KvTArchiveFile& file, std::uint32_t fileIndex) {
    const std::vector<KvTEntrySelection> selections = selectionsOf(file);
    const KvTEntrySelection* selection = decidingSelection(element, selections);
    KvTTriedEntry entry;
    entry.fileIndex = fileIndex;
    entry.descriptionIndex = file.descriptionIndex;
    entry.fileName = file.name.view();
    entry.failedTest = selection != nullptr ? firstFailingTest(element, *selection) : KvEMatchTest::boardType;
    if (selection != nullptr) {
        const Compared compared = comparedBy(entry.failedTest, element, *selection);
        entry.archiveValue = compared.archiveValue.dump();
        entry.elementValue = compared.elementValue.dump();
    }
    return entry;
}

} // namespace

Explainer::Explainer(const std::vector<KvTArchiveFile>& files) : files_(files) {
    std::uint32_t file = 0;
    for (const KvTArchiveFile& entry : files) {
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

KvTExplanation Explainer::explain(const KvTUpdateElement& element) const {
    KvTExplanation result;
    result.index = element.index;
    const std::size_t end = element.hasArchiveFile() ? element.archiveFileIndex + std::size_t{1} : files_.size();
    if (const auto entries = entriesOfBoardType_.find(element.boardType.view()); entries != entriesOfBoardType_.end()) {
        for (const std::uint32_t file : entries->second) {
            if (file < end) {
                result.tried.push_back(tryEntry(element, files_[file], file));
            }
        }
    }
    result.otherBoardCount = end - result.tried.size();
    return result;
}
