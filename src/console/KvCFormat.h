#pragma once

#include <concepts>
#include <cstddef>

/// A wide format text that was held against the types of its arguments at compile time. "%s" takes a wide text,
/// "%hs" a narrow one, "%u" and "%x" an unsigned number, "%i" and "%d" a signed one, "%f" a double, a "*" an int.
/// A conversion is a "%", flags, a width, a precision and the type, in this order; flags are "-", "0", "#" and " ",
/// where the type allows them.
template <typename... Arguments>
class KvCFormat {
public:
    template <std::size_t size>
    consteval KvCFormat(const wchar_t (&text)[size]) : text_(text) {
        Check{text}.format();
    }

    [[nodiscard]] constexpr const wchar_t* text() const { return text_; }

private:
    enum class Kind { wideText, narrowText, unsignedNumber, signedNumber, floatingNumber, other };

    template <typename Argument>
    static consteval Kind kindOf() {
        if constexpr (std::same_as<Argument, const wchar_t*>) {
            return Kind::wideText;
        } else if constexpr (std::same_as<Argument, const char*>) {
            return Kind::narrowText;
        } else if constexpr (std::same_as<Argument, unsigned>) {
            return Kind::unsignedNumber;
        } else if constexpr (std::same_as<Argument, int>) {
            return Kind::signedNumber;
        } else if constexpr (std::same_as<Argument, double>) {
            return Kind::floatingNumber;
        } else {
            return Kind::other;
        }
    }

    static consteval Kind kindOfConversion(wchar_t type, bool narrow) {
        if (narrow && type != L's') {
            throw "only a text can be narrow";
        }
        switch (type) {
        case L's':
            return narrow ? Kind::narrowText : Kind::wideText;
        case L'u':
        case L'x':
            return Kind::unsignedNumber;
        case L'i':
        case L'd':
            return Kind::signedNumber;
        case L'f':
            return Kind::floatingNumber;
        default:
            throw "unknown conversion in a format";
        }
    }

    /// With other types the flag has no defined meaning.
    static consteval bool flagFits(wchar_t flag, wchar_t type) {
        switch (flag) {
        case L'0':
            return type != L's';
        case L'#':
            return type == L'x' || type == L'f';
        case L' ':
            return type == L'i' || type == L'd' || type == L'f';
        default:
            return true;
        }
    }

    /// Holds the conversions of a format against the arguments, one after the other. Not a constant expression when
    /// one of its operations throws, which the compiler reports.
    struct Check {
        const wchar_t* position = nullptr;
        std::size_t argumentsUsed = 0;

        consteval void format() {
            while (*position != L'\0') {
                if (*position++ == L'%') {
                    conversion();
                }
            }
            if (argumentsUsed != sizeof...(Arguments)) {
                throw "a format has fewer conversions than arguments";
            }
        }

        /// What follows a "%".
        consteval void conversion() {
            if (*position == L'%') {
                ++position;
                return;
            }
            const wchar_t* flag = position;
            while (isFlag(*position)) {
                ++position;
            }
            const wchar_t* const endOfFlags = position;
            width();
            if (*position == L'.') {
                ++position;
                width();
            }
            const bool narrow = *position == L'h';
            position += narrow ? 1 : 0;
            const wchar_t type = *position++;
            argument(kindOfConversion(type, narrow));
            for (; flag != endOfFlags; ++flag) {
                if (!flagFits(*flag, type)) {
                    throw "a flag does not fit its conversion";
                }
            }
        }

        /// A width or a precision, which may be missing.
        consteval void width() {
            if (*position == L'*') {
                ++position;
                argument(Kind::signedNumber);
                return;
            }
            while (*position >= L'0' && *position <= L'9') {
                ++position;
            }
        }

        /// The next argument has to be of this kind.
        consteval void argument(Kind kind) {
            const Kind kinds[] = {kindOf<Arguments>()..., Kind::other};
            if (argumentsUsed >= sizeof...(Arguments) || kinds[argumentsUsed] != kind) {
                throw "a format does not fit its arguments";
            }
            ++argumentsUsed;
        }
    };

    static consteval bool isFlag(wchar_t character) {
        return character == L'-' || character == L'0' || character == L'#' || character == L' ';
    }

    const wchar_t* text_;
};
