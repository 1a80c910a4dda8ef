#include "KvNJson.h"

#include "ScratchFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using KvNJson::error_handler_t;
using KvNJson::json;
using KvNJson::jsonView;

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

json parseFile(std::string_view text) {
    const ScratchFile file(text);
    const ScratchFile::Stream stream = file.open("rb");
    return json::parse(stream.get());
}

/// The text after one reading and writing on one line; "(invalid)" when it cannot be read.
std::string normalised(std::string_view text) {
    const json document = json::parse(text);
    return document.is_invalid() ? "(invalid)" : document.dump();
}

/// One text; operator+ on a literal and a temporary string trips a compiler warning that is mistaken.
template <class... Parts>
std::string joined(const Parts&... parts) {
    std::string result;
    (result.append(parts), ...);
    return result;
}

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

// Reading

struct TextPair {
    std::string_view text;
    std::string_view expected;
};

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

// Looking

TEST(JsonView, OfNothingIsNoTypeAndHoldsNothing) {
    const jsonView nothing;
    EXPECT_FALSE(nothing.is_valid());
    EXPECT_FALSE(nothing.is_null());
    EXPECT_FALSE(nothing.is_boolean());
    EXPECT_FALSE(nothing.is_string());
    EXPECT_FALSE(nothing.is_array());
    EXPECT_FALSE(nothing.is_object());
    EXPECT_FALSE(nothing.is_number());
    EXPECT_FALSE(nothing.is_number_unsigned());
    EXPECT_EQ(nothing.size(), 0U);
    EXPECT_FALSE(nothing.contains("a"));
}

struct TypeCase {
    const char* text;
    /// Of null, boolean, string, array, object, number: the one that it is.
    std::size_t type;
};

TEST(JsonView, IsOfExactlyOneType) {
    const TypeCase cases[] = {{"null", 0}, {"true", 1}, {"false", 1}, {"\"\"", 2}, {"\"1\"", 2},
                              {"[]", 3},   {"{}", 4},   {"1", 5},     {"-1", 5},   {"1.5", 5}};
    for (const TypeCase& expected : cases) {
        const json document = json::parse(expected.text);
        const jsonView view = document.view();
        const std::array<bool, 6> types{view.is_null(),  view.is_boolean(), view.is_string(),
                                        view.is_array(), view.is_object(),  view.is_number()};
        for (std::size_t type = 0; type < types.size(); ++type) {
            EXPECT_EQ(types[type], type == expected.type) << expected.text << ' ' << type;
        }
    }
}

TEST(JsonView, GivesTheMembersOfAnObjectInOrder) {
    const json document = json::parse(R"({"z":1,"a":"two","m":[true]})");
    const jsonView view = document.view();
    ASSERT_EQ(view.size(), 3U);
    EXPECT_EQ(view.key(0), "z");
    EXPECT_EQ(view.key(1), "a");
    EXPECT_EQ(view.key(2), "m");
    EXPECT_EQ(view.at(1).get_string(), "two");
    EXPECT_TRUE(view.at(2).at(0).get_boolean());
    EXPECT_EQ(view.find("z").get_unsigned(), 1U);
    EXPECT_TRUE(view.contains("m"));
    EXPECT_FALSE(view.contains("M"));
    EXPECT_FALSE(view.find("").is_valid());
}

TEST(JsonView, FindsEveryMemberOfALargeObject) {
    std::string text = "{";
    for (unsigned number = 0; number < 2000; ++number) {
        text += joined("\"", std::to_string(number), "\":", std::to_string(number), ",");
    }
    text.back() = '}';
    const json document = json::parse(text);
    for (unsigned number = 0; number < 2000; ++number) {
        EXPECT_EQ(document.view().find(std::to_string(number)).get_unsigned(), number);
    }
    EXPECT_FALSE(document.view().contains("2000"));
}

TEST(JsonView, KeysAndTextsMayHoldZeroBytes) {
    const json document = json::parse(R"({"a\u0000b":"c\u0000d"})");
    EXPECT_EQ(document.view().key(0), "a\0b"sv);
    EXPECT_EQ(document.view().find("a\0b"sv).get_string(), "c\0d"sv);
    EXPECT_FALSE(document.view().contains("a"));
}

TEST(JsonView, AskingForWhatItIsNotGivesNothing) {
    const json document = json::parse(R"([1,"text",{"a":1}])");
    const jsonView view = document.view();
    EXPECT_EQ(view.get_string(), "");
    EXPECT_FALSE(view.get_boolean());
    EXPECT_EQ(view.get_unsigned(), 0U);
    EXPECT_EQ(view.get_double(), 0.0);
    EXPECT_FALSE(view.at(3).is_valid());
    EXPECT_EQ(view.key(0), "");
    EXPECT_FALSE(view.find("a").is_valid());
    EXPECT_EQ(view.at(0).size(), 0U);
    EXPECT_FALSE(view.at(1).at(0).is_valid());
    EXPECT_EQ(view.at(2).key(1), "");
}

// Owning and changing

TEST(JsonValue, IsMadeOfEveryBasicType) {
    EXPECT_EQ(json().dump(), "null");
    EXPECT_EQ(json(true).dump(), "true");
    EXPECT_EQ(json(std::uint32_t(4294967295U)).dump(), "4294967295");
    EXPECT_EQ(json(std::uint64_t(18446744073709551615U)).dump(), "18446744073709551615");
    EXPECT_EQ(json(1.5).dump(), "1.5");
    EXPECT_EQ(json("text").dump(), "\"text\"");
    EXPECT_EQ(json("a\0b"sv).dump(), "\"a\\u0000b\"");
    EXPECT_EQ(json(KvCString("text")).dump(), "\"text\"");
    EXPECT_EQ(json(static_cast<const char*>(nullptr)).dump(), "\"\"");
    EXPECT_EQ(json::makeObject().dump(), "{}");
    EXPECT_EQ(json::makeArray().dump(), "[]");
    EXPECT_TRUE(json(std::uint32_t(0)).view().is_number_unsigned());
    EXPECT_TRUE(json(std::uint64_t(7)).view().is_number_unsigned());
    EXPECT_FALSE(json(7.0).view().is_number_unsigned());
}

TEST(JsonValue, SetReplacesInPlaceAndAddsAtTheEnd) {
    json object = json::makeObject();
    object.set("z", json(std::uint32_t(1)));
    object.set("a", json("two"));
    object.set("z", json::makeArray());
    object.set("b", json());
    EXPECT_EQ(object.dump(), R"({"z":[],"a":"two","b":null})");
    for (std::uint32_t number = 0; number < 100; ++number) {
        object.set(std::to_string(number), json(number));
        object.set("a", json(number));
    }
    EXPECT_EQ(object.view().size(), 103U);
    EXPECT_EQ(object.view().key(1), "a");
    EXPECT_EQ(object.view().find("a").get_unsigned(), 99U);
    EXPECT_EQ(object.view().key(102), "99");
}

TEST(JsonValue, AppendAddsAtTheEnd) {
    json array = json::makeArray();
    array.append(json(true));
    array.append(json::makeObject());
    array.append(array);
    EXPECT_EQ(array.dump(), "[true,{},[true,{}]]");
}

TEST(JsonValue, WhatIsNoObjectOrArrayBecomesOneFirst) {
    json object;
    object.set("a", json(true));
    EXPECT_EQ(object.dump(), R"({"a":true})");
    json array;
    array.append(json(true));
    EXPECT_EQ(array.dump(), "[true]");
    array.set("b", json());
    EXPECT_EQ(array.dump(), R"({"b":null})");
    json invalid = json::parse("[");
    invalid.append(json());
    EXPECT_FALSE(invalid.is_invalid());
    EXPECT_EQ(invalid.dump(), "[null]");
}

TEST(JsonValue, ACopyIsIndependent) {
    json original = json::parse(R"({"a":[1,2]})");
    json copy = original;
    copy.set("b", json(true));
    original.set("a", json());
    EXPECT_EQ(original.dump(), R"({"a":null})");
    EXPECT_EQ(copy.dump(), R"({"a":[1,2],"b":true})");
    original = copy;
    EXPECT_EQ(original.dump(), copy.dump());
    const json& same = original;
    original = same;
    EXPECT_EQ(original.dump(), copy.dump());
    EXPECT_TRUE(json(json::parse("?")).is_invalid());
}

TEST(JsonValue, AMoveLeavesNullBehind) {
    json original = json::parse(R"({"a":"a text that is too long to be kept in place"})");
    json moved = std::move(original);
    EXPECT_EQ(original.dump(), "null"); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(moved.dump(), R"({"a":"a text that is too long to be kept in place"})");
    original = std::move(moved);
    EXPECT_EQ(moved.dump(), "null"); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(original.view().size(), 1U);
    json invalid = json::parse("?");
    const json taken = std::move(invalid);
    EXPECT_TRUE(taken.is_invalid());
    EXPECT_FALSE(invalid.is_invalid()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

TEST(JsonTakeItem, LeavesNullInItsPlace) {
    json document = json::parse(R"([{"a":"first"},[2],"third"])");
    const json first = document.takeItem(0);
    const json third = document.takeItem(2);
    EXPECT_EQ(first.dump(), R"({"a":"first"})");
    EXPECT_EQ(third.dump(), "\"third\"");
    EXPECT_EQ(document.dump(), "[null,[2],null]");
    EXPECT_EQ(document.takeItem(0).dump(), "null");
}

TEST(JsonTakeItem, TakesTheValueOfAMemberToo) {
    json document = json::parse(R"({"info":{"a":1},"files":[1,2]})");
    EXPECT_EQ(document.takeItem(1).dump(), "[1,2]");
    EXPECT_EQ(document.dump(), R"({"info":{"a":1},"files":null})");
}

TEST(JsonTakeItem, WhatDoesNotExistIsNull) {
    json document = json::parse("[1]");
    EXPECT_EQ(document.takeItem(1).dump(), "null");
    json text("text");
    EXPECT_EQ(text.takeItem(0).dump(), "null");
    EXPECT_EQ(document.dump(), "[1]");
}

TEST(JsonTakeItem, OutlivesItsDocument) {
    json entry;
    {
        json document = json::parse(R"({"files":[{"name":"a name that is too long to be kept in place","v":[1]}]})");
        json files = document.takeItem(0);
        entry = files.takeItem(0);
    }
    entry.set("added", json("another text that is too long to be kept in place"));
    entry.set("v", json::parse(R"(["from another document"])"));
    EXPECT_EQ(entry.dump(), R"({"name":"a name that is too long to be kept in place","v":["from another document"],)"
                            R"("added":"another text that is too long to be kept in place"})");
    json collected = json::makeArray();
    collected.append(std::move(entry));
    entry = json();
    EXPECT_EQ(collected.view().at(0).size(), 3U);
}

TEST(JsonTakeItem, WorksOnAValueOfItsOwnMemory) {
    json array = json::makeArray();
    array.append(json("a text that is too long to be kept in place"));
    const json item = array.takeItem(0);
    array = json();
    EXPECT_EQ(item.dump(), "\"a text that is too long to be kept in place\"");
}

TEST(JsonTakeItem, APlaceThatWasTakenCanBeFilledAgain) {
    json document = json::parse(R"({"a":["a text that is too long to be kept in place"],"b":1})");
    const json taken = document.takeItem(0);
    document.set("a", json("another text that is too long to be kept in place"));
    EXPECT_EQ(document.dump(), R"({"a":"another text that is too long to be kept in place","b":1})");
    EXPECT_EQ(taken.view().size(), 1U);
}

// Writing

TEST(JsonDump, PutsEveryMemberAndItemOnALineOfItsOwn) {
    const json document = json::parse(R"({"a":1,"b":[true,[],{},{"c":null}],"d":{"e":"f"}})");
    EXPECT_EQ(document.dump(4), R"({
    "a": 1,
    "b": [
        true,
        [],
        {},
        {
            "c": null
        }
    ],
    "d": {
        "e": "f"
    }
})");
    EXPECT_EQ(document.dump(1, '\t').substr(0, 15), "{\n\t\"a\": 1,\n\t\"b\"");
    EXPECT_EQ(json::parse("[1,[2]]").dump(0), "[\n1,\n[\n2\n]\n]");
    EXPECT_EQ(document.dump(-1), document.dump());
    EXPECT_EQ(document.dump(), R"({"a":1,"b":[true,[],{},{"c":null}],"d":{"e":"f"}})");
}

TEST(JsonDump, AnEmptyOrSimpleValueStandsOnOneLine) {
    for (const char* const text : {"[]", "{}", "null", "1", "\"a\""}) {
        EXPECT_EQ(json::parse(text).dump(4), text);
    }
}

TEST(JsonDump, EscapesOnlyWhatItMust) {
    const TextPair cases[] = {
        {"\b\f\n\r\t\"\\", R"("\b\f\n\r\t\"\\")"},
        {"\0\x01\x0B\x1F"sv, R"("\u0000\u0001\u000b\u001f")"},
        {"/\x7F", "\"/\x7F\""},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF", "\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF\""},
        {"\xE2\x80\xA8", "\"\xE2\x80\xA8\""},
        {"a\nb", R"("a\nb")"},
        {"", R"("")"},
    };
    for (const TextPair& pair : cases) {
        EXPECT_EQ(json(pair.text).dump(), pair.expected);
        json object = json::makeObject();
        object.set(pair.text, json());
        EXPECT_EQ(object.dump(), joined("{", pair.expected, ":null}"));
    }
}

TEST(JsonDump, CanEscapeAllThatIsNotAscii) {
    const json text("a\xC3\xA4 \xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF\x7F\n");
    EXPECT_EQ(text.dump(-1, ' ', true), "\"a\\u00e4 \\u20ac\\ud83d\\ude00\\uffff\\udbff\\udfff\x7F\\n\"");
}

struct IllFormedCase {
    std::string_view bytes;
    std::string_view replaced;
    std::string_view dropped;
};

TEST(JsonDump, ReplacesOrDropsWhatIsNotUtf8) {
    const IllFormedCase cases[] = {
        {"a\xFFz", R"("a\ufffdz")", R"("az")"},
        {"\x80\xBF", R"("\ufffd\ufffd")", R"("")"},
        {"a\xC3", R"("a\ufffd")", R"("a")"},
        {"\xC3(", R"("\ufffd(")", R"("(")"},
        {"\xE2\x82z", R"("\ufffdz")", R"("z")"},
        {"\xF0\x9F\x98\"", R"("\ufffd\"")", R"("\"")"},
        {"\xC0\xAF", R"("\ufffd\ufffd")", R"("")"},
        {"\xED\xA0\x80", R"("\ufffd\ufffd\ufffd")", R"("")"},
        {"\xE0\x80z", R"("\ufffd\ufffdz")", R"("z")"},
        {"\xF4\x90\x80\x80", R"("\ufffd\ufffd\ufffd\ufffd")", R"("")"},
        {"\xF0\x9F\xC3\xA4", R"("\ufffd\u00e4")", R"("\u00e4")"},
    };
    for (const IllFormedCase& expected : cases) {
        const json text(expected.bytes);
        EXPECT_EQ(text.dump(-1, ' ', true, error_handler_t::replace), expected.replaced);
        EXPECT_EQ(text.dump(-1, ' ', true, error_handler_t::strict), expected.replaced);
        EXPECT_EQ(text.dump(-1, ' ', true, error_handler_t::ignore), expected.dropped);
        EXPECT_EQ(normalised(text.dump(-1, ' ', false, error_handler_t::replace)), normalised(expected.replaced));
        EXPECT_EQ(normalised(text.dump(-1, ' ', false, error_handler_t::ignore)), normalised(expected.dropped));
    }
    EXPECT_EQ(json("a\xFFz").dump(-1, ' ', false, error_handler_t::replace), "\"a\xEF\xBF\xBDz\"");
}

struct DoubleCase {
    double number;
    const char* text;
};

TEST(JsonDump, WritesFloatingNumbersWithTheShortestDigits) {
    const DoubleCase cases[] = {
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {1.0, "1.0"},
        {-1.5, "-1.5"},
        {1000.0, "1000.0"},
        {0.1, "0.1"},
        {0.5, "0.5"},
        {0.0001, "0.0001"},
        {0.00012345, "0.00012345"},
        {0.00001, "1e-05"},
        {0.000099999, "9.9999e-05"},
        {1e-7, "1e-07"},
        {1.25e-10, "1.25e-10"},
        {123.456, "123.456"},
        {123456789012345.6, "123456789012345.6"},
        {1e15, "1000000000000000.0"},
        {1234567890123456.0, "1234567890123456.0"},
        {9007199254740993.0, "9007199254740992.0"},
        {9999999999999998.0, "9999999999999998.0"},
        {1e16, "1e+16"},
        {1.5e16, "1.5e+16"},
        {12345678901234568.0, "1.2345678901234568e+16"},
        {1e22, "1e+22"},
        {1.5e300, "1.5e+300"},
        {-2.5e-300, "-2.5e-300"},
        {0.1 + 0.2, "0.30000000000000004"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {std::numeric_limits<double>::denorm_min(), "5e-324"},
    };
    for (const DoubleCase& expected : cases) {
        EXPECT_EQ(json(expected.number).dump(), expected.text);
        EXPECT_EQ(normalised(expected.text), expected.text);
    }
}

TEST(JsonDump, ANumberThatIsNotFiniteIsNull) {
    EXPECT_EQ(json(std::numeric_limits<double>::infinity()).dump(), "null");
    EXPECT_EQ(json(-std::numeric_limits<double>::infinity()).dump(), "null");
    EXPECT_EQ(json(std::numeric_limits<double>::quiet_NaN()).dump(), "null");
}

TEST(JsonRoundTrip, EveryDoubleReadsBack) {
    std::mt19937_64 random(4);
    for (int round = 0; round < 50000; ++round) {
        const auto number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) {
            continue;
        }
        const std::string text = json(number).dump();
        ASSERT_EQ(std::bit_cast<std::uint64_t>(json::parse(text).view().get_double()),
                  std::bit_cast<std::uint64_t>(number))
            << text;
    }
}

namespace {

/// Makes documents from a seed.
class DocumentMaker {
public:
    explicit DocumentMaker(unsigned seed) : random_(seed) {}

    json value(unsigned levels) {
        switch (upTo(levels == 0 ? 5 : 8)) {
        case 0:
            return {};
        case 1:
            return {upTo(1) == 1};
        case 2:
            return {std::uint64_t(random_()) >> upTo(63)};
        case 3:
            return json::parse(joined("-", std::to_string(1 + upTo(1000000))));
        case 4:
            return {std::ldexp(static_cast<double>(random_()), static_cast<int>(upTo(600)) - 300)};
        case 5:
            return {text()};
        case 6:
            return array(levels - 1);
        default:
            return object(levels - 1);
        }
    }

private:
    unsigned upTo(unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit)(random_); }

    json array(unsigned levels) {
        json result = json::makeArray();
        for (unsigned count = upTo(6); count > 0; --count) {
            result.append(value(levels));
        }
        return result;
    }

    json object(unsigned levels) {
        json result = json::makeObject();
        for (unsigned count = upTo(upTo(9) == 0 ? 40 : 6); count > 0; --count) {
            result.set(text(), value(levels));
        }
        return result;
    }

    std::string text() {
        static const std::vector<std::string> pieces = {"a",
                                                        "Z",
                                                        " ",
                                                        "/",
                                                        "\"",
                                                        "\\",
                                                        "\n",
                                                        "\x01",
                                                        "\x7F",
                                                        "\xC3\xA4",
                                                        "\xE2\x82\xAC",
                                                        "\xEF\xBF\xBF",
                                                        "\xF0\x9F\x98\x80",
                                                        std::string(1, '\0')};
        std::string result;
        for (unsigned count = upTo(12); count > 0; --count) {
            result += pieces[upTo(static_cast<unsigned>(pieces.size()) - 1)];
        }
        return result;
    }

    std::mt19937_64 random_;
};

bool isSame(jsonView left, jsonView right) {
    if (left.is_null() != right.is_null() || left.is_boolean() != right.is_boolean() ||
        left.is_string() != right.is_string() || left.is_array() != right.is_array() ||
        left.is_object() != right.is_object() || left.is_number_unsigned() != right.is_number_unsigned() ||
        left.is_number() != right.is_number() || left.size() != right.size()) {
        return false;
    }
    for (std::size_t index = 0; index < left.size(); ++index) {
        if (left.key(index) != right.key(index) || !isSame(left.at(index), right.at(index))) {
            return false;
        }
    }
    return left.get_boolean() == right.get_boolean() && left.get_string() == right.get_string() &&
           left.get_unsigned() == right.get_unsigned() && left.get_double() == right.get_double();
}

} // namespace

TEST(JsonRoundTrip, EveryDocumentReadsBackInEveryLayout) {
    DocumentMaker maker(5);
    for (int round = 0; round < 2000; ++round) {
        const json document = maker.value(6);
        for (const int indent : {-1, 0, 4}) {
            for (const bool isAscii : {false, true}) {
                const std::string text = document.dump(indent, ' ', isAscii);
                const json back = json::parse(text);
                ASSERT_FALSE(back.is_invalid()) << text;
                ASSERT_TRUE(isSame(document.view(), back.view())) << text;
                ASSERT_EQ(back.dump(indent, ' ', isAscii), text);
            }
        }
    }
}

TEST(JsonRoundTrip, ADamagedDocumentIsReadOrRefusedTheSameFromMemoryAndFile) {
    DocumentMaker maker(6);
    std::mt19937 random(7);
    for (int round = 0; round < 1500; ++round) {
        std::string text = maker.value(4).dump();
        for (int damage = 0; damage < 2; ++damage) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        const json fromMemory = json::parse(text);
        if (round % 10 == 0) {
            ASSERT_EQ(parseFile(text).is_invalid(), fromMemory.is_invalid()) << text;
        }
        if (!fromMemory.is_invalid()) {
            const std::string written = fromMemory.dump();
            ASSERT_EQ(normalised(written), written);
        }
    }
}
