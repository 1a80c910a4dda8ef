// Looking at JSON values, and owning and changing them.

#include "JsonTexts.h"
#include "KvNJson.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

using KvNJson::json;
using KvNJson::jsonView;

using namespace std::string_view_literals;

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
