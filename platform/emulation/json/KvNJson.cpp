#include "KvNJson.h"

#include "FileBytes.h"
#include "JsonReader.h"
#include "JsonWriter.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/pilfer.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <new>
#include <utility>

namespace {

using Node = boost::json::value;

/// A text in memory is read in pieces of this size, which a count of digits in the parser cannot overflow.
constexpr std::size_t textPiece = std::size_t(1) << 30U;

Node& nodeIn(unsigned char* node) noexcept {
    return *std::launder(reinterpret_cast<Node*>(node));
}

const Node& nodeIn(const unsigned char* node) noexcept {
    return *std::launder(reinterpret_cast<const Node*>(node));
}

/// Puts `content` with its memory resource into `node` in place of what is there; assignment would copy between two
/// memory resources. `content` is left as null.
void relocate(unsigned char* node, Node& content) noexcept {
    nodeIn(node).~Node();
    ::new (node) Node(boost::json::pilfer(content));
}

/// The value that a view looks at; a view of nothing looks at null.
const Node& nodeAt(const void* node) noexcept {
    static const Node none;
    return node != nullptr ? *static_cast<const Node*>(node) : none;
}

boost::json::string_view boostText(std::string_view text) noexcept {
    return {text.data(), text.size()};
}

/// True of one JSON text from the stream's position to its end.
bool parseStream(JsonReader& reader, std::FILE* stream) {
    return forEachPiece(stream, [&reader](std::string_view piece) { return reader.read(piece); }) && reader.finish();
}

bool parseText(JsonReader& reader, std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = std::min(text.size(), textPiece);
        if (!reader.read(text.substr(0, size))) {
            return false;
        }
        text.remove_prefix(size);
    }
    return reader.finish();
}

} // namespace

namespace KvNJson {

bool jsonView::is_null() const noexcept {
    return is_valid() && nodeAt(node_).is_null();
}

bool jsonView::is_boolean() const noexcept {
    return nodeAt(node_).is_bool();
}

bool jsonView::is_string() const noexcept {
    return nodeAt(node_).is_string();
}

bool jsonView::is_array() const noexcept {
    return nodeAt(node_).is_array();
}

bool jsonView::is_object() const noexcept {
    return nodeAt(node_).is_object();
}

bool jsonView::is_number_unsigned() const noexcept {
    // A number up to 2^63-1 is held as a signed one, whoever wrote it.
    const std::int64_t* const number = nodeAt(node_).if_int64();
    return number != nullptr ? *number >= 0 : nodeAt(node_).is_uint64();
}

bool jsonView::is_number() const noexcept {
    return nodeAt(node_).is_number();
}

bool jsonView::get_boolean() const noexcept {
    const bool* const truth = nodeAt(node_).if_bool();
    return truth != nullptr && *truth;
}

std::string_view jsonView::get_string() const noexcept {
    const boost::json::string* const text = nodeAt(node_).if_string();
    return text != nullptr ? std::string_view(text->data(), text->size()) : std::string_view();
}

std::uint64_t jsonView::get_unsigned() const noexcept {
    const Node& held = nodeAt(node_);
    if (const std::int64_t* const number = held.if_int64()) {
        return *number >= 0 ? static_cast<std::uint64_t>(*number) : 0;
    }
    const std::uint64_t* const number = held.if_uint64();
    return number != nullptr ? *number : 0;
}

double jsonView::get_double() const noexcept {
    const Node& held = nodeAt(node_);
    if (const double* const number = held.if_double()) {
        return *number;
    }
    if (const std::int64_t* const number = held.if_int64()) {
        return static_cast<double>(*number);
    }
    const std::uint64_t* const number = held.if_uint64();
    return number != nullptr ? static_cast<double>(*number) : 0.0;
}

std::size_t jsonView::size() const noexcept {
    if (const boost::json::array* const items = nodeAt(node_).if_array()) {
        return items->size();
    }
    const boost::json::object* const members = nodeAt(node_).if_object();
    return members != nullptr ? members->size() : 0;
}

jsonView jsonView::at(std::size_t index) const noexcept {
    const Node& held = nodeAt(node_);
    if (const boost::json::array* const items = held.if_array()) {
        return jsonView(index < items->size() ? items->data() + index : nullptr);
    }
    const boost::json::object* const members = held.if_object();
    return jsonView(members != nullptr && index < members->size() ? &members->begin()[index].value() : nullptr);
}

std::string_view jsonView::key(std::size_t index) const noexcept {
    const boost::json::object* const members = nodeAt(node_).if_object();
    if (members == nullptr || index >= members->size()) {
        return {};
    }
    const boost::json::string_view text = members->begin()[index].key();
    return {text.data(), text.size()};
}

jsonView jsonView::find(std::string_view key) const noexcept {
    const boost::json::object* const members = nodeAt(node_).if_object();
    return jsonView(members != nullptr ? members->if_contains(boostText(key)) : nullptr);
}

/// Makes the results of a parse.
struct json::Factory {
    static json result(JsonReader& reader, bool isValid) noexcept {
        json result;
        result.invalid_ = !isValid;
        if (isValid) {
            Node root = reader.release();
            relocate(result.node_, root);
            result.document_ = reader.storage();
        }
        return result;
    }
};

json::json() noexcept {
    static_assert(sizeof(Node) <= nodeSize && alignof(Node) <= alignof(json));
    ::new (node_) Node();
}

json::json(bool value) noexcept {
    ::new (node_) Node(value);
}

json::json(std::uint32_t value) noexcept {
    ::new (node_) Node(value);
}

json::json(std::uint64_t value) noexcept {
    ::new (node_) Node(value);
}

json::json(double value) noexcept {
    ::new (node_) Node(value);
}

json::json(const char* text) : json(std::string_view(text != nullptr ? text : "")) {}

json::json(std::string_view text) {
    ::new (node_) Node(boostText(text));
}

json::json(const KvCString& text) : json(text.view()) {}

json::json(const json& other) : invalid_(other.invalid_) {
    // Not in the memory of the other's document.
    ::new (node_) Node(nodeIn(other.node_), boost::json::storage_ptr());
}

json::json(json&& other) noexcept : json() {
    swap(other);
}

json& json::operator=(const json& other) {
    json copy(other);
    swap(copy);
    return *this;
}

json& json::operator=(json&& other) noexcept {
    json taken(std::move(other));
    swap(taken);
    return *this;
}

json::~json() {
    // Before its document goes.
    nodeIn(node_).~Node();
}

void json::swap(json& other) noexcept {
    Node held(boost::json::pilfer(nodeIn(node_)));
    relocate(node_, nodeIn(other.node_));
    relocate(other.node_, held);
    document_.swap(other.document_);
    std::swap(invalid_, other.invalid_);
}

json json::parse(std::FILE* stream) {
    JsonReader reader;
    const bool isValid = parseStream(reader, stream);
    return Factory::result(reader, isValid);
}

json json::parse(std::string_view text, std::string* reason, std::size_t* offset) {
    JsonReader reader;
    const bool isValid = parseText(reader, text);
    if (!isValid && reason != nullptr) {
        *reason = reader.reason();
    }
    if (!isValid && offset != nullptr) {
        *offset = reader.offset();
    }
    return Factory::result(reader, isValid);
}

jsonView json::view() const noexcept {
    return jsonView(&nodeIn(node_));
}

json json::takeItem(std::size_t index) {
    json result;
    Node& self = nodeIn(node_);
    if (index >= view().size()) {
        return result;
    }
    Node& item = self.is_array() ? self.get_array()[index] : self.get_object().begin()[index].value();
    // Moved rather than relocated, which leaves a null that keeps the memory resource.
    Node taken(std::move(item));
    relocate(result.node_, taken);
    result.document_ = document_;
    return result;
}

void json::set(std::string_view key, json value) {
    Node& self = nodeIn(node_);
    if (!self.is_object()) {
        self.emplace_object();
        invalid_ = false;
    }
    self.get_object().insert_or_assign(boostText(key), std::move(nodeIn(value.node_)));
}

void json::append(json value) {
    Node& self = nodeIn(node_);
    if (!self.is_array()) {
        self.emplace_array();
        invalid_ = false;
    }
    self.get_array().push_back(std::move(nodeIn(value.node_)));
}

json json::makeObject() {
    json result;
    nodeIn(result.node_).emplace_object();
    return result;
}

json json::makeArray() {
    json result;
    nodeIn(result.node_).emplace_array();
    return result;
}

std::string json::dump(int indent, char indentChar, bool ensureAscii, error_handler_t onInvalidUtf8) const {
    JsonLayout layout;
    layout.hasLines = indent >= 0;
    layout.indent = static_cast<std::size_t>(std::max(indent, 0));
    layout.indentChar = indentChar;
    layout.isAscii = ensureAscii;
    layout.dropsIllFormed = onInvalidUtf8 == error_handler_t::ignore;
    std::string text;
    appendJson(text, nodeIn(node_), layout);
    return text;
}

} // namespace KvNJson
