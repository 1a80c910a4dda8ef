#include "ElementIndex.h"
#include "PlanningBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <list>
#include <string>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t many = 10000;
constexpr std::uint32_t manyValues = 1000;
constexpr std::uint32_t none = noArchiveFile;

/// What the entries of an archive took of a target's elements.
struct Taken {
    /// Of each element, the entry that took it; `none` of those that were left.
    std::vector<std::uint32_t> byEntry;
    /// How many times an element was held against a selection.
    std::size_t comparisons = 0;
};

Taken take(const std::vector<std::string>& entries, const std::vector<ElementBuilder>& builders) {
    std::list<KvTUpdateElement> elements;
    for (const ElementBuilder& builder : builders) {
        KvTUpdateElement& element = elements.emplace_back(builder.build());
        element.index = static_cast<std::uint32_t>(elements.size() - 1);
    }
    Taken result;
    result.byEntry.resize(elements.size(), none);
    KvCElementIndex index(elements);
    const std::vector<KvTArchiveFile> files = filesOf(entries);
    for (std::uint32_t file = 0; file < files.size(); ++file) {
        for (const KvTEntrySelection& selection : files[file].selections) {
            const auto isTaken = [&](const KvTUpdateElement& element) {
                ++result.comparisons;
                return isMeantFor(selection, element);
            };
            for (const KvTUpdateElement* element : index.take(selection, isTaken)) {
                EXPECT_EQ(none, result.byEntry.at(element->index));
                result.byEntry.at(element->index) = file;
            }
        }
    }
    return result;
}

/// The entry of each element.
std::vector<std::uint32_t> entriesOf(const std::vector<std::string>& entries,
                                     const std::vector<ElementBuilder>& builders) {
    return take(entries, builders).byEntry;
}

std::string numberText(std::uint32_t number) {
    return std::to_string(number);
}

/// `count` items, each made from its position.
template <typename Item>
std::vector<Item> listOf(std::uint32_t count, const std::function<Item(std::uint32_t)>& make) {
    std::vector<Item> items;
    for (std::uint32_t number = 0; number < count; ++number) {
        items.push_back(make(number));
    }
    return items;
}

std::vector<std::string> manyEntries(const std::function<std::string(std::uint32_t)>& make) {
    return listOf<std::string>(many, make);
}

std::vector<ElementBuilder> manyElements(const std::function<ElementBuilder(std::uint32_t)>& make) {
    return listOf<ElementBuilder>(many, make);
}

/// The text of an array of so many items, each made from its position.
std::string arrayOf(std::uint32_t count, const std::function<std::string(std::uint32_t)>& make) {
    std::string text = "[";
    for (const std::string& item : listOf<std::string>(count, make)) {
        text.append(text.size() == 1 ? "" : ", ").append(item);
    }
    return text + "]";
}

/// Those from 0 to `count` - 1, behind `prefix` and quoted.
std::string quotedNumbers(std::uint32_t count, const std::string& prefix) {
    return arrayOf(count, [&](std::uint32_t number) { return "'" + prefix + numberText(number) + "'"; });
}

std::string numbers(std::uint32_t count) {
    return arrayOf(count, numberText);
}

std::vector<std::uint32_t> oneByOne(std::uint32_t count) {
    return listOf<std::uint32_t>(count, [](std::uint32_t number) { return number; });
}

} // namespace

TEST(ElementIndex, WithoutEntriesOrElementsNothingIsTaken) {
    EXPECT_THAT(entriesOf({}, {element("X", 1)}), ElementsAre(none));
    EXPECT_THAT(entriesOf({"'boardType': 'X', 'id': 1"}, {}), IsEmpty());
}

TEST(ElementIndex, TheFirstEntryTakesAllThatItIsMeantFor) {
    EXPECT_THAT(
        entriesOf({"'boardType': 'X', 'id': 2", "'boardType': 'X', 'id': 1", "'boardType': ['X', 'Y'], 'id': 1"},
                  {element("X", 1), element("Y", 1), element("X", 1), element("X", 3)}),
        ElementsAre(1, 2, 1, none));
}

TEST(ElementIndex, EveryCombinationOfAllowedValuesIsTakenAndNoOther) {
    const std::string entry = "'boardType': 'X', 'id': 1, 'boardVariant': ['A', null, 'C'], 'boardId': [7, 3],"
                              "'hwCompatibilityId': [0, 4294967295], 'swCompatibilityId': [5, 1]";
    std::vector<ElementBuilder> allowed;
    std::vector<ElementBuilder> others;
    for (const char* variant : {"", "A", "B", "C"}) {
        for (const std::uint32_t boardId : {2U, 3U, 5U, 7U, 8U}) {
            for (const std::uint32_t hardware : {0U, 1U, std::numeric_limits<std::uint32_t>::max()}) {
                for (const std::uint32_t software : {0U, 1U, 3U, 5U, 9U}) {
                    const bool fits = std::string_view(variant) != "B" && (boardId == 3 || boardId == 7) &&
                                      hardware != 1 && (software == 1 || software == 5);
                    (fits ? allowed : others)
                        .push_back(
                            element("X", 1).variant(variant).boardId(boardId).hardware(hardware).software(software));
                }
            }
        }
    }
    EXPECT_EQ(24U, allowed.size());
    std::vector<ElementBuilder> all = others;
    all.insert(all.end(), allowed.begin(), allowed.end());
    std::vector<std::uint32_t> expected(others.size(), none);
    expected.insert(expected.end(), allowed.size(), 0);
    EXPECT_EQ(expected, entriesOf({entry}, all));
}

TEST(ElementIndex, AnEntryWithoutAnyAllowedValueTakesNothing) {
    EXPECT_THAT(entriesOf({"'boardType': 'X', 'id': 1, 'swCompatibilityId': []", "'boardType': [], 'id': 1",
                           "'boardType': 'X', 'id': 1, 'boardVariant': ['', 'unknown']",
                           "'boardType': 'X', 'id': 1, 'boardId': 4294967296"},
                          {element("X", 1)}),
                ElementsAre(none));
}

TEST(ElementIndex, OfEachBoardTypeTheFirstSelectionDecidesAlone) {
    EXPECT_THAT(entriesOf({"'boards': [{'boardType': ['X', 'Y'], 'id': 1}, {'boardType': ['Y', 'Z'], 'id': 2}]"},
                          {element("X", 1), element("X", 2), element("Y", 1), element("Y", 2), element("Z", 2)}),
                ElementsAre(0, none, 0, none, 0));
}

TEST(ElementIndex, SelectionsShareTheEntrysValuesAndKeepTheirOwn) {
    EXPECT_THAT(entriesOf({"'boardId': [3, 4], 'boards': [{'boardType': 'X', 'id': 1}, "
                           "{'boardType': 'Y', 'id': 1, 'boardId': 5}, {'boardType': 'Z', 'id': 1}]"},
                          {element("X", 1).boardId(4), element("X", 1).boardId(5), element("Y", 1).boardId(5),
                           element("Y", 1).boardId(4), element("Z", 1).boardId(3), element("Z", 1).boardId(5)}),
                ElementsAre(0, none, 0, none, 0, none));
}

TEST(ElementIndex, AnyLocationTakesTheFirstPathOfItsBoard) {
    EXPECT_THAT(entriesOf({"'boardType': 'Y', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'",
                           "'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '*'"},
                          {fileElement("X", "*"), fileElement("X", "/a"), fileElement("X", "/c"), element("X", 0)}),
                ElementsAre(1, 2, none, none));
}

TEST(ElementIndex, ATextThatOnlyOtherPropertiesHaveIsNoMatch) {
    EXPECT_THAT(entriesOf({"'boardType': 'X', 'targetPath': 'Y', 'boardVariant': 'Z'"},
                          {fileElement("X", "Y").variant("Z"), fileElement("Y", "Z").variant("X"),
                           fileElement("X", "X").variant("Z"), fileElement("X", "Y").variant("Y"),
                           fileElement("X", "Y").variant("*"), fileElement("*", "Y").variant("Z")}),
                ElementsAre(0, none, none, none, none, none));
}

TEST(ElementIndex, OtherBoardsCostNoComparison) {
    const Taken taken =
        take(manyEntries([](std::uint32_t number) { return "'boardType': 'T" + numberText(number) + "', 'id': 1"; }),
             {element("T7", 2), element("X", 1)});
    EXPECT_THAT(taken.byEntry, Each(none));
    EXPECT_EQ(0U, taken.comparisons);
}

TEST(ElementIndex, ManyElementsOfOneBoardTypeCostAComparisonEach) {
    const Taken taken =
        take(manyEntries([](std::uint32_t number) { return "'boardType': 'X', 'id': " + numberText(number); }),
             manyElements([](std::uint32_t number) { return element("X", number); }));
    EXPECT_EQ(oneByOne(many), taken.byEntry);
    EXPECT_EQ(many, taken.comparisons);
}

TEST(ElementIndex, ManyEntriesForOneElementCostNothingOnceItIsTaken) {
    const Taken taken =
        take(manyEntries([](std::uint32_t) { return std::string("'boardType': 'X', 'id': 1"); }), {element("X", 1)});
    EXPECT_THAT(taken.byEntry, ElementsAre(0));
    EXPECT_EQ(1U, taken.comparisons);
}

TEST(ElementIndex, ElementsThatDifferInOneValueAloneCostFewComparisonsEach) {
    const Taken variants = take(
        manyEntries([](std::uint32_t number) {
            return "'boardType': 'X', 'id': 1, 'boardVariant': 'V" + numberText(number) + "'";
        }),
        manyElements([](std::uint32_t number) { return element("X", 1).variant(("V" + numberText(number)).c_str()); }));
    EXPECT_EQ(oneByOne(many), variants.byEntry);
    EXPECT_GE(3 * many, variants.comparisons);
    using Set = ElementBuilder& (ElementBuilder::*)(std::uint32_t);
    const std::vector<std::pair<std::string, Set>> values = {{"boardId", &ElementBuilder::boardId},
                                                             {"hwCompatibilityId", &ElementBuilder::hardware},
                                                             {"swCompatibilityId", &ElementBuilder::software}};
    for (const auto& [key, set] : values) {
        const Taken taken =
            take(manyEntries([name = key](std::uint32_t number) {
                     return "'boardType': 'X', 'id': 1, '" + name + "': " + numberText(many - 1 - number);
                 }),
                 manyElements([property = set](std::uint32_t number) {
                     return (element("X", 1).*property)(many - 1 - number);
                 }));
        EXPECT_EQ(oneByOne(many), taken.byEntry) << key;
        EXPECT_GE(3 * many, taken.comparisons) << key;
    }
}

TEST(ElementIndex, ManyBoardTypesOfAnEntryCostAComparisonEach) {
    const std::string types = quotedNumbers(manyValues, "T");
    const Taken taken = take({"'boardType': " + types + ", 'id': 1", "'boardType': " + types + ", 'id': 2"},
                             listOf<ElementBuilder>(manyValues, [](std::uint32_t number) {
                                 return element(("T" + numberText(number)).c_str(), 2);
                             }));
    EXPECT_THAT(taken.byEntry, Each(1));
    EXPECT_EQ(manyValues, taken.comparisons);
}

TEST(ElementIndex, ManyBoardsOfAnEntryWithOneLongArrayCostAComparisonEach) {
    const std::string boards =
        arrayOf(manyValues, [](std::uint32_t number) { return "{'boardType': 'T" + numberText(number) + "'}"; });
    const Taken taken = take({"'id': 1, 'hwCompatibilityId': " + numbers(manyValues) + ", 'boards': " + boards},
                             listOf<ElementBuilder>(manyValues, [](std::uint32_t number) {
                                 return element(("T" + numberText(number)).c_str(), 1).hardware(number);
                             }));
    EXPECT_THAT(taken.byEntry, Each(0));
    EXPECT_EQ(manyValues, taken.comparisons);
}

TEST(ElementIndex, ManyBoardsOfOneTypeAreOne) {
    const std::string boards = arrayOf(
        manyValues, [](std::uint32_t number) { return "{'boardType': 'X', 'id': " + numberText(number) + "}"; });
    const Taken taken = take({"'boards': " + boards}, {element("X", 0), element("X", 1)});
    EXPECT_THAT(taken.byEntry, ElementsAre(0, none));
    EXPECT_EQ(1U, taken.comparisons);
}

TEST(ElementIndex, ManyTargetPathsCostAComparisonEach) {
    std::vector<ElementBuilder> elements =
        manyElements([](std::uint32_t number) { return fileElement("X", "/" + numberText(number)).hardware(number); });
    elements.push_back(fileElement("X", "*").hardware(many - 1));
    const Taken taken = take(manyEntries([](std::uint32_t number) {
                                 return "'boardType': 'X', 'targetPath': '/" + numberText(number) +
                                        "', 'hwCompatibilityId': " + numberText(number);
                             }),
                             elements);
    std::vector<std::uint32_t> expected = oneByOne(many);
    expected.push_back(many - 1);
    EXPECT_EQ(expected, taken.byEntry);
    EXPECT_GE(3 * many, taken.comparisons);
}

TEST(ElementIndex, ArraysThatMultiplyCostNoMoreThanTheElements) {
    const std::string all = numbers(manyValues);
    const Taken taken =
        take({"'boardType': " + quotedNumbers(manyValues, "T") +
              ", 'id': 1, 'boardVariant': " + quotedNumbers(manyValues, "V") + ", 'boardId': " + all +
              ", 'hwCompatibilityId': " + all + ", 'swCompatibilityId': " + all},
             {element("T999", 1).variant("V998").boardId(997).hardware(996).software(995),
              element("T0", 1).variant("V0"), element("T0", 1).variant("V0").boardId(manyValues), element("T0", 1)});
    EXPECT_THAT(taken.byEntry, ElementsAre(0, 0, none, none));
    EXPECT_GE(8U, taken.comparisons);
}

TEST(ElementIndex, ATestThatFailsLeavesTheElement) {
    const std::list<KvTUpdateElement> elements{element("X", 1).build()};
    KvCElementIndex index(elements);
    const KvTArchiveFile file = fileOf("'boardType': 'X', 'id': 1");
    const auto take = [&](bool isTaken) {
        return index.take(file.selections.at(0), [=](const KvTUpdateElement& /*element*/) { return isTaken; });
    };
    EXPECT_THAT(take(false), IsEmpty());
    EXPECT_THAT(take(true), ElementsAre(&elements.front()));
    EXPECT_THAT(take(true), IsEmpty());
}
