#include "Folders.h"

#include "TextConversion.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <windows.h>

namespace {

struct SearchCloser {
    void operator()(HANDLE search) const { FindClose(search); }
};
using OpenSearch = std::unique_ptr<void, SearchCloser>;

} // namespace

std::vector<std::string> filesOfFolder(const std::wstring& path) {
    std::vector<std::string> names;
    WIN32_FIND_DATAW found{};
    const bool hasSeparator = path.ends_with(L'\\') || path.ends_with(L'/');
    HANDLE handle = FindFirstFileW((path + (hasSeparator ? L"*" : L"\\*")).c_str(), &found);
    if (handle == INVALID_HANDLE_VALUE) {
        return names;
    }
    const OpenSearch search(handle);
    do {
        constexpr DWORD notRegular = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
        std::string name = wideToUtf8(found.cFileName);
        if (!name.empty() && (found.dwFileAttributes & notRegular) == 0) {
            names.push_back(std::move(name));
        }
    } while (FindNextFileW(search.get(), &found) != 0);
    std::sort(names.begin(), names.end());
    return names;
}
