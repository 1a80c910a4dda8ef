// JSON as it is written, and read back.

#include "JsonTexts.h"
#include "KvNJson.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using KvNJson::error_handler_t;
using KvNJson::json;
using KvNJson::jsonView;

using namespace std::string_view_literals;

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
