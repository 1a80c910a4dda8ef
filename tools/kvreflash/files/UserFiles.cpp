#include "UserFiles.h"

#include "PathTexts.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// What the name of a file ends with until it is complete.
constexpr const char* unfinishedEnding = ".new";

/// False when any byte may not have been written.
bool writeTo(std::ofstream& file, std::string_view text) {
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return file.good();
}

/// What is written to: the file under its unfinished name, or what is not a plain file itself.
struct Written {
    explicit Written(const fs::path& path) : name(path) {
        std::error_code fault;
        const fs::file_type type = fs::symlink_status(path, fault).type();
        isRenamed = type == fs::file_type::not_found || type == fs::file_type::regular;
        if (isRenamed) {
            name += unfinishedEnding;
        }
    }
    void remove() const {
        std::error_code ignored;
        fs::remove(name, ignored);
    }

    fs::path name;
    bool isRenamed = false;
};

} // namespace

fs::path filePath(std::string_view utf8) {
    std::u8string text(utf8.begin(), utf8.end());
    std::replace(text.begin(), text.end(), u8'\\', u8'/');
    return {text};
}

bool writeWholeFile(const fs::path& path, std::string_view text) {
    const Written written(path);
    std::ofstream file(written.name, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) {
        return false;
    }
    bool isWritten = writeTo(file, text);
    if (isWritten && written.isRenamed) {
        std::error_code fault;
        fs::rename(written.name, path, fault);
        isWritten = !fault;
    }
    if (!isWritten && written.isRenamed) {
        written.remove();
    }
    return isWritten;
}

bool canWriteWholeFile(const fs::path& path) {
    std::error_code ignored;
    const Written written(path);
    if (!written.isRenamed) {
        return !fs::is_directory(path, ignored); // a pipe is not to be opened twice
    }
    if (!std::ofstream(written.name, std::ios::binary | std::ios::app).is_open()) {
        return false;
    }
    written.remove();
    return true;
}

std::string fileFailure(const char* what, const std::string& path) {
    const int stated = errno;
    // Not every system says so.
    std::error_code ignored;
    const bool isFolder = fs::is_directory(filePath(path), ignored);
    return std::string(what)
        .append(" ")
        .append(quotedPath(path))
        .append(": ")
        .append(std::generic_category().message(isFolder ? EISDIR : stated));
}
