#include "Explanation.h"

#include <algorithm>
#include <optional>
#include <variant>

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

json jsonOf(const KvTComparedValue& value) {
    if (const auto* text = std::get_if<std::string_view>(&value)) {
        return *text;
    }
    const auto* number = std::get_if<std::uint64_t>(&value);
    return number != nullptr ? json(*number) : json();
}

json idOrNull(const std::optional<std::uint32_t>& id) {
    return id ? json(*id) : json();
}

const char* addressingOf(bool isFile) {
    return isFile ? "targetPath" : "id";
}

/// The values that a failed test has compared.
struct Compared {
    json archiveValue;
    json elementValue;
};

Compared comparedBy(KvEMatchTest test, const KvTUpdateElement& element, const KvTEntrySelection& selection) {
    const KvTEntryAddress& address = selection.address;
    if (test == KvEMatchTest::addressing) {
        return {addressingOf(address.targetPath.has_value()), addressingOf(element.isFileSystemElement)};
    }
    if (test == KvEMatchTest::id) {
        return {idOrNull(address.id), element.elementId};
    }
    if (test == KvEMatchTest::targetPath) {
        return {json(address.targetPath.value_or("")), element.location};
    }
    const auto* const property = std::find_if(comparedProperties.begin(), comparedProperties.end(),
                                              [=](const KvTComparedProperty& one) { return one.test == test; });
    if (property == comparedProperties.end()) {
        return {};
    }
    return {copyOf((selection.*property->allowed).written()), jsonOf(property->valueOf(element))};
}

KvTTriedEntry tryEntry(const KvTUpdateElement& element, const KvTArchiveFile& file, std::uint32_t fileIndex) {
    const KvTEntrySelection* selection = decidingSelection(element, file);
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

KvCExplainer::KvCExplainer(const std::vector<KvTArchiveFile>& files) : files_(files) {
    std::uint32_t file = 0;
    for (const KvTArchiveFile& entry : files) {
        listEntry(entry, file++);
    }
}

/// Lists the entry once under each of its board types.
void KvCExplainer::listEntry(const KvTArchiveFile& entry, std::uint32_t file) {
    for (const KvTEntrySelection& selection : entry.selections) {
        for (const std::string_view boardType : selection.boardTypes) {
            entriesOfBoardType_[boardType].push_back(file);
        }
    }
}

KvTExplanation KvCExplainer::explain(const KvTUpdateElement& element) const {
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
