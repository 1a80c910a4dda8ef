#include "WideFormat.h"

#include <cstdarg>
#include <cwchar>

// The C runtime's own functions are wanted: "%s" is wide, "%hs" narrow there. The MinGW headers replace the standard
// names by formatters of another reading, but not these.
#if defined(__MINGW32__)
#define KV_RUNTIME_VFWPRINTF __ms_vfwprintf
#else
#define KV_RUNTIME_VFWPRINTF vfwprintf
#endif

namespace {

constexpr int normalised(int result) {
    return result < 0 ? -1 : result;
}

} // namespace

bool decodesNarrowText() {
    return false;
}

int countFormatted(const wchar_t* format, std::va_list arguments) {
    return normalised(_vscwprintf(format, arguments));
}

int formatIntoBuffer(wchar_t* buffer, std::size_t size, const wchar_t* format, std::va_list arguments) {
    return normalised(_vsnwprintf(buffer, size, format, arguments));
}

int writeFormatted(std::FILE* stream, const wchar_t* format, std::va_list arguments) {
    return normalised(KV_RUNTIME_VFWPRINTF(stream, format, arguments));
}
