#include "ElementIndex.h"
#include "EntryMatching.h"
#include "MatchingOracle.h"
#include "PlanningTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <list>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
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

constexpr std::array boardTypes = {"X", "Y", ""};
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
        std::vector<std::string> entries(random_.below(24));
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
        if (random_.once(4)) {
            members += ", 'boardVariant': " + scalarOrArray([this] { return variant(); });
        }
        for (const char* key : {"boardId", "hwCompatibilityId", "swCompatibilityId"}) {
            if (random_.once(4)) {
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
        return std::to_string(random_.once(3) ? random_.below(numberCount) : 0);
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
    if (random.once(30)) {
        return 0xFFFFFFFF;
    }
    return random.once(3) ? random.below(numberCount) : 0;
}

ElementBuilder randomElement(Random& random) {
    ElementBuilder builder = element(random.oneOf(boardTypes), random.below(idCount));
    if (random.once(2)) {
        builder.location(random.oneOf(paths));
    }
    return builder.variant(random.once(3) ? random.oneOf(variants) : "")
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

/// The planner with one archive and target after the other. Their entries are read at one go.
class RandomPlanning : public PlanningTest {
protected:
    /// Makes the archives and targets of these seeds.
    void makeCases(std::uint32_t firstSeed, std::size_t count) {
        std::vector<std::string> entries;
        for (std::uint32_t seed = firstSeed; cases_.size() < count; ++seed) {
            Case& made = cases_.emplace_back(Case{seed, {}, {}, {}, {}});
            Random random(seed);
            made.entries = RandomArchive(random, profiles[seed % profiles.size()]).entries();
            entries.insert(entries.end(), made.entries.begin(), made.entries.end());
            for (std::uint32_t number = random.below(24); number > 0; --number) {
                made.elements.push_back(randomElement(random));
            }
            if (!random.once(4)) {
                made.fileSystemTemplate = randomElement(random).location(random.once(5) ? "/a" : "*");
            }
        }
        std::vector<KvTArchiveFile> files = filesOf(entries);
        auto next = std::make_move_iterator(files.begin());
        for (Case& made : cases_) {
            const auto end = next + static_cast<std::ptrdiff_t>(made.entries.size());
            made.files.assign(next, end);
            next = end;
        }
    }

    /// Calls `check` for each archive and target; stops after a failure.
    template <typename Check>
    void forEachCase(Check&& check) {
        for (Case& made : cases_) {
            SCOPED_TRACE(describe(made));
            archiveHasFiles(std::move(made.files));
            forgetTarget();
            for (const ElementBuilder& builder : made.elements) {
                targetHas(builder);
            }
            if (made.fileSystemTemplate) {
                targetTakesFiles(*made.fileSystemTemplate);
            }
            check();
            if (HasFailure()) {
                return;
            }
        }
    }

private:
    struct Case {
        std::uint32_t seed;
        std::vector<std::string> entries;
        std::vector<KvTArchiveFile> files;
        std::vector<ElementBuilder> elements;
        std::optional<ElementBuilder> fileSystemTemplate;
    };

    [[nodiscard]] static std::string describe(const Case& made) {
        std::string text = "seed " + std::to_string(made.seed);
        for (const std::string& entry : made.entries) {
            text += "\n{" + entry + "}";
        }
        return text;
    }

    std::vector<Case> cases_;
};

TEST_F(RandomPlanning, AnEntryIsTestedAsTheRulesSay) {
    std::size_t matchCount = 0;
    std::size_t pairCount = 0;
    makeCases(0, 3000);
    forEachCase([&] {
        for (const KvTUpdateElement& one : elements()) {
            for (const KvTArchiveFile& file : files()) {
                std::string expectedPath;
                KvCString targetPath;
                const bool expected = entryMatches(one, file, expectedPath);
                EXPECT_EQ(expected, matchesFile(one, file, targetPath));
                EXPECT_TRUE(!expected || expectedPath == targetPath.view());
                matchCount += expected ? 1U : 0U;
                ++pairCount;
            }
        }
    });
    EXPECT_LT(3000U, matchCount);
    EXPECT_LT(10 * matchCount, pairCount);
}

TEST_F(RandomPlanning, EntriesInTheirOrderTakeWhatTryingEveryEntryFinds) {
    std::size_t foundCount = 0;
    makeCases(10000, 6000);
    forEachCase([&] {
        const std::list<KvTUpdateElement>& all = elements();
        KvCElementIndex unmatched(all);
        std::map<const KvTUpdateElement*, std::uint32_t> taken;
        for (std::uint32_t file = 0; file < files().size(); ++file) {
            for (const KvTUpdateElement* one : takeMatching(unmatched, files()[file])) {
                EXPECT_TRUE(taken.emplace(one, file).second);
            }
        }
        for (const KvTUpdateElement& one : all) {
            const auto found = taken.find(&one);
            EXPECT_EQ(firstMatch(one, files()), found != taken.end() ? found->second : noArchiveFile);
        }
        foundCount += taken.size();
    });
    EXPECT_LT(6000U, foundCount);
}

TEST_F(RandomPlanning, ThePlanLinksAndClonesWhatTryingEveryEntryLinksAndClones) {
    std::size_t cloneCount = 0;
    makeCases(20000, 3000);
    forEachCase([&] {
        const std::size_t foundCount = elements().size();
        const ExpectedPlan expected = expectedPlan(files(), elements(), inventory().fileSystemTemplate());
        plan();
        EXPECT_EQ(expected.archiveFileIndices, archiveFileIndices());
        EXPECT_EQ(expected.matchCounts, matchCounts());
        std::vector<std::string> locations;
        std::uint32_t position = 0;
        for (const KvTUpdateElement& one : elements()) {
            EXPECT_EQ(position, one.index);
            if (position++ >= foundCount) {
                locations.emplace_back(one.location.view());
            }
        }
        EXPECT_EQ(expected.locations, locations);
        cloneCount += locations.size();
    });
    EXPECT_LT(1000U, cloneCount);
}
