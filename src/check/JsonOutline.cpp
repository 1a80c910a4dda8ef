#include "JsonOutline.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view betweenTokens = " \t\r\n,:";

bool isPlainKey(std::string_view key) {
    const auto isPlain = [](unsigned char character) {
        return character < 0x80 && (std::isalnum(character) != 0 || character == '_');
    };
    return !key.empty() && std::isdigit(static_cast<unsigned char>(key.front())) == 0 &&
           std::all_of(key.begin(), key.end(), isPlain);
}

/// One step of a path into an object.
std::string keyStep(std::string_view key) {
    if (isPlainKey(key)) {
        std::string step(1, '.');
        step += key;
        return step;
    }
    std::string step = "['";
    for (const char character : key) {
        if (character == '\'' || character == '\\') {
            step += '\\';
        }
        step += character;
    }
    return step += "']";
}

/// One step of a path into an array.
std::string itemStep(std::ptrdiff_t position) {
    std::string step(1, '[');
    step += std::to_string(position);
    step += ']';
    return step;
}

/// Memory of RapidJSON, which would go on with a null when it is exhausted.
class ThrowingAllocator {
public:
    // The names are those that it asks for.
    static void* Malloc(std::size_t size) { return size != 0 ? ::operator new(size) : nullptr; }
    static void* Realloc(void* block, std::size_t size, std::size_t newSize) {
        void* const result = Malloc(newSize);
        if (block != nullptr && result != nullptr) {
            std::memcpy(result, block, std::min(size, newSize));
        }
        Free(block);
        return result;
    }
    static void Free(void* block) { ::operator delete(block); }
};

} // namespace

/// Notes what RapidJSON meets. The names are those that it asks for.
class KvCJsonOutline::Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
public:
    /// The text begins at `begin`.
    Builder(KvCJsonOutline& outline, std::size_t begin) : outline_(outline), text_(outline.text_), end_(begin) {}

    bool Null() { return takeWord(KvEJsonKind::null, "null"); }
    bool Bool(bool value) { return takeWord(KvEJsonKind::boolean, value ? "true" : "false"); }
    bool RawNumber(const char* /*digits*/, rapidjson::SizeType length, bool /*copy*/) {
        Record& record = addValue(KvEJsonKind::number);
        record.begin = record.offset;
        record.count = length;
        end_ = record.offset + length;
        return true;
    }
    bool String(const char* content, rapidjson::SizeType length, bool /*copy*/) {
        takeContent(addValue(KvEJsonKind::text), {content, length});
        return true;
    }
    bool Key(const char* content, rapidjson::SizeType length, bool /*copy*/) {
        Record& record = addRecord(KvEJsonKind::text);
        record.isKey = true;
        takeContent(record, {content, length});
        return true;
    }
    bool StartObject() { return open(KvEJsonKind::object); }
    bool EndObject(rapidjson::SizeType /*count*/) { return close(); }
    bool StartArray() { return open(KvEJsonKind::array); }
    bool EndArray(rapidjson::SizeType /*count*/) { return close(); }

private:
    /// An array or object whose end has not been met, and where its values begin in pending_.
    struct Open {
        std::uint32_t index;
        std::size_t firstPending;
    };

    /// The next token begins where the blanks and marks behind the last one end.
    [[nodiscard]] std::size_t nextToken() const {
        return std::min(text_.find_first_not_of(betweenTokens, end_), text_.size());
    }

    [[nodiscard]] std::uint32_t lastIndex() const { return static_cast<std::uint32_t>(outline_.records_.size() - 1); }

    /// Begins with the next token.
    Record& addRecord(KvEJsonKind kind) {
        Record& record = outline_.records_.emplace_back();
        record.kind = kind;
        record.offset = static_cast<std::uint32_t>(nextToken());
        record.parent = open_.empty() ? 0 : open_.back().index;
        return record;
    }

    Record& addValue(KvEJsonKind kind) {
        Record& record = addRecord(kind);
        if (!open_.empty()) {
            pending_.push_back(lastIndex());
        }
        return record;
    }

    /// Notes the content of a token in quotation marks and goes on behind it.
    void takeContent(Record& record, std::string_view content) {
        record.begin = record.offset + 1;
        record.count = static_cast<std::uint32_t>(content.size());
        end_ = record.begin + content.size();
        if (end_ < text_.size() && text_[end_] == '"' && text_.substr(record.begin, content.size()) == content) {
            ++end_;
            return;
        }
        record.begin = static_cast<std::uint32_t>(text_.size() + outline_.decoded_.size());
        outline_.decoded_ += content;
        end_ = record.offset + 1;
        while (end_ < text_.size() && text_[end_] != '"') {
            end_ += text_[end_] == '\\' ? 2 : 1;
        }
        ++end_;
    }

    bool takeWord(KvEJsonKind kind, std::string_view word) {
        end_ = addValue(kind).offset + word.size();
        return true;
    }

    bool open(KvEJsonKind kind) {
        end_ = addValue(kind).offset + std::size_t{1};
        open_.push_back({lastIndex(), pending_.size()});
        return true;
    }

    bool close() {
        const Open closed = open_.back();
        open_.pop_back();
        Record& record = outline_.records_[closed.index];
        const auto first = pending_.begin() + static_cast<std::ptrdiff_t>(closed.firstPending);
        record.begin = static_cast<std::uint32_t>(outline_.children_.size());
        record.count = static_cast<std::uint32_t>(pending_.end() - first);
        outline_.children_.insert(outline_.children_.end(), first, pending_.end());
        pending_.erase(first, pending_.end());
        end_ = nextToken() + 1;
        return true;
    }

    KvCJsonOutline& outline_;
    std::string_view text_;
    /// End of the last token.
    std::size_t end_;
    std::vector<Open> open_;
    /// The values of all open arrays and objects so far.
    std::vector<std::uint32_t> pending_;
};

KvCJsonOutline::KvCJsonOutline(std::string_view text) : text_(text) {
    // Twice the size is still an offset: decoded contents lie behind the text.
    if (text.size() > std::numeric_limits<std::uint32_t>::max() / 2) {
        return;
    }
    const std::size_t begin = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    rapidjson::MemoryStream stream(text.data() + begin, text.size() - begin);
    Builder builder(*this, begin);
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator> reader;
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    if (reader.Parse<flags>(stream, builder).IsError()) {
        records_.clear();
        children_.clear();
    }
}

const KvCJsonOutline::Record* KvCJsonOutline::keyOf(std::uint32_t index) const {
    return index > 0 && records_[index - 1].isKey ? &records_[index - 1] : nullptr;
}

std::string_view KvCJsonOutline::contentOf(const Record& record) const {
    return record.begin < text_.size() ? text_.substr(record.begin, record.count)
                                       : std::string_view(decoded_).substr(record.begin - text_.size(), record.count);
}

std::string KvCJsonOutline::stepTo(std::uint32_t index) const {
    if (const Record* const key = keyOf(index); key != nullptr) {
        return keyStep(contentOf(*key));
    }
    const Record& parent = records_[records_[index].parent];
    const auto first = children_.begin() + static_cast<std::ptrdiff_t>(parent.begin);
    return itemStep(std::lower_bound(first, first + static_cast<std::ptrdiff_t>(parent.count), index) - first);
}

KvEJsonKind KvCOutlineValue::kind() const {
    return isValid() ? outline_->recordOf(*this).kind : KvEJsonKind::nothing;
}

std::size_t KvCOutlineValue::offset() const {
    return isValid() ? outline_->recordOf(*this).offset : 0;
}

std::size_t KvCOutlineValue::keyOffset() const {
    const KvCJsonOutline::Record* const key = isValid() ? outline_->keyOf(index_) : nullptr;
    return key != nullptr ? key->offset : offset();
}

std::string_view KvCOutlineValue::key() const {
    const KvCJsonOutline::Record* const key = isValid() ? outline_->keyOf(index_) : nullptr;
    return key != nullptr ? outline_->contentOf(*key) : std::string_view();
}

std::string_view KvCOutlineValue::text() const {
    const bool hasContent = kind() == KvEJsonKind::text || kind() == KvEJsonKind::number;
    return hasContent ? outline_->contentOf(outline_->recordOf(*this)) : std::string_view();
}

std::optional<std::uint64_t> KvCOutlineValue::unsignedNumber() const {
    if (kind() != KvEJsonKind::number) {
        return std::nullopt;
    }
    const std::string_view digits = text() == "-0" ? "0" : text();
    std::uint64_t number = 0;
    const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return failed == std::errc() && end == digits.data() + digits.size() ? std::optional(number) : std::nullopt;
}

std::size_t KvCOutlineValue::size() const {
    const bool hasValues = kind() == KvEJsonKind::array || kind() == KvEJsonKind::object;
    return hasValues ? outline_->recordOf(*this).count : 0;
}

KvCOutlineValue KvCOutlineValue::at(std::size_t index) const {
    return index < size() ? KvCOutlineValue(*outline_, outline_->children_[outline_->recordOf(*this).begin + index])
                          : KvCOutlineValue();
}

KvCOutlineValue KvCOutlineValue::find(std::string_view key) const {
    if (kind() != KvEJsonKind::object) {
        return {};
    }
    for (std::size_t index = size(); index > 0; --index) {
        if (const KvCOutlineValue member = at(index - 1); member.key() == key) {
            return member;
        }
    }
    return {};
}

std::string KvCOutlineValue::path() const {
    std::vector<std::uint32_t> way;
    for (std::uint32_t index = index_; isValid() && index != 0; index = outline_->recordOf({*outline_, index}).parent) {
        way.push_back(index);
    }
    std::reverse(way.begin(), way.end());
    std::string path = "$";
    for (const std::uint32_t index : way) {
        path += outline_->stepTo(index);
    }
    return path;
}
