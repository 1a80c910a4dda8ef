#include "KvCConsoleWriter.h"

#include "WideFormat.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

namespace {

/// Ends a started argument list at the end of the scope.
class ArgumentListEnd {
public:
    explicit ArgumentListEnd(std::va_list& list) : list_(list) {}
    ArgumentListEnd(const ArgumentListEnd&) = delete;
    ArgumentListEnd& operator=(const ArgumentListEnd&) = delete;
    ~ArgumentListEnd() { va_end(list_); }

private:
    std::va_list& list_;
};

/// Formats into `result`, which may be among the arguments: it changes last.
int formatList(std::wstring& result, const wchar_t* format, std::va_list arguments) {
    std::va_list counted;
    va_copy(counted, arguments);
    const int length = countFormatted(format, counted);
    va_end(counted);
    if (length <= 0) {
        result.clear();
        return length;
    }
    const auto size = static_cast<std::size_t>(length) + 1;
    const auto buffer = std::make_unique_for_overwrite<wchar_t[]>(size);
    formatIntoBuffer(buffer.get(), size, format, arguments);
    buffer[size - 1] = L'\0';
    result.assign(buffer.get(), size - 1);
    return length;
}

} // namespace

int KvCConsoleWriter::printArguments(const wchar_t* format, ...) const {
    std::va_list arguments;
    va_start(arguments, format);
    const ArgumentListEnd end(arguments);
    if (callbacks_.message == nullptr) {
        const int result = writeFormatted(stdout, format, arguments);
        std::fflush(stdout);
        return result;
    }
    std::wstring text;
    const int result = formatList(text, format, arguments);
    if (result > 0) {
        callbacks_.message(text);
    }
    return result;
}

int KvCConsoleWriter::formatArguments(std::wstring& result, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const ArgumentListEnd end(arguments);
    return formatList(result, format, arguments);
}
