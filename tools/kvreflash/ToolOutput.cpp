#include "ToolOutput.h"

#include "FilePath.h"
#include "Terminal.h"
#include "VisibleText.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

void writeText(std::FILE* stream, const std::string& text) {
    const std::string shown = isTerminal(stream) ? visibleOnTerminal(text) : text;
    std::fwrite(shown.data(), 1, shown.size(), stream);
    std::fflush(stream);
}

void say(const std::string& text) {
    writeText(stderr, "kvreflash: " + visibleInLine(text) + "\n");
}

std::string fileFailure(const char* what, const std::string& path) {
    const int told = errno;
    // Not every system says so.
    std::error_code ignored;
    const bool isFolder = std::filesystem::is_directory(filePath(path), ignored);
    return what + (" '" + path) + "': " + std::generic_category().message(isFolder ? EISDIR : told);
}
