#include "Records.h"

#include "TextConversion.h"

#include <array>
#include <cstdio>

namespace {

constexpr std::size_t longestErrorText = 512;

std::array<char, longestErrorText>& lastError() {
    thread_local std::array<char, longestErrorText> text{};
    return text;
}

} // namespace

void noteLastError(const char* text) noexcept {
    (void)std::snprintf(lastError().data(), lastError().size(), "%s", text);
}

const char* KVR_CALL kvr_last_error(void) {
    return lastError().data();
}

void requireOut(const void* out) {
    if (out == nullptr) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "there is no room for the result");
    }
}

void requireIndex(std::size_t index, std::size_t count) {
    if (index >= count) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "the index is past the end");
    }
}

std::string textOf(const char* given) {
    return given != nullptr ? given : "";
}

std::wstring pathOf(const char* given) {
    if (given == nullptr || *given == '\0') {
        return {};
    }
    std::wstring path = utf8ToWide(given);
    if (path.empty()) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "a text is not UTF-8");
    }
    return path;
}
