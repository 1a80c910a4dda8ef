#include "JsonReader.h"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/error.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <exception>
#include <new>
#include <system_error>

namespace json = boost::json;

namespace {

/// Longest number that may be spread over several pieces. Its digits are kept until its end is seen.
constexpr std::size_t longestNumber = std::size_t(16) << 20U;

constexpr std::size_t deepestNesting = 256;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

json::parse_options strictOptions() noexcept {
    json::parse_options options;
    options.max_depth = deepestNesting;
    return options;
}

struct ErrorText {
    json::error error;
    const char* sentence;
};

constexpr std::array errorTexts{
    ErrorText{json::error::syntax, "This is not JSON syntax."},
    ErrorText{json::error::extra_data, "The text goes on after its value."},
    ErrorText{json::error::incomplete, "The text ends before its value is complete."},
    ErrorText{json::error::exponent_overflow, "The number is out of range."},
    ErrorText{json::error::too_deep, "Arrays and objects are nested deeper than 256 levels."},
    ErrorText{json::error::illegal_leading_surrogate, "One half of a surrogate pair stands alone."},
    ErrorText{json::error::illegal_trailing_surrogate, "One half of a surrogate pair stands alone."},
    ErrorText{json::error::expected_utf16_escape, "One half of a surrogate pair stands alone."},
    ErrorText{json::error::expected_hex_digit, R"("\u" needs four hexadecimal digits.)"},
};

} // namespace

bool JsonValueBuilder::on_number_part(Text part, ErrorCode& error) {
    if (part.size() > longestNumber - numberParts_.size()) {
        error = json::error::exponent_overflow;
        return false;
    }
    numberParts_.append(part.data(), part.size());
    return true;
}

bool JsonValueBuilder::on_double(double estimate, Text lastPart, ErrorCode& error) {
    // The parser's own value can be off by some units in the last place: the digits decide.
    std::string_view digits(lastPart.data(), lastPart.size());
    if (!numberParts_.empty()) {
        numberParts_.append(digits);
        digits = numberParts_;
    }
    double number = 0.0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec != std::errc()) {
        // Out of range at one of the two ends; there is no doubt at which.
        if (std::fabs(estimate) > 1.0) {
            error = json::error::exponent_overflow;
            return false;
        }
        number = digits.front() == '-' ? -0.0 : 0.0;
    }
    numberParts_.clear();
    values_.push_double(number);
    return true;
}

JsonReader::JsonReader()
    : storage_(std::make_shared<json::monotonic_resource>()),
      parser_(strictOptions(), json::storage_ptr(storage_.get())) {}

bool JsonReader::read(std::string_view piece) {
    if (!hasBegun_ && piece.starts_with(byteOrderMark)) {
        piece.remove_prefix(byteOrderMark.size());
        offset_ += byteOrderMark.size();
    }
    hasBegun_ = true;
    try {
        const std::size_t used = parser_.write_some(true, piece.data(), piece.size(), error_);
        offset_ += used;
        if (!error_ && used < piece.size()) {
            error_ = json::error::extra_data;
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        error_ = json::error::exception;
    }
    return !error_;
}

bool JsonReader::finish() {
    try {
        parser_.write_some(false, "", 0, error_);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        error_ = json::error::exception;
    }
    return !error_;
}

std::string JsonReader::reason() const {
    for (const ErrorText& text : errorTexts) {
        if (error_ == text.error) {
            return text.sentence;
        }
    }
    return "A part of the text is too large.";
}
