#include "UserFiles.h"

#include "PathTexts.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace fs = std::filesystem;

fs::path filePath(std::string_view utf8) {
    std::u8string text(utf8.begin(), utf8.end());
    std::replace(text.begin(), text.end(), u8'\\', u8'/');
    return {text};
}

std::string absolutePath(const std::string& utf8) {
    std::error_code fault;
    const fs::path absolute = fs::weakly_canonical(fs::absolute(filePath(utf8), fault), fault);
    const std::u8string text = absolute.u8string();
    return fault ? utf8 : std::string(text.begin(), text.end());
}

std::string reasonOf(const fs::path& path, int error) {
    std::error_code ignored;
    if (error == ENXIO) {
        return "nobody reads it";
    }
    if (error == ENOENT && fs::is_symlink(path, ignored)) {
        return "it is a link that leads nowhere";
    }
    // Not every system says so.
    const bool isFolder = fs::is_directory(path, ignored);
    return std::generic_category().message(isFolder ? EISDIR : error);
}

std::string fileFailure(const char* what, const std::string& path, int error) {
    return std::string(what).append(" ").append(quotedPath(path)).append(": ").append(reasonOf(filePath(path), error));
}

std::string fileFailure(const char* what, const std::string& path) {
    return fileFailure(what, path, errno);
}
