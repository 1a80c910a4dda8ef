#include "CheckFixture.h"

#include <array>

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;
using CheckKeys = CheckTest;

std::string with(const char* key, const char* value) {
    return ArchiveBuilder().entry(goodEntry().set(key, value)).text();
}

TEST_F(CheckKeys, AnUnknownKeyIsAWarningWithTheNearestKnownOne) {
    const std::string text = with("bordVariant", "\"A\"");
    const KvTFinding finding = onlyFinding(text);
    EXPECT_EQ("unknown-key", finding.code);
    EXPECT_EQ(KvESeverity::warning, finding.severity);
    EXPECT_EQ("Did you mean \"boardVariant\"?", finding.hint);
    EXPECT_EQ("$.files[0].bordVariant", finding.path);
    EXPECT_EQ(text.find("\"bordVariant\"") + 1, finding.column);
}

TEST_F(CheckKeys, UnknownKeysAreFoundInEveryObjectThatIsRead) {
    const auto path = [this](const std::string& text) { return onlyFinding(text).path; };
    EXPECT_EQ("$.Infos", path(ArchiveBuilder().root("Infos", "1").entry(goodEntry()).text()));
    EXPECT_EQ("$.info.name", path(ArchiveBuilder().info("name", "\"x\"").entry(goodEntry()).text()));
    EXPECT_EQ("$.files[0].boards[0].ID",
              path(ArchiveBuilder().entry(entryWithBoards(goodBoard().set("ID", "7").text())).text()));
}

TEST_F(CheckKeys, WhatIsFarFromEveryKnownKeyHasNoProposal) {
    EXPECT_EQ("Remove it; remarks go into \"comment\".", onlyFinding(with("author", "\"x\"")).hint);
}

TEST_F(CheckKeys, CommentsAndTheSchemaOfAnEditorAreNoFindings) {
    const std::string board = goodBoard().set("comment", "{\"any\": 1}").text();
    EXPECT_EQ("", codes(ArchiveBuilder()
                            .root("$schema", "\"archive.schema.json\"")
                            .root("comment", "\"x\"")
                            .info("comment", "[1]")
                            .entry(entryWithBoards(board).set("comment", "null"))
                            .text()));
    EXPECT_EQ("unknown-key", codes(with("$schema", "\"x\"")));
}

TEST_F(CheckKeys, AKeyOfTheEntryHasNoEffectInABoard) {
    const KvTFinding finding =
        onlyFinding(ArchiveBuilder().entry(entryWithBoards(goodBoard().set("sequence", "2").text())).text());
    EXPECT_EQ("misplaced-key", finding.code);
    EXPECT_EQ("$.files[0].boards[0].sequence", finding.path);
}

TEST_F(CheckKeys, ARepeatedKeyIsReportedWhereItIsRepeated) {
    const std::string text =
        ArchiveBuilder()
            .entry(R"({"name": "a.bin", "sequence": 1, "boardType": "QB", "id": 5, "checksumCrc32": 1, )"
                   R"("name": "a.bin"})")
            .text();
    const KvTFinding finding = onlyFinding(text);
    EXPECT_EQ("duplicate-key", finding.code);
    EXPECT_EQ(text.rfind("\"name\"") + 1, finding.column);
    EXPECT_EQ("duplicate-key", codes(with("comment", R"({"a": 1, "b": 1, "a": 1})")));
}

} // namespace
