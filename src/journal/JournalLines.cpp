#include "JournalLines.h"

#include "Crypto.h"

#include <algorithm>

std::string KvCLineChain::beginning() const {
    std::string text = R"({"number":)";
    return text.append(std::to_string(number_)).append(R"(,"previous":")").append(digest_).append(R"(",)");
}

void KvCLineChain::take(std::string_view line) {
    digest_ = hexOf(sha256Of(bytesOf(line)));
    ++number_;
}

void KvCLineChain::addTo(std::string& text, std::string_view record) {
    const std::size_t start = text.size();
    text.append(beginning()).append(record.substr(1));
    take(std::string_view(text).substr(start, text.size() - start - 1));
}

bool KvCLineChain::continuesWith(std::string_view line) {
    if (!line.starts_with(beginning())) {
        return false;
    }
    take(line);
    return true;
}

KvTJournalText journalTextOf(std::string_view text) {
    KvTJournalText result;
    KvCLineChain chain;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        const std::string_view line = text.substr(0, end);
        if (!chain.continuesWith(line)) {
            result.fault = "line " + std::to_string(result.lines.size() + 1) +
                           " does not follow the one before: the file was changed";
            return result;
        }
        result.lines.push_back(line);
        text.remove_prefix(end + 1);
    }
    return result;
}
