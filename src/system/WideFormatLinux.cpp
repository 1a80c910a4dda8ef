#include "WideFormat.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>
#include <type_traits>

namespace {

using boost::locale::utf::utf_traits;

/// The arguments of a format, taken one by one.
class Arguments {
public:
    explicit Arguments(std::va_list list) { va_copy(list_, list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() { va_end(list_); }

    template <typename Value>
    Value next() {
        return va_arg(list_, Value);
    }

private:
    std::va_list list_{};
};

/// One conversion of a format, its "*" already replaced by their arguments.
struct Conversion {
    bool leftAligned = false;
    bool alternateForm = false;
    bool blankSign = false;
    bool zeroPadded = false;
    int width = 0;
    int precision = -1;
    bool narrow = false;
    wchar_t type = 0;
};

/// Collects into a buffer of wide characters, or only counts when there is none.
class BufferSink {
public:
    BufferSink(wchar_t* buffer, std::size_t size) : buffer_(buffer), size_(size) {}

    void putWide(std::wstring_view text) {
        for (const wchar_t character : text) {
            put(character);
        }
    }
    /// Decodes UTF-8. A byte that begins no well-formed character stands for the character of its number.
    void putNarrow(std::string_view text) {
        const char* const end = text.data() + text.size();
        for (const char* position = text.data(); position != end;) {
            const char* next = position;
            const auto codePoint = utf_traits<char>::decode(next, end);
            if (boost::locale::utf::is_valid_codepoint(codePoint)) {
                put(static_cast<wchar_t>(codePoint));
                position = next;
            } else {
                put(static_cast<wchar_t>(static_cast<unsigned char>(*position++)));
            }
        }
    }
    [[nodiscard]] bool finish() {
        if (buffer_ == nullptr) {
            return true;
        }
        if (count_ >= size_) {
            return false;
        }
        buffer_[count_] = L'\0';
        return true;
    }

private:
    void put(wchar_t character) {
        if (buffer_ != nullptr && count_ < size_) {
            buffer_[count_] = character;
        }
        ++count_;
    }

    wchar_t* buffer_;
    std::size_t size_;
    std::size_t count_ = 0;
};

/// Writes to a stream: narrow text byte for byte, wide text as UTF-8.
class StreamSink {
public:
    explicit StreamSink(std::FILE* stream) : stream_(stream) {}

    void putWide(std::wstring_view text) {
        for (const wchar_t character : text) {
            std::array<char, 4> bytes{};
            auto codePoint =
                static_cast<boost::locale::utf::code_point>(static_cast<std::make_unsigned_t<wchar_t>>(character));
            if (!boost::locale::utf::is_valid_codepoint(codePoint)) {
                codePoint = 0xFFFD; // the replacement character
            }
            char* end = utf_traits<char>::encode(codePoint, bytes.data());
            putNarrow({bytes.data(), static_cast<std::size_t>(end - bytes.data())});
        }
    }
    void putNarrow(std::string_view text) {
        good_ = std::fwrite(text.data(), 1, text.size(), stream_) == text.size() && good_;
    }
    [[nodiscard]] bool finish() const { return good_; }

private:
    std::FILE* stream_;
    bool good_ = true;
};

/// Reads a width or precision: digits, or the next argument for a "*".
int readNumber(const wchar_t*& position, Arguments& arguments) {
    if (*position == L'*') {
        ++position;
        return arguments.next<int>();
    }
    int number = 0;
    while (*position >= L'0' && *position <= L'9') {
        number = std::min(number, INT_MAX / 10 - 1) * 10 + (*position - L'0');
        ++position;
    }
    return number;
}

bool readFlag(wchar_t character, Conversion& conversion) {
    switch (character) {
    case L'-':
        conversion.leftAligned = true;
        return true;
    case L'#':
        conversion.alternateForm = true;
        return true;
    case L' ':
        conversion.blankSign = true;
        return true;
    case L'0':
        conversion.zeroPadded = true;
        return true;
    default:
        return false;
    }
}

/// Reads what follows a "%", which `position` is moved behind.
Conversion readConversion(const wchar_t*& position, Arguments& arguments) {
    Conversion conversion;
    while (readFlag(*position, conversion)) {
        ++position;
    }
    conversion.width = readNumber(position, arguments);
    if (conversion.width < 0) {
        conversion.leftAligned = true;
        conversion.width = conversion.width == INT_MIN ? INT_MAX : -conversion.width;
    }
    if (*position == L'.') {
        ++position;
        conversion.precision = readNumber(position, arguments);
    }
    if (*position == L'h') {
        ++position;
        conversion.narrow = true;
    }
    conversion.type = *position;
    if (conversion.type != L'\0') {
        ++position;
    }
    return conversion;
}

/// What a null text shows as.
template <typename Character>
constexpr std::array<Character, 7> nullText{'(', 'n', 'u', 'l', 'l', ')', '\0'};

/// Hands text to a sink and counts it, a narrow text in bytes.
template <typename Sink>
class Writer {
public:
    explicit Writer(Sink& sink) : sink_(sink) {}

    void literal(std::wstring_view text) {
        sink_.putWide(text);
        count_ += text.size();
    }

    template <typename Character>
    void text(const Conversion& conversion, const Character* given) {
        const Character* const text = given != nullptr ? given : nullText<Character>.data();
        const std::basic_string_view<Character> piece(text, lengthOf(text, conversion.precision));
        const auto width = static_cast<std::size_t>(conversion.width);
        const std::size_t padding = width > piece.size() ? width - piece.size() : 0;
        if (!conversion.leftAligned) {
            blanks(padding);
        }
        if constexpr (sizeof(Character) == 1) {
            sink_.putNarrow(piece);
        } else {
            sink_.putWide(piece);
        }
        if (conversion.leftAligned) {
            blanks(padding);
        }
        count_ += piece.size();
    }

    [[nodiscard]] std::size_t count() const { return count_; }

private:
    template <typename Character>
    static std::size_t lengthOf(const Character* text, int precision) {
        if (precision < 0) {
            return std::char_traits<Character>::length(text);
        }
        const Character* end = text + precision;
        return static_cast<std::size_t>(std::find(text, end, Character()) - text);
    }

    void blanks(std::size_t number) {
        static constexpr std::string_view supply = "                                                                ";
        count_ += number;
        while (number > 0) {
            const std::size_t piece = std::min(number, supply.size());
            sink_.putNarrow(supply.substr(0, piece));
            number -= piece;
        }
    }

    Sink& sink_;
    std::size_t count_ = 0;
};

/// Formats a number with the narrow printf; the number of digits is bounded, the padding is not and comes later.
template <typename Sink, typename Number>
bool putNumber(Writer<Sink>& writer, Conversion conversion, Number number) {
    std::array<char, 16> format{};
    char* end = format.data();
    *end++ = '%';
    if (conversion.alternateForm) {
        *end++ = '#';
    }
    if (conversion.blankSign) {
        *end++ = ' ';
    }
    const bool zeros = conversion.zeroPadded && !conversion.leftAligned;
    if (zeros) {
        *end++ = '0';
    }
    for (const char character : std::string_view("*.*")) {
        *end++ = character;
    }
    *end = static_cast<char>(conversion.type);
    std::array<char, 512> text{};
    const int length = std::snprintf(text.data(), text.size(), format.data(), zeros ? conversion.width : 0,
                                     conversion.precision, number);
    if (length < 0 || static_cast<std::size_t>(length) >= text.size()) {
        return false;
    }
    conversion.precision = -1;
    writer.text(conversion, text.data());
    return true;
}

template <typename Sink>
bool putConversion(Writer<Sink>& writer, const Conversion& conversion, Arguments& arguments) {
    if (conversion.narrow && conversion.type != L's') {
        return false;
    }
    switch (conversion.type) {
    case L's':
        if (conversion.narrow) {
            writer.text(conversion, arguments.next<const char*>());
        } else {
            writer.text(conversion, arguments.next<const wchar_t*>());
        }
        return true;
    case L'u':
    case L'x':
        return putNumber(writer, conversion, arguments.next<unsigned>());
    case L'd':
    case L'i':
        return putNumber(writer, conversion, arguments.next<int>());
    case L'f':
        return putNumber(writer, conversion, arguments.next<double>());
    case L'%':
        writer.literal(L"%");
        return true;
    default:
        return false;
    }
}

template <typename Sink>
int formatTo(Sink sink, const wchar_t* format, std::va_list list) {
    Arguments arguments(list);
    Writer<Sink> writer(sink);
    const wchar_t* position = format;
    while (*position != L'\0') {
        const wchar_t* literal = position;
        while (*position != L'\0' && *position != L'%') {
            ++position;
        }
        writer.literal({literal, static_cast<std::size_t>(position - literal)});
        if (*position == L'%') {
            ++position;
            const Conversion conversion = readConversion(position, arguments);
            if (!putConversion(writer, conversion, arguments)) {
                return -1;
            }
        }
    }
    if (!sink.finish() || writer.count() > static_cast<std::size_t>(INT_MAX)) {
        return -1;
    }
    return static_cast<int>(writer.count());
}

} // namespace

bool decodesNarrowText() {
    return true;
}

int countFormatted(const wchar_t* format, std::va_list arguments) {
    return formatTo(BufferSink(nullptr, 0), format, arguments);
}

int formatIntoBuffer(wchar_t* buffer, std::size_t size, const wchar_t* format, std::va_list arguments) {
    return formatTo(BufferSink(buffer, size), format, arguments);
}

int writeFormatted(std::FILE* stream, const wchar_t* format, std::va_list arguments) {
    return formatTo(StreamSink(stream), format, arguments);
}
