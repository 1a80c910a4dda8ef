#pragma once

#include "CommandLine.h"
#include "EventLog.h"
#include "KvISession.h"
#include "PlainProgress.h"
#include "RunningUpdate.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

/// The one session of a command, with the outputs that its messages and events go to.
///
/// The library writes to standard output itself unless that would lose text or the tool must see the messages.
class ToolSession {
public:
    /// `line` must outlive the session.
    explicit ToolSession(const KvTCommandLine& line);
    ToolSession(const ToolSession&) = delete;
    ToolSession(ToolSession&&) = delete;
    ToolSession& operator=(const ToolSession&) = delete;
    ToolSession& operator=(ToolSession&&) = delete;
    ~ToolSession() = default;

    [[nodiscard]] KvISession* operator->() const { return session_.get(); }
    [[nodiscard]] KvISession& get() const { return *session_; }

    /// Creates the file of the events if one is wanted. False, with errno, if that fails.
    [[nodiscard]] bool openEvents();
    /// Closes it; false if something could not be written.
    [[nodiscard]] bool closeEvents() { return events_.close(); }
    /// Keeps the messages instead of showing them, from now on.
    void keepMessages();
    /// What was said so far, as bytes, as far as the tool has seen it.
    [[nodiscard]] const std::string& messages() const { return messages_; }

    /// Serves the emulated targets of the line, and prepares the session. True if it may run.
    [[nodiscard]] bool prepare();
    /// Why it has failed so far.
    [[nodiscard]] KvNReflasher::KvTVerdict verdict() const;
    /// Runs the prepared session; an update so that interrupts concern it.
    [[nodiscard]] bool run();

private:
    static void takeMessage(const std::string& message, void* context);
    static void takeEvent(const KvNReflasher::KvTEvent& event, void* context);
    void onEvent(const KvNReflasher::KvTEvent& event);

    const KvTCommandLine& line_;
    std::unique_ptr<KvISession> session_;
    EventLog events_;
    /// Where messages are shown; null: nowhere.
    std::FILE* shown_;
    std::string messages_;
    /// Class target if an emulated target cannot be served.
    KvNReflasher::KvTVerdict served_;
    PlainProgress progress_;
    /// While an update runs.
    std::optional<RunningUpdate> update_;
};
