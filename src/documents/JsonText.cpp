#include "JsonText.h"

#include <utility>

namespace KvNReflasher {

namespace {

/// True of a text that JSON has as it is, between quotation marks. The loop has no way out, so that it looks at many
/// characters at once.
bool isPlain(std::string_view text) {
    bool isPlain = true;
    for (const char character : text) {
        isPlain &= (character >= ' ') & (character <= '~') & (character != '"') & (character != '\\');
    }
    return isPlain;
}

std::string compact(const KvNJson::json& value) {
    return value.dump(-1, ' ', false, KvNJson::error_handler_t::replace);
}

void appendText(std::string& json, std::string_view text) {
    if (isPlain(text)) {
        json.append(1, '"').append(text).append(1, '"');
    } else {
        json.append(compact(text));
    }
}

} // namespace

KvCJsonText::KvCJsonText(std::string_view text) {
    appendText(text_, text);
}

KvCJsonText::KvCJsonText(const KvNJson::json& value) : text_(compact(value)) {}

KvCJsonText KvCJsonText::bracketed(const char* brackets) {
    KvCJsonText value;
    value.text_ = brackets;
    return value;
}

/// Takes the closing bracket away, and makes room for so many bytes, brackets, a comma and a line end.
void KvCJsonText::openFor(std::size_t size) {
    constexpr std::size_t punctuation = 8;
    constexpr std::size_t sizeOfEmpty = 2;
    const bool isFirst = text_.size() == sizeOfEmpty;
    text_.reserve(text_.size() + size + punctuation);
    text_.pop_back();
    if (!isFirst) {
        text_ += ',';
    }
}

void KvCJsonText::openFor(std::string_view key, std::size_t valueSize) {
    openFor(key.size() + valueSize);
    text_.append(1, '"').append(key).append("\":");
}

void KvCJsonText::set(std::string_view key, const KvCJsonText& value) {
    openFor(key, value.text_.size());
    text_.append(value.text_).append(1, '}');
}

void KvCJsonText::set(std::string_view key, std::string_view text) {
    openFor(key, text.size());
    appendText(text_, text);
    text_ += '}';
}

void KvCJsonText::append(const KvCJsonText& value) {
    openFor(value.text_.size());
    text_.append(value.text_).append(1, ']');
}

std::string KvCJsonText::takeLine() && {
    text_ += '\n';
    return std::move(text_);
}

} // namespace KvNReflasher
