#pragma once

#include "KvDocuments.h"
#include "KvISession.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

/// Writes what happens while a command runs as JSON lines, each with its time.
class EventLog {
public:
    EventLog() = default;
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;
    ~EventLog() { (void)close(); }

    /// Creates `path` (UTF-8; "-": standard error), emptying an existing file. False, with errno, when that is not
    /// possible; a pipe that nobody reads is not waited for.
    [[nodiscard]] bool open(const std::string& path);
    /// True while lines are written.
    [[nodiscard]] bool isOpen() const { return file_ != nullptr; }

    // Each writes one line; nothing when no file is open.

    void writeRunBegin(const KvNReflasher::KvTReportFacts& facts);
    void writePlan(const KvNReflasher::KvTPlan& plan);
    /// What a session notifies of; a percentage that is the last one of its phase is left out.
    void write(const KvNReflasher::KvTEvent& event, const KvISession& session);
    void writeVerification(const KvNReflasher::KvTVerification& verification, const KvNReflasher::KvTVerdict& verdict);
    void writeRunEnd(const KvNReflasher::KvTVerdict& verdict, int exitCode);

    /// Closes the file; false when something could not be written.
    [[nodiscard]] bool close();

private:
    [[nodiscard]] std::string lineOf(const KvNReflasher::KvTEvent& event, const KvISession& session);
    void writeLine(const std::string& line);

    std::FILE* file_ = nullptr;
    bool complete_ = true;
    std::uint32_t phase_ = 0;
    /// Of the running phase.
    std::optional<std::uint32_t> percentage_;
};
