#pragma once

#include "KvCConsoleWriter.h"
#include "KvTCallbacks.h"

#include <string>

/// Collects what is written to its writer.
class KvCMessageCapture {
public:
    KvCMessageCapture() = default;
    KvCMessageCapture(const KvCMessageCapture&) = delete;
    KvCMessageCapture(KvCMessageCapture&&) = delete;
    KvCMessageCapture& operator=(const KvCMessageCapture&) = delete;
    KvCMessageCapture& operator=(KvCMessageCapture&&) = delete;
    ~KvCMessageCapture() = default;

    /// Writes what is to be collected.
    [[nodiscard]] const KvCConsoleWriter& writer() const { return writer_; }
    /// What was written so far, as bytes.
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    static void take(const std::string& message, void* capture) {
        static_cast<KvCMessageCapture*>(capture)->text_ += message;
    }

    /// Changed through the context, also of a capture that is constant.
    mutable std::string text_;
    KvTCallbacks callbacks_{.messageFunction = take, .messageContext = this};
    KvCConsoleWriter writer_{callbacks_};
};
