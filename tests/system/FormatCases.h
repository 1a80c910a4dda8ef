#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// Calls one of the formatting functions with the arguments of a case.
class Formatter {
public:
    struct Arguments {
        std::va_list list;
    };
    using Function = std::function<int(const wchar_t* format, Arguments& arguments)>;

    explicit Formatter(Function function) : function_(std::move(function)) {}

    int operator()(const wchar_t* format, ...) const;

private:
    Function function_;
};

/// One use of a format and what comes of it on every system.
struct FormatCase {
    /// Letters and digits only.
    const char* name;
    /// With one character for each byte of narrow texts: its length is the result of the call.
    std::wstring text;
    int (*call)(const Formatter& format);
    /// With narrow texts decoded; empty: it is the same.
    std::wstring decoded{};

    /// What goes into a buffer on this system.
    [[nodiscard]] const std::wstring& inBuffer() const;

    friend std::ostream& operator<<(std::ostream& stream, const FormatCase& row) { return stream << row.name; }
};

/// Every shape of format that the library prints with. The wide texts among the arguments are ASCII, the narrow ones
/// are any bytes: on a stream the characters of `text` arrive as one byte each.
const std::vector<FormatCase>& formatCases();

/// Wide texts beyond ASCII: what arrives on a stream is the system's own matter.
const std::vector<FormatCase>& wideTextCases();

/// The name of a test with a case.
std::string nameOfCase(const testing::TestParamInfo<FormatCase>& row);

/// What a case writes to a stream, and its result.
struct Written {
    std::string bytes;
    int result = 0;
};

/// Writes a case with writeFormatted().
Written writeCase(const FormatCase& row);
