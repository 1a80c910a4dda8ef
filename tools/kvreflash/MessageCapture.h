#pragma once

#include "KvTCallbacks.h"

#include <string>

/// Collects a session's messages while it lives. Notification functions are given no context: only the newest capture
/// receives messages.
class MessageCapture {
public:
    MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    ~MessageCapture();

    /// The function that receives messages.
    [[nodiscard]] static KvNReflasher::KvTMessageCallback callback() { return take; }
    /// What was said so far, as bytes.
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    static void take(const std::wstring& message);

    static MessageCapture* current;
    MessageCapture* previous_;
    std::string text_;
};
