#include "JsonText.h"

#include <algorithm>
#include <array>
#include <utility>

namespace KvNReflasher {

namespace {

/// The characters that a JSON text has as they are.
constexpr std::array<bool, 256> plainCharacters = [] {
    std::array<bool, 256> arePlain{};
    for (std::size_t character = ' '; character <= '~'; ++character) {
        arePlain[character] = character != '"' && character != '\\';
    }
    return arePlain;
}();

bool isPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return plainCharacters[static_cast<unsigned char>(character)]; });
}

std::string compact(const KvNJson::json& value) {
    return value.dump(-1, ' ', false, KvNJson::error_handler_t::replace);
}

void appendText(std::string& json, std::string_view text) {
    if (isPlain(text)) {
        json += '"';
        json += text;
        json += '"';
    } else {
        json += compact(text);
    }
}

} // namespace

KvCJsonText::KvCJsonText(std::string_view text) {
    appendText(text_, text);
}

KvCJsonText::KvCJsonText(const KvNJson::json& value) : text_(compact(value)) {}

KvCJsonText KvCJsonText::bracketed(const char* brackets) {
    constexpr std::size_t usualSize = 512;
    KvCJsonText value;
    value.text_.reserve(usualSize);
    value.text_ = brackets;
    return value;
}

/// Puts a comma, if one is needed, into the place of the closing bracket.
void KvCJsonText::open() {
    constexpr std::size_t sizeOfEmpty = 2;
    if (text_.size() == sizeOfEmpty) {
        text_.pop_back();
    } else {
        text_.back() = ',';
    }
}

void KvCJsonText::openFor(std::string_view key) {
    open();
    text_ += '"';
    text_ += key;
    text_ += "\":";
}

void KvCJsonText::set(std::string_view key, const KvCJsonText& value) {
    openFor(key);
    text_ += value.text_;
    text_ += '}';
}

void KvCJsonText::set(std::string_view key, std::string_view text) {
    openFor(key);
    appendText(text_, text);
    text_ += '}';
}

void KvCJsonText::append(const KvCJsonText& value) {
    open();
    text_ += value.text_;
    text_ += ']';
}

std::string KvCJsonText::takeLine() && {
    text_ += '\n';
    return std::move(text_);
}

} // namespace KvNReflasher
