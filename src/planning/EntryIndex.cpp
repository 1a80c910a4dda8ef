#include "EntryIndex.h"

#include <functional>
#include <unordered_set>

namespace {

constexpr std::string_view anyLocation = "*";

/// Calls `visit` with each text of a board type value: the text itself, or those of its array.
template <typename Visit>
void forEachBoardType(KvNJson::jsonView boardType, Visit&& visit) {
    if (boardType.is_string()) {
        visit(boardType.get_string());
        return;
    }
    for (std::size_t index = 0; boardType.is_array() && index < boardType.size(); ++index) {
        visit(boardType.at(index).get_string());
    }
}

} // namespace

std::size_t EntryIndex::KeyHash::operator()(const Key& key) const {
    constexpr std::size_t multiplier = 0x9E3779B97F4A7C15; // spreads the parts over the whole word
    std::size_t hash = std::hash<std::string_view>()(key.boardType);
    hash = hash * multiplier + key.id;
    hash = hash * multiplier + std::hash<std::string_view>()(key.targetPath);
    return hash * 2 + (key.isFileSystemElement ? 1 : 0);
}

EntryIndex::EntryIndex(const std::vector<KvTArchiveFile>& files) {
    candidates_.reserve(files.size());
    std::uint32_t fileIndex = 0;
    for (const KvTArchiveFile& file : files) {
        addFile(file, fileIndex++);
    }
}

/// Of each board type only the first selection counts, whatever its other values.
void EntryIndex::addFile(const KvTArchiveFile& file, std::uint32_t fileIndex) {
    std::unordered_set<std::string_view> seen;
    for (const KvTEntrySelection& selection : selectionsOf(file)) {
        forEachBoardType(selection.boardType, [&](std::string_view boardType) {
            if (seen.insert(boardType).second) {
                addSelection(boardType, {fileIndex, selection});
            }
        });
    }
}

void EntryIndex::addSelection(std::string_view boardType, const Candidate& candidate) {
    const KvTEntrySelection& selection = candidate.selection;
    if (!selection.hasTargetPath) {
        if (selection.id) {
            candidates_[Key{boardType, false, *selection.id, {}}].push_back(candidate);
        }
        return;
    }
    if (!selection.targetPath) {
        return;
    }
    candidates_[Key{boardType, true, 0, *selection.targetPath}].push_back(candidate);
    if (*selection.targetPath != anyLocation) {
        candidates_[Key{boardType, true, 0, anyLocation}].push_back(candidate);
    }
}

EntryIndex::Key EntryIndex::keyOf(const KvTUpdateElement& element) {
    if (element.isFileSystemElement) {
        return {element.boardType.view(), true, 0, element.location.view()};
    }
    return {element.boardType.view(), false, element.elementId, {}};
}

std::uint32_t EntryIndex::find(const KvTUpdateElement& element) const {
    const auto found = candidates_.find(keyOf(element));
    if (found != candidates_.end()) {
        for (const Candidate& candidate : found->second) {
            if (firstFailingTest(element, candidate.selection) == KvEMatchTest::none) {
                return candidate.file;
            }
        }
    }
    return noArchiveFile;
}
