#pragma once

#include "KvCConsoleWriter.h"
#include "KvTCallbacks.h"
#include "TextConversion.h"
#include "WideFormat.h"

#include <string>
#include <vector>

/// A console writer whose messages are kept, as bytes: narrow texts that are UTF-8 come back as they were. The messages
/// are those of the process; a new transcript begins without any.
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
    static void keep(const std::wstring& message) { kept().push_back(bytesOf(message)); }
    /// The bytes of a message.
    [[nodiscard]] static std::string bytesOf(const std::wstring& message) {
        if (decodesNarrowText()) {
            return wideToUtf8(message.c_str());
        }
        std::string bytes;
        bytes.reserve(message.size());
        for (const wchar_t character : message) {
            bytes += static_cast<char>(character);
        }
        return bytes;
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
