#include "ArchiveFindings.h"

#include "MessageEncoding.h"

namespace {

/// How a second line of a message begins; its last blank is what is left of it.
constexpr std::string_view nextLine = "\n       ";

/// With the line breaks that names hold as JSON writes them.
std::string onOneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (const char character : text) {
        if (character == '\n') {
            line += "\\n";
        } else if (character == '\r') {
            line += "\\r";
        } else {
            line += character;
        }
    }
    return line;
}

} // namespace

std::string sentenceOf(std::string_view message) {
    for (const std::string_view word : {"ERROR: ", "WARNING: "}) {
        if (message.starts_with(word)) {
            message.remove_prefix(word.size());
        }
    }
    if (message.ends_with('\n')) {
        message.remove_suffix(1);
    }
    std::string sentence(message);
    if (const std::size_t place = sentence.find(nextLine); place != std::string::npos) {
        sentence.erase(place, nextLine.size() - 1);
    }
    return sentence;
}

void KvCArchiveFindings::keepFirstError(const std::wstring& message, const std::string& fileFault) {
    firstError_ = onOneLine(sentenceOf(messageBytes(message)));
    if (!fileFault.empty()) {
        firstError_.append(" (it is ").append(fileFault).append(")");
    }
}
