#include "DescriptionFile.h"

#include <string_view>
#include <utility>

FileStream openDescription(const std::wstring& path) {
    FileStream file = openForReading(path);
    return file != nullptr && sizeOfOpenFile(*file) <= largestDescription ? std::move(file) : nullptr;
}

std::string faultOfDescription(const std::wstring& path) {
    const FileStream file = openForReading(path);
    if (file == nullptr) {
        return faultOfKind(path);
    }
    constexpr unsigned mebibyteShift = 20;
    return sizeOfOpenFile(*file) > largestDescription
               ? "larger than " + std::to_string(largestDescription >> mebibyteShift) + " MiB, the most that is read"
               : std::string();
}

std::string faultOfKind(const std::wstring& path) {
    const std::string_view kind = otherKindOf(path);
    return kind.empty() ? std::string() : std::string(kind).append(", not a regular file");
}
