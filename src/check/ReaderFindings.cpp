#include "ReaderFindings.h"

#include "KvNJson.h"
#include "TextConversion.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

constexpr std::string_view blanks = " \t\r\n";

/// True when the first character that is none of UTF-8 is the one at `offset`, or one that ends there.
bool isNotUtf8At(std::string_view text, std::size_t offset) {
    constexpr unsigned char continuationMask = 0xC0;
    constexpr unsigned char continuation = 0x80;
    std::size_t end = std::min(offset + 1, text.size());
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & continuationMask) == continuation) {
        ++end;
    }
    const bool isUtf16 = text.substr(0, 2).find('\0') != std::string_view::npos;
    return isUtf16 || (end != 0 && utf8ToWide(std::string(text.substr(0, end)).c_str()).empty());
}

/// What to do about the fault at `offset`, where people often make it; empty elsewhere.
std::string hintOnFault(std::string_view text, std::size_t offset) {
    if (isNotUtf8At(text, offset)) {
        return "Save the file as UTF-8.";
    }
    const std::string_view rest = text.substr(std::min(offset, text.size()));
    if (rest.starts_with("//") || rest.starts_with("/*")) {
        return R"(JSON has no comments; every object may have a key "comment".)";
    }
    const std::size_t before = text.substr(0, text.size() - rest.size()).find_last_not_of(blanks);
    if (before == std::string_view::npos || text[before] != ',') {
        return {};
    }
    if (rest.starts_with(',')) {
        return "Remove one of the commas.";
    }
    return rest.starts_with('}') || rest.starts_with(']') ? "Remove the comma before it." : "";
}

/// Why a description is no JSON, where that shows.
void addInvalidJson(KvCFindingList& list, std::string message, std::string_view text) {
    std::string reason = "This is not JSON.";
    std::size_t offset = 0;
    (void)KvNJson::json::parse(text, &reason, &offset);
    if (std::string hint = hintOnFault(text, offset); !hint.empty()) {
        reason = std::move(hint);
    }
    list.addAt(findingRow(KvEArchiveRule::descriptionIsJson), offset, std::move(message), std::move(reason));
}

} // namespace

bool KvCReaderFindings::takeError(const KvTArchiveFinding& finding) {
    taken_.push_back({finding, messages_.text().size()});
    return true;
}

void KvCReaderFindings::takeWarning(const KvTArchiveFinding& finding) {
    taken_.push_back({finding, messages_.text().size()});
    skippedEntries_.push_back(finding.entry);
}

bool KvCReaderFindings::isSkipped(std::uint32_t entry) const {
    return std::binary_search(skippedEntries_.begin(), skippedEntries_.end(), entry);
}

std::string_view KvCReaderFindings::messageOf(std::size_t index) const {
    const std::string_view messages = messages_.text();
    const std::size_t begin = taken_[index].messageBegin;
    const std::size_t end = index + 1 < taken_.size() ? taken_[index + 1].messageBegin : messages.size();
    return messages.substr(begin, end - begin);
}

void KvCReaderFindings::addTo(KvCFindingList& list, const KvCJsonOutline& outline, std::string_view text,
                              KvCFolderFiles& folder) const {
    for (std::size_t index = 0; index < taken_.size(); ++index) {
        const KvTArchiveFinding& finding = taken_[index].finding;
        std::string message = sentenceOf(messageOf(index));
        if (finding.rule == KvEArchiveRule::descriptionIsJson) {
            addInvalidJson(list, std::move(message), text);
            continue;
        }
        KvTRuleAdvice advice = adviceOn(finding, outline.root());
        if (finding.rule == KvEArchiveRule::updateFileExists) {
            std::string suggestion = suggestionFor(advice.place.text(), folder);
            advice.hint = suggestion.empty() ? advice.hint : std::move(suggestion);
        }
        if (!finding.fileFault.empty()) {
            advice.hint = "It is " + finding.fileFault + ".";
        }
        list.add(findingRow(finding.rule), advice.place, std::move(message), std::move(advice.hint));
    }
}
