#include "FolderTree.h"

#include "Files.h"
#include "TextConversion.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// Without the conversion by the locale that a wide path takes off Windows.
fs::path pathOf(const std::wstring& path) {
    std::string bytes = wideToUtf8(path.c_str());
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    return {std::u8string(bytes.begin(), bytes.end())};
}

std::string bytesOf(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

bool isLinkAt(const fs::path& path) {
    return isLink(utf8ToWide(bytesOf(path).c_str()));
}

/// Lists what is below a folder. Not every standard library knows the links of every system.
class Tree {
public:
    explicit Tree(fs::path folder) : folder_(std::move(folder)) {}

    /// False if something cannot be looked at.
    bool add(const fs::path& folder) {
        std::error_code fault;
        fs::directory_iterator found(folder, fault);
        while (!fault && found != fs::directory_iterator()) {
            if (!add(*found)) {
                return false;
            }
            found.increment(fault);
        }
        return !fault;
    }

    std::vector<KvTFolderEntry> takeSorted() {
        std::sort(entries_.begin(), entries_.end(),
                  [](const KvTFolderEntry& a, const KvTFolderEntry& b) { return a.name < b.name; });
        return std::move(entries_);
    }

private:
    bool add(const fs::directory_entry& found) {
        std::error_code fault;
        const fs::file_type type = isLinkAt(found.path()) ? fs::file_type::symlink : found.symlink_status(fault).type();
        if (fault) {
            return false;
        }
        if (type == fs::file_type::directory) {
            return add(found.path());
        }
        KvTFolderEntry& entry = entries_.emplace_back();
        entry.name = bytesOf(found.path().lexically_relative(folder_));
        entry.isRegularFile = type == fs::file_type::regular;
        entry.size = entry.isRegularFile ? found.file_size(fault) : 0;
        return !fault;
    }

    fs::path folder_;
    std::vector<KvTFolderEntry> entries_;
};

} // namespace

void removeTree(const fs::path& path) {
    std::error_code fault;
    if (!isLinkAt(path) && fs::is_directory(path, fault)) {
        std::vector<fs::path> inside;
        for (fs::directory_iterator found(path, fault); !fault && found != fs::directory_iterator();
             found.increment(fault)) {
            inside.push_back(found->path());
        }
        for (const fs::path& one : inside) {
            removeTree(one);
        }
    }
    fs::remove(path, fault);
}

std::optional<std::vector<KvTFolderEntry>> entriesBelow(const std::wstring& path) {
    const fs::path folder = pathOf(path);
    try {
        Tree tree(folder);
        return tree.add(folder) ? std::optional(tree.takeSorted()) : std::nullopt;
    } catch (const std::system_error&) { // a name that is not well formed
        return std::nullopt;
    }
}
