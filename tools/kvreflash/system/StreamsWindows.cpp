#include "Streams.h"

#include <io.h>

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return false;
}

std::FILE* createFile(const std::filesystem::path& path) {
    std::FILE* file = nullptr;
    return _wfopen_s(&file, path.c_str(), L"wb") == 0 ? file : nullptr;
}
