#include "FolderFiles.h"

#include "FileNames.h"
#include "FindingList.h"
#include "JsonOutline.h"
#include "Manifest.h"
#include "NearestWord.h"
#include "WholeFiles.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::size_t mostDescriptionBytes = std::size_t{64} * 1024 * 1024;

/// The name of the file that a path names, as operating systems see it.
std::string_view fileNameOf(std::string_view path) {
    path = path.substr(0, path.find('\0'));
    return path.substr(path.find_last_of("/\\") + 1);
}

} // namespace

KvCFolderFiles::KvCFolderFiles(const KvCFirmwareArchive& archive, const std::wstring& descriptionFileName,
                               const std::vector<std::string_view>& entryNames)
    : archive_(archive), description_(foldedCaseOf(toUtf8(descriptionFileName).view())) {
    for (const std::string_view path : entryNames) {
        const std::string_view name = fileNameOf(path);
        entryNames_.insert(name);
        entryNamesByFoldedCase_.try_emplace(foldedCaseOf(name), name);
    }
}

void KvCFolderFiles::list() {
    if (isListed_) {
        return;
    }
    const std::vector<std::string> files = archive_.folderFiles();
    for (const std::string& file : files) {
        const std::string folded = foldedCaseOf(file);
        if (entryNames_.contains(file) || folded == description_ || isSealFile(file)) {
            continue;
        }
        candidates_.push_back(file);
        candidateBytes_ += file.size();
        const auto found = entryNamesByFoldedCase_.find(folded);
        if (found == entryNamesByFoldedCase_.end() || std::binary_search(files.begin(), files.end(), found->second)) {
            unnamed_.push_back(file);
        }
    }
    candidateWords_.assign(candidates_.begin(), candidates_.end());
    isListed_ = true;
}

const std::vector<std::string>& KvCFolderFiles::unnamed() {
    list();
    return unnamed_;
}

std::string_view KvCFolderFiles::nearest(std::string_view name) {
    list();
    const std::size_t cost = name.size() * candidateBytes_;
    if (cost > budget_) {
        return {};
    }
    budget_ -= cost;
    // That files are of one kind makes their names no more similar.
    return nearestWord(name, candidateWords_, name.substr(0, name.rfind('.')).size());
}

bool KvCFolderFiles::isDescription(const std::string& name) const {
    if (!lowerCaseOf(name).ends_with(".json")) {
        return false;
    }
    const std::optional<std::string> text = textOfFile(archive_.pathOf(KvCString(name.c_str())), mostDescriptionBytes);
    return text && KvCJsonOutline(*text).root().find("files").kind() == KvEJsonKind::array;
}

std::string suggestionFor(std::string_view name, KvCFolderFiles& folder) {
    const std::string_view nearest = folder.nearest(name);
    return nearest.empty() ? std::string() : "Did you mean " + inQuotes(nearest) + "?";
}
