#include "Streams.h"

#include <unistd.h>

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return true;
}

std::FILE* createFile(const std::filesystem::path& path) {
    return std::fopen(path.c_str(), "wbe");
}
