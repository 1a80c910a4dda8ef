#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// Writes a session's notifications as JSON lines.
class EventLog {
public:
    EventLog() = default;
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;
    ~EventLog() { (void)close(); }

    /// Creates `path` (UTF-8; "-": standard error), emptying an existing file. False, with errno, when that is not
    /// possible; a pipe that nobody reads is not waited for.
    [[nodiscard]] bool open(const std::string& path);
    /// Writes one notification; nothing when no file is open.
    void write(const char* event, std::uint32_t value);
    /// Closes the file; false when something could not be written.
    [[nodiscard]] bool close();

private:
    std::FILE* file_ = nullptr;
    bool complete_ = true;
};
