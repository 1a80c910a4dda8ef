#include "EntryIndex.h"
#include "PlanningBuilders.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t many = 10000;
constexpr std::uint32_t manyValues = 1000;

/// An index together with what it looks into.
struct Indexed {
    explicit Indexed(const std::vector<std::string>& entries) : files(filesOf(entries)), index(files) {}

    [[nodiscard]] std::uint32_t find(const ElementBuilder& builder) const { return index.find(builder.build()); }

    std::vector<KvTArchiveFile> files;
    EntryIndex index;
};

std::string numberText(std::uint32_t number) {
    return std::to_string(number);
}

/// `count` entries, each made from its position.
std::vector<std::string> entriesOf(std::uint32_t count, const std::function<std::string(std::string)>& make) {
    std::vector<std::string> entries;
    for (std::uint32_t number = 0; number < count; ++number) {
        entries.push_back(make(numberText(number)));
    }
    return entries;
}

/// An array of `count` items, each made from its position.
std::string arrayOf(std::uint32_t count, const std::function<std::string(std::string)>& make) {
    std::string text = "[";
    for (std::uint32_t number = 0; number < count; ++number) {
        text.append(number == 0 ? "" : ", ").append(make(numberText(number)));
    }
    return text + "]";
}

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

std::string plain(const std::string& number) {
    return number;
}

std::string named(const std::string& prefix, std::uint32_t number) {
    return prefix + numberText(number);
}

} // namespace

TEST(EntryIndex, WithoutEntriesNothingIsFound) {
    const Indexed indexed({});
    EXPECT_EQ(noArchiveFile, indexed.find(element("X", 1)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("", 0)));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("", "*")));
    EXPECT_EQ(0U, indexed.index.size());
    EXPECT_EQ(0U, indexed.index.longestList());
}

TEST(EntryIndex, TheShortestArraysAreLookedUpByAllTheirValues) {
    const std::string variants = arrayOf(100, [](const std::string& number) { return quoted("V" + number); });
    const Indexed indexed({"'boardType': 'X', 'id': 1, 'boardVariant': " + variants +
                           ", 'boardId': [1, 2], 'hwCompatibilityId': [3, 4]"});
    EXPECT_EQ(4U, indexed.index.size());
    EXPECT_EQ(0U, indexed.find(element("X", 1).variant("V99").boardId(2).hardware(4)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("X", 1).variant("V100").boardId(2).hardware(4)));
}

TEST(EntryIndex, ManyElementsOfOneBoardTypeAreFoundAtOnce) {
    const Indexed indexed(
        entriesOf(many, [](const std::string& number) { return "'boardType': 'X', 'id': " + number; }));
    EXPECT_EQ(many, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(0U, indexed.find(element("X", 0)));
    EXPECT_EQ(many - 1, indexed.find(element("X", many - 1)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("X", many)));
}

TEST(EntryIndex, ManyEntriesForOneElementAreFoundAtOnceAndTheFirstOneWins) {
    const Indexed indexed(entriesOf(many, [](const std::string&) { return "'boardType': 'X', 'id': 1"; }));
    EXPECT_EQ(1U, indexed.index.size());
    EXPECT_EQ(0U, indexed.find(element("X", 1)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("X", 1).hardware(1)));
}

TEST(EntryIndex, ManyBoardTypesOfAnEntryAreFoundAtOnce) {
    const std::string types = arrayOf(manyValues, [](const std::string& number) { return quoted("T" + number); });
    const Indexed indexed({"'boardType': " + types + ", 'id': 1", "'boardType': " + types + ", 'id': 2"});
    EXPECT_EQ(2 * manyValues, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    for (std::uint32_t number = 0; number < manyValues; ++number) {
        const std::string type = named("T", number);
        EXPECT_EQ(1U, indexed.find(element(type.c_str(), 2)));
    }
}

TEST(EntryIndex, ManyBoardsOfAnEntryAreFoundAtOnce) {
    const Indexed indexed({"'boards': " + arrayOf(manyValues, [](const std::string& number) {
                               return "{'boardType': 'T" + number + "', 'id': " + number + "}";
                           })});
    EXPECT_EQ(manyValues, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(0U, indexed.find(element("T999", 999)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("T999", 998)));
}

TEST(EntryIndex, ManyBoardsOfOneTypeAreOne) {
    const Indexed indexed({"'boards': " + arrayOf(manyValues, [](const std::string& number) {
                               return "{'boardType': 'X', 'id': " + number + "}";
                           })});
    EXPECT_EQ(1U, indexed.index.size());
    EXPECT_EQ(0U, indexed.find(element("X", 0)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("X", 1)));
}

TEST(EntryIndex, ManyTargetPathsAreFoundAtOnceEvenForAnyLocation) {
    const Indexed indexed(entriesOf(many, [](const std::string& number) {
        return "'boardType': 'X', 'targetPath': '/" + number + "', 'hwCompatibilityId': " + number;
    }));
    EXPECT_EQ(2 * many, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(many - 1, indexed.find(fileElement("X", named("/", many - 1)).hardware(many - 1)));
    EXPECT_EQ(many - 1, indexed.find(fileElement("X", "*").hardware(many - 1)));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("X", "*").hardware(many)));
}

TEST(EntryIndex, EntriesThatDifferInOneValueAloneAreFoundAtOnce) {
    const Indexed variants(entriesOf(many, [](const std::string& number) {
        return "'boardType': 'X', 'id': 1, 'boardVariant': 'V" + number + "'";
    }));
    EXPECT_EQ(1U, variants.index.longestList());
    EXPECT_EQ(many - 1, variants.find(element("X", 1).variant(named("V", many - 1).c_str())));
    EXPECT_EQ(noArchiveFile, variants.find(element("X", 1)));
    for (const char* key : {"boardId", "hwCompatibilityId", "swCompatibilityId"}) {
        const Indexed numbers(entriesOf(many, [key](const std::string& number) {
            return std::string("'boardType': 'X', 'id': 1, '") + key + "': " + number;
        }));
        EXPECT_EQ(1U, numbers.index.longestList()) << key;
        EXPECT_EQ(0U, numbers.find(element("X", 1))) << key;
        EXPECT_EQ(noArchiveFile, numbers.find(element("X", 1).boardId(1).hardware(1).software(1))) << key;
    }
}

TEST(EntryIndex, ALongArrayOfEachEntryIsFoundAtOnce) {
    const Indexed indexed(entriesOf(manyValues, [](const std::string& entry) {
        return "'boardType': 'X', 'id': 1, 'boardVariant': " +
               arrayOf(40, [&](const std::string& number) { return quoted(entry + "." + number); });
    }));
    EXPECT_EQ(40 * manyValues, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(998U, indexed.find(element("X", 1).variant("998.39")));
}

TEST(EntryIndex, ArraysThatMultiplyKeepTheIndexSmall) {
    const std::string numbers = arrayOf(manyValues, plain);
    const std::string types = arrayOf(manyValues, [](const std::string& number) { return quoted("T" + number); });
    const std::string variants = arrayOf(manyValues, [](const std::string& number) { return quoted("V" + number); });
    const Indexed indexed({"'boardType': " + types + ", 'id': 1, 'boardVariant': " + variants + ", 'boardId': " +
                           numbers + ", 'hwCompatibilityId': " + numbers + ", 'swCompatibilityId': " + numbers});
    EXPECT_GE(10 * manyValues, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(0U, indexed.find(element("T999", 1).variant("V998").boardId(997).hardware(996).software(995)));
    EXPECT_EQ(0U, indexed.find(element("T0", 1).variant("V0")));
    EXPECT_EQ(noArchiveFile, indexed.find(element("T0", 1).variant("V0").boardId(manyValues)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("T0", 1)));
}

TEST(EntryIndex, ALongArrayThatManyBoardsInheritKeepsTheIndexSmall) {
    const std::string boards = arrayOf(manyValues, [](const std::string& n) { return "{'boardType': 'T" + n + "'}"; });
    const Indexed indexed({"'id': 1, 'hwCompatibilityId': " + arrayOf(manyValues, plain) + ", 'boards': " + boards});
    EXPECT_GE(4 * manyValues, indexed.index.size());
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(0U, indexed.find(element("T999", 1).hardware(999)));
    EXPECT_EQ(noArchiveFile, indexed.find(element("T999", 1).hardware(manyValues)));
}

TEST(EntryIndex, AnArrayThatOneBoardInheritsIsFoundAtOnce) {
    const Indexed indexed(entriesOf(manyValues, [](const std::string& entry) {
        return "'boards': [{'boardType': 'X', 'id': 1}], 'boardVariant': " +
               arrayOf(20, [&](const std::string& number) { return quoted(entry + "." + number); });
    }));
    EXPECT_EQ(1U, indexed.index.longestList());
    EXPECT_EQ(999U, indexed.find(element("X", 1).variant("999.19")));
}

TEST(EntryIndex, AnEarlierEntryWinsHoweverEachIsListed) {
    const std::string arrays =
        "'boardType': 'X', 'id': 1, 'boardId': " + arrayOf(30, plain) + ", 'hwCompatibilityId': " + arrayOf(30, plain);
    const std::string otherArrays = "'boardType': 'X', 'id': 1, 'swCompatibilityId': " + arrayOf(30, plain) +
                                    ", 'hwCompatibilityId': " + arrayOf(30, plain);
    const std::string scalars = "'boardType': 'X', 'id': 1";
    EXPECT_EQ(0U, Indexed({arrays, scalars, otherArrays}).find(element("X", 1)));
    EXPECT_EQ(0U, Indexed({scalars, arrays, otherArrays}).find(element("X", 1)));
    EXPECT_EQ(0U, Indexed({otherArrays, arrays, scalars}).find(element("X", 1)));
    EXPECT_EQ(1U, Indexed({scalars, otherArrays, arrays}).find(element("X", 1).hardware(29)));
    EXPECT_EQ(2U, Indexed({scalars, otherArrays, arrays}).find(element("X", 1).hardware(29).boardId(29)));
    EXPECT_EQ(noArchiveFile, Indexed({scalars, otherArrays, arrays}).find(element("X", 1).hardware(30)));
}

TEST(EntryIndex, ATextThatOnlyOtherPropertiesHaveIsNoMatch) {
    const Indexed indexed({"'boardType': 'X', 'targetPath': 'Y', 'boardVariant': 'Z'"});
    EXPECT_EQ(0U, indexed.find(fileElement("X", "Y").variant("Z")));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("Y", "Z").variant("X")));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("X", "X").variant("Z")));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("X", "Y").variant("Y")));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("X", "Y").variant("*")));
    EXPECT_EQ(noArchiveFile, indexed.find(fileElement("*", "Y").variant("Z")));
}
