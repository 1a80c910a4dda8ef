#include "EntryIndex.h"
#include "MatchingOracle.h"
#include "PlanningTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace {

/// Few values, so that they collide; the same on every system for the same seed.
class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(engine_() % end); }
    /// True once in `times`.
    bool once(std::uint32_t times) { return below(times) == 0; }
    template <typename Value, std::size_t size>
    const Value& oneOf(const std::array<Value, size>& values) {
        return values[below(size)];
    }

private:
    std::mt19937 engine_;
};

constexpr std::array boardTypes = {"X", "Y", "Z", ""};
constexpr std::array variants = {"", "A", "B", "C", "D", "E"};
constexpr std::array paths = {"/a", "/b", "\\c\\d", "*", ""};
constexpr std::uint32_t idCount = 3;
constexpr std::uint32_t numberCount = 6;

/// How much of an archive is arrays, and how long these are.
struct Profile {
    std::uint32_t arrayOnceIn;
    std::uint32_t longestArray;
};
constexpr std::array profiles = {Profile{6, 3}, Profile{2, 5}, Profile{1, 12}};

class RandomArchive {
public:
    RandomArchive(Random& random, const Profile& profile) : random_(random), profile_(profile) {}

    std::vector<std::string> entries() {
        std::vector<std::string> entries(random_.below(14));
        std::generate(entries.begin(), entries.end(), [this] { return entry(); });
        return entries;
    }

private:
    std::string entry() {
        const bool isFile = random_.once(2);
        std::string members = sharedMembers();
        if (random_.once(2)) {
            return "'boardType': " + boardType() + members + address(isFile);
        }
        const bool everyBoardIsAddressed = random_.once(2);
        members += everyBoardIsAddressed && random_.once(2) ? "" : address(isFile);
        std::string boards;
        for (std::uint32_t count = random_.below(4) + 1; count > 0; --count) {
            boards.append(boards.empty() ? "" : ", ").append("{'boardType': ").append(boardType());
            boards += sharedMembers();
            boards += everyBoardIsAddressed || random_.once(3) ? address(isFile) : "";
            boards += "}";
        }
        return "'boards': [" + boards + "]" + members;
    }

    std::string address(bool isFile) {
        if (!isFile) {
            return ", 'id': " + (random_.once(20) ? "4294967296" : std::to_string(random_.below(idCount)));
        }
        return ", 'targetPath': " + text(random_.oneOf(paths));
    }

    /// The members that an entry and its boards may have alike, each of them rather left out.
    std::string sharedMembers() {
        std::string members;
        if (random_.once(3)) {
            members += ", 'boardVariant': " + scalarOrArray([this] { return variant(); });
        }
        for (const char* key : {"boardId", "hwCompatibilityId", "swCompatibilityId"}) {
            if (random_.once(3)) {
                members.append(", '").append(key).append("': ").append(scalarOrArray([this] { return number(); }));
            }
        }
        return members;
    }

    std::string boardType() {
        return scalarOrArray([this] { return text(random_.oneOf(boardTypes)); });
    }

    std::string variant() { return random_.once(3) ? "null" : text(random_.oneOf(variants)); }

    std::string number() {
        if (random_.once(20)) {
            return random_.once(2) ? "4294967296" : "4294967295";
        }
        return std::to_string(random_.once(2) ? 0 : random_.below(numberCount));
    }

    template <typename Make>
    std::string scalarOrArray(Make&& make) {
        if (!random_.once(profile_.arrayOnceIn)) {
            return make();
        }
        std::string items;
        for (std::uint32_t count = random_.below(profile_.longestArray + 1); count > 0; --count) {
            items.append(items.empty() ? "" : ", ").append(make());
        }
        return "[" + items + "]";
    }

    static std::string text(const std::string& content) {
        std::string escaped;
        for (const char character : content) {
            escaped.append(character == '\\' ? "\\" : "").append(1, character);
        }
        return "'" + escaped + "'";
    }

    Random& random_;
    const Profile& profile_;
};

std::uint32_t randomNumber(Random& random) {
    return random.once(30) ? 0xFFFFFFFF : (random.once(2) ? 0 : random.below(numberCount));
}

ElementBuilder randomElement(Random& random) {
    ElementBuilder builder = element(random.oneOf(boardTypes), random.below(idCount));
    if (random.once(2)) {
        builder.location(random.oneOf(paths));
    }
    return builder.variant(random.once(2) ? "" : random.oneOf(variants))
        .boardId(randomNumber(random))
        .hardware(randomNumber(random))
        .software(randomNumber(random));
}

/// What a plan should do with entries and elements, worked out by trying every entry for every element.
struct ExpectedPlan {
    std::vector<std::uint32_t> archiveFileIndices;
    std::vector<std::uint32_t> matchCounts;
    /// Of the cloned elements.
    std::vector<std::string> locations;
};

ExpectedPlan expectedPlan(const std::vector<KvTArchiveFile>& files, const std::list<KvTUpdateElement>& elements,
                          const KvTUpdateElement* fileSystemTemplate) {
    ExpectedPlan expected;
    expected.matchCounts.resize(files.size());
    for (const KvTUpdateElement& one : elements) {
        const std::uint32_t file = firstMatch(one, files);
        expected.archiveFileIndices.push_back(file);
        if (file != noArchiveFile) {
            ++expected.matchCounts[file];
        }
    }
    for (std::uint32_t file = 0; fileSystemTemplate != nullptr && file < files.size(); ++file) {
        std::string targetPath;
        if (files[file].hasTargetPath && expected.matchCounts[file] == 0 &&
            entryMatches(*fileSystemTemplate, files[file], targetPath)) {
            expected.archiveFileIndices.push_back(file);
            expected.matchCounts[file] = 1;
            expected.locations.push_back(targetPath);
        }
    }
    return expected;
}

} // namespace

class RandomPlanning : public PlanningTest {
protected:
    /// An archive and a target of their own for each seed.
    void prepare(std::uint32_t seed) {
        Random random(seed);
        entries_ = RandomArchive(random, profiles[seed % profiles.size()]).entries();
        archiveHas(entries_);
        elements().clear();
        for (std::uint32_t count = random.below(16); count > 0; --count) {
            targetHas(randomElement(random));
        }
        if (random.once(4)) {
            planner().inventory().setFileSystemTemplate(nullptr);
        } else {
            targetTakesFiles(randomElement(random).location(random.once(5) ? "/a" : "*"));
        }
    }

    [[nodiscard]] std::string describe(std::uint32_t seed) const {
        std::string text = "seed " + std::to_string(seed);
        for (const std::string& entry : entries_) {
            text += "\n{" + entry + "}";
        }
        return text;
    }

private:
    std::vector<std::string> entries_;
};

TEST_F(RandomPlanning, AnEntryIsTestedAsTheRulesSay) {
    std::size_t matchCount = 0;
    std::size_t pairCount = 0;
    for (std::uint32_t seed = 0; seed < 1500; ++seed) {
        prepare(seed);
        for (const KvTUpdateElement& one : elements()) {
            for (const KvTArchiveFile& file : files()) {
                std::string expectedPath;
                KvCString targetPath;
                const bool expected = entryMatches(one, file, expectedPath);
                ASSERT_EQ(expected, matchesFile(one, file, targetPath)) << describe(seed);
                ASSERT_TRUE(!expected || expectedPath == targetPath.view()) << describe(seed);
                matchCount += expected ? 1U : 0U;
                ++pairCount;
            }
        }
    }
    EXPECT_LT(500U, matchCount);
    EXPECT_LT(20 * matchCount, 20 * pairCount - pairCount);
}

TEST_F(RandomPlanning, TheIndexFindsWhatTryingEveryEntryFinds) {
    std::size_t foundCount = 0;
    std::size_t longListCount = 0;
    for (std::uint32_t seed = 0; seed < 4000; ++seed) {
        prepare(seed);
        const EntryIndex index(files());
        for (const KvTUpdateElement& one : elements()) {
            const std::uint32_t expected = firstMatch(one, files());
            ASSERT_EQ(expected, index.find(one)) << describe(seed);
            foundCount += expected != noArchiveFile ? 1U : 0U;
        }
        longListCount += index.longestList() > 1 ? 1U : 0U;
    }
    EXPECT_LT(2000U, foundCount);
    EXPECT_LT(100U, longListCount);
}

TEST_F(RandomPlanning, ThePlanLinksAndClonesWhatTryingEveryEntryLinksAndClones) {
    std::size_t cloneCount = 0;
    for (std::uint32_t seed = 10000; seed < 12000; ++seed) {
        prepare(seed);
        const std::size_t foundCount = elements().size();
        const ExpectedPlan expected = expectedPlan(files(), elements(), planner().inventory().fileSystemTemplate());
        plan();
        ASSERT_EQ(expected.archiveFileIndices, archiveFileIndices()) << describe(seed);
        ASSERT_EQ(expected.matchCounts, matchCounts()) << describe(seed);
        std::uint32_t position = 0;
        for (const KvTUpdateElement& one : elements()) {
            ASSERT_EQ(position, one.index) << describe(seed);
            ASSERT_TRUE(position < foundCount || expected.locations[position - foundCount] == one.location.view())
                << describe(seed);
            ++position;
        }
        cloneCount += elements().size() - foundCount;
    }
    EXPECT_LT(500U, cloneCount);
}
