#pragma once

#include "KvCConsoleWriter.h"
#include "KvTCallbacks.h"

#include <string>

/// Collects what is written while it lives. Notification functions are given no context: whatever capture's writer is
/// used, the newest capture receives what it writes.
class MessageCapture {
public:
    MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    ~MessageCapture();

    /// Writes what is to be collected.
    [[nodiscard]] const KvCConsoleWriter& writer() const { return writer_; }
    /// What was written so far, as bytes.
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    static void take(const std::wstring& message);

    static MessageCapture* current;
    MessageCapture* previous_;
    KvTCallbacks callbacks_{.message = take};
    KvCConsoleWriter writer_{callbacks_};
    std::string text_;
};
