#include "JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace json = boost::json;

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr unsigned char lastAscii = 0x7F;
constexpr std::string_view hexDigits = "0123456789abcdef";

constexpr unsigned char byteOf(char character) noexcept {
    return static_cast<unsigned char>(character);
}

/// The sequence at the beginning of a text that is not ASCII.
struct Sequence {
    /// Of an ill-formed sequence: the longest beginning of a character, at least one byte.
    std::size_t size = 1;
    bool isWellFormed = false;
    char32_t character = replacementCharacter;
};

/// The second byte of a sequence has a narrower range after some first bytes, which keeps out overlong forms,
/// surrogates and what is above U+10FFFF.
struct LeadByte {
    unsigned char first;
    unsigned char last;
    unsigned char secondFirst;
    unsigned char secondLast;
    std::size_t size;
    unsigned char bits;
};

constexpr std::array leadBytes{
    LeadByte{0xC2, 0xDF, 0x80, 0xBF, 2, 0x1F}, LeadByte{0xE0, 0xE0, 0xA0, 0xBF, 3, 0x0F},
    LeadByte{0xE1, 0xEC, 0x80, 0xBF, 3, 0x0F}, LeadByte{0xED, 0xED, 0x80, 0x9F, 3, 0x0F},
    LeadByte{0xEE, 0xEF, 0x80, 0xBF, 3, 0x0F}, LeadByte{0xF0, 0xF0, 0x90, 0xBF, 4, 0x07},
    LeadByte{0xF1, 0xF3, 0x80, 0xBF, 4, 0x07}, LeadByte{0xF4, 0xF4, 0x80, 0x8F, 4, 0x07},
};

Sequence decode(std::string_view text) noexcept {
    const unsigned char first = byteOf(text.front());
    for (const LeadByte& lead : leadBytes) {
        if (first < lead.first || first > lead.last) {
            continue;
        }
        char32_t character = first & lead.bits;
        for (std::size_t index = 1; index < lead.size; ++index) {
            const unsigned char lowest = index == 1 ? lead.secondFirst : 0x80;
            const unsigned char highest = index == 1 ? lead.secondLast : 0xBF;
            if (index >= text.size() || byteOf(text[index]) < lowest || byteOf(text[index]) > highest) {
                return {index, false, replacementCharacter};
            }
            character = character << 6U | (byteOf(text[index]) & 0x3FU);
        }
        return {lead.size, true, character};
    }
    return {};
}

/// What has to be done about a byte of a string.
enum class ByteKind : unsigned char { plain, escaped, notAscii };

constexpr std::array<ByteKind, 256> makeByteKinds() noexcept {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        const bool isEscaped = byte < 0x20 || byte == '"' || byte == '\\';
        kinds[byte] = isEscaped ? ByteKind::escaped : byte > lastAscii ? ByteKind::notAscii : ByteKind::plain;
    }
    return kinds;
}

constexpr std::array<ByteKind, 256> byteKinds = makeByteKinds();

ByteKind kindOf(char character) noexcept {
    return byteKinds[byteOf(character)];
}

class Writer {
public:
    Writer(std::string& text, const JsonLayout& layout) noexcept : text_(text), layout_(layout) {}

    void value(const json::value& value);

private:
    void array(const json::array& items);
    void object(const json::object& members);
    void string(std::string_view content);
    void number(double number);
    /// A number of these digits (FIRST.FRACTION times ten to the power of `exponent`) without an exponent.
    void plainNumber(char first, std::string_view fraction, int exponent);
    template <class Integer>
    void integer(Integer number);

    /// Begins an item or member; `isFirst` of its array or object.
    void beginEntry(bool isFirst);
    void endOfEntries(char closingBracket);
    void newLine();

    void escapeByte(char character);
    void escapeUnit(char32_t unit);
    void escapeCharacter(char32_t character);
    /// A character to be escaped, or an ill-formed sequence.
    void notAscii(const Sequence& sequence);

    std::string& text_;
    const JsonLayout& layout_;
    std::size_t depth_ = 0;
};

void Writer::value(const json::value& value) {
    switch (value.kind()) {
    case json::kind::null:
        text_ += "null";
        break;
    case json::kind::bool_:
        text_ += value.get_bool() ? "true" : "false";
        break;
    case json::kind::int64:
        integer(value.get_int64());
        break;
    case json::kind::uint64:
        integer(value.get_uint64());
        break;
    case json::kind::double_:
        number(value.get_double());
        break;
    case json::kind::string:
        string({value.get_string().data(), value.get_string().size()});
        break;
    case json::kind::array:
        array(value.get_array());
        break;
    case json::kind::object:
        object(value.get_object());
        break;
    }
}

void Writer::array(const json::array& items) {
    if (items.empty()) {
        text_ += "[]";
        return;
    }
    text_ += '[';
    ++depth_;
    for (const json::value& item : items) {
        beginEntry(&item == items.begin());
        value(item);
    }
    endOfEntries(']');
}

void Writer::object(const json::object& members) {
    if (members.empty()) {
        text_ += "{}";
        return;
    }
    text_ += '{';
    ++depth_;
    for (const json::key_value_pair& member : members) {
        beginEntry(&member == members.begin());
        string({member.key().data(), member.key().size()});
        text_ += layout_.hasLines ? ": " : ":";
        value(member.value());
    }
    endOfEntries('}');
}

void Writer::beginEntry(bool isFirst) {
    if (!isFirst) {
        text_ += ',';
    }
    newLine();
}

void Writer::endOfEntries(char closingBracket) {
    --depth_;
    newLine();
    text_ += closingBracket;
}

void Writer::newLine() {
    if (layout_.hasLines) {
        text_ += '\n';
        text_.append(depth_ * layout_.indent, layout_.indentChar);
    }
}

template <class Integer>
void Writer::integer(Integer number) {
    std::array<char, 24> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text_.append(digits.data(), result.ptr);
}

void Writer::number(double number) {
    constexpr int lowestPlainExponent = -4;
    constexpr int highestPlainExponent = 15;
    if (!std::isfinite(number)) {
        text_ += "null";
        return;
    }
    // The shortest digits that read back, as D[.DDD]eSXX with at least two exponent digits.
    std::array<char, 40> buffer{};
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(number), std::chars_format::scientific);
    const std::string_view scientific(buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data()));
    if (std::signbit(number)) {
        text_ += '-';
    }
    const std::size_t mark = scientific.find('e');
    int exponent = 0;
    const std::size_t sign = scientific[mark + 1] == '+' ? 1 : 0;
    std::from_chars(scientific.data() + mark + 1 + sign, scientific.data() + scientific.size(), exponent);
    if (exponent < lowestPlainExponent || exponent > highestPlainExponent) {
        text_ += scientific;
        return;
    }
    plainNumber(scientific.front(), mark > 1 ? scientific.substr(2, mark - 2) : std::string_view(), exponent);
}

void Writer::plainNumber(char first, std::string_view fraction, int exponent) {
    if (exponent < 0) {
        text_ += "0.";
        text_.append(static_cast<std::size_t>(-exponent - 1), '0');
        text_ += first;
        text_ += fraction;
        return;
    }
    const auto places = static_cast<std::size_t>(exponent);
    text_ += first;
    text_ += fraction.substr(0, places);
    if (fraction.size() <= places) {
        text_.append(places - fraction.size(), '0');
        text_ += ".0";
        return;
    }
    text_ += '.';
    text_ += fraction.substr(places);
}

void Writer::string(std::string_view content) {
    text_ += '"';
    std::size_t position = 0;
    // Bytes that can stay as they are collect in a run, which is copied at once.
    std::size_t runBegin = 0;
    while (position < content.size()) {
        const ByteKind kind = kindOf(content[position]);
        if (kind == ByteKind::plain) {
            ++position;
            continue;
        }
        const Sequence sequence = kind == ByteKind::notAscii ? decode(content.substr(position)) : Sequence();
        if (sequence.isWellFormed && !layout_.isAscii) {
            position += sequence.size;
            continue;
        }
        text_ += content.substr(runBegin, position - runBegin);
        if (kind == ByteKind::escaped) {
            escapeByte(content[position]);
        } else {
            notAscii(sequence);
        }
        position += sequence.size;
        runBegin = position;
    }
    text_ += content.substr(runBegin);
    text_ += '"';
}

void Writer::escapeByte(char character) {
    constexpr std::string_view characters = "\b\f\n\r\t\"\\";
    constexpr std::string_view letters = "bfnrt\"\\";
    const std::size_t index = characters.find(character);
    if (index == std::string_view::npos) {
        escapeUnit(byteOf(character));
        return;
    }
    text_ += '\\';
    text_ += letters[index];
}

void Writer::notAscii(const Sequence& sequence) {
    if (!sequence.isWellFormed && layout_.dropsIllFormed) {
        return;
    }
    if (layout_.isAscii) {
        escapeCharacter(sequence.character);
    } else {
        text_ += "\xEF\xBF\xBD";
    }
}

void Writer::escapeCharacter(char32_t character) {
    constexpr char32_t firstOfPair = 0x10000;
    if (character < firstOfPair) {
        escapeUnit(character);
        return;
    }
    escapeUnit(0xD800U + ((character - firstOfPair) >> 10U));
    escapeUnit(0xDC00U + ((character - firstOfPair) & 0x3FFU));
}

void Writer::escapeUnit(char32_t unit) {
    text_ += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        text_ += hexDigits[unit >> shift & 0xFU];
    }
}

} // namespace

void appendJson(std::string& text, const boost::json::value& value, const JsonLayout& layout) {
    Writer(text, layout).value(value);
}
