#include "WholeFile.h"

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

} // namespace

bool writeWholeFile(const fs::path& path, std::string_view text) {
    std::error_code fault;
    const fs::file_type type = fs::symlink_status(path, fault).type();
    const bool isReplaced = type == fs::file_type::not_found || type == fs::file_type::regular;
    fs::path written = path;
    if (isReplaced) {
        written += unfinishedEnding;
    }
    std::ofstream file(written, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) {
        return false;
    }
    bool isWritten = writeTo(file, text);
    if (isWritten && isReplaced) {
        fs::rename(written, path, fault);
        isWritten = !fault;
    }
    if (!isWritten && isReplaced) {
        fs::remove(written, fault);
    }
    return isWritten;
}
