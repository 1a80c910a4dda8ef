#include "ForeignPaths.h"

#include "TextConversions.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

namespace fs = std::filesystem;

namespace {

using KvNJson::jsonView;

constexpr std::string_view separators = "/\\";

/// The path (UTF-8) as files of archives are opened: "\" separates on every system.
fs::path archivePath(std::string_view utf8) {
    std::u8string text(utf8.begin(), utf8.end());
    std::replace(text.begin(), text.end(), u8'\\', u8'/');
    return {text};
}

/// Without links, "." and ".." as far as the path exists, then without them by its text alone.
fs::path resolved(const fs::path& path) {
    std::error_code failed;
    fs::path result = fs::weakly_canonical(path, failed);
    return failed ? fs::absolute(path, failed).lexically_normal() : result;
}

/// As operating systems see a text.
std::string_view upToZero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

void addTargetPath(jsonView object, std::set<std::string_view>& paths) {
    if (const jsonView path = object.find("targetPath"); path.is_string()) {
        paths.insert(path.get_string());
    }
}

/// Those of the entry and of its boards.
std::set<std::string_view> targetPathsOf(jsonView entry) {
    std::set<std::string_view> paths;
    addTargetPath(entry, paths);
    const jsonView boards = entry.find("boards");
    for (std::size_t board = 0; board < boards.size(); ++board) {
        addTargetPath(boards.at(board), paths);
    }
    return paths;
}

} // namespace

bool leavesTargetRoot(std::string_view targetPath) {
    std::string_view rest = upToZero(targetPath);
    std::size_t depth = 0;
    while (!rest.empty()) {
        const std::string_view component = rest.substr(0, rest.find_first_of(separators));
        rest.remove_prefix(std::min(rest.size(), component.size() + 1));
        if (component == "..") {
            if (depth == 0) {
                return true;
            }
            --depth;
        } else if (!component.empty() && component != ".") {
            ++depth;
        }
    }
    return false;
}

bool leavesArchiveFolder(const std::wstring& archiveFolder, std::string_view name) {
    name = upToZero(name);
    std::string text(toUtf8(archiveFolder).view());
    const fs::path folder = archivePath(text);
    text += '/';
    text += name;
    const fs::path file = archivePath(text);
    std::error_code ignored;
    if (name.find_first_of(separators) == std::string_view::npos && name != ".." && !fs::is_symlink(file, ignored)) {
        return false;
    }
    const fs::path inside = resolved(folder);
    const fs::path place = resolved(file);
    return std::mismatch(inside.begin(), inside.end(), place.begin(), place.end()).first != inside.end();
}

std::vector<KvNReflasher::KvTForeignPath> foreignPathsOf(const KvCFirmwareArchive& archive,
                                                         const std::wstring& archiveFolder) {
    std::vector<KvNReflasher::KvTForeignPath> paths;
    for (const KvTArchiveFile& file : archive.files()) {
        const auto add = [&](std::string_view path, bool isRead) {
            paths.push_back({.descriptionIndex = file.descriptionIndex, .path = std::string(path), .isRead = isRead});
        };
        if (leavesArchiveFolder(archiveFolder, file.name.view())) {
            add(file.name.view(), true);
        }
        for (const std::string_view path : targetPathsOf(file.description.view())) {
            if (leavesTargetRoot(path)) {
                add(path, false);
            }
        }
    }
    return paths;
}
