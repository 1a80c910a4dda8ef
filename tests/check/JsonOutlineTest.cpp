#include "JsonOutline.h"
#include "JsonModel.h"
#include "KvNJson.h"
#include "RandomDescriptions.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace {

using KvNJson::jsonView;

TEST(JsonOutline, ValuesAreFoundWhereTheyStand) {
    const std::string text = R"( { "a" : [ 1 , -2.5e3,"x", null,true , false ,{} ] ,"b":"y" } )";
    const KvCJsonOutline outline(text);
    const KvCOutlineValue root = outline.root();
    EXPECT_EQ(1U, root.offset());
    const KvCOutlineValue items = root.find("a");
    EXPECT_EQ(text.find('['), items.offset());
    EXPECT_EQ(text.find("\"a\""), items.keyOffset());
    const std::vector<std::string> written = {"1", "-2.5e3", "\"x\"", "null", "true", "false", "{}"};
    ASSERT_EQ(written.size(), items.size());
    for (std::size_t index = 0; index < written.size(); ++index) {
        EXPECT_EQ(text.find(written[index], items.offset()), items.at(index).offset()) << written[index];
    }
    EXPECT_EQ("-2.5e3", items.at(1).text());
    EXPECT_EQ(text.find("\"y\""), root.find("b").offset());
    std::size_t last = 0;
    std::size_t count = 0;
    outline.forEachValue([&](KvCOutlineValue value) {
        EXPECT_LE(last, value.offset());
        last = value.offset();
        ++count;
    });
    EXPECT_EQ(10U, count);
}

TEST(JsonOutline, MarksInsideOfTextsAreNoTokens) {
    const std::string text = R"({"a\"{,": "]\\", "b": "}\"", "\u0041": 1})";
    const KvCJsonOutline outline(text);
    const KvCOutlineValue root = outline.root();
    ASSERT_EQ(3U, root.size());
    EXPECT_EQ("a\"{,", root.at(0).key());
    EXPECT_EQ("]\\", root.at(0).text());
    EXPECT_EQ("}\"", root.at(1).text());
    EXPECT_EQ("A", root.at(2).key());
    EXPECT_EQ(text.size() - 2, root.at(2).offset());
}

TEST(JsonOutline, TextsAndNestingMayBeLong) {
    std::string content;
    for (unsigned index = 0; index < 1000; ++index) {
        content += std::to_string(index) + " ";
    }
    const std::string inner = R"({")" + content + R"(": "\u0041)" + content + R"("})";
    const std::string text = std::string(200, '[') + inner + std::string(200, ']');
    const KvCJsonOutline outline(text);
    KvCOutlineValue value = outline.root();
    while (value.kind() == KvEJsonKind::array) {
        value = value.at(0);
    }
    ASSERT_EQ(1U, value.size());
    EXPECT_EQ(content, value.at(0).key());
    EXPECT_EQ("A" + content, value.at(0).text());
}

TEST(JsonOutline, OfARepeatedKeyEveryMemberIsThereAndTheLastOneIsFound) {
    const std::string text = R"({"a": 1, "b": 2, "a": 3})";
    const KvCJsonOutline outline(text);
    EXPECT_EQ(3U, outline.root().size());
    EXPECT_EQ("1", outline.root().at(0).text());
    EXPECT_EQ("3", outline.root().find("a").text());
}

TEST(JsonOutline, OnlyNumbersWithoutSignFractionAndExponentAreUnsigned) {
    const std::string text = R"([0, 18446744073709551615, -0, 18446744073709551616, -1, 1.0, 1e2, "1", null])";
    const KvCJsonOutline outline(text);
    const KvCOutlineValue items = outline.root();
    EXPECT_EQ(0U, items.at(0).unsignedNumber());
    EXPECT_EQ(std::numeric_limits<std::uint64_t>::max(), items.at(1).unsignedNumber());
    EXPECT_EQ(0U, items.at(2).unsignedNumber());
    for (std::size_t index = 3; index < items.size(); ++index) {
        EXPECT_EQ(std::nullopt, items.at(index).unsignedNumber()) << items.at(index).text();
    }
    EXPECT_EQ(std::nullopt, KvCOutlineValue().unsignedNumber());
}

TEST(JsonOutline, APathTellsTheWayToAValue) {
    const KvCJsonOutline outline(R"({"files": [0, {"boards": [{"id": 5}], "it's a key": [[7]]}]})");
    const KvCOutlineValue entry = outline.root().find("files").at(1);
    EXPECT_EQ("$.files[1].boards[0].id", entry.find("boards").at(0).find("id").path());
    EXPECT_EQ("$.files[1]['it\\'s a key'][0][0]", entry.find("it's a key").at(0).at(0).path());
    EXPECT_EQ("$", outline.root().path());
}

TEST(JsonOutline, AByteOrderMarkIsSkipped) {
    const KvCJsonOutline outline("\xEF\xBB\xBF{\"a\": 1}");
    EXPECT_EQ(3U, outline.root().offset());
    EXPECT_EQ(9U, outline.root().find("a").offset());
}

TEST(JsonOutline, WhatIsNoJsonHasNoValues) {
    for (const char* text : {"", " ", "{\"a\": 1", "[1,]", "{} {}", "nul"}) {
        const KvCJsonOutline outline(text);
        outline.forEachValue([](KvCOutlineValue value) { ADD_FAILURE() << value.path(); });
        EXPECT_FALSE(outline.root().isValid()) << text;
    }
}

TEST(JsonOutline, AskingForWhatIsNotThereGivesNothing) {
    const KvCOutlineValue nothing;
    EXPECT_FALSE(nothing.at(0).find("a").isValid());
    EXPECT_EQ(KvEJsonKind::nothing, nothing.kind());
    EXPECT_EQ("$", nothing.path());
    const KvCJsonOutline outline("[1]");
    EXPECT_FALSE(outline.root().at(1).isValid());
    EXPECT_FALSE(outline.root().find("a").isValid());
    EXPECT_EQ("", outline.root().text());
    EXPECT_EQ(0U, outline.root().at(0).size());
}

/// True when the outline holds the value that the JSON library reads.
bool isSame(jsonView value, KvCOutlineValue outlined) {
    switch (outlined.kind()) {
    case KvEJsonKind::nothing:
        return false;
    case KvEJsonKind::null:
        return value.is_null();
    case KvEJsonKind::boolean:
        return value.is_boolean();
    case KvEJsonKind::number:
        return value.is_number() && KvNJson::json::parse(outlined.text()).view().get_double() == value.get_double();
    case KvEJsonKind::text:
        return value.is_string() && value.get_string() == outlined.text();
    case KvEJsonKind::array:
        for (std::size_t index = 0; index < value.size(); ++index) {
            if (!isSame(value.at(index), outlined.at(index))) {
                return false;
            }
        }
        return value.is_array() && value.size() == outlined.size();
    case KvEJsonKind::object:
        for (std::size_t index = 0; index < value.size(); ++index) {
            if (!isSame(value.at(index), outlined.find(value.key(index)))) {
                return false;
            }
        }
        return value.is_object() && value.size() <= outlined.size();
    }
    return false;
}

TEST(JsonOutline, ItHoldsWhatTheJsonLibraryReads) {
    RandomDescriptions random(815);
    unsigned valid = 0;
    for (unsigned round = 0; round < 2000; ++round) {
        JsonModel description = random.description(3);
        for (std::size_t count = random.below(6); count > 0; --count) {
            random.mutate(description);
        }
        std::string text = description.write();
        if (random.oneIn(2)) {
            random.scramble(text);
        }
        const KvNJson::json read = KvNJson::json::parse(text);
        if (read.is_invalid()) {
            continue;
        }
        ++valid;
        const KvCJsonOutline outline(text);
        ASSERT_TRUE(isSame(read.view(), outline.root())) << text;
        outline.forEachValue([&](KvCOutlineValue value) {
            if (value.kind() == KvEJsonKind::number) {
                EXPECT_EQ(value.text(), text.substr(value.offset(), value.text().size())) << text;
            }
        });
    }
    EXPECT_GT(valid, 1000U);
}

} // namespace
