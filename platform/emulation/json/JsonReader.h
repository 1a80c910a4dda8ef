#pragma once

#include <boost/json/basic_parser.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/value.hpp>
#include <boost/json/value_stack.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

/// Receives the parts of a JSON text from the parser and builds the value. The names are those that the parser asks
/// for; each operation returns false, with an error code, to end the parse.
class JsonValueBuilder {
public:
    static constexpr std::size_t max_object_size = boost::json::object::max_size();
    static constexpr std::size_t max_array_size = boost::json::array::max_size();
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    /// The value's memory comes from `storage`.
    explicit JsonValueBuilder(boost::json::storage_ptr storage) { values_.reset(std::move(storage)); }

    /// The value, once after a complete parse.
    [[nodiscard]] boost::json::value release() noexcept { return values_.release(); }

    using Text = boost::json::string_view;
    using ErrorCode = boost::json::error_code;

    bool on_document_begin(ErrorCode& /*error*/) noexcept { return true; }
    bool on_document_end(ErrorCode& /*error*/) noexcept { return true; }
    bool on_object_begin(ErrorCode& /*error*/) noexcept { return true; }
    bool on_object_end(std::size_t count, ErrorCode& /*error*/) {
        values_.push_object(count);
        return true;
    }
    bool on_array_begin(ErrorCode& /*error*/) noexcept { return true; }
    bool on_array_end(std::size_t count, ErrorCode& /*error*/) {
        values_.push_array(count);
        return true;
    }
    bool on_key_part(Text part, std::size_t /*size*/, ErrorCode& /*error*/) {
        values_.push_chars(part);
        return true;
    }
    bool on_key(Text lastPart, std::size_t /*size*/, ErrorCode& /*error*/) {
        values_.push_key(lastPart);
        return true;
    }
    bool on_string_part(Text part, std::size_t /*size*/, ErrorCode& /*error*/) {
        values_.push_chars(part);
        return true;
    }
    bool on_string(Text lastPart, std::size_t /*size*/, ErrorCode& /*error*/) {
        values_.push_string(lastPart);
        return true;
    }
    bool on_number_part(Text part, ErrorCode& error);
    bool on_int64(std::int64_t number, Text /*lastPart*/, ErrorCode& /*error*/) {
        numberParts_.clear();
        values_.push_int64(number);
        return true;
    }
    bool on_uint64(std::uint64_t number, Text /*lastPart*/, ErrorCode& /*error*/) {
        numberParts_.clear();
        values_.push_uint64(number);
        return true;
    }
    bool on_double(double estimate, Text lastPart, ErrorCode& error);
    bool on_bool(bool value, ErrorCode& /*error*/) {
        values_.push_bool(value);
        return true;
    }
    bool on_null(ErrorCode& /*error*/) {
        values_.push_null();
        return true;
    }
    bool on_comment_part(Text /*part*/, ErrorCode& /*error*/) noexcept { return true; }
    bool on_comment(Text /*lastPart*/, ErrorCode& /*error*/) noexcept { return true; }

private:
    boost::json::value_stack values_;
    /// What earlier pieces held of a number that goes on in the next piece.
    std::string numberParts_;
};

/// Reads one JSON text that arrives in pieces.
class JsonReader {
public:
    JsonReader();

    /// Reads on with `piece`; false when the text is not valid so far. A byte order mark is skipped when it stands
    /// whole at the beginning of the first piece.
    [[nodiscard]] bool read(std::string_view piece);
    /// Ends the text; true when it is one valid JSON text.
    [[nodiscard]] bool finish();

    /// The value, once after finish() returned true. It lives in storage(), without sharing it.
    [[nodiscard]] boost::json::value release() noexcept { return parser_.handler().release(); }
    /// The memory of all values of this text.
    [[nodiscard]] std::shared_ptr<void> storage() const noexcept { return storage_; }

    /// Of a text that is not valid: one sentence, and the offset of the byte where that shows.
    [[nodiscard]] std::string reason() const;
    [[nodiscard]] std::size_t offset() const noexcept { return offset_; }

private:
    // The parser holds values in the storage, which must outlive it.
    std::shared_ptr<boost::json::monotonic_resource> storage_;
    boost::json::basic_parser<JsonValueBuilder> parser_;
    boost::json::error_code error_;
    std::size_t offset_ = 0;
    bool hasBegun_ = false;
};
