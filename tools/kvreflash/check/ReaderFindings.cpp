#include "ReaderFindings.h"

#include "KvNJson.h"
#include "RuleAdvice.h"

#include <algorithm>
#include <string>

namespace {

/// How a second line of the reader's messages begins; its last blank is what is left of it.
constexpr std::string_view nextLine = "\n       ";

/// The message without the word that it begins with and the end of its line.
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

/// Why a description is no JSON, where that shows.
void addInvalidJson(FindingList& list, std::string message, std::string_view text) {
    std::string reason = "This is not JSON.";
    std::size_t offset = 0;
    (void)KvNJson::json::parse(text, &reason, &offset);
    list.addAt(KvESeverity::error, codeOf(KvEArchiveRule::descriptionIsJson), offset, std::move(message),
               std::move(reason));
}

} // namespace

bool ReaderFindings::takeError(const KvTArchiveFinding& finding) {
    taken_.push_back({finding, KvESeverity::error, messages_.text().size()});
    return true;
}

void ReaderFindings::takeWarning(const KvTArchiveFinding& finding) {
    taken_.push_back({finding, KvESeverity::warning, messages_.text().size()});
    skippedEntries_.push_back(finding.entry);
}

bool ReaderFindings::isSkipped(std::uint32_t entry) const {
    return std::binary_search(skippedEntries_.begin(), skippedEntries_.end(), entry);
}

std::string_view ReaderFindings::messageOf(std::size_t index) const {
    const std::string_view messages = messages_.text();
    const std::size_t begin = taken_[index].messageBegin;
    const std::size_t end = index + 1 < taken_.size() ? taken_[index + 1].messageBegin : messages.size();
    return messages.substr(begin, end - begin);
}

void ReaderFindings::addTo(FindingList& list, const JsonOutline& outline, std::string_view text) const {
    for (std::size_t index = 0; index < taken_.size(); ++index) {
        const KvTArchiveFinding& finding = taken_[index].finding;
        std::string message = sentenceOf(messageOf(index));
        if (finding.rule == KvEArchiveRule::descriptionIsJson) {
            addInvalidJson(list, std::move(message), text);
            continue;
        }
        KvTRuleAdvice advice = adviceOn(finding, outline.root());
        list.add(taken_[index].severity, advice.code, advice.place, std::move(message), std::move(advice.hint));
    }
}
