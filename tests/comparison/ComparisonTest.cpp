#include "ArchiveBuilder.h"
#include "KvTComparison.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace KvNReflasher;
using testing::ElementsAre;
using testing::IsEmpty;

class ComparisonTest : public testing::Test {
protected:
    static ObjectText entry(const std::string& name, const std::string& id) {
        return ObjectText()
            .set("name", "\"" + name + "\"")
            .set("sequence", "1")
            .set("boardType", "\"QB4120\"")
            .set("id", id)
            .set("version", "\"1.0\"")
            .set("checksumCrc32", "7");
    }

    /// Board type, element or path, and change of each place.
    [[nodiscard]] std::vector<std::string> places(const std::string& before, const std::string& after) {
        static_cast<void>(before_.write("archive.json", before));
        static_cast<void>(after_.write("archive.json", after));
        comparison_ = compareArchives({before_.path().wstring(), L"archive.json"},
                                      {after_.path().wstring(), L"archive.json"}, {});
        std::vector<std::string> texts;
        for (const KvTArchiveDifference& place : comparison_.places) {
            constexpr std::array<const char*, 6> words{"same", "added", "removed", "up", "down", "changed"};
            texts.push_back(place.boardType + " " +
                            (place.elementId ? std::to_string(*place.elementId) : place.targetPath) + " " +
                            words.at(static_cast<std::size_t>(place.change)));
        }
        return texts;
    }
    [[nodiscard]] const KvTComparison& comparison() const { return comparison_; }
    [[nodiscard]] const KvTArchiveDifference& first() const { return comparison_.places.at(0); }

private:
    ScratchFolder before_;
    ScratchFolder after_;
    KvTComparison comparison_;
};

std::string archive(std::initializer_list<ObjectText> entries) {
    ArchiveBuilder builder;
    for (const ObjectText& entry : entries) {
        builder.entry(entry);
    }
    return builder.text();
}

TEST_F(ComparisonTest, PlacesAreUpDownAddedRemovedOrTheSame) {
    EXPECT_THAT(places(archive({entry("a", "1"), entry("b", "2"), entry("c", "3"), entry("d", "4")}),
                       archive({entry("e", "5"), entry("c", "3"), entry("b", "2").set("version", "\"1.0a5\""),
                                entry("a", "1").set("version", "\"1.0.1\"")})),
                ElementsAre("QB4120 5 added", "QB4120 3 same", "QB4120 2 down", "QB4120 1 up", "QB4120 4 removed"));
}

TEST_F(ComparisonTest, WhatElseDiffersIsSaid) {
    const std::string before = archive({entry("a", "1")});
    EXPECT_THAT(places(before, archive({entry("a", "1").set("checksumCrc32", "8")})), ElementsAre("QB4120 1 changed"));
    EXPECT_TRUE(first().isContentChanged);
    EXPECT_THAT(places(before, archive({entry("a", "1").set("sequence", "2")})), ElementsAre("QB4120 1 changed"));
    EXPECT_TRUE(first().isSequenceChanged);
    EXPECT_THAT(places(before, archive({entry("a", "1").set("mode", "\"upgrade\"")})), ElementsAre("QB4120 1 changed"));
    EXPECT_TRUE(first().isModeChanged);
    EXPECT_THAT(places(before, archive({entry("a", "1").set("boardId", "[6, 7]").set("boardVariant", "null")})),
                ElementsAre("QB4120 1 changed"));
    EXPECT_TRUE(first().areRulesChanged);
    EXPECT_EQ(first().before->rules, "");
    EXPECT_EQ(first().after->rules, "variant none, board id 6|7");
    EXPECT_THAT(places(before, archive({entry("a", "1").set("version", "null")})), ElementsAre("QB4120 1 changed"));
    EXPECT_THAT(places(before, archive({entry("other", "1")})), ElementsAre("QB4120 1 same"));
}

TEST_F(ComparisonTest, EntriesForOnePlaceArePairedByTheirRules) {
    const ObjectText forA = entry("a", "1").set("boardVariant", "\"A\"");
    const ObjectText forB = entry("b", "1").set("boardVariant", "\"B\"");
    EXPECT_THAT(
        places(archive({forA, forB}), archive({entry("b", "1").set("boardVariant", "\"B\"").set("version", "\"2.0\""),
                                               entry("a", "1").set("boardVariant", "\"A\"")})),
        ElementsAre("QB4120 1 up", "QB4120 1 same"));
    EXPECT_THAT(places(archive({forA, forB}), archive({forB})), ElementsAre("QB4120 1 same", "QB4120 1 removed"));
}

TEST_F(ComparisonTest, EachBoardTypeIsAPlaceOfItsOwn) {
    EXPECT_THAT(places(archive({entry("a", "1").set("boardType", R"(["X", "Y"])")}),
                       archive({entry("a", "1").set("boardType", R"(["Y", "Z"])")})),
                ElementsAre("Y 1 same", "Z 1 added", "X 1 removed"));
}

TEST_F(ComparisonTest, AnArchiveThatIsRefusedIsNotCompared) {
    EXPECT_THAT(places("{", archive({entry("a", "1")})), IsEmpty());
    EXPECT_EQ(comparison().verdict.failure, KvEFailure::archive);
    EXPECT_THAT(places(archive({entry("a", "1")}), "{"), IsEmpty());
    EXPECT_EQ(comparison().verdict.failure, KvEFailure::archive);
    EXPECT_TRUE(comparison().before.verdict.isSuccess());
}

} // namespace
