#include "CheckFixture.h"

namespace {

using KvNReflasher::KvTFinding;
using CheckValues = CheckTest;

std::string with(const char* key, const char* value) {
    return ArchiveBuilder().entry(goodEntry().set(key, value)).text();
}

TEST_F(CheckValues, AnEmptyArrayMatchesNothing) {
    for (const char* key : {"boardType", "boardVariant", "boardId", "hwCompatibilityId", "swCompatibilityId"}) {
        const KvTFinding finding = onlyFinding(with(key, "[]"));
        EXPECT_EQ("empty-array", finding.code);
        EXPECT_EQ(std::string("$.files[0].") + key, finding.path);
    }
    EXPECT_EQ("empty-array",
              codes(ArchiveBuilder().entry(entryWithBoards(goodBoard().set("boardId", "[]").text())).text()));
}

TEST_F(CheckValues, AGapOfADraftIsStillToBeFilledIn) {
    const KvTFinding finding = onlyFinding(with("boardVariant", R"("<variant>")"));
    EXPECT_EQ("gap", finding.code);
    EXPECT_EQ("$.files[0].boardVariant", finding.path);
    EXPECT_EQ(R"("<variant>" is still to be filled in.)", finding.message);
    for (const char* text : {R"("<>")", R"("<a")", R"("a>")", R"("a <b> c")"}) {
        EXPECT_EQ("", codes(with("boardVariant", text))) << text;
    }
    EXPECT_EQ("", codes(ArchiveBuilder().root("comment", R"("<none yet>")").entry(goodEntry()).text()));
}

TEST_F(CheckValues, WhatIsRequiredIsNotToBeLeftOut) {
    const auto hint = [this](const std::string& text) { return onlyFinding(text).hint; };
    EXPECT_EQ("Give it an element.", hint(ArchiveBuilder().text()));
    EXPECT_EQ("Give it an element.", hint(with("boardType", "[]")));
    EXPECT_EQ("Give it an element.",
              hint(ArchiveBuilder().entry(entryWithBoards(goodBoard().set("boardType", "[]").text())).text()));
    EXPECT_EQ("Give it an element, or leave it out.", hint(with("boardId", "[]")));
    const std::vector<std::string> descriptions = {
        ArchiveBuilder().info("formatVersion", "1").entry(goodEntry()).text(),
        ArchiveBuilder().info("archiveVersion", "1").entry(goodEntry()).text(),
        ArchiveBuilder().info("productName", "1").entry(goodEntry()).text(),
        ArchiveBuilder().info("archiveName", "1").entry(goodEntry()).text(),
        ArchiveBuilder().root("files", "1").text(),
        with("name", "1"),
        with("sequence", "null"),
        with("boardType", "1"),
        with("boardType", "[1]"),
        with("id", "null"),
        ArchiveBuilder().entry(entryWithBoards("")).text(),
        ArchiveBuilder().entry(entryWithBoards("{}")).text()};
    for (const std::string& description : descriptions) {
        for (const KvTFinding& finding : check(description)) {
            EXPECT_EQ(std::string::npos, finding.hint.find("eave")) << description;
        }
    }
}

TEST_F(CheckValues, AnArchiveWithoutEntriesUpdatesNothing) {
    EXPECT_EQ("$.files", onlyFinding(ArchiveBuilder().text()).path);
}

TEST_F(CheckValues, ANumberOfMoreThan32BitsIsNotUsedAsItIsWritten) {
    for (const char* key : {"id", "sequence", "checksumCrc32", "boardId", "hwCompatibilityId", "swCompatibilityId"}) {
        EXPECT_EQ("number-too-large", codes(with(key, "4294967296"))) << key;
        EXPECT_EQ("", codes(with(key, "4294967295"))) << key;
    }
    EXPECT_EQ("$.files[0].boardId[1]", onlyFinding(with("boardId", "[1, 4294967296]")).path);
}

TEST_F(CheckValues, AVersionThatPrintsDifferentlyIsTold) {
    const KvTFinding finding = onlyFinding(with("version", "\"023.2\""));
    EXPECT_EQ("version-spelling", finding.code);
    EXPECT_EQ("The version \"023.2\" prints as 23.2.", finding.message);
    EXPECT_EQ("$.files[0].version", finding.path);
    for (const char* version : {"\"5\"", "\"5.0.0\"", "\"5.0b01\"", "\"#1099511627776\""}) {
        EXPECT_EQ("version-spelling", codes(with("version", version))) << version;
    }
    for (const char* version : {"\"5.0\"", "\"5.0.1\"", "\"5.0b1.2\"", "\"5.0.0.1\"", "null", "\"#12884901888\""}) {
        EXPECT_EQ("", codes(with("version", version))) << version;
    }
}

TEST_F(CheckValues, TheVersionsOfTheArchiveAreLookedAtToo) {
    EXPECT_EQ("$.info.formatVersion",
              onlyFinding(ArchiveBuilder().info("formatVersion", "\"1\"").entry(goodEntry()).text()).path);
    EXPECT_EQ("$.info.archiveVersion",
              onlyFinding(ArchiveBuilder().info("archiveVersion", "\"1.00\"").entry(goodEntry()).text()).path);
}

TEST_F(CheckValues, AnEmptyBoardVariantMatchesNoBoard) {
    EXPECT_EQ("empty-variant", codes(with("boardVariant", "\"\"")));
    EXPECT_EQ("$.files[0].boardVariant[1]", onlyFinding(with("boardVariant", "[\"A\", \"\"]")).path);
    EXPECT_EQ("empty-variant",
              codes(ArchiveBuilder().entry(entryWithBoards(goodBoard().set("boardVariant", "\"\"").text())).text()));
    EXPECT_EQ("", codes(with("boardVariant", "[\"A\", null]")));
}

TEST_F(CheckValues, AnUpgradeWithoutVersionIsNeverGreater) {
    const auto entryOf = [](const char* mode, const char* version) {
        return ArchiveBuilder().entry(goodEntry().set("mode", mode).set("version", version)).text();
    };
    const KvTFinding finding = onlyFinding(entryOf("\"upgrade\"", "null"));
    EXPECT_EQ("upgrade-without-version", finding.code);
    EXPECT_EQ("$.files[0].version", finding.path);
    EXPECT_EQ("", codes(entryOf("\"upgrade\"", "\"1.0\"")));
    EXPECT_EQ("", codes(entryOf("\"standard\"", "null")));
}

} // namespace
