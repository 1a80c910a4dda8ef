#include "ForeignPaths.h"

#include "Files.h"
#include "KvCStringConversion.h"
#include "TextConversion.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace {

constexpr std::string_view separators = "/\\";

/// The end of what stands before the last component that ends at `size`.
std::size_t endBeforeLast(std::string_view path, std::size_t size) {
    const std::size_t last = path.substr(0, size).find_last_not_of(separators);
    return last == std::string_view::npos ? 0 : path.substr(0, last).find_last_of(separators) + 1;
}

/// The components of a path: without links, "." and ".." as far as it exists, then without them by its text alone.
class ResolvedPath {
public:
    explicit ResolvedPath(std::string_view path) {
        std::size_t size = path.size();
        std::string existing = resolvedPrefix(path, size);
        while (existing.empty() && size > 0) {
            size = endBeforeLast(path, size);
            existing = resolvedPrefix(path, size);
        }
        append(existing, "/");
        append(path.substr(size), separators);
    }

    /// True when `other` is this path or lies below it.
    [[nodiscard]] bool contains(const ResolvedPath& other) const {
        return other.components_.size() >= components_.size() &&
               std::equal(components_.begin(), components_.end(), other.components_.begin());
    }

private:
    /// Before a relative path stands the current folder.
    static std::string resolvedPrefix(std::string_view path, std::size_t size) {
        return resolvedPath(size == 0 ? L"." : utf8ToWide(std::string(path.substr(0, size)).c_str()));
    }

    void append(std::string_view path, std::string_view marks) {
        while (!path.empty()) {
            const std::string_view component = path.substr(0, path.find_first_of(marks));
            path.remove_prefix(std::min(path.size(), component.size() + 1));
            if (component == "..") {
                goUp();
            } else if (!component.empty() && component != ".") {
                components_.emplace_back(component);
            }
        }
    }

    /// Above the root is the root.
    void goUp() {
        if (!components_.empty()) {
            components_.pop_back();
        }
    }

    std::vector<std::string> components_;
};

/// As operating systems see a text.
std::string_view upToZero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

/// Those of the entry and of its boards.
std::set<std::string_view> targetPathsOf(const KvTArchiveFile& file) {
    std::set<std::string_view> paths;
    const auto add = [&](const KvTEntryAddress& address) {
        if (address.targetPath) {
            paths.insert(*address.targetPath);
        }
    };
    add(file.address);
    for (const KvTEntrySelection& selection : file.selections) {
        add(selection.address);
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
    // Without a folder it is the root.
    const std::string folder = std::string(toUtf8(archiveFolder).view()) + "/";
    const std::string file = folder + std::string(name);
    const bool isPlain = name.find_first_of(separators) == std::string_view::npos && name != "..";
    if (isPlain && !isLink(utf8ToWide(file.c_str()))) {
        return false;
    }
    return !ResolvedPath(folder).contains(ResolvedPath(file));
}

std::vector<KvNReflasher::KvTForeignPath> foreignPathsOf(const KvCFirmwareArchive& archive) {
    std::vector<KvNReflasher::KvTForeignPath> paths;
    for (const KvTArchiveFile& file : archive.files()) {
        const auto add = [&](std::string_view path, bool isRead) {
            paths.push_back({.descriptionIndex = file.descriptionIndex, .path = std::string(path), .isRead = isRead});
        };
        if (leavesArchiveFolder(archive.folder(), file.name.view())) {
            add(file.name.view(), true);
        }
        for (const std::string_view path : targetPathsOf(file)) {
            if (leavesTargetRoot(path)) {
                add(path, false);
            }
        }
    }
    return paths;
}
