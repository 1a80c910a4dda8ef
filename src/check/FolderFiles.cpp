#include "FolderFiles.h"

#include "ArchivePaths.h"
#include "FindingList.h"
#include "Folders.h"
#include "JsonOutline.h"
#include "KvCFirmwareArchive.h"
#include "Words.h"

#include <utility>

namespace {

constexpr std::size_t mostDescriptionBytes = std::size_t{64} * 1024 * 1024;

} // namespace

const std::vector<std::string>& KvCFolderFiles::names() {
    if (names_) {
        return *names_;
    }
    // Without a folder it is the root.
    std::vector<std::string> names = filesOfFolder(options_.archiveFolder.empty() ? L"\\" : options_.archiveFolder);
    const std::string description = lowerCaseOf(toUtf8(options_.descriptionFileName).view());
    std::erase_if(names, [&](const std::string& name) { return lowerCaseOf(name) == description; });
    std::vector<std::string_view> words(names.begin(), names.end());
    for (const std::string_view word : words) {
        bytes_ += word.size();
    }
    words_ = std::move(words);
    return names_.emplace(std::move(names));
}

std::string_view KvCFolderFiles::nearest(std::string_view name) {
    static_cast<void>(names());
    const std::size_t cost = name.size() * bytes_;
    if (cost > budget_) {
        return {};
    }
    budget_ -= cost;
    return nearestWord(name, words_);
}

bool KvCFolderFiles::isDescription(const std::string& name) const {
    if (!lowerCaseOf(name).ends_with(".json")) {
        return false;
    }
    const std::optional<std::string> text =
        textOfFile(updateFilePath(options_, KvCString(name.c_str())), mostDescriptionBytes);
    return text && KvCJsonOutline(*text).root().find("files").kind() == KvEJsonKind::array;
}

std::string suggestionFor(std::string_view name, KvCFolderFiles& folder) {
    const std::string_view nearest = folder.nearest(name);
    return nearest.empty() ? std::string() : "Did you mean " + inQuotes(nearest) + "?";
}
