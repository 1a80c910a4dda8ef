#include "StreamFiles.h"

#include "FilePath.h"

std::FILE* createFile(const std::string& path) {
    return std::fopen(filePath(path).c_str(), "wbe");
}
