#include "KvCConsoleWriter.h"

#include "MessageEncoding.h"
#include "WideFormat.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

void KvCConsoleWriter::deliver(const std::wstring& text) const {
    if (callbacks_.messageFunction != nullptr) {
        callbacks_.messageFunction(messageBytes(text), callbacks_.messageContext);
    } else {
        callbacks_.message(text);
    }
}

int KvCConsoleWriter::writeToStandardOutput(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = writeFormatted(stdout, format, arguments);
    va_end(arguments);
    std::fflush(stdout);
    return result;
}

// The result may be among the arguments: it changes last.
int KvCConsoleWriter::formatArguments(std::wstring& result, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = countFormatted(format, arguments);
    va_end(arguments);
    if (length <= 0) {
        result.clear();
        return length;
    }
    const auto size = static_cast<std::size_t>(length) + 1;
    const auto buffer = std::make_unique_for_overwrite<wchar_t[]>(size);
    va_start(arguments, format);
    formatIntoBuffer(buffer.get(), size, format, arguments);
    va_end(arguments);
    buffer[size - 1] = L'\0';
    result.assign(buffer.get()); // to its end: the length counts the bytes of narrow texts
    return length;
}
