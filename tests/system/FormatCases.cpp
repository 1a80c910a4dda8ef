#include "FormatCases.h"

#include "RedirectedStream.h"
#include "ScratchFolder.h"
#include "StreamGuard.h"
#include "WideFormat.h"

#include <climits>

namespace {

/// Every byte from 0x80 to 0xFF.
const std::string& upperBytes() {
    static const std::string bytes = [] {
        std::string result;
        for (int byte = 0x80; byte <= 0xFF; ++byte) {
            result += static_cast<char>(byte);
        }
        return result;
    }();
    return bytes;
}

/// One character per byte.
std::wstring widened(const std::string& bytes) {
    std::wstring result;
    for (const char byte : bytes) {
        result += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return result;
}

std::vector<FormatCase> narrowTextCases() {
    return {
        {"NarrowText", L"abc\n", [](const Formatter& f) { return f(L"%hs\n", "abc"); }},
        {"NarrowTextEmpty", L"", [](const Formatter& f) { return f(L"%hs", ""); }},
        {"NarrowTextOfAllUpperBytes", widened(upperBytes()),
         [](const Formatter& f) { return f(L"%hs", upperBytes().c_str()); }},
        {"NarrowTextNull", L"(null)", [](const Formatter& f) { return f(L"%hs", static_cast<const char*>(nullptr)); }},
        {"NarrowTextKeepsPercentSigns", L"100%s %n", [](const Formatter& f) { return f(L"%hs", "100%s %n"); }},
        {"NarrowPaddedToTheLeft", L"   ab", [](const Formatter& f) { return f(L"%5hs", "ab"); }},
        {"NarrowStarWidth", L"   ab", [](const Formatter& f) { return f(L"%*hs", 5, "ab"); }},
        {"NarrowNegativeStarWidthPadsToTheRight", L"ab   |", [](const Formatter& f) { return f(L"%*hs|", -5, "ab"); }},
        {"NarrowLeftStarWidth", L"ab   |", [](const Formatter& f) { return f(L"%-*hs|", 5, "ab"); }},
        {"NarrowLeftNegativeStarWidthIsLeftToo", L"ab   |", [](const Formatter& f) { return f(L"%-*hs|", -5, "ab"); }},
        {"NarrowLeftStarWidthZero", L"ab|", [](const Formatter& f) { return f(L"%-*hs|", 0, "ab"); }},
        {"NarrowWiderThanItsWidth", L"abcdef|", [](const Formatter& f) { return f(L"%-*hs|", 3, "abcdef"); }},
        {"NarrowEmptyFillsItsWidth", L"    |", [](const Formatter& f) { return f(L"%-*hs|", 4, ""); }},
        {"NarrowStarPrecision", L"ab|", [](const Formatter& f) { return f(L"%.*hs|", 2, "abcd"); }},
        {"NarrowNegativeStarPrecisionIsNone", L"abcd|", [](const Formatter& f) { return f(L"%.*hs|", -2, "abcd"); }},
        {"NarrowPrecisionZero", L"|", [](const Formatter& f) { return f(L"%.0hs|", "abcd"); }},
        {"NarrowPrecisionNeedsNoTerminatingZero", L"abc",
         [](const Formatter& f) {
             const char text[] = {'a', 'b', 'c'};
             return f(L"%.3hs", text);
         }},
    };
}

std::vector<FormatCase> utf8Cases() {
    return {
        {"Utf8", L"<\u00C3\u00A4>", [](const Formatter& f) { return f(L"<%hs>", "\xC3\xA4"); }, L"<\u00E4>"},
        {"Utf8OfThreeAndFourBytes", widened("\xE2\x82\xAC\xF0\x9F\x98\x80|"),
         [](const Formatter& f) { return f(L"%hs|", "\xE2\x82\xAC\xF0\x9F\x98\x80"); }, L"\u20AC\U0001F600|"},
        {"Utf8WidthCountsBytes", L"\u00C3\u00A4  |", [](const Formatter& f) { return f(L"%-*hs|", 4, "\xC3\xA4"); },
         L"\u00E4  |"},
        {"Utf8PaddedToTheLeft", L"   \u00C3\u00A4", [](const Formatter& f) { return f(L"%5hs", "\xC3\xA4"); },
         L"   \u00E4"},
        {"Utf8PrecisionCutsACharacter", L"\u00C3\u00A4\u00C3|",
         [](const Formatter& f) { return f(L"%.3hs|", "\xC3\xA4\xC3\xB6"); }, L"\u00E4\u00C3|"},
        {"Utf8WhoseHalvesAreTwoTexts", L"\u00C3\u00A4",
         [](const Formatter& f) { return f(L"%hs%hs", "\xC3", "\xA4"); }},
        {"Utf8BesideOtherBytes", widened("a\xFF\xC3\xA4\xE2\x82\xC3\xB6\x80"),
         [](const Formatter& f) { return f(L"%hs", "a\xFF\xC3\xA4\xE2\x82\xC3\xB6\x80"); },
         L"a\u00FF\u00E4\u00E2\u0082\u00F6\u0080"},
        {"Utf8TooLongOrASurrogate", widened("\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80"),
         [](const Formatter& f) { return f(L"%hs", "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80"); }},
    };
}

std::vector<FormatCase> wideTextArgumentCases() {
    return {
        {"WideText", L"* abc *\n", [](const Formatter& f) { return f(L"* %s *\n", L"abc"); }},
        {"WideTextEmpty", L"", [](const Formatter& f) { return f(L"%s", L""); }},
        {"WideTextNull", L"(null)", [](const Formatter& f) { return f(L"%s", static_cast<const wchar_t*>(nullptr)); }},
        {"WidePaddedToTheLeft", L"   ab", [](const Formatter& f) { return f(L"%5s", L"ab"); }},
        {"WideLeftStarWidth", L"ab   |", [](const Formatter& f) { return f(L"%-*s|", 5, L"ab"); }},
        {"WideNegativeStarWidthPadsToTheRight", L"ab   |", [](const Formatter& f) { return f(L"%*s|", -5, L"ab"); }},
        {"WideStarPrecision", L"ab|", [](const Formatter& f) { return f(L"%.*s|", 2, L"abcd"); }},
        {"WidePrecisionNeedsNoTerminatingZero", L"abc",
         [](const Formatter& f) {
             const wchar_t text[] = {L'a', L'b', L'c'};
             return f(L"%.3s", text);
         }},
        {"ThreeWideTexts", L"\n****\n* ab *\n****\n",
         [](const Formatter& f) { return f(L"\n%s\n* %s *\n%s\n", L"****", L"ab", L"****"); }},
    };
}

std::vector<FormatCase> indentationCases() {
    return {
        {"IndentationOfNarrowText", L"        abc\n", [](const Formatter& f) { return f(L"%*s%hs\n", 8, L"", "abc"); }},
        {"IndentationOfWideText", L"  abc", [](const Formatter& f) { return f(L"%*s%s", 2, L"", L"abc"); }},
        {"IndentationZero", L"abc", [](const Formatter& f) { return f(L"%*s%hs", 0, L"", "abc"); }},
        {"IndentationAlone", L"   ", [](const Formatter& f) { return f(L"%*s", 3, L""); }},
        {"IndentationWithNarrowEmptyText", L"   x", [](const Formatter& f) { return f(L"%*hsx", 3, ""); }},
        {"IndentationNegative", L"   x", [](const Formatter& f) { return f(L"%*sx", -3, L""); }},
        {"IndentedColumn", L"  ab   |", [](const Formatter& f) { return f(L"%*s%-*s%*s|", 2, L"", 4, L"ab", 1, L""); }},
        {"IndentationOfThousands", std::wstring(5000, L' ') + L"x",
         [](const Formatter& f) { return f(L"%*sx", 5000, L""); }},
    };
}

std::vector<FormatCase> progressCases() {
    return {
        {"ProgressLine", L" 42% " + std::wstring(L"abc") + std::wstring(48, L' ') + L"\r",
         [](const Formatter& f) { return f(L"%3u%% %-51.51hs\r", 42U, "abc"); }},
        {"ProgressLineAtItsEnds", L"  0%   0%100%|",
         [](const Formatter& f) { return f(L"%3u%% %3u%%%3u%%|", 0U, 0U, 100U); }},
        {"ProgressNameOf51Bytes", L"  7% " + std::wstring(51, L'x') + L"|",
         [](const Formatter& f) { return f(L"%3u%% %-51.51hs|", 7U, std::string(51, 'x').c_str()); }},
        {"ProgressNameOf52BytesIsCut", L"100% " + std::wstring(51, L'x') + L"|",
         [](const Formatter& f) { return f(L"%3u%% %-51.51hs|", 100U, std::string(52, 'x').c_str()); }},
        {"ProgressNameIsCutInsideACharacter", L"100% " + std::wstring(50, L'x') + L"\u00C3|",
         [](const Formatter& f) { return f(L"%3u%% %-51.51hs|", 100U, (std::string(50, 'x') + "\xC3\xA4").c_str()); }},
        {"ProgressNameEmpty", L"100% " + std::wstring(51, L' ') + L"|",
         [](const Formatter& f) { return f(L"%3u%% %-51.51hs|", 100U, ""); }},
    };
}

std::vector<FormatCase> numberCases() {
    return {
        {"UnsignedZero", L"0", [](const Formatter& f) { return f(L"%u", 0U); }},
        {"UnsignedLargest", L"4294967295", [](const Formatter& f) { return f(L"%u", UINT_MAX); }},
        {"UnsignedWiderThanItsWidth", L"1234", [](const Formatter& f) { return f(L"%3u", 1234U); }},
        {"UnsignedStarWidths", L"    7|7    |", [](const Formatter& f) { return f(L"%*u|%*u|", 5, 7U, -5, 7U); }},
        {"UnsignedLeftAligned", L"7  |", [](const Formatter& f) { return f(L"%-3u|", 7U); }},
        {"UnsignedZeroWithoutDigits", L"|", [](const Formatter& f) { return f(L"%.0u|", 0U); }},
        {"UnsignedInAColumnOfNine", L"        7", [](const Formatter& f) { return f(L"%9u", 7U); }},
        {"UnsignedLeftAlignedGetsNoZeros", L"7    |", [](const Formatter& f) { return f(L"%0-5u|", 7U); }},
        {"UnsignedPaddedWithZeros", L"007", [](const Formatter& f) { return f(L"%03u", 7U); }},
        {"UnsignedPrecision", L"  007", [](const Formatter& f) { return f(L"%5.3u", 7U); }},
        {"SignedNegative", L"(error code: -1)!", [](const Formatter& f) { return f(L"(error code: %i)!", -1); }},
        {"SignedSmallest", L"-2147483648", [](const Formatter& f) { return f(L"%d", INT_MIN); }},
        {"SignedLargest", L"2147483647", [](const Formatter& f) { return f(L"%i", INT_MAX); }},
        {"HexadecimalOfZeroIsBare", L"0", [](const Formatter& f) { return f(L"%#x", 0U); }},
        {"HexadecimalIsLowerCase", L"0x12ef", [](const Formatter& f) { return f(L"%#x", 0x12EFU); }},
        {"HexadecimalLargest", L"0xffffffff", [](const Formatter& f) { return f(L"%#x", UINT_MAX); }},
        {"HexadecimalWithoutPrefix", L"0012ef", [](const Formatter& f) { return f(L"%06x", 0x12EFU); }},
        {"FloatingZero", L" 0.000", [](const Formatter& f) { return f(L"% 4.3f", 0.0); }},
        {"FloatingPositiveHasABlank", L", time  1.500 sec.",
         [](const Formatter& f) { return f(L", time % 4.3f sec.", 1.5); }},
        {"FloatingNegativeHasASign", L"-1.500", [](const Formatter& f) { return f(L"% 4.3f", -1.5); }},
        {"FloatingIsRounded", L" 2.346", [](const Formatter& f) { return f(L"% 4.3f", 2.34567); }},
        {"FloatingLarge", L" 18446744073709.551",
         [](const Formatter& f) { return f(L"% 4.3f", 18446744073709.55078125); }},
        {"FloatingWidth", L"    1.5", [](const Formatter& f) { return f(L"%7.1f", 1.5); }},
    };
}

std::vector<FormatCase> literalCases() {
    return {
        {"EmptyFormat", L"", [](const Formatter& f) { return f(L""); }},
        {"LiteralOnly", L"\nReported errors:\n", [](const Formatter& f) { return f(L"\nReported errors:\n"); }},
        {"PercentSign", L"100%", [](const Formatter& f) { return f(L"100%%"); }},
        {"PercentSignBetween", L"%s", [](const Formatter& f) { return f(L"%%s"); }},
        {"ManyArgumentsInOrder", L"    ERROR 0x7 (reported by S/N 8) a/b 9 -1  0.5",
         [](const Formatter& f) {
             return f(L"%*sERROR %#x (reported by S/N %u) %hs/%s %u %i % .1f", 4, L"", 7U, 8U, "a", L"b", 9U, -1, 0.5);
         }},
        {"LongText", std::wstring(100000, L'x'),
         [](const Formatter& f) { return f(L"%hs", std::string(100000, 'x').c_str()); }},
    };
}

} // namespace

int Formatter::operator()(const wchar_t* format, ...) const {
    Arguments arguments{};
    va_start(arguments.list, format);
    const int result = function_(format, arguments);
    va_end(arguments.list);
    return result;
}

const std::wstring& FormatCase::inBuffer() const {
    return decoded.empty() || !decodesNarrowText() ? text : decoded;
}

const std::vector<FormatCase>& formatCases() {
    static const std::vector<FormatCase> cases = [] {
        std::vector<FormatCase> result;
        for (const auto& part : {narrowTextCases(), utf8Cases(), wideTextArgumentCases(), indentationCases(),
                                 progressCases(), numberCases(), literalCases()}) {
            result.insert(result.end(), part.begin(), part.end());
        }
        return result;
    }();
    return cases;
}

const std::vector<FormatCase>& wideTextCases() {
    static const std::vector<FormatCase> cases = {
        {"LatinText", L"f\u00FCr", [](const Formatter& f) { return f(L"%s", L"f\u00FCr"); }},
        {"ThreeByteText", L"<\u4E2D\u6587>", [](const Formatter& f) { return f(L"<%s>", L"\u4E2D\u6587"); }},
        {"TextBeyondTheBasicPlane", L"\U0001F600|", [](const Formatter& f) { return f(L"%s|", L"\U0001F600"); }},
        {"PaddedLatinText", L"  \u00E4|\u00E4  |",
         [](const Formatter& f) { return f(L"%3s|%-3s|", L"\u00E4", L"\u00E4"); }},
        {"LatinTextCut", L"\u00E4\u00F6|", [](const Formatter& f) { return f(L"%.2s|", L"\u00E4\u00F6\u00FC"); }},
        {"WideBesideNarrow", L"\u00E4\u00C3\u00A4",
         [](const Formatter& f) { return f(L"%s%hs", L"\u00E4", "\xC3\xA4"); }, L"\u00E4\u00E4"},
    };
    return cases;
}

std::string nameOfCase(const testing::TestParamInfo<FormatCase>& row) {
    return row.param.name;
}

Written writeCase(const FormatCase& row) {
    const ScratchFolder folder;
    Written written;
    {
        const StreamGuard stream(std::fopen((folder.path() / "stream").string().c_str(), "w"));
        written.result = row.call(Formatter([&](const wchar_t* format, Formatter::Arguments& arguments) {
            return writeFormatted(stream.get(), format, arguments.list);
        }));
    }
    written.bytes = writtenLines(folder.read("stream"));
    return written;
}
