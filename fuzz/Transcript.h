#pragma once

#include "KvCConsoleWriter.h"
#include "KvTCallbacks.h"

#include <string>
#include <vector>

/// A console writer whose messages are kept, as bytes: a narrow text stands in a message with one character per byte,
/// and so it is taken out again. The messages are those of the process; a new transcript begins without any.
class Transcript {
public:
    Transcript() {
        callbacks_.message = keep;
        forget();
    }
    Transcript(const Transcript&) = delete;
    Transcript& operator=(const Transcript&) = delete;
    ~Transcript() = default;

    [[nodiscard]] const KvCConsoleWriter& writer() const { return writer_; }

    /// To be set as a message callback.
    static void keep(const std::wstring& message) {
        std::string& bytes = kept().emplace_back();
        bytes.reserve(message.size());
        for (const wchar_t character : message) {
            bytes += static_cast<char>(character);
        }
    }
    static void forget() { kept().clear(); }
    [[nodiscard]] static const std::vector<std::string>& messages() { return kept(); }
    /// The messages joined; they are forgotten.
    [[nodiscard]] static std::string take() {
        std::string text;
        for (const std::string& message : kept()) {
            text += message;
        }
        forget();
        return text;
    }

private:
    static std::vector<std::string>& kept() {
        static std::vector<std::string> messages;
        return messages;
    }

    KvTCallbacks callbacks_;
    KvCConsoleWriter writer_{callbacks_};
};
