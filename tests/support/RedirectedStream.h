#pragma once

#include "ScratchFolder.h"

#include <cstdio>
#include <string>

/// What a text stream has written, as it was given: without the carriage return that some systems put before a line
/// end.
[[nodiscard]] std::string writtenLines(std::string bytes);

/// Leads a standard stream into a file of its own, or elsewhere, while it lives.
class RedirectedStream {
public:
    explicit RedirectedStream(std::FILE* stream);
    /// Into what `path` names.
    RedirectedStream(std::FILE* stream, const std::string& path);
    RedirectedStream(const RedirectedStream&) = delete;
    RedirectedStream(RedirectedStream&&) = delete;
    RedirectedStream& operator=(const RedirectedStream&) = delete;
    RedirectedStream& operator=(RedirectedStream&&) = delete;
    ~RedirectedStream();

    /// What has arrived in the file so far, without what the process still buffers.
    [[nodiscard]] std::string received() const { return writtenLines(folder_.read(fileName)); }

private:
    static constexpr const char* fileName = "stream";

    void redirect(const std::string& path);

    ScratchFolder folder_;
    std::FILE* stream_;
    int formerDescriptor_;
};
