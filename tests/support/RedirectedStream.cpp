#include "RedirectedStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string_view>
#include <unistd.h>

std::string writtenLines(std::string bytes) {
    if constexpr (std::filesystem::path::preferred_separator == '\\') {
        constexpr std::string_view lineEnd = "\r\n";
        for (std::size_t place = bytes.find(lineEnd); place != std::string::npos; place = bytes.find(lineEnd, place)) {
            bytes.erase(place, 1);
        }
    }
    return bytes;
}

RedirectedStream::RedirectedStream(std::FILE* stream) : stream_(stream), formerDescriptor_(dup(fileno(stream))) {
    redirect((folder_.path() / fileName).string());
}

RedirectedStream::RedirectedStream(std::FILE* stream, const std::string& path)
    : stream_(stream), formerDescriptor_(dup(fileno(stream))) {
    redirect(path);
}

void RedirectedStream::redirect(const std::string& path) {
    static_cast<void>(std::fflush(stream_));
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr || dup2(fileno(file), fileno(stream_)) < 0) {
        ADD_FAILURE() << "the stream cannot be led into " << path;
    }
    if (file != nullptr) {
        static_cast<void>(std::fclose(file));
    }
}

RedirectedStream::~RedirectedStream() {
    static_cast<void>(std::fflush(stream_));
    static_cast<void>(dup2(formerDescriptor_, fileno(stream_)));
    static_cast<void>(close(formerDescriptor_));
    std::clearerr(stream_);
}
