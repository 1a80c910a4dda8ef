#include "JsonPlace.h"

#include <cmath>
#include <utility>

namespace {

bool isPlainKey(std::string_view key) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    constexpr std::string_view digits = "0123456789";
    return !key.empty() && letters.find(key.front()) != std::string_view::npos &&
           std::string_view::npos == key.find_first_not_of(std::string(letters) + std::string(digits));
}

std::string rangeText(std::int64_t lowest, std::uint64_t highest) {
    return std::to_string(lowest) + " to " + std::to_string(highest);
}

} // namespace

JsonPlace JsonPlace::member(std::size_t index) const noexcept {
    return {*this, value_.at(index), value_.key(index), isMember};
}

JsonPlace JsonPlace::member(std::string_view key) const noexcept {
    return {*this, value_.find(key), key, isMember};
}

JsonPlace JsonPlace::item(std::size_t index) const noexcept {
    return {*this, value_.at(index), std::string_view(), index};
}

bool JsonPlace::refuse(std::string reason) const {
    if (refusal_->reason.empty()) {
        refusal_->path = path();
        refusal_->reason = std::move(reason);
    }
    return false;
}

std::string JsonPlace::path() const {
    if (above_ == nullptr) {
        return "$";
    }
    // As deep as the document.
    std::string text = above_->path();
    if (index_ != isMember) {
        return text + '[' + std::to_string(index_) + ']';
    }
    if (isPlainKey(key_)) {
        text += '.';
        text += key_;
        return text;
    }
    return text + '[' + JsonValues::quoted(key_) + ']';
}

namespace JsonValues {

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 100;
    if (text.size() <= longest) {
        return KvNJson::json(text).dump(-1, ' ', false, KvNJson::error_handler_t::replace);
    }
    // A character that is cut in two is left out.
    return KvNJson::json(std::string(text.substr(0, longest)) + "...")
        .dump(-1, ' ', false, KvNJson::error_handler_t::ignore);
}

bool requireObject(const JsonPlace& place) {
    return place.value().is_object() || place.refuse("an object is expected");
}

bool requireArray(const JsonPlace& place) {
    return place.value().is_array() || place.refuse("an array is expected");
}

bool readText(const JsonPlace& place, std::string& text) {
    if (!place.value().is_string()) {
        return place.refuse("a text is expected");
    }
    if (const std::size_t size = place.value().get_string().size(); size > longestText) {
        return place.refuse("the text has " + std::to_string(size) + " bytes; at most " + std::to_string(longestText) +
                            " are allowed");
    }
    text = place.value().get_string();
    return true;
}

bool readUnsigned(const JsonPlace& place, std::uint64_t lowest, std::uint64_t highest, std::uint64_t& number) {
    const KvNJson::jsonView value = place.value();
    if (!value.is_number_unsigned() || value.get_unsigned() < lowest || value.get_unsigned() > highest) {
        return place.refuse("an unsigned number of " + rangeText(static_cast<std::int64_t>(lowest), highest) +
                            " is expected");
    }
    number = value.get_unsigned();
    return true;
}

bool readUnsigned32(const JsonPlace& place, std::uint32_t& number) {
    std::uint64_t wide = 0;
    if (!readUnsigned(place, 0, std::numeric_limits<std::uint32_t>::max(), wide)) {
        return false;
    }
    number = static_cast<std::uint32_t>(wide);
    return true;
}

bool readInteger(const JsonPlace& place, std::int64_t lowest, std::int64_t highest, std::int64_t& number) {
    const KvNJson::jsonView value = place.value();
    const auto top = static_cast<std::uint64_t>(highest);
    if (value.is_number_unsigned() && value.get_unsigned() <= top) {
        number = static_cast<std::int64_t>(value.get_unsigned());
        return true;
    }
    if (value.is_number() && !value.is_number_unsigned()) {
        const double real = value.get_double();
        if (std::signbit(real) && real >= static_cast<double>(lowest) && std::trunc(real) == real) {
            number = static_cast<std::int64_t>(real);
            return true;
        }
    }
    return place.refuse("a whole number of " + rangeText(lowest, top) + " is expected");
}

} // namespace JsonValues
