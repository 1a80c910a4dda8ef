#include "StreamFiles.h"

#include "FilePath.h"

std::FILE* createFile(const std::string& path) {
    std::FILE* file = nullptr;
    return _wfopen_s(&file, filePath(path).c_str(), L"wb") == 0 ? file : nullptr;
}
