#include "EntryMatching.h"
#include "ElementIndex.h"
#include "PlanningBuilders.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

using KvNReflasher::KvEMatchTest;

namespace {

/// Whether the entry is meant for the element, by the test of the two and by what it takes of a list alike.
bool matches(const std::string& entry, const ElementBuilder& builder) {
    std::vector<KvTArchiveFile> files = filesOf({entry});
    KvCString targetPath;
    const bool result = matchesFile(builder.build(), files.at(0), targetPath);
    const std::list<KvTUpdateElement> elements{builder.build()};
    KvCElementIndex index(elements);
    EXPECT_EQ(result ? 1U : 0U, takeMatching(index, files.at(0)).size()) << entry;
    return result;
}

KvEMatchTest failingTest(const std::string& entry, const ElementBuilder& builder) {
    const KvTArchiveFile file = fileOf(entry);
    return firstFailingTest(builder.build(), file.selections.at(0));
}

/// The numbers from 0 that match the entry as the property that `set` gives the element.
template <typename Set>
std::vector<std::uint32_t> matchingNumbers(const std::string& entry, Set&& set) {
    constexpr std::uint32_t end = 6;
    std::vector<std::uint32_t> numbers;
    for (std::uint32_t number = 0; number < end; ++number) {
        ElementBuilder builder = element("X", 1);
        if (matches(entry, set(builder, number))) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

/// A property that is a number or an array of numbers.
struct NumberProperty {
    std::string key;
    ElementBuilder& (ElementBuilder::*set)(std::uint32_t);
};

const std::array numberProperties = {NumberProperty{"boardId", &ElementBuilder::boardId},
                                     NumberProperty{"hwCompatibilityId", &ElementBuilder::hardware},
                                     NumberProperty{"swCompatibilityId", &ElementBuilder::software}};

using Numbers = std::vector<std::uint32_t>;

/// The numbers that an entry, written with "KEY" for the property's key, accepts, for each of the number properties.
void expectNumbers(const std::string& entry, const Numbers& expected) {
    for (const NumberProperty& property : numberProperties) {
        std::string text = entry;
        for (std::size_t place = text.find("KEY"); place != std::string::npos; place = text.find("KEY")) {
            text.replace(place, 3, property.key);
        }
        EXPECT_EQ(expected,
                  matchingNumbers(text, [&](ElementBuilder& builder,
                                            std::uint32_t number) { return (builder.*property.set)(number); }))
            << text;
    }
}

} // namespace

// Board selection.

TEST(BoardSelection, TheBoardTypeIsComparedByteForByte) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 1", element("X", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1", element("x", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1", element("X ", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1", element("", 1)));
}

TEST(BoardSelection, AnEmptyBoardTypeIsATextLikeOthers) {
    EXPECT_TRUE(matches("'boardType': '', 'id': 1", element("", 1)));
    EXPECT_FALSE(matches("'boardType': '', 'id': 1", element("X", 1)));
}

TEST(BoardSelection, AnyBoardTypeOfAnArrayDoes) {
    const std::string entry = "'boardType': ['X', 'Y', 'Y'], 'id': 1";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_TRUE(matches(entry, element("Y", 1)));
    EXPECT_FALSE(matches(entry, element("Z", 1)));
}

TEST(BoardSelection, AnEmptyArrayOfBoardTypesMatchesNoElement) {
    EXPECT_FALSE(matches("'boardType': [], 'id': 1", element("X", 1)));
    EXPECT_FALSE(matches("'boardType': [], 'id': 1", element("", 1)));
}

TEST(BoardSelection, ADescriptionWithoutBoardTypeMatchesNoElement) {
    const KvTArchiveFile file =
        makeArchiveFile(std::make_shared<KvNJson::json>(KvNJson::json::parse(R"({"id": 1})")), 0, KvCVersion());
    KvCString targetPath;
    EXPECT_FALSE(matchesFile(element("", 1).build(), file, targetPath));
    EXPECT_FALSE(matchesFile(element("X", 1).build(), file, targetPath));
}

TEST(BoardSelection, EachOfTheBoardsStandsForItsOwnTypes) {
    const std::string entry =
        "'boards': [{'boardType': 'X', 'id': 1}, {'boardType': ['Y', 'Z'], 'id': 2}, {'boardType': 'W', 'id': 3}]";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_TRUE(matches(entry, element("Y", 2)));
    EXPECT_TRUE(matches(entry, element("Z", 2)));
    EXPECT_TRUE(matches(entry, element("W", 3)));
    EXPECT_FALSE(matches(entry, element("X", 2)));
    EXPECT_FALSE(matches(entry, element("Z", 1)));
    EXPECT_FALSE(matches(entry, element("V", 1)));
}

TEST(BoardSelection, OnlyTheFirstBoardOfATypeIsTried) {
    const std::string entry = "'boards': [{'boardType': 'X', 'id': 1}, {'boardType': 'X', 'id': 2}]";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_FALSE(matches(entry, element("X", 2)));
}

TEST(BoardSelection, OnlyTheFirstBoardOfATypeIsTriedWhicheverOfItsTestsFails) {
    for (const char* first : {"'boardVariant': 'V'", "'boardId': 7", "'hwCompatibilityId': 7", "'swCompatibilityId': 7",
                              "'boardVariant': []", "'boardId': []"}) {
        const std::string entry =
            std::string("'id': 1, 'boards': [{'boardType': 'X', ") + first + "}, {'boardType': 'X'}]";
        EXPECT_FALSE(matches(entry, element("X", 1))) << entry;
    }
    EXPECT_FALSE(matches("'boards': [{'boardType': 'X', 'targetPath': '/a'}, {'boardType': 'X', 'targetPath': '/b'}]",
                         fileElement("X", "/b")));
}

TEST(BoardSelection, ATypeInAnEarlierArrayOfBoardsHidesALaterBoard) {
    const std::string entry = "'boards': [{'boardType': ['W', 'X'], 'id': 1}, {'boardType': ['X', 'Y'], 'id': 2}]";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_FALSE(matches(entry, element("X", 2)));
    EXPECT_TRUE(matches(entry, element("Y", 2)));
}

TEST(BoardSelection, AnEmptyArrayOfTypesHidesNothing) {
    EXPECT_TRUE(matches("'boards': [{'boardType': [], 'id': 1}, {'boardType': 'X', 'id': 2}]", element("X", 2)));
}

// Inheritance.

TEST(Inheritance, ABoardTakesFromTheEntryWhatItDoesNotGive) {
    const std::string entry = "'boards': [{'boardType': 'X'}], 'id': 1, 'boardVariant': 'V', 'boardId': 2, "
                              "'hwCompatibilityId': 3, 'swCompatibilityId': 4";
    EXPECT_TRUE(matches(entry, element("X", 1).variant("V").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 0).variant("V").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 1).boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("V").hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("V").boardId(2).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("V").boardId(2).hardware(3)));
}

TEST(Inheritance, ABoardsOwnValuesComeFirst) {
    const std::string entry =
        "'boards': [{'boardType': 'X', 'id': 11, 'boardVariant': 'W', 'boardId': 12, 'hwCompatibilityId': 13, "
        "'swCompatibilityId': 14}], 'id': 1, 'boardVariant': 'V', 'boardId': 2, 'hwCompatibilityId': 3, "
        "'swCompatibilityId': 4";
    EXPECT_TRUE(matches(entry, element("X", 11).variant("W").boardId(12).hardware(13).software(14)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("V").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("W").boardId(12).hardware(13).software(14)));
    EXPECT_FALSE(matches(entry, element("X", 11).variant("V").boardId(12).hardware(13).software(14)));
    EXPECT_FALSE(matches(entry, element("X", 11).variant("W").boardId(2).hardware(13).software(14)));
    EXPECT_FALSE(matches(entry, element("X", 11).variant("W").boardId(12).hardware(3).software(14)));
    EXPECT_FALSE(matches(entry, element("X", 11).variant("W").boardId(12).hardware(13).software(4)));
}

TEST(Inheritance, ABoardsNullVariantIsAValueOfItsOwn) {
    const std::string entry =
        "'boards': [{'boardType': 'X', 'boardVariant': null}, {'boardType': 'Y'}], 'id': 1, 'boardVariant': 'V'";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("V")));
    EXPECT_TRUE(matches(entry, element("Y", 1).variant("V")));
    EXPECT_FALSE(matches(entry, element("Y", 1)));
}

TEST(Inheritance, ABoardsZeroAndEmptyArrayAreValuesOfTheirOwn) {
    expectNumbers("'boards': [{'boardType': 'X', 'KEY': 0}], 'id': 1, 'KEY': 3", {0});
    expectNumbers("'boards': [{'boardType': 'X', 'KEY': []}], 'id': 1, 'KEY': 3", {});
}

TEST(Inheritance, ArraysAreReplacedNotJoined) {
    expectNumbers("'boards': [{'boardType': 'X', 'KEY': [1, 2]}], 'id': 1, 'KEY': [3, 4]", {1, 2});
}

TEST(Inheritance, TargetPathsAreInheritedToo) {
    const std::string entry =
        "'boards': [{'boardType': 'X'}, {'boardType': 'Y', 'targetPath': '/own'}], 'targetPath': '/entry'";
    EXPECT_TRUE(matches(entry, fileElement("X", "/entry")));
    EXPECT_TRUE(matches(entry, fileElement("Y", "/own")));
    EXPECT_FALSE(matches(entry, fileElement("Y", "/entry")));
    EXPECT_FALSE(matches(entry, fileElement("X", "/own")));
}

TEST(Inheritance, BoardsInsideOfABoardAndInsideOfTheTypesOfTheEntryMeanNothing) {
    const std::string entry = "'boards': [{'boardType': 'X', 'boards': [{'boardType': 'Y', 'id': 2}], 'id': 1}]";
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_FALSE(matches(entry, element("Y", 2)));
    EXPECT_FALSE(matches(entry, element("Y", 1)));
}

// Board variant.

TEST(BoardVariant, WithoutOneOnlyAnEmptyVariantMatches) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 1", element("X", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1", element("X", 1).variant("A")));
}

TEST(BoardVariant, NullMatchesOnlyAnEmptyVariant) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 1, 'boardVariant': null", element("X", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': null", element("X", 1).variant("A")));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': null", element("X", 1).variant("null")));
}

TEST(BoardVariant, AnEmptyTextMatchesNoElement) {
    for (const char* variant : {"''", "['']", "['', '']"}) {
        const std::string entry = std::string("'boardType': 'X', 'id': 1, 'boardVariant': ") + variant;
        EXPECT_FALSE(matches(entry, element("X", 1))) << entry;
        EXPECT_FALSE(matches(entry, element("X", 1).variant("A"))) << entry;
    }
}

TEST(BoardVariant, ATextMatchesThatVariantAlone) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 1, 'boardVariant': 'A'", element("X", 1).variant("A")));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': 'A'", element("X", 1).variant("a")));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': 'A'", element("X", 1)));
}

TEST(BoardVariant, AnArrayMayHoldTheEmptyVariantAsNull) {
    const std::string entry = "'boardType': 'X', 'id': 1, 'boardVariant': ['A', null]";
    EXPECT_TRUE(matches(entry, element("X", 1).variant("A")));
    EXPECT_TRUE(matches(entry, element("X", 1)));
    EXPECT_FALSE(matches(entry, element("X", 1).variant("B")));
}

TEST(BoardVariant, AnEmptyArrayMatchesNoElement) {
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': []", element("X", 1)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1, 'boardVariant': []", element("X", 1).variant("A")));
}

// Board ID and compatibility.

TEST(BoardIdAndCompatibility, WithoutOneOnly0Matches) {
    expectNumbers("'boardType': 'X', 'id': 1", {0});
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 1", element("X", 1).boardId(3)));
}

TEST(BoardIdAndCompatibility, ANumberMatchesItselfAlone) {
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': 3", {3});
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': 0", {0});
}

TEST(BoardIdAndCompatibility, AnArrayMatchesItsItems) {
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': [5, 2, 2]", {2, 5});
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': [0, 4]", {0, 4});
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': []", {});
}

TEST(BoardIdAndCompatibility, NumbersBeyond32BitsMatchNoElement) {
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': 4294967296", {});
    expectNumbers("'boardType': 'X', 'id': 1, 'KEY': [4294967297, 18446744073709551615, 3]", {3});
}

TEST(BoardIdAndCompatibility, TheHighestNumberIsANumberLikeOthers) {
    constexpr std::uint32_t highest = 0xFFFFFFFF;
    const std::string entry = "'boardType': 'X', 'id': 4294967295, 'boardId': 4294967295, 'hwCompatibilityId': "
                              "4294967295, 'swCompatibilityId': [4294967295]";
    EXPECT_TRUE(matches(entry, element("X", highest).boardId(highest).hardware(highest).software(highest)));
    EXPECT_FALSE(matches(entry, element("X", highest).boardId(highest).hardware(highest)));
}

// Addressing.

TEST(Addressing, TheIdentifierMustBeEqual) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 0", element("X", 0)));
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 7", element("X", 7)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 7", element("X", 0)));
}

TEST(Addressing, AnIdentifierBeyond32BitsIsCutOff) {
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 4294967296", element("X", 0)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 4294967296", element("X", 1)));
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 4294967297", element("X", 1)));
    EXPECT_TRUE(matches("'boardType': 'X', 'id': 4294967295", element("X", 0xFFFFFFFF)));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 4294967295", element("X", 0)));
}

TEST(Addressing, FileSystemElementsTakeNoEntriesWithAnIdentifier) {
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 0", fileElement("X", "/a")));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 0", fileElement("X", "*")));
    EXPECT_FALSE(matches("'boardType': 'X', 'id': 0", fileElement("X", "")));
}

TEST(Addressing, OtherElementsTakeNoEntriesWithATargetPath) {
    ElementBuilder withLocation = fileElement("X", "/a");
    KvTUpdateElement other = withLocation.build();
    other.isFileSystemElement = false;
    const KvTArchiveFile file = fileOf("'boardType': 'X', 'targetPath': '/a'");
    KvCString targetPath;
    EXPECT_FALSE(matchesFile(other, file, targetPath));
    EXPECT_FALSE(matches("'boardType': 'X', 'targetPath': '/a'", element("X", 0)));
}

TEST(Addressing, ALocationIsComparedByteForByteWithTheTargetPath) {
    const std::string entry = "'boardType': 'X', 'targetPath': '/etc/net.ini'";
    EXPECT_TRUE(matches(entry, fileElement("X", "/etc/net.ini")));
    EXPECT_FALSE(matches(entry, fileElement("X", "/etc/NET.ini")));
    EXPECT_FALSE(matches(entry, fileElement("X", "\\etc\\net.ini")));
    EXPECT_FALSE(matches(entry, fileElement("X", "/etc/net.ini/")));
    EXPECT_FALSE(matches(entry, fileElement("X", "net.ini")));
    EXPECT_FALSE(matches(entry, fileElement("X", "")));
}

TEST(Addressing, AStarLocationTakesAnyTargetPath) {
    EXPECT_TRUE(matches("'boardType': 'X', 'targetPath': '/etc/net.ini'", fileElement("X", "*")));
    EXPECT_TRUE(matches("'boardType': 'X', 'targetPath': ''", fileElement("X", "*")));
    EXPECT_TRUE(matches("'boardType': 'X', 'targetPath': '*'", fileElement("X", "*")));
}

TEST(Addressing, AStarLocationStillHasToPassTheOtherTests) {
    const std::string entry = "'boardType': 'X', 'targetPath': '/a', 'boardVariant': 'V', 'boardId': 2, "
                              "'hwCompatibilityId': 3, 'swCompatibilityId': 4";
    EXPECT_TRUE(matches(entry, fileElement("X", "*").variant("V").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, fileElement("Y", "*").variant("V").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, fileElement("X", "*").boardId(2).hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, fileElement("X", "*").variant("V").hardware(3).software(4)));
    EXPECT_FALSE(matches(entry, fileElement("X", "*").variant("V").boardId(2).software(4)));
    EXPECT_FALSE(matches(entry, fileElement("X", "*").variant("V").boardId(2).hardware(3)));
}

TEST(Addressing, OnlyAWholeStarTakesAnyTargetPath) {
    EXPECT_FALSE(matches("'boardType': 'X', 'targetPath': '/a'", fileElement("X", "/*")));
    EXPECT_FALSE(matches("'boardType': 'X', 'targetPath': '/a'", fileElement("X", "**")));
    EXPECT_FALSE(matches("'boardType': 'X', 'targetPath': '*'", fileElement("X", "/a")));
}

TEST(Addressing, AnEmptyTargetPathMatchesAnEmptyLocation) {
    EXPECT_TRUE(matches("'boardType': 'X', 'targetPath': ''", fileElement("X", "")));
}

TEST(Addressing, TheTargetPathOfAMatchIsHandedOut) {
    const KvTArchiveFile file = fileOf("'boards': [{'boardType': 'X', 'targetPath': '/x'}, {'boardType': 'Y'}], "
                                       "'targetPath': '/entry'");
    KvCString targetPath;
    ASSERT_TRUE(matchesFile(fileElement("X", "*").build(), file, targetPath));
    EXPECT_EQ("/x", targetPath.view());
    ASSERT_TRUE(matchesFile(fileElement("Y", "*").build(), file, targetPath));
    EXPECT_EQ("/entry", targetPath.view());
}

TEST(Addressing, AnEntryWithAnIdentifierLeavesTheTargetPathEmpty) {
    KvCString targetPath;
    ASSERT_TRUE(matchesFile(element("X", 1).build(), fileOf("'boardType': 'X', 'id': 1"), targetPath));
    EXPECT_TRUE(targetPath.isEmpty());
}

// Order of the tests.

TEST(FirstFailingTest, TheTestsFollowTheirOrderForAnIdentifier) {
    const std::string entry = "'boardType': 'X', 'id': 1, 'boardVariant': 'V', 'boardId': 2, 'hwCompatibilityId': 3, "
                              "'swCompatibilityId': 4";
    ElementBuilder builder = fileElement("Y", "/a");
    EXPECT_EQ(KvEMatchTest::boardType, failingTest(entry, builder));
    builder = fileElement("X", "/a");
    EXPECT_EQ(KvEMatchTest::boardVariant, failingTest(entry, builder));
    builder.variant("V");
    EXPECT_EQ(KvEMatchTest::boardId, failingTest(entry, builder));
    builder.boardId(2);
    EXPECT_EQ(KvEMatchTest::addressing, failingTest(entry, builder));
    builder = element("X", 0).variant("V").boardId(2);
    EXPECT_EQ(KvEMatchTest::id, failingTest(entry, builder));
    builder.id(1);
    EXPECT_EQ(KvEMatchTest::hwCompatibilityId, failingTest(entry, builder));
    builder.hardware(3);
    EXPECT_EQ(KvEMatchTest::swCompatibilityId, failingTest(entry, builder));
    builder.software(4);
    EXPECT_EQ(KvEMatchTest::none, failingTest(entry, builder));
}

TEST(FirstFailingTest, TheTestsFollowTheirOrderForATargetPath) {
    const std::string entry = "'boardType': 'X', 'targetPath': '/a', 'boardVariant': 'V', 'boardId': 2, "
                              "'hwCompatibilityId': 3, 'swCompatibilityId': 4";
    ElementBuilder builder = element("X", 1).variant("V").boardId(2);
    EXPECT_EQ(KvEMatchTest::addressing, failingTest(entry, builder));
    builder = fileElement("X", "/b").variant("V").boardId(2);
    EXPECT_EQ(KvEMatchTest::targetPath, failingTest(entry, builder));
    builder = fileElement("X", "/a").variant("V").boardId(2);
    EXPECT_EQ(KvEMatchTest::hwCompatibilityId, failingTest(entry, builder));
    builder.hardware(3);
    EXPECT_EQ(KvEMatchTest::swCompatibilityId, failingTest(entry, builder));
    builder.software(4);
    EXPECT_EQ(KvEMatchTest::none, failingTest(entry, builder));
}
