#include "FindingList.h"

#include <algorithm>
#include <utility>

using namespace KvNReflasher;

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Goes through a text once and tells lines and columns on the way.
class TextPosition {
public:
    explicit TextPosition(std::string_view text)
        : text_(text), offset_(text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0) {}

    /// Goes on to `offset`, which lies not before the one that was asked for last.
    void advance(std::size_t offset) {
        for (const std::size_t end = std::min(offset, text_.size()); offset_ < end; ++offset_) {
            step(static_cast<unsigned char>(text_[offset_]));
        }
    }

    [[nodiscard]] std::size_t line() const { return line_; }
    [[nodiscard]] std::size_t column() const { return column_; }

private:
    void step(unsigned char byte) {
        constexpr unsigned char continuationMask = 0xC0;
        constexpr unsigned char continuation = 0x80;
        if (byte == '\n') {
            ++line_;
            column_ = 1;
        } else if ((byte & continuationMask) != continuation) {
            ++column_;
        }
    }

    std::string_view text_;
    std::size_t offset_;
    std::size_t line_ = 1;
    std::size_t column_ = 1;
};

} // namespace

void KvCFindingList::add(const KvTFindingRow& row, KvCOutlineValue value, std::string message, std::string hint) {
    addAt(row, value.offset(), std::move(message), std::move(hint));
    findings_.back().finding.path = value.path();
}

void KvCFindingList::addAt(const KvTFindingRow& row, std::size_t offset, std::string message, std::string hint) {
    auto& [finding, place] = findings_.emplace_back();
    place = offset;
    finding.severity = row.severity;
    finding.code = row.code;
    finding.message = std::move(message);
    finding.hint = std::move(hint);
}

void KvCFindingList::warn(KvECheckRule rule, KvCOutlineValue value, std::string message, std::string_view hintText) {
    const KvTFindingRow& row = findingRow(rule);
    add(row, value, std::move(message), hintOf(row, hintText));
}

void KvCFindingList::warnAtKey(KvECheckRule rule, KvCOutlineValue member, std::string message,
                               std::string_view hintText) {
    warn(rule, member, std::move(message), hintText);
    findings_.back().offset = member.keyOffset();
}

std::vector<KvTFinding> KvCFindingList::takeInOrder(std::string_view text) {
    std::vector<PlacedFinding> placed = std::exchange(findings_, {});
    std::stable_sort(placed.begin(), placed.end(),
                     [](const PlacedFinding& a, const PlacedFinding& b) { return a.offset < b.offset; });
    TextPosition position(text);
    std::vector<KvTFinding> ordered;
    ordered.reserve(placed.size());
    for (auto& [finding, offset] : placed) {
        position.advance(offset);
        finding.line = position.line();
        finding.column = position.column();
        ordered.push_back(std::move(finding));
    }
    return ordered;
}

std::string inQuotes(std::string_view text) {
    std::string result(1, '"');
    result += text;
    result += '"';
    return result;
}
