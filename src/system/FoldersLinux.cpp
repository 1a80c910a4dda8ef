#include "Folders.h"

#include "TextConversion.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace {

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

bool isRegularFile(const OpenFolder& folder, const dirent& entry) {
    // Most file systems state the type of an entry without a look at the file.
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
        return entry.d_type == DT_REG;
    }
    struct stat status {};
    return fstatat(dirfd(folder.get()), entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

} // namespace

std::vector<std::string> filesOfFolder(const std::wstring& path) {
    std::string native = wideToUtf8(path.c_str());
    std::replace(native.begin(), native.end(), '\\', '/');
    std::vector<std::string> names;
    const OpenFolder folder(opendir(native.c_str()));
    if (folder == nullptr) {
        return names;
    }
    while (const dirent* entry = readdir(folder.get())) {
        if (isRegularFile(folder, *entry)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}
