#include "EntryMatching.h"
#include "KvNJson.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// The values that an element is compared with by, and the names that the rows below give them.
struct ElementValue {
    const char* name;
    KvTComparedValue value;
};

const std::array elementValues = {ElementValue{"null", {}},
                                  ElementValue{"text A", "A"},
                                  ElementValue{"text a", "a"},
                                  ElementValue{"text AB", "AB"},
                                  ElementValue{"empty text", ""},
                                  ElementValue{"text 1", "1"},
                                  ElementValue{"text null", "null"},
                                  ElementValue{"number 0", std::uint64_t{0}},
                                  ElementValue{"number 1", std::uint64_t{1}},
                                  ElementValue{"number 4294967295", std::uint64_t{0xFFFFFFFF}}};

/// A value of a description and the names of all element values that match it.
struct Row {
    const char* archiveValue;
    std::vector<std::string> matching;
};

std::vector<std::string> matchingValues(const char* archiveValue) {
    const KvNJson::json value = KvNJson::json::parse(std::string_view(archiveValue));
    EXPECT_FALSE(value.is_invalid()) << archiveValue;
    std::vector<std::string> names;
    for (const ElementValue& element : elementValues) {
        if (matchesValue(KvCAllowedValues(value.view(), false, KvEAbsentValue::none), element.value)) {
            names.emplace_back(element.name);
        }
    }
    return names;
}

void expectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(row.matching, matchingValues(row.archiveValue)) << row.archiveValue;
    }
}

} // namespace

TEST(MatchesValue, NullMatchesNullAlone) {
    expectRows({{"null", {"null"}}});
}

TEST(MatchesValue, TextsMatchByteForByte) {
    expectRows({{R"("A")", {"text A"}},
                {R"("a")", {"text a"}},
                {R"("")", {"empty text"}},
                {R"("AB")", {"text AB"}},
                {R"("A ")", {}},
                {R"(" A")", {}},
                {R"("\u0041")", {"text A"}},
                {R"("A\u0000")", {}},
                {R"("\u00c4")", {}}});
}

TEST(MatchesValue, ATextMatchesNeitherTheNumberNorTheNullThatItSpells) {
    expectRows({{R"("1")", {"text 1"}}, {R"("null")", {"text null"}}});
}

TEST(MatchesValue, UnsignedNumbersMatchWhenEqual) {
    expectRows({{"0", {"number 0"}}, {"1", {"number 1"}}, {"4294967295", {"number 4294967295"}}, {"2", {}}});
}

TEST(MatchesValue, ANumberBeyond32BitsIsNotCutOff) {
    expectRows({{"4294967296", {}}, {"4294967297", {}}, {"18446744073709551615", {}}});
}

TEST(MatchesValue, SignedAndFloatingNumbersMatchNothing) {
    expectRows({{"-1", {}}, {"-4294967295", {}}, {"1.0", {}}, {"0.0", {}}, {"1e0", {}}, {"18446744073709551616", {}}});
}

TEST(MatchesValue, TruthValuesMatchNothing) {
    expectRows({{"true", {}}, {"false", {}}});
}

TEST(MatchesValue, ObjectsMatchNothing) {
    expectRows({{"{}", {}}, {R"({"A": "A"})", {}}, {R"({"0": 1})", {}}});
}

TEST(MatchesValue, AnArrayMatchesWhatAnyOfItsItemsMatches) {
    expectRows({{"[null]", {"null"}},
                {R"(["A"])", {"text A"}},
                {"[1]", {"number 1"}},
                {R"([null, "a", "A", 0])", {"null", "text A", "text a", "number 0"}},
                {R"(["B", "B", "AB"])", {"text AB"}},
                {R"([2, -1, 1.0, true, {}, 4294967295])", {"number 4294967295"}}});
}

TEST(MatchesValue, AnEmptyArrayMatchesNothing) {
    expectRows({{"[]", {}}});
}

TEST(MatchesValue, AnArrayInAnArrayMatchesNothing) {
    expectRows({{R"([["A"]])", {}}, {"[[null], [0]]", {}}, {R"([[1], 1])", {"number 1"}}, {"[[]]", {}}});
}

TEST(MatchesValue, AMissingValueStandsForThatOfAnElementWithoutTheProperty) {
    for (const ElementValue& element : elementValues) {
        const std::string_view name = element.name;
        EXPECT_EQ(name == "null", matchesValue(KvCAllowedValues(KvEAbsentValue::none), element.value)) << name;
        EXPECT_EQ(name == "number 0", matchesValue(KvCAllowedValues(KvEAbsentValue::zero), element.value)) << name;
    }
}
