#include "JsonOutline.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cctype>
#include <limits>

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
std::string itemStep(std::uint32_t position) {
    std::string step(1, '[');
    step += std::to_string(position);
    step += ']';
    return step;
}

} // namespace

/// Notes what RapidJSON meets. The names are those that it asks for.
class JsonOutline::Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
public:
    Builder(JsonOutline& outline, std::string_view text, std::size_t begin)
        : outline_(outline), text_(text), end_(begin) {}

    bool Null() { return take(KvEJsonKind::null, std::string_view("null").size()); }
    bool Bool(bool value) { return take(KvEJsonKind::boolean, std::string_view(value ? "true" : "false").size()); }
    bool RawNumber(const char* /*digits*/, rapidjson::SizeType length, bool /*copy*/) {
        const std::size_t begin = nextToken();
        Record& record = addRecord(KvEJsonKind::number, begin);
        record.text = text_.substr(begin, length);
        end_ = begin + length;
        return true;
    }
    bool String(const char* content, rapidjson::SizeType length, bool /*copy*/) {
        const std::size_t begin = nextToken();
        const std::string_view text = takeText(begin, {content, length});
        addRecord(KvEJsonKind::text, begin).text = text;
        return true;
    }
    bool Key(const char* content, rapidjson::SizeType length, bool /*copy*/) {
        const std::size_t begin = nextToken();
        key_ = takeText(begin, {content, length});
        keyOffset_ = begin;
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

    /// The text at `begin`, whose content is `content`. Goes on behind it.
    std::string_view takeText(std::size_t begin, std::string_view content) {
        const std::string_view written = text_.substr(begin + 1, content.size());
        const std::size_t close = begin + 1 + content.size();
        if (written == content && close < text_.size() && text_[close] == '"') {
            end_ = close + 1;
            return written;
        }
        end_ = begin + 1;
        while (end_ < text_.size() && text_[end_] != '"') {
            end_ += text_[end_] == '\\' ? 2 : 1;
        }
        ++end_;
        return outline_.decoded_.emplace_back(content);
    }

    Record& addRecord(KvEJsonKind kind, std::size_t begin) {
        const auto index = static_cast<std::uint32_t>(outline_.records_.size());
        Record& record = outline_.records_.emplace_back();
        record.kind = kind;
        record.offset = static_cast<std::uint32_t>(begin);
        record.keyOffset = record.offset;
        if (open_.empty()) {
            return record;
        }
        const Open& in = open_.back();
        record.parent = in.index;
        record.position = static_cast<std::uint32_t>(pending_.size() - in.firstPending);
        pending_.push_back(index);
        if (outline_.records_[in.index].kind == KvEJsonKind::object) {
            record.key = key_;
            record.keyOffset = static_cast<std::uint32_t>(keyOffset_);
        }
        return record;
    }

    bool take(KvEJsonKind kind, std::size_t length) {
        const std::size_t begin = nextToken();
        addRecord(kind, begin);
        end_ = begin + length;
        return true;
    }

    bool open(KvEJsonKind kind) {
        take(kind, 1);
        open_.push_back({static_cast<std::uint32_t>(outline_.records_.size() - 1), pending_.size()});
        return true;
    }

    bool close() {
        const Open closed = open_.back();
        open_.pop_back();
        Record& record = outline_.records_[closed.index];
        const auto first = pending_.begin() + static_cast<std::ptrdiff_t>(closed.firstPending);
        record.firstChild = static_cast<std::uint32_t>(outline_.children_.size());
        record.childCount = static_cast<std::uint32_t>(pending_.end() - first);
        outline_.children_.insert(outline_.children_.end(), first, pending_.end());
        pending_.erase(first, pending_.end());
        end_ = nextToken() + 1;
        return true;
    }

    JsonOutline& outline_;
    std::string_view text_;
    /// End of the last token.
    std::size_t end_;
    std::string_view key_;
    std::size_t keyOffset_ = 0;
    std::vector<Open> open_;
    /// The values of all open arrays and objects so far.
    std::vector<std::uint32_t> pending_;
};

JsonOutline::JsonOutline(std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return;
    }
    const std::size_t begin = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    rapidjson::MemoryStream stream(text.data() + begin, text.size() - begin);
    Builder builder(*this, text, begin);
    rapidjson::Reader reader;
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    if (reader.Parse<flags>(stream, builder).IsError()) {
        records_.clear();
        children_.clear();
    }
}

OutlineValue JsonOutline::value(std::size_t index) const {
    return index < records_.size() ? OutlineValue(*this, static_cast<std::uint32_t>(index)) : OutlineValue();
}

KvEJsonKind OutlineValue::kind() const {
    return isValid() ? outline_->recordOf(*this).kind : KvEJsonKind::nothing;
}

std::size_t OutlineValue::offset() const {
    return isValid() ? outline_->recordOf(*this).offset : 0;
}

std::size_t OutlineValue::keyOffset() const {
    return isValid() ? outline_->recordOf(*this).keyOffset : 0;
}

std::string_view OutlineValue::key() const {
    return isValid() ? outline_->recordOf(*this).key : std::string_view();
}

std::string_view OutlineValue::text() const {
    return isValid() ? outline_->recordOf(*this).text : std::string_view();
}

std::size_t OutlineValue::size() const {
    return isValid() ? outline_->recordOf(*this).childCount : 0;
}

OutlineValue OutlineValue::at(std::size_t index) const {
    return index < size() ? outline_->value(outline_->children_[outline_->recordOf(*this).firstChild + index])
                          : OutlineValue();
}

OutlineValue OutlineValue::find(std::string_view key) const {
    if (kind() != KvEJsonKind::object) {
        return {};
    }
    for (std::size_t index = size(); index > 0; --index) {
        if (const OutlineValue member = at(index - 1); member.key() == key) {
            return member;
        }
    }
    return {};
}

std::string OutlineValue::path() const {
    std::vector<std::uint32_t> way;
    for (std::uint32_t index = index_; isValid() && index != 0; index = outline_->records_[index].parent) {
        way.push_back(index);
    }
    std::reverse(way.begin(), way.end());
    std::string path = "$";
    for (const std::uint32_t index : way) {
        const JsonOutline::Record& record = outline_->records_[index];
        const bool isMember = outline_->records_[record.parent].kind == KvEJsonKind::object;
        path += isMember ? keyStep(record.key) : itemStep(record.position);
    }
    return path;
}
