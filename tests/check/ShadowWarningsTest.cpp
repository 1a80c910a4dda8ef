#include "CheckFixture.h"
#include "EntryMatching.h"
#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <random>
#include <set>

namespace {

using KvNReflasher::KvTFinding;
class CheckShadows : public CheckTest {
protected:
    std::string codesOfBoth(const ObjectText& earlier, const ObjectText& later) {
        return codes(ArchiveBuilder().entry(earlier).entry(later).text());
    }
};

TEST_F(CheckShadows, AnEntryWhoseElementsAnEarlierOneTakesIsAWarning) {
    const KvTFinding finding = onlyFinding(ArchiveBuilder().entry(goodEntry()).entry(goodEntry()).text());
    EXPECT_EQ("shadowed-entry", finding.code);
    EXPECT_EQ("$.files[1]", finding.path);
    EXPECT_EQ("This entry never updates anything: earlier entries, such as $.files[0], take all of its elements.",
              finding.message);
}

TEST_F(CheckShadows, OnlyMoreValuesOfTheEarlierEntryShadow) {
    const ObjectText wide = goodEntry().set("boardId", "[1, 2]").set("boardVariant", R"([null, "A"])");
    const ObjectText narrow = goodEntry().set("boardId", "2").set("boardVariant", "\"A\"");
    EXPECT_EQ("shadowed-entry", codesOfBoth(wide, narrow));
    EXPECT_EQ("", codesOfBoth(narrow, wide));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("boardId", "3")));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("boardVariant", "\"B\"")));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("id", "6")));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("boardType", "\"QC\"")));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("hwCompatibilityId", "1")));
    EXPECT_EQ("", codesOfBoth(wide, ObjectText(narrow).set("swCompatibilityId", "1")));
}

TEST_F(CheckShadows, AnAbsentVariantIsNoneAndAnAbsentNumberZero) {
    EXPECT_EQ("shadowed-entry", codesOfBoth(goodEntry(), goodEntry().set("boardVariant", "null").set("boardId", "0")));
    EXPECT_EQ("shadowed-entry", codesOfBoth(goodEntry().set("hwCompatibilityId", "[0, 1]"), goodEntry()));
    EXPECT_EQ("", codesOfBoth(goodEntry(), goodEntry().set("boardVariant", "\"A\"")));
}

TEST_F(CheckShadows, DifferentEarlierEntriesMayShadowTheBoardTypesOfOne) {
    const ObjectText both = goodEntry().set("boardType", R"(["QB", "QC"])");
    EXPECT_EQ("", codesOfBoth(goodEntry(), both));
    EXPECT_EQ(
        "shadowed-entry",
        codes(ArchiveBuilder().entry(goodEntry()).entry(goodEntry().set("boardType", "\"QC\"")).entry(both).text()));
}

TEST_F(CheckShadows, OfTheEarlierEntryOnlyTheFirstElementOfABoardTypeCounts) {
    const ObjectText boards = entryWithBoards(R"({"boardType": "QB", "id": 6}, {"boardType": "QB", "id": 5})");
    EXPECT_EQ("unreachable-board", codesOfBoth(boards, goodEntry()));
    EXPECT_EQ("unreachable-board shadowed-entry", codesOfBoth(boards, goodEntry().set("id", "6")));
}

TEST_F(CheckShadows, AnElementOfBoardsWhoseTypesOccurEarlierIsNeverChosen) {
    const KvTFinding finding = onlyFinding(
        ArchiveBuilder()
            .entry(entryWithBoards(R"({"boardType": ["QB", "QC"], "id": 1}, {"boardType": ["QC", "QD"], "id": 2}, )"
                                   R"({"boardType": ["QD", "QB"], "id": 3})"))
            .text());
    EXPECT_EQ("unreachable-board", finding.code);
    EXPECT_EQ("$.files[0].boards[2]", finding.path);
}

TEST_F(CheckShadows, WhatMatchesNothingIsNotShadowed) {
    EXPECT_EQ("empty-array", codesOfBoth(goodEntry(), goodEntry().set("boardVariant", "[]")));
}

TEST_F(CheckShadows, EntriesOfOneTargetPathAreAllWritten) {
    const ObjectText file = goodEntry().remove("id").set("targetPath", "\"etc/x\"");
    const KvTFinding finding = onlyFinding(ArchiveBuilder().entry(file).entry(file).text());
    EXPECT_EQ("same-target-path", finding.code);
    EXPECT_EQ("$.files[1]", finding.path);
    EXPECT_EQ("", codesOfBoth(file, ObjectText(file).set("targetPath", "\"etc/y\"")));
    EXPECT_EQ("", codesOfBoth(goodEntry(), file));
}

TEST_F(CheckShadows, InheritedValuesOfBoardsCount) {
    const ObjectText boards =
        entryWithBoards(R"({"boardType": "QB", "id": 5}, {"boardType": "QC", "id": 5, "boardId": 7})")
            .set("boardId", "2");
    EXPECT_EQ("", codesOfBoth(boards, goodEntry()));
    EXPECT_EQ("shadowed-entry", codesOfBoth(boards, goodEntry().set("boardId", "2")));
    EXPECT_EQ("", codesOfBoth(boards, goodEntry().set("boardId", "7")));
    EXPECT_EQ("shadowed-entry", codesOfBoth(boards, goodEntry().set("boardType", "\"QC\"").set("boardId", "7")));
}

/// Makes entries of few types and values, so that they often meet.
class SmallEntries {
public:
    explicit SmallEntries(unsigned seed) : random_(seed) {}

    bool oneIn(unsigned count) { return random_() % count == 0; }

    ObjectText entry() {
        if (oneIn(2)) {
            return conditions(goodEntry().set("boardType", someOf({"\"QB\"", "\"QC\""})).set("id", one({"1", "2"})));
        }
        std::string boards;
        for (std::size_t count = 1 + random_() % 3; count > 0; --count) {
            const ObjectText board =
                ObjectText().set("boardType", someOf({"\"QB\"", "\"QC\""})).set("id", one({"1", "2"}));
            boards.append(boards.empty() ? "" : ", ").append(conditions(board).text());
        }
        return conditions(entryWithBoards(boards));
    }

private:
    using Values = std::vector<std::string>;

    std::string one(const Values& values) { return values[random_() % values.size()]; }
    std::string someOf(const Values& values) {
        if (oneIn(2)) {
            return one(values);
        }
        std::string items;
        for (const std::string& value : values) {
            if (!oneIn(3)) {
                items.append(items.empty() ? "" : ", ").append(value);
            }
        }
        return "[" + items + "]";
    }
    ObjectText conditions(ObjectText object) {
        for (const char* key : {"boardId", "hwCompatibilityId", "swCompatibilityId"}) {
            if (oneIn(3)) {
                object.set(key, someOf({"0", "1"}));
            }
        }
        return oneIn(2) ? object.set("boardVariant", someOf({"null", "\"A\""})) : object;
    }

    std::mt19937 random_;
};

/// All elements that SmallEntries can be meant for.
std::list<KvTUpdateElement> allElements() {
    std::list<KvTUpdateElement> elements;
    for (unsigned bits = 0; bits < 64; ++bits) {
        KvTUpdateElement& element = elements.emplace_back();
        const auto bit = [bits](unsigned index) { return bits >> index & 1U; };
        element.boardType = bit(0) != 0 ? "QB" : "QC";
        element.boardVariant = bit(1) != 0 ? "A" : "";
        element.boardId = bit(2);
        element.hwCompatibilityId = bit(3);
        element.swCompatibilityId = bit(4);
        element.elementId = 1 + bit(5);
    }
    return elements;
}

/// Indices of the entries that are meant for elements all of which earlier ones take.
std::set<std::string> shadowedEntries(KvCFirmwareArchive& archive) {
    std::list<KvTUpdateElement> left = allElements();
    std::set<std::string> shadowed;
    for (const KvTArchiveFile& file : archive.files()) {
        KvCString path;
        const auto matches = [&](const KvTUpdateElement& element) { return matchesFile(element, file, path); };
        const std::list<KvTUpdateElement> all = allElements();
        if (std::any_of(all.begin(), all.end(), matches) && std::none_of(left.begin(), left.end(), matches)) {
            shadowed.insert("$.files[" + std::to_string(file.descriptionIndex) + "]");
        }
        left.remove_if(matches);
    }
    return shadowed;
}

TEST_F(CheckShadows, WhatIsToldIsSoAndMostIsFound) {
    SmallEntries random(99);
    std::size_t found = 0;
    std::size_t real = 0;
    for (unsigned round = 0; round < 400; ++round) {
        ArchiveBuilder description;
        for (unsigned count = 0; count < 6; ++count) {
            description.entry(random.entry());
        }
        const std::string text = description.text();
        const std::vector<KvTFinding> findings = check(text);
        const KvCMessageCapture messages;
        KvCFirmwareArchive archive(messages.writer(), options());
        ASSERT_TRUE(archive.readDescriptionFile());
        const std::set<std::string> shadowed = shadowedEntries(archive);
        for (const KvTFinding& finding : findings) {
            if (finding.code == "shadowed-entry") {
                ASSERT_EQ(1U, shadowed.count(finding.path)) << finding.path << " of " << text;
                ++found;
            }
        }
        real += shadowed.size();
    }
    EXPECT_GT(found, 100U);
    // The others are shadowed by several entries together.
    EXPECT_GT(found * 10, real * 7);
}

TEST_F(CheckShadows, ManyEntriesTakeLittleTime) {
    ArchiveBuilder description;
    for (unsigned index = 0; index < 20000; ++index) {
        description.entry(goodEntry().set("boardId", std::to_string(index)));
    }
    const std::string text = description.entry(goodEntry().set("boardId", "7")).text();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ("shadowed-entry", codes(text));
    // Far more than it takes, far less than comparing all with all would.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

} // namespace
