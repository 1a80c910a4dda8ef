#pragma once

#include "KvCFormat.h"
#include "KvTCallbacks.h"

#include <string>
#include <type_traits>

/// Writes the session's messages: to the client's message callback when there is one, else to standard output, which
/// is flushed after each message.
class KvCConsoleWriter {
public:
    /// `callbacks` is looked at for every message and must outlive the writer.
    explicit KvCConsoleWriter(const KvTCallbacks& callbacks) : callbacks_(callbacks) {}

    /// True if messages go to the client's callback.
    [[nodiscard]] bool hasMessageCallback() const { return callbacks_.message != nullptr; }

    /// Formats and writes one message. Result: the number of characters produced (narrow texts count bytes, so that
    /// the callback may receive fewer), negative when formatting or writing failed. A message without characters is not
    /// handed to the callback.
    template <typename... Arguments>
    int print(KvCFormat<std::type_identity_t<Arguments>...> format, Arguments... arguments) const {
        if (!hasMessageCallback()) {
            return writeToStandardOutput(format.text(), arguments...);
        }
        std::wstring text;
        const int length = formatArguments(text, format.text(), arguments...);
        if (length > 0) {
            callbacks_.message(text);
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

private:
    static int writeToStandardOutput(const wchar_t* format, ...);
    static int formatArguments(std::wstring& result, const wchar_t* format, ...);

    const KvTCallbacks& callbacks_;
};
