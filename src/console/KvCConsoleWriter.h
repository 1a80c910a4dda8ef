#pragma once

#include "KvCFormat.h"
#include "KvTCallbacks.h"

#include <string>
#include <type_traits>

/// Writes the session's messages: to the client's message function or callback if there is one, else to standard
/// output, which is flushed after each message.
class KvCConsoleWriter {
public:
    /// `callbacks` is looked at for every message and must outlive the writer.
    explicit KvCConsoleWriter(const KvTCallbacks& callbacks) : callbacks_(callbacks) {}

    /// Formats and writes one message. Result: the number of characters produced (narrow texts count bytes, so that
    /// a function may receive fewer), negative when formatting or writing failed. A message without characters is not
    /// handed to a function.
    template <typename... Arguments>
    int print(KvCFormat<std::type_identity_t<Arguments>...> format, Arguments... arguments) const {
        if (!hasReceiver()) {
            return writeToStandardOutput(format.text(), arguments...);
        }
        std::wstring text;
        const int length = formatArguments(text, format.text(), arguments...);
        if (length > 0) {
            deliver(text);
        }
        return length;
    }

    /// Formats into `result`, replacing what it held; empty when there is nothing or formatting failed. Result as of
    /// print().
    template <typename... Arguments>
    static int format(std::wstring& result, KvCFormat<std::type_identity_t<Arguments>...> format,
                      Arguments... arguments) {
        return formatArguments(result, format.text(), arguments...);
    }

    /// A function of the client receives the messages.
    [[nodiscard]] bool hasReceiver() const {
        return callbacks_.messageFunction != nullptr || callbacks_.message != nullptr;
    }

private:
    void deliver(const std::wstring& text) const;
    static int writeToStandardOutput(const wchar_t* format, ...);
    static int formatArguments(std::wstring& result, const wchar_t* format, ...);

    const KvTCallbacks& callbacks_;
};
