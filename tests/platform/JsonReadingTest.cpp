// What is read as JSON, and as which numbers.

#include "JsonTexts.h"
#include "KvNJson.h"
#include "ScratchFile.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

using KvNJson::json;

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t round = 0; round < count; ++round) {
        result += text;
    }
    return result;
}

std::string nestedArrays(std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
}

std::string nestedObjects(std::size_t levels) {
    return repeated(R"({"a":)", levels - 1) + "{}" + std::string(levels - 1, '}');
}

} // namespace

TEST(JsonParse, ReadsEveryKindOfValue) {
    const TextPair cases[] = {
        {"null", "null"},
        {"true", "true"},
        {"false", "false"},
        {"0", "0"},
        {"-12", "-12"},
        {"1.5", "1.5"},
        {R"("text")", R"("text")"},
        {"[]", "[]"},
        {"{}", "{}"},
        {" \t\r\n[ 1 , 2 ] \t\r\n", "[1,2]"},
        {R"({ "a" : { "b" : [ null , { } ] } })", R"({"a":{"b":[null,{}]}})"},
        {R"({"":""})", R"({"":""})"},
    };
    for (const TextPair& pair : cases) {
        EXPECT_EQ(normalised(pair.text), pair.expected);
        EXPECT_EQ(parseFile(pair.text).dump(), pair.expected);
    }
}

void expectInvalid(std::string_view text) {
    EXPECT_TRUE(json::parse(text).is_invalid()) << '"' << text << '"';
    EXPECT_TRUE(parseFile(text).is_invalid()) << '"' << text << '"';
}

TEST(JsonParse, RefusesIncompleteAndForeignSyntax) {
    const std::string_view cases[] = {
        "",
        " \n",
        "nul",
        "nulL",
        "True",
        "NaN",
        "Infinity",
        "-Infinity",
        "undefined",
        "'a'",
        "a",
        "[",
        "]",
        "{",
        "}",
        "[1",
        "[1,",
        "[1,]",
        "[,1]",
        "[1 2]",
        "[1,,2]",
        R"({"a")",
        R"({"a":)",
        R"({"a":1)",
        R"({"a":1,})",
        R"({"a" 1})",
        R"({"a":1 "b":2})",
        R"({a:1})",
        R"({'a':1})",
        R"({1:1})",
        R"({"a":1,,"b":2})",
        "1 2",
        "{}{}",
        "[] x",
        "null,",
        "// c\n1",
        "1 // c",
        "/* c */ 1",
        "[1 /* c */]",
    };
    for (const std::string_view text : cases) {
        expectInvalid(text);
    }
}

TEST(JsonParse, RefusesNumbersThatAreNotStrictJson) {
    const std::string_view cases[] = {
        "01", "-01", "00", "+1", "-", "- 1", ".5", "1.", "1.e3", "1e", "1e+", "1e-", "0x10", "1_000", "1,5",
    };
    for (const std::string_view text : cases) {
        expectInvalid(text);
    }
}

TEST(JsonParse, RefusesTextsThatAreNotStrictJson) {
    const std::string_view cases[] = {
        R"(")",       R"("a)",       R"("\)",       R"("\x41")", R"("\a")",    R"("\'")",  R"("\u")",
        R"("\u12")",  R"("\u123g")", R"("\U0041")", "\"a\nb\"",  "\"a\tb\"",   "\"\x01\"", "\"\x1F\"",
        "\"a\0b\""sv, "\0"sv,        "1\0"sv,       "\v1",       "\xC2\xA0 1",
    };
    for (const std::string_view text : cases) {
        expectInvalid(text);
    }
}

TEST(JsonParse, AnInvalidDocumentLooksLikeNull) {
    const json document = json::parse("[");
    EXPECT_TRUE(document.is_invalid());
    EXPECT_TRUE(document.view().is_valid());
    EXPECT_TRUE(document.view().is_null());
    EXPECT_EQ(document.dump(), "null");
    EXPECT_FALSE(json::parse("null").is_invalid());
    EXPECT_FALSE(json().is_invalid());
}

TEST(JsonParse, SkipsAByteOrderMarkAtTheBeginningOnly) {
    for (const auto parse : {+[](std::string_view text) { return json::parse(text); }, &parseFile}) {
        EXPECT_EQ(parse("\xEF\xBB\xBF[1]").dump(), "[1]");
        EXPECT_EQ(parse("\xEF\xBB\xBF 7").dump(), "7");
        for (const std::string_view text :
             {"\xEF\xBB\xBF", "\xEF\xBB", "\xEF", "\xEF\xBB[1]", "\xEF\xBB\xBF\xEF\xBB\xBF[1]", " \xEF\xBB\xBF[1]",
              "[1]\xEF\xBB\xBF", "[\xEF\xBB\xBF 1]", "\xFE\xFF[1]", "\xFF\xFE[1]"}) {
            EXPECT_TRUE(parse(text).is_invalid()) << text;
        }
        EXPECT_EQ(parse("[\"\xEF\xBB\xBF\"]").dump(), "[\"\xEF\xBB\xBF\"]");
    }
}

TEST(JsonParse, ReadsAStreamFromItsPosition) {
    const ScratchFile file("skip{\"a\":1}");
    const ScratchFile::Stream stream = file.open("rb");
    ASSERT_EQ(std::fseek(stream.get(), 4, SEEK_SET), 0);
    EXPECT_EQ(json::parse(stream.get()).dump(), R"({"a":1})");
    // Still open, and at its end.
    EXPECT_EQ(std::fgetc(stream.get()), EOF);
    EXPECT_NE(std::feof(stream.get()), 0);
}

TEST(JsonParse, AStreamThatCannotBeReadIsInvalid) {
    const ScratchFile file("");
    const ScratchFile::Stream writeOnly = file.open("ab");
    EXPECT_TRUE(json::parse(writeOnly.get()).is_invalid());
}

TEST(JsonParse, AFolderIsInvalidWhereItCanBeOpenedAtAll) {
    const ScratchFile::Stream folder(std::fopen(testing::TempDir().c_str(), "rb"));
    EXPECT_TRUE(folder == nullptr || json::parse(folder.get()).is_invalid());
}

TEST(JsonParse, APieceMayEndAnywhereInAValue) {
    constexpr std::size_t pieceSize = 65536;
    const std::string value =
        "{\"k\xC3\xA4\\u00e4\\ud83d\\ude00y\":[\"\xF0\x9F\x98\x80 \\\"\\\\ \\n\",-12345,18446744073709551615,"
        "-1.25e-3,1234567890.0987654321,true,false,null,{},[],{\"a\":\"b\"}]}";
    const std::string expected = json::parse(value).dump();
    ASSERT_EQ(expected,
              "{\"k\xC3\xA4\xC3\xA4\xF0\x9F\x98\x80y\":[\"\xF0\x9F\x98\x80 \\\"\\\\ \\n\",-12345,18446744073709551615,"
              "-0.00125,1234567890.0987654,true,false,null,{},[],{\"a\":\"b\"}]}");
    for (std::size_t cut = 0; cut <= value.size(); ++cut) {
        ASSERT_EQ(parseFile(std::string(pieceSize - cut, ' ') + value).dump(), expected) << cut;
        if (cut < value.size()) {
            ASSERT_TRUE(parseFile(std::string(pieceSize - cut, ' ') + value.substr(0, cut)).is_invalid()) << cut;
        }
    }
}

TEST(JsonParse, ANumberMayEndWithAPieceAndWithTheText) {
    constexpr std::size_t pieceSize = 65536;
    for (const std::string_view number : {"7", "-7", "0", "1.5", "1e3", "12345678901234567890123"}) {
        const std::string text = std::string(pieceSize - number.size(), ' ') + std::string(number);
        EXPECT_EQ(parseFile(text).dump(), normalised(number));
        EXPECT_EQ(parseFile(text + " ").dump(), normalised(number));
        EXPECT_TRUE(parseFile(text + " 1").is_invalid());
    }
}

TEST(JsonParse, ALongTextReadsTheSameFromAFile) {
    std::string text = "[";
    for (unsigned number = 0; number < 30000; ++number) {
        text += "{\"number\":" + std::to_string(number) + ",\"text\":\"\xE2\x82\xAC " + std::string(number % 50, 'x') +
                "\"},";
    }
    text += joined("\"", std::string(300000, 'y'), "\"]");
    const json fromFile = parseFile(text);
    ASSERT_FALSE(fromFile.is_invalid());
    EXPECT_EQ(fromFile.view().size(), 30001U);
    EXPECT_EQ(fromFile.dump(), text);
}

TEST(JsonParse, ReadsTwoHundredAndFiftySixLevels) {
    EXPECT_EQ(normalised(nestedArrays(256)), nestedArrays(256));
    EXPECT_EQ(normalised(nestedObjects(256)), nestedObjects(256));
    EXPECT_FALSE(parseFile(nestedArrays(256)).is_invalid());
    EXPECT_FALSE(json::parse(joined("[", nestedArrays(255), ",", nestedObjects(255), "]")).is_invalid());
}

TEST(JsonParse, RefusesADeeperText) {
    EXPECT_TRUE(json::parse(nestedArrays(257)).is_invalid());
    EXPECT_TRUE(json::parse(nestedObjects(257)).is_invalid());
    EXPECT_TRUE(json::parse(joined("[", nestedObjects(256), "]")).is_invalid());
    EXPECT_TRUE(parseFile(nestedArrays(257)).is_invalid());
    EXPECT_TRUE(json::parse(std::string(1000000, '[')).is_invalid());
    EXPECT_TRUE(parseFile(repeated(R"({"a":)", 1000000)).is_invalid());
}

TEST(JsonParse, ReadsEveryEscape) {
    const TextPair cases[] = {
        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
        {R"("\u0041\u00e4\u00E4\u20ac")", "A\xC3\xA4\xC3\xA4\xE2\x82\xAC"},
        {R"("\ud83d\ude00")", "\xF0\x9F\x98\x80"},
        {R"("\uD800\uDC00\uDBFF\uDFFF")", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {R"("\u0000")", "\0"sv},
        {R"("\u0080\u07ff\u0800\uffff")", "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {"\"\x7F\"", "\x7F"},
    };
    for (const TextPair& pair : cases) {
        const json document = json::parse(pair.text);
        ASSERT_TRUE(document.view().is_string()) << pair.text;
        EXPECT_EQ(document.view().get_string(), pair.expected) << pair.text;
    }
}

TEST(JsonParse, RefusesALoneSurrogate) {
    for (const char* const text : {R"("\ud83d")", R"("\ud83dx")", R"("\ud83d\n")", R"("\ud83d\ud83d")", R"("\ude00")",
                                   R"("\ude00\ud83d")", R"("\ud83d\u0041")", R"({"\udfff":1})"}) {
        EXPECT_TRUE(json::parse(text).is_invalid()) << text;
        EXPECT_TRUE(parseFile(text).is_invalid()) << text;
    }
}

TEST(JsonParse, TakesUtf8Only) {
    for (const char* const text : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                   "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        const std::string quoted = joined("\"", text, "\"");
        EXPECT_EQ(json::parse(quoted).view().get_string(), text);
    }
    for (const char* const text : {"\x80",
                                   "\xBF",
                                   "\xC0\x80",
                                   "\xC1\xBF",
                                   "\xC2",
                                   "\xC2z",
                                   "\xE0\x80\x80",
                                   "\xE0\x9F\xBF",
                                   "\xE2\x82",
                                   "\xE2\x82z",
                                   "\xED\xA0\x80",
                                   "\xED\xBF\xBF",
                                   "\xF0\x80\x80\x80",
                                   "\xF0\x8F\xBF\xBF",
                                   "\xF0\x9F\x98",
                                   "\xF4\x90\x80\x80",
                                   "\xF5\x80\x80\x80",
                                   "\xF8\x88\x80\x80\x80",
                                   "\xFF",
                                   "\xFE"}) {
        const std::string quoted = joined("\"", text, "\"");
        EXPECT_TRUE(json::parse(quoted).is_invalid()) << quoted;
        EXPECT_TRUE(json::parse(joined("{", quoted, ":1}")).is_invalid()) << quoted;
        EXPECT_TRUE(parseFile(quoted).is_invalid()) << quoted;
    }
}

TEST(JsonParse, OfARepeatedKeyTheFirstPlaceAndTheLastValueCount) {
    EXPECT_EQ(normalised(R"({"a":1,"b":2,"a":3})"), R"({"a":3,"b":2})");
    EXPECT_EQ(normalised(R"({"a":1,"a":2,"a":3,"c":4})"), R"({"a":3,"c":4})");
    EXPECT_EQ(normalised(R"({"a":{"x":1},"b":[],"\u0061":"last"})"), R"({"a":"last","b":[]})");
}

TEST(JsonParse, RepeatedKeysOfALargeObjectCountTheSame) {
    std::string text = "{";
    std::string expected = "{";
    for (unsigned round = 0; round < 3; ++round) {
        for (unsigned number = 0; number < 100; ++number) {
            const std::string key = "\"key" + std::to_string(number) + "\":";
            text += key + std::to_string(1000 * round + number) + ",";
            if (round == 2) {
                expected += key + std::to_string(2000 + number) + ",";
            }
        }
    }
    text.back() = '}';
    expected.back() = '}';
    const json document = json::parse(text);
    EXPECT_EQ(document.dump(), expected);
    EXPECT_EQ(document.view().find("key57").get_unsigned(), 2057U);
}

struct FaultCase {
    std::string text;
    std::size_t offset;
    std::string_view reason;
};

TEST(JsonParse, TellsWhereAndWhyATextIsInvalid) {
    const FaultCase cases[] = {
        {"", 0, "The text ends before its value is complete."},
        {"[1,2", 4, "The text ends before its value is complete."},
        {"[1,]", 3, "This is not JSON syntax."},
        {"\xEF\xBB\xBF[1,]", 6, "This is not JSON syntax."},
        {"[1] x", 4, "The text goes on after its value."},
        {R"("\ude00")", 7, "One half of a surrogate pair stands alone."},
        {R"("\ud83d\u0041")", 9, "One half of a surrogate pair stands alone."},
        {R"("\u00zz")", 5, R"("\u" needs four hexadecimal digits.)"},
        {nestedArrays(257), 256, "Arrays and objects are nested deeper than 256 levels."},
        {"[1e999]", 6, "The number is out of range."},
    };
    for (const FaultCase& expected : cases) {
        std::string reason;
        std::size_t offset = 4711;
        EXPECT_TRUE(json::parse(expected.text, &reason, &offset).is_invalid());
        EXPECT_EQ(reason, expected.reason) << expected.text;
        EXPECT_EQ(offset, expected.offset) << expected.text;
    }
}

TEST(JsonParse, SaysNothingAboutAValidText) {
    std::string reason = "untouched";
    std::size_t offset = 4711;
    EXPECT_FALSE(json::parse("[1]", &reason, &offset).is_invalid());
    EXPECT_EQ(reason, "untouched");
    EXPECT_EQ(offset, 4711U);
}

// Numbers

struct UnsignedCase {
    const char* text;
    std::uint64_t number;
};

TEST(JsonNumber, WithoutSignFractionAndExponentIsUnsigned) {
    const UnsignedCase cases[] = {
        {"0", 0},
        {"5", 5},
        {"4294967295", 4294967295U},
        {"4294967296", 4294967296U},
        {"9223372036854775807", 9223372036854775807U},
        {"9223372036854775808", 9223372036854775808U},
        {"18446744073709551615", 18446744073709551615U},
    };
    for (const UnsignedCase& expected : cases) {
        const json document = json::parse(expected.text);
        EXPECT_TRUE(document.view().is_number_unsigned()) << expected.text;
        EXPECT_TRUE(document.view().is_number());
        EXPECT_EQ(document.view().get_unsigned(), expected.number);
        EXPECT_EQ(document.view().get_double(), static_cast<double>(expected.number));
        EXPECT_EQ(document.dump(), expected.text);
    }
}

struct NumberCase {
    const char* text;
    double number;
    const char* dumped;
};

TEST(JsonNumber, OfAnyOtherFormIsNotUnsigned) {
    const NumberCase cases[] = {
        {"-5", -5.0, "-5"},
        {"-9223372036854775808", -9223372036854775808.0, "-9223372036854775808"},
        {"-9223372036854775809", -9223372036854775809.0, "-9.223372036854776e+18"},
        {"18446744073709551616", 18446744073709551616.0, "1.8446744073709552e+19"},
        {"100000000000000000000000", 1e23, "1e+23"},
        {"1.0", 1.0, "1.0"},
        {"0.0", 0.0, "0.0"},
        {"1e2", 100.0, "100.0"},
        {"1E2", 100.0, "100.0"},
        {"1E+2", 100.0, "100.0"},
        {"0e0", 0.0, "0.0"},
        {"1e-2", 0.01, "0.01"},
        {"5.0e0", 5.0, "5.0"},
    };
    for (const NumberCase& expected : cases) {
        const json document = json::parse(expected.text);
        EXPECT_FALSE(document.view().is_number_unsigned()) << expected.text;
        EXPECT_TRUE(document.view().is_number()) << expected.text;
        EXPECT_EQ(document.view().get_double(), expected.number) << expected.text;
        EXPECT_EQ(document.view().get_unsigned(), 0U);
        EXPECT_EQ(document.dump(), expected.dumped);
    }
}

TEST(JsonNumber, MinusZeroKeepsItsSignAsAFloatingNumber) {
    EXPECT_EQ(normalised("-0.0"), "-0.0");
    EXPECT_EQ(normalised("-0e5"), "-0.0");
    EXPECT_TRUE(json::parse("-0").view().is_number());
}

TEST(JsonNumber, IsReadToTheNearestDouble) {
    const NumberCase cases[] = {
        {"0.1", 0.1, "0.1"},
        {"0.30000000000000004", 0.30000000000000004, "0.30000000000000004"},
        {"2.2250738585072014e-308", 2.2250738585072014e-308, "2.2250738585072014e-308"},
        {"2.2250738585072011e-308", 2.2250738585072011e-308, "2.225073858507201e-308"},
        {"5e-324", std::numeric_limits<double>::denorm_min(), "5e-324"},
        {"1.7976931348623157e308", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {"1.7976931348623158e308", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {"9007199254740993.0", 9007199254740992.0, "9007199254740992.0"},
        {"9007199254740993.00000000000000000000000000000000000000000000000001", 9007199254740994.0,
         "9007199254740994.0"},
        {"8.41e21", 8.41e21, "8.41e+21"},
        {"123456789012345678901234567890", 123456789012345678901234567890.0, "1.2345678901234568e+29"},
        {"179769313486231570000000000000000000000e270", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {"0.00000000000000000000000000000000000000000000000000000000000000000000001e71", 1.0, "1.0"},
    };
    for (const NumberCase& expected : cases) {
        const json document = json::parse(expected.text);
        EXPECT_EQ(document.view().get_double(), expected.number) << expected.text;
        EXPECT_EQ(document.dump(), expected.dumped) << expected.text;
        EXPECT_EQ(parseFile(expected.text).dump(), expected.dumped);
    }
}

TEST(JsonNumber, ThatOverflowsADoubleIsInvalid) {
    const std::string manyDigits(100000, '9');
    for (const std::string& text :
         {"1e999"s, "-1e999"s, "1e309"s, "1.8e308"s, "1.7976931348623159e308"s, "-1.7976931348623159e308"s,
          "1e2147483647"s, "1e2147483648"s, "1e99999999999999999999"s, "[1,1e400]"s, R"({"a":1e400})"s, manyDigits,
          joined("-", manyDigits), manyDigits + ".5", manyDigits + "e5", joined("1", std::string(400, '0')),
          joined("1", std::string(400, '0'), "e-91"), joined("0.", std::string(400, '0'), "1e710")}) {
        EXPECT_TRUE(json::parse(text).is_invalid()) << text.substr(0, 40);
        EXPECT_TRUE(parseFile(text).is_invalid()) << text.substr(0, 40);
    }
}

TEST(JsonNumber, TooSmallForADoubleIsZero) {
    EXPECT_EQ(normalised("1e-999"), "0.0");
    EXPECT_EQ(normalised("-1e-999"), "-0.0");
    EXPECT_EQ(normalised("2e-324"), "0.0");
    EXPECT_EQ(normalised(joined("0.", std::string(100000, '0'), "1")), "0.0");
    EXPECT_EQ(normalised("0e999"), "0.0");
}

TEST(JsonNumber, ManyDigitsAreNoHarmWhereTheValueIsInRange) {
    EXPECT_EQ(normalised(joined("1", std::string(400, '0'), "e-400")), "1.0");
    EXPECT_EQ(normalised(joined("0.", std::string(400, '0'), "1e401")), "1.0");
    EXPECT_EQ(parseFile(joined("0.", std::string(200000, '3'))).dump(), "0.3333333333333333");
    EXPECT_EQ(parseFile(joined("[", std::string(70000, ' '), "0.", std::string(200000, '0'), "1e200001,2]")).dump(),
              "[1.0,2]");
}
