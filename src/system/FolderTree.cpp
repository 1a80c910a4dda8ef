#include "FolderTree.h"

#include "TextConversion.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

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

/// False if something cannot be looked at.
bool addEntry(const fs::directory_entry& found, const fs::path& folder, std::vector<KvTFolderEntry>& entries) {
    std::error_code fault;
    const fs::file_status status = found.symlink_status(fault);
    if (fault) {
        return false;
    }
    if (fs::is_directory(status)) {
        return true;
    }
    KvTFolderEntry& entry = entries.emplace_back();
    entry.name = bytesOf(found.path().lexically_relative(folder));
    entry.isRegularFile = fs::is_regular_file(status);
    entry.size = entry.isRegularFile ? found.file_size(fault) : 0;
    return !fault;
}

} // namespace

std::optional<std::vector<KvTFolderEntry>> entriesBelow(const std::wstring& path) {
    const fs::path folder = pathOf(path);
    std::vector<KvTFolderEntry> entries;
    std::error_code fault;
    fs::recursive_directory_iterator found(folder, fault);
    while (!fault && found != fs::recursive_directory_iterator()) {
        if (!addEntry(*found, folder, entries)) {
            return std::nullopt;
        }
        found.increment(fault);
    }
    if (fault) {
        return std::nullopt;
    }
    std::sort(entries.begin(), entries.end(),
              [](const KvTFolderEntry& a, const KvTFolderEntry& b) { return a.name < b.name; });
    return entries;
}
