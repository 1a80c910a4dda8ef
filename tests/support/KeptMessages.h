#pragma once

#include "KvCConsoleWriter.h"
#include "KvTCallbacks.h"

#include <string>
#include <vector>

/// A console writer whose messages are kept instead of printed. The messages are those of the process, so that one of
/// these is used at a time; a new one begins without any.
class KeptMessages {
public:
    KeptMessages() {
        callbacks_.message = keep;
        forget();
    }
    KeptMessages(const KeptMessages&) = delete;
    KeptMessages(KeptMessages&&) = delete;
    KeptMessages& operator=(const KeptMessages&) = delete;
    KeptMessages& operator=(KeptMessages&&) = delete;
    ~KeptMessages() = default;

    [[nodiscard]] const KvCConsoleWriter& writer() const { return writer_; }

    /// One by one.
    [[nodiscard]] static const std::vector<std::wstring>& list() { return kept(); }
    /// Joined.
    [[nodiscard]] static std::wstring text() {
        std::wstring result;
        for (const std::wstring& message : kept()) {
            result += message;
        }
        return result;
    }
    static void forget() { kept().clear(); }

private:
    static std::vector<std::wstring>& kept() {
        static std::vector<std::wstring> messages;
        return messages;
    }
    static void keep(const std::wstring& text) { kept().push_back(text); }

    KvTCallbacks callbacks_;
    KvCConsoleWriter writer_{callbacks_};
};
